// capture.hpp: what the library prints, kept apart from what the shell says.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorcfg {

// Takes what is written to a descriptor until `take` or the end of its scope.
class Capture {
public:
    explicit Capture(int wanted);
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    ~Capture();

    std::string take(); // ends the capture

    // Ends every capture, for good: of one who speaks while a call does not come back.
    static void end_all();

private:
    int descriptor_;
    int file_;
    int before_ = -1;
};

std::vector<std::string> lines_of(std::string_view text);

} // namespace vorcfg
