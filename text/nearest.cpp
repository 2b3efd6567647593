#include "text/nearest.hpp"

#include <algorithm>
#include <cctype>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vor {

namespace {

constexpr std::size_t most_named = 4;
constexpr std::size_t longest_compared = 200; // of what is typed; no name is as long

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

// What the words of one line do, those of the others undo, or only look at.
constexpr std::string_view contraries[] = {
    "accept-activate-add-allow-connect-create-enable-lock-on-open-set-start",
    "clear-close-deactivate-delete-deny-disable-disconnect-off-refuse-remove-reset-stop-unlock-unset",
    "get-list-read-show",
};

std::vector<std::string_view> parts_of(std::string_view name)
{
    std::vector<std::string_view> parts;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find_first_of("- "), name.size());
        parts.push_back(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return parts;
}

bool have_any(std::span<const std::string_view> parts, std::string_view line)
{
    return std::ranges::any_of(parts_of(line),
                               [parts](auto word) { return std::ranges::find(parts, word) != parts.end(); });
}

// Whether a part of what was typed, which is folded, is less like any part of the name than like a contrary of one.
bool says_contrary(std::string_view typed, std::string_view known)
{
    const std::vector<std::string_view> parts = parts_of(known);
    for (const std::string_view part : parts_of(typed)) {
        std::size_t away = std::max<std::size_t>(part.size() / 3, 1);
        for (const std::string_view other : parts) {
            away = std::min(away, slips(part, other));
        }
        const auto is_of = [&](std::string_view line) {
            return std::ranges::any_of(parts_of(line), [&](auto word) { return slips(part, word) <= away; });
        };
        for (const std::string_view line : contraries) {
            const auto is_contrary = [&](std::string_view other) { return other != line && is_of(other); };
            if (have_any(parts, line) && std::ranges::any_of(contraries, is_contrary)) {
                return true;
            }
        }
    }
    return false;
}

// The names at the least distance from the typed one, up to the limit.
template <class Distance>
std::vector<std::string> at_least_distance(std::string_view typed, std::size_t limit,
                                           std::span<const std::string> known, Distance distance)
{
    std::vector<std::string> found;
    for (const std::string& each : known) {
        const std::string name = folded(each);
        const std::size_t away = distance(name);
        if (away > limit || says_contrary(typed, name)) {
            continue;
        }
        if (away < limit) {
            found.clear();
            limit = away;
        }
        found.push_back(each);
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
    if (name.size() > longest_compared) {
        return {};
    }
    const std::string typed = folded(name);
    const auto whole = [&](const std::string& each) { return slips(typed, each); };
    const auto part = [&](std::string_view each) {
        std::size_t least = typed.size();
        for (const std::string_view each_part : parts_of(each)) {
            least = std::min(least, slips(typed, each_part));
        }
        return least;
    };
    const std::size_t limit = typed.size() / 3 + 1;
    const std::vector<std::string> found = at_least_distance(typed, limit, known, whole);
    return found.empty() ? at_least_distance(typed, limit, known, part) : found;
}

std::vector<std::string> holding(std::string_view name, std::span<const std::string> known)
{
    const std::string typed = folded(name);
    std::vector<std::string> found;
    if (typed.size() < 2 || typed.size() > longest_compared) {
        return found;
    }
    for (const std::string& each : known) {
        if (each.find(typed) != std::string::npos && !says_contrary(typed, each)) {
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
