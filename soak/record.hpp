// record.hpp: one client's messages, from the gateway's journal.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "text/json.hpp"

namespace soak {

struct Record {
    bool konfd = false;
    bool awaited = false;  // an answer
    bool answered = false; // the answer went out
    bool delayed = false;  // ... but not at once
    std::uint16_t sap = 0;
    std::uint32_t id = 0;
    std::uint32_t answer_id = 0;
    std::string answer; // its bytes
    std::string text;   // the command to konfd
    std::string line;   // as the gateway printed it
};

using Records = std::vector<Record>;

// The journal of a gateway that runs, read as it grows.
class JournalTail {
public:
    JournalTail(const std::string& path, std::uint16_t sap, std::string konfd_tag);

    // The next of this client's records; none: it is not written yet.
    std::optional<Record> next();

private:
    std::ifstream file_;
    const std::string source_;
    const std::string tag_;
    std::string unfinished_;
};

} // namespace soak
