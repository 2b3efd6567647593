// check.hpp: a whole batch checked, before anything of it is made.
#pragma once

#include <functional>

#include "call/batch.hpp"
#include "input/options.hpp"

namespace vorcfg {

// The batch that the options are about.
Batch batch_of(const std::string& path, const Options& options);

// Of the calls that may cut the link one works over: asked once, and only where someone sits who can answer.
void ask_before(const std::vector<std::string>& cutting, const Options& options);
std::string named(const Planned& planned); // "ip set-dhcp (line 7)"

void check_confirmed(const Planned& planned, const Options& options);

// Says every complaint; the exit code of the last. What is in order goes to `each`.
int check(Batch& batch, const Options& options, const std::function<void(const Planned&)>& each);

// `vorcfg check FILE`
int run_check(const std::string& path, const Options& options);

} // namespace vorcfg
