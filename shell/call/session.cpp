#include "call/session.hpp"

#include <algorithm>
#include <unistd.h>

#include <device_mgmt/common.h>
#include <fmt/core.h>

#include "call/capture.hpp"
#include "text/text.hpp"

namespace vorcfg {

namespace {

// Where no manager is: tried in turn, so that several shells run side by side.
constexpr std::uint16_t first_sap = 0x1000;
constexpr std::uint16_t last_sap = 0x103f;

// The endpoint that captured calls find; the one in use before comes back.
class CapturedEndpoint {
public:
    explicit CapturedEndpoint(bool wanted) : wanted_(wanted), before_(vor_cfg_get_ipc_endpoint())
    {
        if (wanted_) {
            vor_cfg_set_ipc_endpoint(captured_endpoint());
        }
    }
    CapturedEndpoint(const CapturedEndpoint&) = delete;
    CapturedEndpoint& operator=(const CapturedEndpoint&) = delete;
    ~CapturedEndpoint()
    {
        if (wanted_) {
            vor_cfg_set_ipc_endpoint(before_);
        }
    }

private:
    const bool wanted_;
    VOR_IPC_HANDLE* const before_;
};

} // namespace

Session::~Session()
{
    if (bound_) {
        vor_cfg_remove_ipc_endpoint();
    }
}

bool Session::bind_to(std::uint16_t sap, std::string& complaints)
{
    Capture printed(STDOUT_FILENO);
    Capture complained(STDERR_FILENO);
    bound_ = vor_cfg_create_ipc_endpoint(sap) == 0;
    if (!bound_ && complaints.empty()) {
        complaints = complained.take() + printed.take();
    }
    return bound_;
}

bool Session::bind(std::string& complaints)
{
    if (bound_ || settings_.capture) {
        return true;
    }
    if (sap_) {
        return bind_to(*sap_, complaints);
    }
    for (std::uint16_t sap = first_sap; sap <= last_sap; sap++) {
        if (bind_to(sap, complaints)) {
            return true;
        }
    }
    return false;
}

Report Session::make(Planned& planned)
{
    const Row& row = *planned.row;
    std::string complaints;
    if (row.channel == Channel::manager && !bind(complaints)) {
        const std::string where = sap_ ? fmt::format("SAP {}", *sap_) : "any SAP";
        return {{Outcome::no_endpoint, fmt::format("nothing was sent: no endpoint at {}", where)},
                {},
                0,
                {},
                lines_of(complaints)};
    }
    Report report;
    const CapturedEndpoint endpoint(settings_.capture);
    Watch watch(settings_, row, planned.values);
    vor_errno = 0;
    {
        Capture printed(STDOUT_FILENO);
        std::optional<Capture> complained; // a platform's own words about what only was tried
        if (settings_.capture && !settings_.trace) {
            complained.emplace(STDERR_FILENO);
        }
        report.back = row.make(row, planned.values);
        report.library = lines_of(printed.take());
    }
    if (vor_cfg_get_sock_endpoint() != nullptr) { // a call that fails leaves its connection open
        vor_cfg_remove_sock_endpoint();
    }
    for (std::string& line : report.library) {
        line = vor::printable(without_secrets(line, planned.values));
    }
    report.manager_errno = vor_errno;
    report.seen = std::move(watch.seen);
    const bool captured = settings_.capture && (!report.seen.messages.empty() || report.seen.trace_switched);
    report.verdict = captured ? Verdict{Outcome::dry_run, "dry run, nothing sent"}
                              : judged(row, report.back, report.manager_errno, report.seen);
    return report;
}

namespace {

// What of a message that is too long is to be cut: the list, or the longest text.
std::size_t most_of(const Planned& planned, Unfit unfit)
{
    const auto arguments = planned.row->arguments();
    std::size_t longest = 0;
    for (std::size_t i = 0; i < planned.values.size(); i++) {
        longest = planned.values[i].text.size() > planned.values[longest].text.size() ? i : longest;
    }
    return unfit == Unfit::elements ? arguments.size() - 1 : longest;
}

} // namespace

void rehearse(Planned& planned)
{
    if (planned.row->channel == Channel::none) {
        return;
    }
    const Report report = Session({.capture = true}, std::nullopt).make(planned);
    Complaint complaint;
    complaint.call = planned.row->full_name();
    for (const Message& message : report.seen.messages) {
        if (message.unfit != Unfit::no) {
            const auto arguments = planned.row->arguments();
            const std::size_t value = most_of(planned, message.unfit);
            complaint.text = fmt::format("does not fit: {}", unfit_text(message));
            complaint.argument = arguments[std::min(value, arguments.size() - 1)].name;
            complaint.word = planned.values[value].word;
            throw complaint;
        }
    }
    if (report.seen.messages.empty() && !report.back.succeeded()) {
        complaint.text = fmt::format("the library refuses this, nothing would be sent (code {})", *report.back.code);
        complaint.word = 1;
        throw complaint;
    }
}

} // namespace vorcfg
