// report.hpp: what became of a call, for a reader and for a program.
#pragma once

#include <string>

#include "call/session.hpp"
#include "input/complaint.hpp"
#include "output/tally.hpp"

namespace vorcfg {

// Of what stands as JSON: raised when something is taken away or changes its meaning.
inline constexpr int schema = 2;

// The lines for a reader, each ended.
std::string text_of(const Planned& planned, const Report& report);
std::string text_of(const Complaint& complaint);
std::string text_of(const Tally& tally, const std::string& name, std::size_t left);

// One object on one line, ended.
std::string json_of(const Planned& planned, const Report& report);
std::string json_of(const Complaint& complaint);
std::string json_of(const Tally& tally, const std::string& name, std::size_t left);
std::string json_of(const Row& row);
std::string checked_json(const std::string& name, std::size_t calls);

} // namespace vorcfg
