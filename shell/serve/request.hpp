// request.hpp: a line of JSON, made into what a command line would be.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/options.hpp"

namespace vor {
class Json;
}

namespace vorcfg::serve {

// The only command that no command line has: a journal is fetched, or put back.
inline constexpr std::string_view journal_command = "journal";

// All of these throw an InputError; none of them repeats a value that may be a secret.

vor::Json object_in(std::string_view line);
// As JSON.
std::string id_of(const vor::Json& request);

struct Request {
    bool is_call = false;              // else a command
    bool finds_journal = false;        // it is over the journal of the file that the words name
    std::optional<std::string> text{}; // of a journal that is put back
    input::Options options{};          // with the words of the call, or of the command
};

Request request_in(const vor::Json& request);

} // namespace vorcfg::serve
