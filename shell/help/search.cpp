#include <algorithm>
#include <cctype>
#include <functional>
#include <iterator>
#include <utility>

#include <fmt/core.h>

#include "help/help.hpp"
#include "input/input_error.hpp"
#include "output/output.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/nearest.hpp"
#include "text/table.hpp"
#include "text/text.hpp"

namespace vorcfg::help {

namespace {

// What people type, and what the calls and their headers say instead.
constexpr std::pair<std::string_view, std::string_view> synonyms[] = {
    {"4g", "gsm"},
    {"alarm", "alert"},
    {"alarm", "threshold"},
    {"apn", "access-point-name"},
    {"baud", "speed"},
    {"bitrate", "baudrate"},
    {"coordinates", "latitude"},
    {"coordinates", "longitude"},
    {"date", "clock"},
    {"diesel", "genset"},
    {"ethernet", "network interface"},
    {"gps", "latitude"},
    {"gps", "longitude"},
    {"hotspot", "access-point-params"},
    {"internet", "access-point-name"},
    {"join", "wi-fi"},
    {"join", "wireless"},
    {"location", "latitude"},
    {"location", "longitude"},
    {"lte", "gsm"},
    {"meter", "modbus"},
    {"mobile", "gsm"},
    {"modem", "gsm"},
    {"nameserver", "dns"},
    {"netmask", "subnet-mask"},
    {"passphrase", "passwd"},
    {"passphrase", "password"},
    {"password", "passphrase"},
    {"password", "passwd"},
    {"phone", "gsm"},
    {"plc", "modbus"},
    {"position", "latitude"},
    {"position", "longitude"},
    {"relay", "drive an output"},
    {"route", "default-gateway"},
    {"router", "default-gateway"},
    {"rs232", "serial"},
    {"rs485", "serial"},
    {"sim", "gsm"},
    {"smoke", "fire"},
    {"static", "set-ip-address"},
    {"uart", "serial"},
    {"wifi", "wireless"},
    {"wlan", "wifi"},
    {"wlan", "wireless"},
};
constexpr std::string_view filler_words[] = {"a",  "an", "and", "do", "for", "how", "i",
                                             "in", "is", "my",  "of", "on",  "the", "to"};

// In lower case, without those that say nothing, unless there are no others.
std::vector<std::string> query_words(std::string_view query)
{
    std::vector<std::string> all;
    std::vector<std::string> telling;
    const std::string folded = vor::folded(query);
    for (std::string_view left = folded; !left.empty();) {
        const std::size_t end = std::min(left.find_first_of(" \t\n"), left.size());
        if (end != 0) {
            all.emplace_back(left.substr(0, end));
            if (std::ranges::find(filler_words, left.substr(0, end)) == std::end(filler_words)) {
                telling.push_back(all.back());
            }
        }
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return telling.empty() ? all : telling;
}

bool is_of_word(std::string_view text, std::size_t at)
{
    return at < text.size() && std::isalnum(static_cast<unsigned char>(text[at])) != 0;
}

bool joins_words(char c)
{
    return c == '-' || c == '_' || c == ' ';
}

enum Match : int { no_match, begins_alike, is_alike };

// How a word of the text is like this one, in lower case. What joins words does not count: wifi is Wi-Fi.
Match match_in(std::string_view text, std::string_view word)
{
    constexpr std::size_t short_word = 3; // would begin too many
    Match best = no_match;
    for (std::size_t at = 0; at < text.size(); at++) {
        if (!is_of_word(text, at) || (at != 0 && is_of_word(text, at - 1))) {
            continue;
        }
        std::size_t end = at;
        std::size_t same = 0;
        while (same < word.size() && end < text.size()) {
            if (joins_words(word[same])) {
                same++;
            } else if (std::tolower(static_cast<unsigned char>(text[end])) == word[same]) {
                same++;
                end++;
            } else if (joins_words(text[end])) {
                end++;
            } else {
                break;
            }
        }
        if (same < word.size()) {
            continue;
        }
        end += end < text.size() && text[end] == 's' ? 1 : 0;
        if (!is_of_word(text, end)) {
            return is_alike;
        }
        best = word.size() > short_word ? begins_alike : best;
    }
    return best;
}

// More, the more of what the call is about the word says; 0: nothing.
int likeness(const rows::Row& row, std::string_view word)
{
    const rows::CallContract& contract = rows::contract_of(row);
    int most = 0;
    const auto look = [&](std::string_view text, int importance) {
        const Match match = match_in(text, word);
        most = std::max(most, match == no_match ? 0 : 2 * importance + match);
    };
    look(row.family->name, 5);
    look(row.name, 4);
    look(rows::summary_of(row), 3);
    look(row.symbol, 1);
    look(rows::about(*row.family), 2);
    for (const rows::Argument& argument : row.arguments()) {
        look(argument.name, 2);
        look(contract.about(argument), 1);
    }
    for (const std::string& each : contract.paragraphs) {
        look(each, 1);
    }
    const std::vector<std::string>& family = rows::contract_of(*row.family).paragraphs;
    look(family.empty() ? "" : family.front(), 2);
    return most;
}

// The word may be a plural.
int likeness_of_any(const rows::Row& row, std::string_view word)
{
    int most = likeness(row, word);
    if (word.size() > 3 && word.ends_with('s')) {
        most = std::max(most, likeness_of_any(row, word.substr(0, word.size() - 1)));
    }
    for (const auto& [said, named] : synonyms) {
        most = std::max(most, word == said ? likeness(row, named) : 0);
    }
    return most;
}

struct Hit {
    const rows::Row* row;
    int likeness;
};

// The calls that every word fits, the likeliest first, without those that are much less likely.
std::vector<Hit> hits_of(std::span<const std::string> words)
{
    std::vector<Hit> hits;
    int most = 0;
    for (const rows::Family* const family : rows::families()) {
        for (const rows::Row& row : family->rows) {
            Hit hit{&row, 0};
            const bool fits = std::ranges::all_of(words, [&](const std::string& word) {
                const int like = likeness_of_any(row, word);
                hit.likeness += like;
                return like != 0;
            });
            if (fits) {
                hits.push_back(hit);
                most = std::max(most, hit.likeness);
            }
        }
    }
    std::erase_if(hits, [most](const Hit& hit) { return hit.likeness < most / 2; });
    const auto does_something = [](const Hit& hit) {
        return !hit.row->has(rows::does_nothing) && hit.row->used_by.empty();
    };
    std::ranges::stable_sort(hits, std::greater(), &Hit::likeness);
    std::stable_partition(hits.begin(), hits.end(), does_something);
    return hits;
}

std::vector<std::string> known_words()
{
    std::vector<std::string> known;
    for (const auto& [said, named] : synonyms) {
        known.emplace_back(said);
    }
    for (const rows::Family* const family : rows::families()) {
        for (const rows::Row& row : family->rows) {
            std::string name = row.full_name();
            std::ranges::replace(name, '-', ' ');
            std::ranges::move(query_words(name), std::back_inserter(known));
        }
    }
    std::ranges::sort(known);
    known.erase(std::unique(known.begin(), known.end()), known.end());
    return known;
}

[[noreturn]] void fail_no_hit(std::span<const std::string> words)
{
    for (const std::string& word : words) {
        if (!hits_of({&word, 1}).empty()) {
            continue;
        }
        const std::vector<std::string> near = vor::nearest(word, known_words());
        throw input::InputError{.text = fmt::format("no call matches {}{}", vor::quoted(word), vor::suggestion(near)),
                                .hint = "vorcfg list lists all calls"};
    }
    throw input::InputError{.text = fmt::format("no call matches all of {}", vor::quoted(vor::joined(words, " "))),
                            .hint = "each of the words alone matches some; leave one out"};
}

} // namespace

std::string search(std::string_view query, bool json, const vor::Screen& screen)
{
    std::vector<std::string> words = query_words(query);
    const auto matches = [](const std::string& word) { return !hits_of({&word, 1}).empty(); };
    const auto unknown = std::stable_partition(words.begin(), words.end(), matches);
    if (unknown != words.begin()) { // the others tell enough
        for (auto word = unknown; word != words.end(); ++word) {
            output::print_notice(fmt::format("no call matches {}", vor::quoted(*word)), {}, json, stderr);
        }
        words.erase(unknown, words.end());
    }
    const std::vector<Hit> hits = hits_of(words);
    if (hits.empty()) {
        fail_no_hit(words);
    }
    vor::Table table(screen);
    std::vector<vor::Cells> found;
    std::string text;
    for (const Hit& hit : hits) {
        text += json ? output::json_of(*hit.row) : "";
        found.push_back({{hit.row->full_name() + " "}, {rows::summary_of(*hit.row)}});
        table.fit(found.back());
    }
    for (const vor::Cells& each : found) {
        text += json ? "" : table.text_of(each);
    }
    return text;
}

} // namespace vorcfg::help
