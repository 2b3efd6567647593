#include "konfd/konfd.hpp"

#include <algorithm>
#include <set>

#include <fmt/core.h>

#include "text/text.hpp"

namespace vorsim::konfd {
namespace {

// What a client of the configuration library receives at once. More would stay in its socket and be taken for the next
// answer.
constexpr std::size_t longest_answer = 50;
// Limits of one text.
constexpr std::size_t most_commands = 64;
constexpr std::size_t most_shown = 1 << 20;
constexpr std::uint64_t most_work = 4'000'000;

constexpr char not_there[] = "not found";

// An empty reason: success.
Reply reply_to(const std::string& commands, const std::string& why)
{
    Reply reply;
    values::Record& record = reply.record;
    record.kind = values::Record::Kind::konfd;
    record.commands = commands;
    record.answer = why.empty() ? "-o" : "-e";
    record.complaint = why;
    record.complained = !why.empty() && why != not_there;
    reply.answer = fmt::format("{}\n", record.answer);
    return reply;
}

} // namespace

Reply Konfd::refuse(const std::string& why)
{
    return reply_to("(unread)", why);
}

// Names the first line of the path that is not there.
std::string Konfd::missing_in(const Path& path) const
{
    Path known;
    for (const std::string& word : path) {
        known.push_back(word);
        if (tree_.find(known) == nullptr) {
            break;
        }
    }
    const std::string& first = known.back();
    return fmt::format("no line {}, which must be set before what is under it",
                       vor::quoted(settings_.show_secrets ? first : without_secret(first), values::longest_in_line));
}

std::string Konfd::carry_out(const Command& command, Work& work, std::string& shown)
{
    const bool changes = command.operation == 's' || command.operation == 'u';
    const Tree::Node* const parent = tree_.find(command.path);
    if (changes && !settings_.lenient && parent == nullptr) {
        return missing_in(command.path);
    }
    static const std::vector<Tree::Node> none;
    const std::vector<Tree::Node>& nodes = parent != nullptr ? parent->children : none;
    // Matched before anything is changed.
    std::set<std::string> fitting;
    if (command.pattern) {
        const auto pattern = Pattern::compile(*command.pattern);
        if (!pattern) {
            return "the pattern is not a regular expression, or is too complex";
        }
        for (const Tree::Node& node : nodes) {
            if (pattern->matches(node.line, work)) {
                fitting.insert(node.line);
            }
        }
        if (work.exhausted()) {
            return "matching the patterns takes too long";
        }
    }
    const auto matches_pattern = [&](const std::string& line) { return fitting.contains(line); };
    const auto matches_all = [&](const std::string& line) {
        return (!command.pattern || matches_pattern(line)) && (!command.line || *command.line == line);
    };

    std::string why;
    if (command.operation == 's' && !tree_.set(command.path, *command.line, matches_pattern, command.priority)) {
        why = "the store is full";
    } else if (command.operation == 'u') {
        tree_.unset(command.path, matches_all);
    } else if (command.operation == 'c' && std::ranges::none_of(nodes, matches_all, &Tree::Node::line)) {
        why = not_there;
    }
    if (command.show) {
        shown += dump_of(lines(command.path));
        if (shown.size() > most_shown && command.operation == 0) {
            return fmt::format("output longer than {} bytes", most_shown);
        }
        shown.resize(std::min(shown.size(), most_shown)); // far more than is sent
    }
    return why;
}

Reply Konfd::execute(std::string_view burst)
{
    const auto parsed = parse(burst);
    if (const auto* const error = std::get_if<SyntaxError>(&parsed)) {
        return refuse(error->text);
    }
    if (std::get<std::vector<Command>>(parsed).size() > most_commands) {
        return refuse(fmt::format("more than {} commands in one text", most_commands));
    }
    Work work(most_work);
    std::string commands;
    std::string shown;
    std::string why;
    bool changes = false;
    for (const Command& command : std::get<std::vector<Command>>(parsed)) {
        commands += fmt::format("{}{}", commands.empty() ? "" : " | ", text_of(command, settings_.show_secrets));
        changes = changes || command.operation != 0;
        why = carry_out(command, work, shown);
        if (!why.empty()) {
            break;
        }
    }
    Reply reply = reply_to(commands, why);
    reply.answer += why.empty() ? shown : "";
    if (changes && reply.answer.size() > longest_answer) {
        reply.record.shown = fmt::format("cut to {} of {} bytes", longest_answer, reply.answer.size());
        reply.record.notes.push_back(reply.record.shown);
        reply.answer.resize(longest_answer);
    }
    return reply;
}

} // namespace vorsim::konfd
