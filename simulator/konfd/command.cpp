#include "konfd/command.hpp"

#include <algorithm>
#include <cctype>

#include <fmt/core.h>

#include "text/text.hpp"
#include "values/value.hpp"

namespace vorsim::konfd {
namespace {

constexpr std::size_t deepest_path = 16;
constexpr std::size_t longest_word = 1024;
constexpr std::string_view operations = "scud";
constexpr std::string_view options = "scudlrp";

struct Token {
    std::string_view text;
    std::size_t at;
    bool quoted;
};

class Parser {
public:
    explicit Parser(std::string_view burst) : burst_(burst) {}

    // Throws a SyntaxError.
    std::vector<Command> run()
    {
        while (const auto token = next()) {
            take(*token);
        }
        finish();
        return std::move(commands_);
    }

private:
    enum : bool { for_good, so_far }; // so far: more text could still make it valid

    [[noreturn]] static void refuse(std::string text, bool incomplete = for_good)
    {
        throw SyntaxError{std::move(text), incomplete};
    }
    [[noreturn]] static void refuse_at(std::size_t at, std::string_view text, bool incomplete = for_good)
    {
        refuse(fmt::format("byte {}: {}", at + 1, text), incomplete);
    }

    std::optional<Token> next()
    {
        while (at_ < burst_.size() && is_blank(burst_[at_])) {
            ++at_;
        }
        if (at_ == burst_.size()) {
            return {};
        }
        const std::size_t at = at_;
        const bool quoted = burst_[at] == '"';
        const std::size_t begin = quoted ? at + 1 : at;
        const std::size_t end = quoted ? burst_.find('"', begin) : burst_.find_first_of("\" \t\r", begin);
        if (quoted && end == burst_.npos) {
            refuse_at(at, "unclosed quote", so_far);
        }
        const std::string_view text = burst_.substr(begin, end - begin);
        at_ = begin + text.size() + (quoted ? 1 : 0);
        if (text.size() > longest_word) {
            refuse_at(at, fmt::format("text longer than {} bytes", longest_word));
        }
        const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
        if (std::ranges::any_of(text, is_control)) {
            refuse_at(at, "unexpected control character");
        }
        return Token{text, at, quoted};
    }

    void take(const Token& token)
    {
        if (token.quoted) {
            take_path_word(token);
            return;
        }
        if (token.text.size() != 2 || token.text[0] != '-' || options.find(token.text[1]) == options.npos) {
            const bool cut = token.text == "-" && at_ == burst_.size();
            refuse_at(token.at, "expected an option or a quoted text", cut);
        }
        const char option = token.text[1];
        if (operations.find(option) != operations.npos) {
            take_operation(option, token.at);
        } else {
            take_option(option, token.at);
        }
    }

    void take_operation(char option, std::size_t at)
    {
        if (commands_.empty() || has_content_) {
            finish();
            commands_.emplace_back();
            has_content_ = false;
        }
        Command& command = commands_.back();
        if (option == 'd' ? command.show : command.operation != 0) {
            refuse_at(at, "unexpected second operation");
        }
        if (option == 'd') {
            command.show = true;
        } else {
            command.operation = option;
        }
    }

    // The command that the option or path word belongs to.
    Command& current(std::size_t at)
    {
        if (commands_.empty()) {
            refuse_at(at, "expected -s, -c, -u or -d first");
        }
        has_content_ = true;
        return commands_.back();
    }

    void take_path_word(const Token& token)
    {
        Command& command = current(token.at);
        if (token.text.empty()) {
            refuse_at(token.at, "empty path word");
        }
        if (command.path.size() == deepest_path) {
            refuse_at(token.at, fmt::format("path deeper than {} words", deepest_path));
        }
        command.path.emplace_back(token.text);
    }

    void take_option(char option, std::size_t at)
    {
        Command& command = current(at);
        const auto value = next();
        if (!value) {
            refuse_at(at, fmt::format("-{} needs a value", option), so_far);
        }
        if (option == 'p') {
            take_priority(command, *value);
            return;
        }
        if (!value->quoted) {
            refuse_at(at, fmt::format("-{} needs a quoted text", option));
        }
        std::optional<std::string>& text = option == 'l' ? command.line : command.pattern;
        if (text) {
            refuse_at(at, fmt::format("unexpected second -{}", option));
        }
        text = value->text;
    }

    static void take_priority(Command& command, const Token& value)
    {
        const auto is_digit = [](unsigned char c) { return std::isdigit(c) != 0; };
        if (command.priority) {
            refuse_at(value.at, "unexpected second -p");
        }
        if (value.text.empty() || value.text.size() > 5 || !std::ranges::all_of(value.text, is_digit)) {
            refuse_at(value.at, "priority must be 0 to 99999");
        }
        command.priority = std::stoi(std::string(value.text));
    }

    // Checks that the last command, if any, is complete.
    void finish() const
    {
        if (commands_.empty()) {
            return;
        }
        const Command& command = commands_.back();
        const bool names_lines = command.line || command.pattern;
        if (command.operation == 's' && (!command.line || command.line->empty())) {
            refuse("-s needs -l", !command.line);
        }
        if ((command.operation == 'c' || command.operation == 'u') && !names_lines) {
            refuse(fmt::format("-{} needs -l or -r", command.operation), so_far);
        }
        if (command.operation == 0 && (names_lines || command.priority)) {
            refuse("-d alone takes only path words");
        }
    }

    std::string_view burst_;
    std::size_t at_ = 0;
    bool has_content_ = false;
    std::vector<Command> commands_;
};

} // namespace

std::variant<std::vector<Command>, SyntaxError> parse(std::string_view burst)
try {
    return Parser(burst).run();
} catch (const SyntaxError& error) {
    return error;
}

std::size_t secret_word_in(std::string_view text)
{
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    std::size_t first = text.npos;
    for (const std::string_view word : {"passw", "passphrase", "psk", "secret"}) {
        first = std::min(first, lower.find(word));
    }
    return first;
}

std::string without_secret(std::string_view line)
{
    const std::string_view key = line.substr(0, line.find(' '));
    const bool secret = key.size() + 1 < line.size() && secret_word_in(key) != key.npos;
    return secret ? fmt::format("{} {}", key, vor::mask) : std::string(line);
}

std::string text_of(const Command& command, bool show_secrets)
{
    const auto quote = [show_secrets](const std::string& text) {
        return vor::quoted(show_secrets ? text : without_secret(text), values::longest_in_line);
    };
    std::string text = command.show ? "-d" : "";
    if (command.operation != 0) {
        text += fmt::format("{}-{}", text.empty() ? "" : " ", command.operation);
    }
    if (command.line) {
        text += fmt::format(" -l {}", quote(*command.line));
    }
    if (command.pattern) {
        text += fmt::format(" -r {}", quote(*command.pattern));
    }
    if (command.priority) {
        text += fmt::format(" -p {}", *command.priority);
    }
    for (const std::string& word : command.path) {
        text += fmt::format(" {}", quote(word));
    }
    return text;
}

} // namespace vorsim::konfd
