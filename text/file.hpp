// file.hpp: files that users name. Whatever is behind a name, reading ends: a device, an endless line, a pipe that
// nobody writes to.
#pragma once

#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vor {

// The errno in words, with the limit that was reached where the process has one.
std::string reason_of(int error);

struct FileError : std::runtime_error {
    explicit FileError(int why) : std::runtime_error(reason_of(why)), error(why) {}
    explicit FileError(const std::string& why) : std::runtime_error(why) {}

    int error = 0; // an errno; 0: the file was opened, but is not what was expected
};

struct Bounds {
    std::size_t file = std::size_t{64} << 20;
    std::size_t line = std::size_t{64} << 10;
};

// Opens a file to read from the beginning. Throws a FileError.
std::FILE* open_to_read(const std::string& path);

// What is left of the file, which is closed. Throws a FileError.
std::string content_of(std::FILE* file, const Bounds& bounds = {});
std::string content_of(const std::string& path, const Bounds& bounds = {});

// All of the bytes; false, with errno, if some are missing.
bool write_all(int descriptor, std::string_view bytes);

// Writes a regular file as a whole: if that fails, what was there before stays. It replaces a symbolic link to one,
// too, which may be somebody else's. Another file, such as a device, is written to. Throws a FileError.
void replace_file(const std::string& path, std::string_view text, unsigned mode);

// Ignores SIGXFSZ, so that writing beyond the limit fails with EFBIG; what the process starts needs the default action.
void ignore_size_signal();

} // namespace vor
