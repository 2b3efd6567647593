#include "session.hpp"

#include <cstdio>
#include <unistd.h>

#include "capture.hpp"

namespace vorcfg {

// Where no manager is: tried in turn, so that several shells run side by side.
static constexpr std::uint16_t first_sap = 0x1000;
static constexpr std::uint16_t last_sap = 0x103f;

Session::Session(Watch::Settings wanted, std::optional<std::uint16_t> own) : settings(wanted), sap(own) {}

Session::~Session()
{
    if (bound) {
        vor_cfg_remove_ipc_endpoint();
    }
}

bool Session::bind_to(std::uint16_t candidate, std::string& complaints)
{
    Capture printed(STDOUT_FILENO);
    Capture complained(STDERR_FILENO);
    bound = vor_cfg_create_ipc_endpoint(candidate) == 0;
    if (!bound && complaints.empty()) {
        complaints = complained.take() + printed.take();
    }
    return bound;
}

bool Session::bind(std::string& complaints)
{
    if (bound) {
        return true;
    }
    if (sap) {
        return bind_to(*sap, complaints);
    }
    for (std::uint16_t candidate = first_sap; candidate <= last_sap; candidate++) {
        if (bind_to(candidate, complaints)) {
            return true;
        }
    }
    return false;
}

Report Session::run(Planned& planned)
{
    const Row& row = *planned.row;
    Watch watch(settings, planned.values);
    std::string complaints;
    if (row.channel == Channel::manager && !bind(complaints)) {
        const std::string where = sap ? "SAP " + std::to_string(*sap) : "any SAP";
        return {{Outcome::no_endpoint, "nothing was sent: no endpoint at " + where}, {}, 0, {}, lines_of(complaints)};
    }
    Report report;
    vor_errno = 0;
    {
        Capture printed(STDOUT_FILENO);
        report.back = row.call(planned.values, planned.arguments);
        report.library = lines_of(printed.take());
    }
    for (std::string& line : report.library) {
        line = printable(without_passwords(line));
    }
    report.manager_errno = vor_errno;
    report.seen = std::move(watch.seen);
    report.verdict = settings.capture && !report.seen.messages.empty()
                         ? Verdict{Outcome::dry_run, "dry run, nothing sent"}
                         : judged(row, report.back, report.manager_errno, report.seen);
    return report;
}

} // namespace vorcfg
