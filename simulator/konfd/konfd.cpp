#include "konfd/konfd.hpp"

#include <fmt/format.h>

#include "konfd/pattern.hpp"

namespace vorsim::konfd {
namespace {

// What a client of the configuration library receives at once. More would wait
// in its socket and be taken for the next answer.
constexpr std::size_t longest_answer = 50;

Reply reply_to(const std::string& commands, bool good, const std::string& why)
{
    const std::string answer = good ? "-o" : "-e";
    Reply reply{fmt::format("{}\n", answer),
                {fmt::format("konfd {} -> {}", commands, answer), {{"konfd", commands}, {"answer", answer}}}};
    if (!good) {
        reply.report.line += fmt::format(": {}", why);
        reply.report.record["complaint"] = why;
    }
    return reply;
}

} // namespace

Reply Konfd::refuse(const std::string& why)
{
    return reply_to("(unread)", false, why);
}

bool Konfd::carry_out(const Command& command, std::string& shown, std::string& why)
{
    if (command.operation != 0 && !settings_.lenient && !tree_.reaches(command.path)) {
        why = "the path is not there";
        return false;
    }
    std::optional<Pattern> pattern;
    if (command.pattern) {
        pattern = Pattern::compile(*command.pattern);
        if (!pattern) {
            why = "the pattern is no regular expression, or too much of one";
            return false;
        }
    }
    const auto matches_pattern = [&pattern](const std::string& line) { return pattern && pattern->matches(line); };
    const auto matches_all = [&](const std::string& line) {
        return (!pattern || pattern->matches(line)) && (!command.line || *command.line == line);
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
        why = done ? "" : "it is not there";
        break;
    default:
        break;
    }
    if (command.show) {
        shown += tree_.text(command.path, settings_.show_secrets);
    }
    return done;
}

Reply Konfd::execute(std::string_view burst)
{
    const auto parsed = parse(burst);
    if (const auto* const complaint = std::get_if<Complaint>(&parsed)) {
        return refuse(complaint->text);
    }
    std::string commands;
    std::string shown;
    std::string why;
    bool good = true;
    bool changes = false;
    for (const Command& command : std::get<std::vector<Command>>(parsed)) {
        commands += fmt::format("{}{}", commands.empty() ? "" : " | ", text_of(command, settings_.show_secrets));
        changes = changes || command.operation != 0;
        good = carry_out(command, shown, why);
        if (!good) {
            break;
        }
    }
    Reply reply = reply_to(commands, good, why);
    if (good) {
        reply.answer += shown;
    }
    if (changes && reply.answer.size() > longest_answer) {
        reply.answer.resize(longest_answer);
    }
    return reply;
}

} // namespace vorsim::konfd
