// session.hpp: calls made, one after the other, over one endpoint.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "observe.hpp"
#include "outcome.hpp"
#include "plan.hpp"

namespace vorcfg {

struct Report {
    Verdict verdict;
    Returned back;
    std::int32_t manager_errno = 0;
    Observation seen;
    std::vector<std::string> library; // the lines the library printed
};

// The endpoint is bound at the first call that needs it.
class Session {
public:
    Session(Watch::Settings wanted, std::optional<std::uint16_t> own);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    Report run(Planned& planned);

private:
    bool bind(std::string& complaints);
    bool bind_to(std::uint16_t candidate, std::string& complaints);

    Watch::Settings settings;
    std::optional<std::uint16_t> sap;
    bool bound = false;
};

} // namespace vorcfg
