#include "konfd.hpp"

#include "konfd_pattern.hpp"

namespace vorsim::konfd {
namespace {

/* What a client of the configuration library receives at once. More would wait
 * in its socket and be taken for the next answer. */
constexpr std::size_t longest_answer = 50;

Verdict verdict(bool good, const std::string& commands, const std::string& why)
{
    const std::string answer = good ? "-o" : "-e";
    Verdict verdict{answer + "\n", "konfd " + commands + " -> " + answer, {{"konfd", commands}, {"answer", answer}}};
    if (!good) {
        verdict.line += ": " + why;
        verdict.record["complaint"] = why;
    }
    return verdict;
}

} // namespace

Verdict Konfd::refuse(const std::string& why)
{
    return verdict(false, "(unread)", why);
}

bool Konfd::carry_out(const Command& command, std::string& shown, std::string& why)
{
    std::optional<Pattern> pattern;
    if (command.pattern) {
        pattern = Pattern::compile(*command.pattern);
        if (!pattern) {
            why = "the pattern is no regular expression, or too much of one";
            return false;
        }
    }
    const auto fits_pattern = [&pattern](const std::string& line) { return pattern && pattern->matches(line); };
    const auto fits_all = [&](const std::string& line) {
        return (!pattern || pattern->matches(line)) && (!command.line || *command.line == line);
    };

    bool done = true;
    switch (command.operation) {
    case 's':
        done = tree_.set(command.path, *command.line, fits_pattern, command.priority);
        why = done ? "" : "the store is full";
        break;
    case 'u':
        tree_.unset(command.path, fits_all);
        break;
    case 'c':
        done = tree_.has(command.path, fits_all);
        why = done ? "" : "it is not there";
        break;
    default:
        break;
    }
    if (command.show) {
        shown += tree_.text(command.path, show_secrets_);
    }
    return done;
}

Verdict Konfd::execute(std::string_view burst)
{
    const auto parsed = parse(burst);
    if (const auto* const mistake = std::get_if<Mistake>(&parsed)) {
        return refuse(mistake->what);
    }
    std::string commands;
    std::string shown;
    std::string why;
    bool good = true;
    bool changes = false;
    for (const Command& command : std::get<std::vector<Command>>(parsed)) {
        commands += (commands.empty() ? "" : " | ") + text_of(command, show_secrets_);
        changes = changes || command.operation != 0;
        good = carry_out(command, shown, why);
        if (!good) {
            break;
        }
    }
    Verdict result = verdict(good, commands, why);
    if (good) {
        result.answer += shown;
    }
    if (changes && result.answer.size() > longest_answer) {
        result.answer.resize(longest_answer);
    }
    return result;
}

} // namespace vorsim::konfd
