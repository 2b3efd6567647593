// output.hpp: what became of a call, for a reader and for a program.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "call/runner.hpp"
#include "input/input_error.hpp"

namespace vorcfg {

// Of what stands as JSON: raised when something is taken away or changes its meaning.
inline constexpr int schema = 2;

// The lines for a reader, each ended.
std::string text_of(const PreparedCall& planned, const CallResult& report);
std::string text_of(const InputError& complaint);
std::string text_of(const Tally& tally, const std::string& name, std::size_t left);

// One object on one line, ended.
std::string json_of(const PreparedCall& planned, const CallResult& report);
std::string json_of(const InputError& complaint);
std::string json_of(const Tally& tally, const std::string& name, std::size_t left);
std::string json_of(const Row& row);
std::string checked_json(const std::string& name, std::size_t calls);

// Says a complaint on standard error; its exit code.
int complain(const InputError& complaint, bool json);
// The same of each.
std::function<int(const InputError&)> complaining(bool json);

// A run told on standard output.
class Account final : public Reporter {
public:
    // `summary` tells what it came to and how many calls are left.
    using Summary = std::function<std::string(const Tally& tally, std::size_t left)>;

    Account(const Options& options, std::size_t calls, Summary summary)
        : calls_(calls), json_(options.json), summary_(std::move(summary))
    {
    }

    bool tell(const PreparedCall& planned, const CallResult& report, std::size_t left) override;
    int finish(const Tally& tally, std::size_t left, bool interrupted) override;

private:
    std::string progress(std::size_t left) const;

    const std::size_t calls_;
    const bool json_;
    const Summary summary_;
    const std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
    int error_ = 0; // of standard output, an errno
};

} // namespace vorcfg
