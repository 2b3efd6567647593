// history.hpp: the lines typed before, in a file for their owner alone.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

// Whether a line may be kept: it is understood, and no secret can be in it.
bool may_be_kept(std::string_view line);

// vorcfg/history in XDG_STATE_HOME, or in ~/.local/state. A file that cannot be had is no fault: nothing is kept.
class LineHistory {
public:
    static constexpr std::size_t most = 1000; // lines remembered

    LineHistory();
    std::vector<std::string> read() const; // oldest first
    // Behind what other sessions added.
    void add(const std::string& line) const;

private:
    std::string path_; // empty: none
};

} // namespace vorcfg
