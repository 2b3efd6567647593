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

constexpr bool is_blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

class Parser {
public:
    explicit Parser(std::string_view burst) : burst_(burst) {}

    std::variant<std::vector<Command>, Complaint> run()
    {
        Token token{};
        while (next(token) && take(token)) {}
        if (complaint_.text.empty() && !commands_.empty()) {
            finish();
        }
        if (!complaint_.text.empty()) {
            return complaint_;
        }
        return std::move(commands_);
    }

private:
    enum : bool { for_good, so_far }; // whether more text could still make it right

    bool fail(std::string text, bool incomplete = for_good)
    {
        complaint_ = {std::move(text), incomplete};
        return false;
    }
    bool fail_at(std::size_t at, std::string_view text, bool incomplete = for_good)
    {
        return fail(fmt::format("{} at byte {}", text, at + 1), incomplete);
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
            return fail_at(at_, "no closing quote to the one", so_far);
        }
        token.text = burst_.substr(begin, end - begin);
        at_ = token.quoted ? end + 1 : begin + token.text.size();
        if (token.text.size() > longest_word) {
            return fail_at(token.at, fmt::format("a text of more than {} bytes", longest_word));
        }
        const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
        return std::ranges::none_of(token.text, is_control) || fail_at(token.at, "a control character in the text");
    }

    bool take(const Token& token)
    {
        if (token.quoted) {
            return take_path_word(token);
        }
        if (token.text.size() != 2 || token.text[0] != '-' || options.find(token.text[1]) == options.npos) {
            const bool cut = token.text == "-" && at_ == burst_.size();
            return fail_at(token.at, "neither an option nor a quoted text", cut);
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
            return fail_at(at, "a second operation");
        }
        if (option == 'd') {
            command.show = true;
        } else {
            command.operation = option;
        }
        return true;
    }

    // The command that content goes to; null when no operation came before.
    Command* current(std::size_t at)
    {
        if (commands_.empty()) {
            fail_at(at, "no operation (-s, -c, -u, -d) before the text");
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
        if (token.text.empty()) {
            return fail_at(token.at, "an empty path word");
        }
        if (command->path.size() == deepest_path) {
            return fail_at(token.at, fmt::format("a path deeper than {} words", deepest_path));
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
            return complaint_.text.empty() && fail_at(at, fmt::format("nothing behind -{}", option), so_far);
        }
        if (option == 'p') {
            return take_priority(*command, value);
        }
        if (!value.quoted) {
            return fail_at(at, fmt::format("no quoted text behind -{}", option));
        }
        std::optional<std::string>& text = option == 'l' ? command->line : command->pattern;
        if (text) {
            return fail_at(at, fmt::format("a second -{}", option));
        }
        text = value.text;
        return true;
    }

    bool take_priority(Command& command, const Token& value)
    {
        const auto is_digit = [](unsigned char c) { return std::isdigit(c) != 0; };
        if (command.priority || value.text.empty() || value.text.size() > 5 ||
            !std::ranges::all_of(value.text, is_digit)) {
            return fail_at(value.at, "no priority from 0 to 99999, or a second one,");
        }
        command.priority = std::stoi(std::string(value.text));
        return true;
    }

    // The command is at its end: is it whole?
    bool finish()
    {
        const Command& command = commands_.back();
        const bool names_lines = command.line || command.pattern;
        switch (command.operation) {
        case 's':
            return (command.line && !command.line->empty()) || fail("-s without a line", !command.line);
        case 'c':
        case 'u':
            return names_lines || fail(fmt::format("-{} without a line or a pattern", command.operation), so_far);
        default:
            return !(names_lines || command.priority) || fail("-d alone takes path words only");
        }
    }

    std::string_view burst_;
    std::size_t at_ = 0;
    bool has_content_ = false;
    std::vector<Command> commands_;
    Complaint complaint_;
};

} // namespace

std::variant<std::vector<Command>, Complaint> parse(std::string_view burst)
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
    return secret ? fmt::format("{} {}", line.substr(0, end), vor::mask) : std::string(line);
}

std::string text_of(const Command& command, bool show_secrets)
{
    const auto quote = [show_secrets](const std::string& text) {
        return vor::quoted(show_secrets ? text : without_secret(text), longest_in_line);
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
