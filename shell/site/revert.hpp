// revert.hpp: a confirmed apply, reverted.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "input/options.hpp"
#include "output/output.hpp"
#include "site/journal.hpp"

namespace vor {
class Json;
}

namespace vorcfg::site {

enum class Reverting { done, later, interrupted };

// Makes again what each call replaced, the last first, as far as that has not been done. `later` where something is
// left that another attempt may revert. `each` is called after each attempt; a test has its own caller.
Reverting revert(Journal& journal, const input::Options& options, call::Signals ends,
                 const std::function<void(const Undo&)>& each = {}, call::Caller* caller = nullptr);

// Throws an InputError where the disk had no room for what was reverted.
void require_recorded(Journal& journal);

// What became of the last confirmed apply, as plan, apply, report, confirm and revert say it.
struct ConfirmedApply {
    std::string journal;
    std::string gateway;
    Confirmation confirmation{};
    std::string until;
    std::chrono::milliseconds left{};
    bool has_waiter = false; // a process that will revert it
    bool restarted = false;  // the machine, since then
    std::vector<Undo> undos;

    int exit() const; // of what ends with it
};

// None where the last apply needed no confirmation, or something else has been applied since.
std::optional<ConfirmedApply> confirmed_apply_of(const Journal& journal);

std::string time_text(std::chrono::milliseconds time); // "2 min 5 s"
std::string text_of(const ConfirmedApply& apply);      // "not confirmed yet, the last apply will be reverted at ..."
std::string hint_for(const ConfirmedApply& apply);
vor::Json json_of(const ConfirmedApply& apply);
// As an error that ends a command, and as one line beside other output.
input::InputError error_of(const ConfirmedApply& apply);
void print(const ConfirmedApply& apply, bool json, std::FILE* to);
// Its calls, each reverted or not.
void print_lines(const ConfirmedApply& apply, bool json);
void print_line(const Undo& undo, bool json);

} // namespace vorcfg::site
