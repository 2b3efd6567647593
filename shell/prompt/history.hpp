// history.hpp: the lines typed before, in a file that only its owner can read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorcfg::prompt {

// Whether a line may be kept: it is valid and can hold no secret.
bool may_be_kept(std::string_view line);

// vorcfg/history in XDG_STATE_HOME, or in ~/.local/state. Where the file cannot be used, nothing is kept.
class LineHistory {
public:
    static constexpr std::size_t most = 1000; // lines remembered

    LineHistory();
    std::vector<std::string> read() const; // oldest first
    // After what other sessions added.
    void add(const std::string& line) const;

private:
    std::string path_; // empty: none
};

} // namespace vorcfg::prompt
