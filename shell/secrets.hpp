// secrets.hpp: passwords come from a file, standard input or a prompt; a
// literal is taken from batch files only, never from the command line.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace vorcfg {

struct Token {
    std::string text;
    bool quoted = false;
    std::size_t column = 0;
};

struct SecretSources {
    bool literals = false;           // a batch file is its operator's own
    bool standard_input = true;      // false: the batch itself comes from there
    std::filesystem::path directory; // what a file's name is relative to
};

// All that a just opened file holds; closes it. Throws a Complaint that says
// what for and of which name it could not be opened or read.
std::string content_of(std::FILE* file, const std::string& what_for, const std::string& name);

// The secret that a token stands for: @FILE, - for a line of standard input,
// ? for a prompt.
std::string secret(const Token& token, std::string_view name, const SecretSources& sources);

} // namespace vorcfg
