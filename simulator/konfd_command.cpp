#include "konfd_command.hpp"

#include <algorithm>
#include <cctype>

#include "text.hpp"

namespace vorsim::konfd {
namespace {

constexpr std::size_t deepest_path = 16;
constexpr std::size_t longest_word = 1024; // matching a pattern takes the square of a line's length
constexpr std::string_view operations = "scud";
constexpr std::string_view options = "scudlrp";

struct Token {
    std::string_view text;
    std::size_t at;
    bool quoted;
};

constexpr bool is_blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

std::string where(std::size_t at)
{
    return " at byte " + std::to_string(at + 1);
}

class Parser {
public:
    explicit Parser(std::string_view burst) : burst_(burst) {}

    std::variant<std::vector<Command>, Mistake> run()
    {
        Token token{};
        while (next(token) && take(token)) {}
        if (mistake_.what.empty() && !commands_.empty()) {
            finish();
        }
        if (!mistake_.what.empty()) {
            return mistake_;
        }
        return std::move(commands_);
    }

private:
    bool fail(std::string what, bool incomplete = false)
    {
        mistake_ = {std::move(what), incomplete};
        return false;
    }

    bool next(Token& token)
    {
        while (at_ < burst_.size() && is_blank(burst_[at_])) {
            ++at_;
        }
        if (at_ == burst_.size()) {
            return false;
        }
        token.at = at_;
        token.quoted = burst_[at_] == '"';
        const std::size_t begin = token.quoted ? at_ + 1 : at_;
        const std::size_t end = token.quoted ? burst_.find('"', begin) : burst_.find_first_of("\" \t\r", begin);
        if (token.quoted && end == burst_.npos) {
            return fail("no closing quote to the one" + where(at_), true);
        }
        token.text = burst_.substr(begin, end - begin);
        at_ = token.quoted ? end + 1 : begin + token.text.size();
        if (token.text.size() > longest_word) {
            return fail("a text of more than " + std::to_string(longest_word) + " bytes" + where(token.at));
        }
        const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
        return std::ranges::none_of(token.text, is_control) ||
               fail("a control character in the text" + where(token.at));
    }

    bool take(const Token& token)
    {
        if (token.quoted) {
            return take_path_word(token);
        }
        if (token.text.size() != 2 || token.text[0] != '-' || options.find(token.text[1]) == options.npos) {
            const bool cut = token.text == "-" && at_ == burst_.size();
            return fail("neither an option nor a quoted text" + where(token.at), cut);
        }
        const char option = token.text[1];
        return operations.find(option) != operations.npos ? take_operation(option, token.at)
                                                          : take_option(option, token.at);
    }

    bool take_operation(char option, std::size_t at)
    {
        if (commands_.empty() || has_content_) {
            if (!commands_.empty() && !finish()) {
                return false;
            }
            commands_.emplace_back();
            has_content_ = false;
        }
        Command& command = commands_.back();
        if (option == 'd' ? command.show : command.operation != 0) {
            return fail("a second operation" + where(at));
        }
        if (option == 'd') {
            command.show = true;
        } else {
            command.operation = option;
        }
        return true;
    }

    /* The command that content goes to; null when no operation came before. */
    Command* current(std::size_t at)
    {
        if (commands_.empty()) {
            fail("no operation (-s, -c, -u, -d) before the text" + where(at));
            return nullptr;
        }
        has_content_ = true;
        return &commands_.back();
    }

    bool take_path_word(const Token& token)
    {
        Command* const command = current(token.at);
        if (command == nullptr) {
            return false;
        }
        if (token.text.empty() || command->path.size() == deepest_path) {
            return fail((token.text.empty() ? "an empty path word" : "a path deeper than 16 words") + where(token.at));
        }
        command->path.emplace_back(token.text);
        return true;
    }

    bool take_option(char option, std::size_t at)
    {
        Command* const command = current(at);
        Token value{};
        if (command == nullptr) {
            return false;
        }
        if (!next(value)) {
            return mistake_.what.empty() ? fail(std::string("nothing behind -") + option + where(at), true) : false;
        }
        if (option == 'p') {
            return take_priority(*command, value);
        }
        if (!value.quoted) {
            return fail(std::string("no quoted text behind -") + option + where(at));
        }
        std::optional<std::string>& text = option == 'l' ? command->line : command->pattern;
        if (text) {
            return fail(std::string("a second -") + option + where(at));
        }
        text = value.text;
        return true;
    }

    bool take_priority(Command& command, const Token& value)
    {
        const auto is_digit = [](unsigned char c) { return std::isdigit(c) != 0; };
        if (command.priority || value.text.empty() || value.text.size() > 5 ||
            !std::ranges::all_of(value.text, is_digit)) {
            return fail("no priority from 0 to 99999, or a second one," + where(value.at));
        }
        command.priority = std::stoi(std::string(value.text));
        return true;
    }

    /* The command is at its end: is it whole? */
    bool finish()
    {
        const Command& command = commands_.back();
        const bool names_lines = command.line || command.pattern;
        switch (command.operation) {
        case 's':
            return (command.line && !command.line->empty()) || fail("-s without a line", !command.line);
        case 'c':
        case 'u':
            return names_lines || fail(std::string("-") + command.operation + " without a line or a pattern", true);
        default:
            return !(names_lines || command.priority) || fail("-d alone takes path words only");
        }
    }

    std::string_view burst_;
    std::size_t at_ = 0;
    bool has_content_ = false;
    std::vector<Command> commands_;
    Mistake mistake_;
};

} // namespace

std::variant<std::vector<Command>, Mistake> parse(std::string_view burst)
{
    return Parser(burst).run();
}

std::string without_secret(std::string_view line)
{
    const std::size_t end = line.find(' ');
    std::string key(line.substr(0, end));
    std::ranges::transform(key, key.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto names = [&key](std::string_view word) { return key.find(word) != std::string::npos; };
    const bool secret =
        end != line.npos && end + 1 < line.size() &&
        std::ranges::any_of(std::initializer_list<std::string_view>{"passw", "passphrase", "psk", "secret"}, names);
    return secret ? std::string(line.substr(0, end + 1)) + std::string(masked) : std::string(line);
}

std::string text_of(const Command& command, bool show_secrets)
{
    const auto quote = [show_secrets](const std::string& text) {
        return " " + quoted(show_secrets ? text : without_secret(text));
    };
    std::string text = command.show ? "-d" : "";
    if (command.operation != 0) {
        text += std::string(text.empty() ? "-" : " -") + command.operation;
    }
    if (command.line) {
        text += " -l" + quote(*command.line);
    }
    if (command.pattern) {
        text += " -r" + quote(*command.pattern);
    }
    if (command.priority) {
        text += " -p " + std::to_string(*command.priority);
    }
    for (const std::string& word : command.path) {
        text += quote(word);
    }
    return text;
}

} // namespace vorsim::konfd
