#include "plan/plan.hpp"

#include <algorithm>

#include <fmt/format.h>

#include "make/session.hpp"
#include "plan/reading.hpp"
#include "rows/families.hpp"

namespace vorcfg {

// A line may leave its secret out where something else says where it comes from.
static std::vector<Word> with_secret(const Row& row, std::span<const Word> words, const SecretSources& sources)
{
    std::vector<Word> all(words.begin(), words.end());
    if (!sources.left_out) {
        return all;
    }
    std::size_t at = 0;
    std::size_t wanted = Reading::first_word;
    for (const Argument& argument : row.arguments()) {
        at = argument.is_secret ? wanted : at;
        wanted += argument.is_given() && !argument.is_list ? 1 : 0;
    }
    const bool asked_for = sources.left_out->text != "?";
    if (at == 0) {
        if (asked_for) {
            throw Complaint{"has no secret argument"};
        }
    } else if (all.size() + 1 == wanted && !(at < all.size() && is_secret_source(all[at]))) {
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(at), *sources.left_out);
    } else if (asked_for) {
        throw Complaint{"the secret is given twice, or another argument is missing"};
    }
    return all;
}

Planned plan(std::span<const Word> words, Secrets& secrets, const Place& place)
{
    const Family& family = wanted_family(words[0].text);
    if (words.size() == 1) {
        throw Complaint{fmt::format("the call's name is missing; vorcfg {} --help lists them", family.name)};
    }
    const Row& row = wanted_row(words[0].text, words[1].text);
    try {
        if (row.make == nullptr) {
            throw Complaint{
                fmt::format("cannot be called on its own; what uses it: {}", row.used_by), exit_usage, {}, 1};
        }
        const std::vector<Word> all = with_secret(row, words, secrets.sources());
        Reading reading{row, all, place.line, secrets, {}};
        (row.read != nullptr ? row.read : read_words)(reading);
        return {&row, std::move(reading.values), place};
    } catch (Complaint& complaint) {
        complaint.call = row.full_name();
        throw;
    }
}

// What of a message that is too long is to be cut: the list, or the longest text.
static std::size_t most_of(const Planned& planned, Unfit unfit)
{
    const auto arguments = planned.row->arguments();
    std::size_t longest = 0;
    for (std::size_t i = 0; i < planned.values.size(); i++) {
        longest = planned.values[i].text.size() > planned.values[longest].text.size() ? i : longest;
    }
    return unfit == Unfit::elements ? arguments.size() - 1 : longest;
}

void rehearse(Planned& planned)
{
    if (planned.row->channel == Channel::none) {
        return;
    }
    const Report report = Session({.capture = true}, std::nullopt).make(planned);
    Complaint complaint;
    complaint.call = planned.row->full_name();
    for (const Message& message : report.seen.messages) {
        if (message.unfit != Unfit::no) {
            const auto arguments = planned.row->arguments();
            const std::size_t value = most_of(planned, message.unfit);
            complaint.text = fmt::format("does not fit: {}", unfit_text(message));
            complaint.argument = arguments[std::min(value, arguments.size() - 1)].name;
            complaint.word = planned.values[value].word;
            throw complaint;
        }
    }
    if (report.seen.messages.empty() && !report.back.succeeded()) {
        complaint.text = fmt::format("the library refuses this, nothing would be sent (code {})", *report.back.code);
        complaint.word = 1;
        throw complaint;
    }
}

} // namespace vorcfg
