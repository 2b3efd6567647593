#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <fmt/core.h>

#include "help/help.hpp"
#include "input/input_error.hpp"
#include "input/options.hpp"
#include "input/secret.hpp"
#include "input/spreadsheet.hpp"
#include "rows/contract.hpp"
#include "rows/families.hpp"
#include "text/text.hpp"

#include "script_texts.hpp" // of the files in scripts/, by the build

namespace vorcfg::help {

namespace {

bool is_one_line(const std::string& text)
{
    return vor::printable(text) == text && text.find('\n') == std::string::npos;
}

// The files whose names begin as typed, sorted; a directory has a slash after it, and names with a leading dot are
// offered only where the dot is typed. With `home`, ~/ is the home directory, as the shell will expand it.
std::vector<std::string> paths_that_begin(std::string_view typed, bool home)
{
    namespace fs = std::filesystem;
    const std::size_t slash = typed.rfind('/');
    const std::string directory(typed.substr(0, slash == std::string_view::npos ? 0 : slash + 1));
    const std::string_view begin = typed.substr(directory.size());
    fs::path place = directory.empty() ? "." : directory;
    if (const char* const at_home = std::getenv("HOME"); home && directory.starts_with("~/") && at_home != nullptr) {
        place = fs::path(at_home) / directory.substr(2);
    }
    std::vector<std::string> paths;
    std::error_code ignored;
    for (fs::directory_iterator each(place, ignored), end; each != end; each.increment(ignored)) {
        const std::string name = each->path().filename().string();
        const bool shown = name.starts_with(begin) && (begin.starts_with('.') || !name.starts_with('.'));
        if (shown && is_one_line(name)) {
            paths.push_back(directory + name + (each->is_directory(ignored) ? "/" : ""));
        }
    }
    std::ranges::sort(paths);
    return paths;
}

class Completion {
public:
    explicit Completion(std::span<const input::Word> words)
    {
        if (!words.empty()) {
            current_ = words.back().text;
            take(words.first(words.size() - 1));
        }
    }

    std::vector<Candidate> found()
    {
        if (pending_ != nullptr) {
            offer_value_of(*pending_, "", current_);
        } else if (!over_ && current_.starts_with("--")) {
            offer_options();
        } else {
            offer_word();
        }
        return std::move(found_);
    }

private:
    // The words before the current one; an option is pending if the current word is its value.
    void take(std::span<const input::Word> words)
    {
        for (const input::Word& word : words) {
            if (pending_ != nullptr) {
                note_value(pending_->name, word.text);
                pending_ = nullptr;
            } else if (!over_ && word.text == "--") {
                over_ = true;
            } else if (const input::OptionRow* const row = over_ ? nullptr : option_named(word.text)) {
                pending_ = row->value.empty() ? nullptr : row;
            } else if (over_ || !word.text.starts_with("--") || call() != nullptr) {
                before_.push_back(word.text);
            } else if (const std::size_t equals = word.text.find('='); equals != std::string::npos) {
                note_value(word.text.substr(0, equals), word.text.substr(equals + 1));
            }
        }
    }

    void note_value(std::string_view option, const std::string& value)
    {
        sheet_ = option == "--vars" && input::Spreadsheet::is_named(value) ? value : sheet_;
    }

    static const input::OptionRow* option_named(std::string_view name)
    {
        const auto found = std::ranges::find(input::option_rows(), name, &input::OptionRow::name);
        return found != input::option_rows().end() ? &*found : nullptr;
    }

    const rows::Row* call() const { return before_.size() >= 2 ? rows::row_named(before_[0], before_[1]) : nullptr; }

    void offer(std::string word, std::string_view hint = {})
    {
        if (!word.empty() && word.starts_with(current_)) {
            found_.push_back({std::move(word), std::string(hint)});
        }
    }

    void offer_files(std::string_view before, std::string_view typed, bool home)
    {
        for (const std::string& path : paths_that_begin(typed, home)) {
            offer(fmt::format("{}{}", before, path));
        }
    }

    // The value of an option or the operand of a command, by its name in the usage.
    void offer_named(std::string_view name, std::string_view before, std::string_view typed)
    {
        const auto offer_all = [&](const auto& words) {
            for (const std::string_view word : words) {
                offer(fmt::format("{}{}", before, word));
            }
        };
        if (name == "FILE" || name == "JOURNAL" || name == "FOLDER") {
            offer_files(before, typed, before.empty());
        } else if (name == "COLUMN=VALUE") {
            offer_rows(before, typed);
        } else if (name == "FAMILY") {
            offer_families(before);
        } else if (name == "CALL" && before_.size() >= 2) {
            offer_calls(before_[1]);
        } else if (name == "COMMAND") {
            offer_commands();
        } else if (name == "PAGE") {
            offer_all(manual_pages());
        } else if (name == "SHELL") {
            offer_all(completed_shells());
        } else if (name == "WHEN") {
            offer_all(vor::color_words);
        } else if (name == "NAME") {
            for (const std::string& path : paths_that_begin(typed, false)) {
                if (const std::size_t name_end = path.rfind(".journal"); name_end != std::string::npos) {
                    offer(fmt::format("{}{}", before, path.substr(0, name_end)));
                }
            }
        } else {
            found_.push_back({"", std::string(name)});
        }
    }

    // The columns of the spreadsheet, then the cells of one.
    void offer_rows(std::string_view before, std::string_view typed)
    try {
        const std::string_view column = typed.substr(0, vor::named_length(typed));
        const input::Spreadsheet sheet(sheet_);
        for (std::size_t i = 0; i < sheet.columns().size(); i++) {
            const std::string& name = sheet.columns()[i].text;
            if (column.empty() && input::Spreadsheet::is_variable(sheet.columns()[i])) {
                offer(fmt::format("{}{}=", before, name));
            }
            for (const input::Spreadsheet::Row& row : sheet.rows()) {
                if (name == column && i < row.cells.size() && is_one_line(row.cells[i].text)) {
                    offer(fmt::format("{}{}={}", before, name, row.cells[i].text));
                }
            }
        }
    } catch (const input::InputError&) { // NOLINT(bugprone-empty-catch): said once the line is run
    }

    void offer_value_of(const input::OptionRow& row, std::string_view before, std::string_view typed)
    {
        const std::size_t already = found_.size();
        offer_named(row.value, before, typed);
        if (found_.size() != already && found_.back().word.empty()) {
            found_.back().hint = fmt::format("{}: {}", row.value, row.about);
        }
    }

    // As in "FOLDER|JOURNAL".
    void offer_any_named(std::string_view names)
    {
        while (!names.empty()) {
            const std::size_t end = std::min(names.find('|'), names.size());
            offer_named(names.substr(0, end), "", current_);
            names.remove_prefix(std::min(end + 1, names.size()));
        }
    }

    // Those that the line takes: any, before its first word.
    void offer_options()
    {
        const std::size_t equals = current_.find('=');
        if (equals != std::string::npos) {
            if (const input::OptionRow* const row = option_named(current_.substr(0, equals))) {
                offer_value_of(*row, current_.substr(0, equals + 1), current_.substr(equals + 1));
            }
            return;
        }
        if (const rows::Row* const row = call(); row != nullptr && row->read != nullptr) {
            offer_own_options(*row);
        }
        const input::Command* const command = before_.empty() ? nullptr : input::command_named(before_[0]);
        for (const input::OptionRow& row : input::option_rows()) {
            if (before_.empty() || input::takes_option(row, command != nullptr ? command->name : input::a_call)) {
                offer(std::string(row.name), row.about);
            }
        }
    }

    // Those in the usage of a call that reads its own words.
    void offer_own_options(const rows::Row& row)
    {
        static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz-";
        for (std::size_t at = row.usage.find("--"); at != std::string_view::npos;) {
            const std::size_t end = std::min(row.usage.find_first_not_of(letters, at), row.usage.size());
            offer(std::string(row.usage.substr(at, end - at)));
            at = row.usage.find("--", end);
        }
    }

    void offer_families(std::string_view before = {})
    {
        for (const rows::Family* const family : rows::families()) {
            offer(fmt::format("{}{}", before, family->name), rows::about(*family));
        }
    }

    void offer_commands()
    {
        for (const input::Command& command : input::commands()) {
            offer(std::string(command.name), command.about);
        }
    }

    void offer_calls(std::string_view family)
    {
        if (const rows::Family* const known = rows::family_named(family)) {
            for (const rows::Row& row : known->rows) {
                offer(std::string(row.name), rows::summary_of(row));
            }
        }
    }

    void offer_word()
    {
        if (before_.empty()) {
            offer_families();
            offer_commands();
        } else if (const input::Command* const command = input::command_named(before_[0])) {
            offer_word_of(*command);
        } else if (const rows::Row* const row = call()) {
            offer_argument(*row);
        } else if (before_.size() == 1) {
            offer_calls(before_[0]);
        }
    }

    // The operand in the current position, as in "help [FAMILY [CALL]|COMMAND]"; the last one may be repeated.
    void offer_word_of(const input::Command& command)
    {
        std::string usage(command.usage);
        std::erase_if(usage, [](char c) { return c == '[' || c == ']'; });
        const bool repeats = usage.ends_with("...");
        usage.resize(usage.size() - (repeats ? 3 : 0));
        const std::vector<input::Word> names = input::words_of(usage);
        if (before_.size() < names.size() || repeats) {
            offer_any_named(names[std::min(before_.size(), names.size() - 1)].text);
        }
    }

    static const rows::Argument* argument_named(const rows::Row& row, std::string_view word)
    {
        const std::size_t equals = word.find('=');
        const auto found = std::ranges::find_if(row.arguments(), [&](const rows::Argument& each) {
            return equals != std::string_view::npos && each.is_given() && each.name == word.substr(0, equals);
        });
        return found != row.arguments().end() ? &*found : nullptr;
    }

    void offer_argument(const rows::Row& row)
    {
        if (row.read != nullptr) {
            offer_own_options(row);
            return;
        }
        if (const rows::Argument* const named = argument_named(row, current_)) {
            offer_value_of(*named, current_.substr(0, named->name.size() + 1));
            return;
        }
        std::vector<const rows::Argument*> left;
        for (const rows::Argument& argument : row.arguments()) {
            if (argument.is_given()) {
                left.push_back(&argument);
            }
        }
        for (std::size_t i = 2; i < before_.size() && !left.empty(); i++) {
            const rows::Argument* const named = argument_named(row, before_[i]);
            const auto given = named != nullptr ? std::ranges::find(left, named) : left.begin();
            if (given != left.end() && !(*given)->is_list) {
                left.erase(given);
            }
        }
        if (left.empty()) {
            return;
        }
        offer_value_of(*left.front(), "");
        for (const rows::Argument* const argument : left) {
            if (!argument->is_list) {
                offer(fmt::format("{}=", argument->name), rows::kind_text(*argument));
            }
        }
        found_.push_back({"", fmt::format("{}: {}", left.front()->name, rows::kind_text(*left.front()))});
    }

    void offer_value_of(const rows::Argument& argument, std::string_view name)
    {
        for (const rows::Choice& choice : argument.choices) {
            offer(fmt::format("{}{}", name, choice.name),
                  argument.is_number() ? std::to_string(choice.number) : std::string());
        }
        const std::string_view typed = std::string_view{current_}.substr(name.size());
        if (argument.is_secret && typed.starts_with('@')) {
            offer_secret_sources(fmt::format("{}@", name), typed.substr(1));
        } else if (argument.is_secret) {
            offer(fmt::format("{}@", name), "a file");
            offer(fmt::format("{}-", name), "a line of standard input");
            offer(fmt::format("{}?", name), "a prompt");
        }
    }

    void offer_secret_sources(const std::string& before, std::string_view typed)
    {
        offer_files(before, typed, false);
        offer(fmt::format("{}{}", before, input::descriptor_scheme), "a file descriptor");
        std::error_code ignored;
        for (const auto& each : std::filesystem::directory_iterator(input::credentials_directory(), ignored)) {
            offer(fmt::format("{}{}{}", before, input::credential_scheme, each.path().filename().string()),
                  "a credential of this service");
        }
    }

    std::string current_;
    std::vector<std::string> before_;
    std::string sheet_; // of --vars
    const input::OptionRow* pending_ = nullptr;
    bool over_ = false; // after a --
    std::vector<Candidate> found_;
};

} // namespace

std::vector<Candidate> candidates(std::span<const input::Word> words)
{
    return Completion(words).found();
}

bool is_whole(std::string_view word)
{
    return !word.ends_with('/') && !word.ends_with('=') && !word.ends_with('@') && !word.ends_with(':');
}

std::string completions(std::span<const input::Word> words)
{
    std::string text;
    for (const Candidate& candidate : candidates(words)) {
        text += fmt::format("{}\t{}\n", candidate.word, candidate.hint);
    }
    return text;
}

std::vector<std::string_view> completed_shells()
{
    std::vector<std::string_view> shells;
    for (const vor::BuiltIn& script : script_texts) {
        shells.push_back(script.stem);
    }
    return shells;
}

std::string_view completion_script(std::string_view shell)
{
    const auto found = std::ranges::find(script_texts, shell, &vor::BuiltIn::stem);
    if (found == std::end(script_texts)) {
        throw input::InputError{
            fmt::format("no completion for \"{}\"; expected {}", shell, vor::alternatives(completed_shells()))};
    }
    return found->text;
}

} // namespace vorcfg::help
