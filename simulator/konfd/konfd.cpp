#include "konfd/konfd.hpp"

#include <set>

#include <fmt/core.h>

namespace vorsim::konfd {
namespace {

// What a client of the configuration library receives at once. More would wait
// in its socket and be taken for the next answer.
constexpr std::size_t longest_answer = 50;
// What one text may cost.
constexpr std::size_t most_commands = 64;
constexpr std::size_t most_shown = 1 << 20;
constexpr std::uint64_t most_work = 4'000'000;

constexpr char not_there[] = "it is not there";

Reply reply_to(const std::string& commands, bool good, const std::string& why)
{
    Reply reply;
    Record& record = reply.record;
    record.kind = Record::Kind::konfd;
    record.commands = commands;
    record.answer = good ? "-o" : "-e";
    record.line = fmt::format("konfd {} -> {}", commands, record.answer);
    if (!good) {
        record.line += fmt::format(": {}", why);
        record.complaint = why;
        record.complained = why != not_there;
    }
    reply.answer = fmt::format("{}\n", record.answer);
    return reply;
}

} // namespace

Reply Konfd::refuse(const std::string& why)
{
    return reply_to("(unread)", false, why);
}

bool Konfd::carry_out(const Command& command, Work& work, std::string& shown, std::string& why)
{
    const bool changes = command.operation == 's' || command.operation == 'u';
    if (changes && !settings_.lenient && !tree_.reaches(command.path)) {
        why = "the path is not there";
        return false;
    }
    // What the pattern fits is known before anything is changed.
    std::set<std::string> fitting;
    if (command.pattern) {
        const auto pattern = Pattern::compile(*command.pattern);
        if (!pattern) {
            why = "the pattern is no regular expression, or too much of one";
            return false;
        }
        tree_.has(command.path, [&](const std::string& line) {
            if (pattern->matches(line, work)) {
                fitting.insert(line);
            }
            return false;
        });
        if (work.exhausted()) {
            why = "the patterns are too much work";
            return false;
        }
    }
    const auto matches_pattern = [&](const std::string& line) { return fitting.contains(line); };
    const auto matches_all = [&](const std::string& line) {
        return (!command.pattern || matches_pattern(line)) && (!command.line || *command.line == line);
    };

    bool done = true;
    switch (command.operation) {
    case 's':
        done = tree_.set(command.path, *command.line, matches_pattern, command.priority);
        why = done ? "" : "the store is full";
        break;
    case 'u':
        tree_.unset(command.path, matches_all);
        break;
    case 'c':
        done = tree_.has(command.path, matches_all);
        why = done ? "" : not_there;
        break;
    default:
        break;
    }
    if (command.show) {
        shown += tree_.text(command.path, settings_.show_secrets);
        if (shown.size() > most_shown && command.operation != 0) {
            shown.resize(most_shown); // far more than is answered
        } else if (shown.size() > most_shown) {
            why = fmt::format("what is to be shown has more than {} bytes", most_shown);
            return false;
        }
    }
    return done;
}

Reply Konfd::execute(std::string_view burst)
{
    const auto parsed = parse(burst);
    if (const auto* const complaint = std::get_if<Complaint>(&parsed)) {
        return refuse(complaint->text);
    }
    if (std::get<std::vector<Command>>(parsed).size() > most_commands) {
        return refuse(fmt::format("more than {} commands in one text", most_commands));
    }
    Work work(most_work);
    std::string commands;
    std::string shown;
    std::string why;
    bool good = true;
    bool changes = false;
    for (const Command& command : std::get<std::vector<Command>>(parsed)) {
        commands += fmt::format("{}{}", commands.empty() ? "" : " | ", text_of(command, settings_.show_secrets));
        changes = changes || command.operation != 0;
        good = carry_out(command, work, shown, why);
        if (!good) {
            break;
        }
    }
    Reply reply = reply_to(commands, good, why);
    if (good) {
        reply.answer += shown;
    }
    if (changes && reply.answer.size() > longest_answer) {
        reply.record.shown = fmt::format("cut to {} of {} bytes", longest_answer, reply.answer.size());
        reply.record.line += fmt::format(" ({})", reply.record.shown);
        reply.answer.resize(longest_answer);
    }
    return reply;
}

} // namespace vorsim::konfd
