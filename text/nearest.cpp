#include "text/nearest.hpp"

#include <algorithm>
#include <cctype>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vor {

namespace {

constexpr std::size_t most_named = 4;

// How many letters must be changed, added, left out or swapped with their
// neighbour to get from one word to the other.
std::size_t slips(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> before_last(to.size() + 1);
    std::vector<std::size_t> last(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t j = 0; j <= to.size(); j++) {
        last[j] = j;
    }
    for (std::size_t i = 1; i <= from.size(); i++) {
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); j++) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                row[j] = std::min(row[j], before_last[j - 2] + 1);
            }
        }
        before_last.swap(last);
        last.swap(row);
    }
    return last.back();
}

// The names at the least distance, up to the limit.
template <class Distance>
std::vector<std::string> at_least_distance(std::size_t limit, std::span<const std::string> known, Distance distance)
{
    std::vector<std::string> found;
    for (const std::string& each : known) {
        const std::size_t away = distance(each);
        if (away < limit) {
            found.clear();
            limit = away;
        }
        if (away == limit) {
            found.push_back(each);
        }
    }
    found.resize(std::min(found.size(), most_named));
    return found;
}

} // namespace

std::string folded(std::string_view name)
{
    std::string text(name);
    for (char& c : text) {
        c = c == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

std::vector<std::string> nearest(std::string_view name, std::span<const std::string> known)
{
    const std::string typed = folded(name);
    const auto whole = [&](const std::string& each) { return slips(typed, each); };
    const auto part = [&](std::string_view each) {
        std::size_t least = typed.size();
        while (!each.empty()) {
            const std::size_t end = std::min(each.find('-'), each.size());
            least = std::min(least, slips(typed, each.substr(0, end)));
            each.remove_prefix(std::min(end + 1, each.size()));
        }
        return least;
    };
    const std::size_t limit = typed.size() / 3 + 1;
    const std::vector<std::string> found = at_least_distance(limit, known, whole);
    return found.empty() ? at_least_distance(limit, known, part) : found;
}

std::vector<std::string> holding(std::string_view name, std::span<const std::string> known)
{
    const std::string typed = folded(name);
    std::vector<std::string> found;
    if (typed.size() < 2) {
        return found;
    }
    for (const std::string& each : known) {
        if (each.find(typed) != std::string::npos) {
            found.push_back(each);
        }
    }
    return found;
}

std::string suggestion(std::span<const std::string> names, std::string_view otherwise)
{
    if (names.empty()) {
        return otherwise.empty() ? std::string() : fmt::format("; {}", otherwise);
    }
    const auto first = names.first(std::min(names.size(), most_named));
    std::vector<std::string> shown(first.begin(), first.end());
    if (names.size() > shown.size()) {
        shown.push_back(fmt::format("one of {} more", names.size() - shown.size()));
    }
    return fmt::format("; did you mean {}?", alternatives(shown));
}

} // namespace vor
