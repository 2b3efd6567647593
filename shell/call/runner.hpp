// making.hpp: calls made one after the other and told as they are, to the end,
// the first failure, or what ends them from outside.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "call/session.hpp"
#include "call/watchdog.hpp"
#include "input/options.hpp"
#include "output/tally.hpp"

namespace vorcfg {

// Where a call started something that ends with this process: until it is due.
void wait_for(const Row& row, const Report& report, const std::function<void(unsigned milliseconds)>& rest);

class Making {
public:
    struct Hooks {
        std::function<void(const Planned&)> before{};
        std::function<void(const Planned&, const Report&)> after{};
        std::function<void()> given_up{}; // the process ends in the middle of a call
        bool hang_up_ends = true;
    };
    // `summary` tells what it came to and how many calls are left.
    using Summary = std::function<std::string(const Tally& tally, std::size_t left)>;

    Making(const Options& options, std::size_t calls, Summary summary, Hooks hooks);

    // Whether to go on.
    bool make(Planned& planned);
    // The summary; the exit code.
    int finish();

    const Tally& tally() const { return tally_; }
    bool ended() const { return keeper_.ended(); } // from outside

private:
    void tell(const Planned& planned, const Report& report);
    int give_up(const char* why);

    const Options& options_;
    const Summary summary_;
    const Hooks hooks_;
    const std::size_t calls_;
    const std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
    std::size_t left_;
    Tally tally_;
    const Planned* under_way_ = nullptr;
    int output_error_ = 0; // of standard output, an errno
    Session session_;
    Keeper keeper_;
};

} // namespace vorcfg
