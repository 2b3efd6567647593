// json_lines.hpp: a file of JSON lines, read from the beginning and appended to.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "text/file.hpp"

namespace vor {

// Of a line that is read.
inline constexpr std::size_t longest_json_line = std::size_t{16} << 20;

class JsonLines {
public:
    JsonLines() = default;
    // With the flags of open(2); only a regular file, a new one for its owner alone. Throws a FileError.
    JsonLines(const std::string& path, int flags);
    // To read from what is open already, such as a pipe.
    explicit JsonLines(std::FILE* file) : file_(file, std::fclose) {}

    bool is_open() const { return file_ != nullptr; }
    int descriptor() const { return fileno(file_.get()); }
    bool empty() const;
    void close() { file_.reset(); }

    // The next line of what the file held when the first was read, without its end. Throws a FileError.
    std::optional<std::string> next();
    std::uint64_t number() const { return number_; } // of the line read last
    bool torn() const { return torn_; }              // it has no end: its writer was stopped
    bool at_end() const { return left_ == 0; }       // it is the last
    void take_away();                                // and everything after it

    // Appends the whole line, on disk when this returns if so requested; or nothing of it, with a FileError.
    void append(std::string_view line, bool on_disk = false);

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, nullptr};
    std::uint64_t number_ = 0;
    std::uintmax_t begin_ = 0; // of the line read last
    std::uintmax_t end_ = 0;
    std::optional<std::uintmax_t> left_; // to be read
    bool torn_ = false;
};

} // namespace vor
