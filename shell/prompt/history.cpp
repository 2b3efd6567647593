#include "prompt/history.hpp"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/options.hpp"
#include "input/state.hpp"
#include "rows/families.hpp"
#include "rows/reading.hpp"
#include "text/file.hpp"

namespace vorcfg::prompt {

namespace {

constexpr std::string_view name = "history";

void append(const std::string& path, int flags, std::string_view text)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC | flags, S_IRUSR | S_IWUSR);
    if (file >= 0) {
        [[maybe_unused]] const ssize_t written =
            fchmod(file, S_IRUSR | S_IWUSR) == 0 ? write(file, text.data(), text.size()) : -1;
        close(file);
    }
}

} // namespace

// A line that is not valid may have a secret anywhere.
bool may_be_kept(std::string_view line)
{
    try {
        std::vector<input::Word> words = input::words_of(line);
        std::erase_if(words, [](const input::Word& word) { return !word.quoted && word.text.starts_with("--"); });
        if (words.empty()) {
            return false;
        }
        const rows::Row* const row = words.size() > 1 ? rows::row_named(words[0].text, words[1].text) : nullptr;
        return input::command_named(words[0].text) != nullptr ||
               (row != nullptr && !rows::may_hold_secret(*row, input::words_of(line)));
    } catch (const input::InputError&) {
        return false;
    }
}

LineHistory::LineHistory()
{
    const std::filesystem::path directory = input::state_directory();
    if (!directory.empty() && input::make_private(directory)) {
        path_ = directory / name;
    }
}

std::vector<std::string> LineHistory::read() const
{
    std::vector<std::string> lines;
    try {
        const std::string text = vor::content_of(path_);
        for (const std::string_view line : vor::lines_in(text)) {
            lines.emplace_back(line);
        }
    } catch (const vor::FileError&) {
        return {};
    }
    if (lines.size() > 2 * most) { // only now and then, not for every line
        lines.erase(lines.begin(), lines.end() - most);
        std::string text;
        for (const std::string& line : lines) {
            text += line + '\n';
        }
        const std::string made = fmt::format("{}.{}", path_, getpid());
        append(made, O_EXCL, text);
        std::rename(made.c_str(), path_.c_str());
    }
    return lines;
}

void LineHistory::add(const std::string& line) const
{
    if (!path_.empty()) {
        append(path_, O_APPEND, line + '\n');
    }
}

} // namespace vorcfg::prompt
