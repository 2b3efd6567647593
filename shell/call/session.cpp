#include "call/session.hpp"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <sys/mman.h>
#include <unistd.h>

#include <device_mgmt/common.h>
#include <fmt/core.h>

#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorcfg::call {

namespace {

// Not used by managers; tried in turn, so that several shells can run at once.
constexpr std::uint16_t first_sap = 0x1000;
constexpr std::uint16_t last_sap = 0x103f;

// Keeps the library's output apart from the shell's: captures what is written to a descriptor until `take` or the end
// of its scope.
class Capture {
public:
    explicit Capture(int descriptor) : descriptor_(descriptor), file_(file_for(descriptor))
    {
        const std::lock_guard lock(mutex);
        begun[descriptor_] = this;
        std::fflush(nullptr);
        before_ = file_ >= 0 ? dup(descriptor_) : -1;
        if (before_ >= 0) {
            dup2(file_, descriptor_);
        }
    }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    ~Capture()
    {
        take();
        const std::lock_guard lock(mutex);
        begun[descriptor_] = nullptr;
    }

    std::string take() // ends the capture
    {
        const std::lock_guard lock(mutex);
        if (before_ >= 0) {
            std::fflush(nullptr);
            dup2(before_, descriptor_);
            close(before_);
            before_ = -1;
        }
        const off_t size = file_ >= 0 ? lseek(file_, 0, SEEK_CUR) : 0;
        std::string text(static_cast<std::size_t>(std::max<off_t>(size, 0)), '\0');
        if (!text.empty()) {
            const ssize_t got = pread(file_, text.data(), text.size(), 0);
            text.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
            (void)!ftruncate(file_, 0);
            lseek(file_, 0, SEEK_SET);
        }
        return text;
    }

    static void end_all()
    {
        mutex.lock();
        std::fflush(nullptr); // what was captured is not printed: its secrets would not be masked
        for (const Capture* const capture : begun) {
            if (capture != nullptr && capture->before_ >= 0) {
                dup2(capture->before_, capture->descriptor_);
            }
        }
    }

private:
    // A file in memory takes any amount, where a full pipe would block. Without one nothing is captured. Each
    // descriptor has one for good: a new one for every line would be most of the time that checking a long batch takes.
    static int file_for(int descriptor)
    {
        static int files[3] = {-1, -1, -1};
        if (files[descriptor] < 0) {
            files[descriptor] = memfd_create("vorcfg", MFD_CLOEXEC);
        }
        return files[descriptor];
    }

    // Of the captures under way. `end_all` keeps it, so that no other begins or ends.
    static inline std::mutex mutex;
    static inline Capture* begun[3]; // of the descriptors up to standard error

    int descriptor_;
    int file_;
    int before_ = -1;
};

} // namespace

void end_captures()
{
    Capture::end_all();
}

Session::~Session()
{
    if (bound_) {
        vor_cfg_remove_ipc_endpoint();
    }
}

bool Session::bind(std::string& complaints)
{
    const std::uint32_t last = sap_.value_or(last_sap);
    for (std::uint32_t sap = sap_.value_or(first_sap); sap <= last && !bound_; sap++) {
        Capture printed(STDOUT_FILENO);
        Capture complained(STDERR_FILENO);
        bound_ = vor_cfg_create_ipc_endpoint(static_cast<std::uint16_t>(sap)) == 0;
        if (!bound_ && complaints.empty()) {
            complaints = complained.take() + printed.take();
        }
    }
    return bound_;
}

CallResult Session::make(PreparedCall& planned)
{
    const rows::Row& row = *planned.row;
    std::string complaints;
    if (row.channel == rows::Channel::manager && !settings_.capture && !bind(complaints)) {
        const std::string where = sap_ ? fmt::format("SAP {}", *sap_) : "any SAP";
        const std::vector<std::string_view> lines = vor::lines_in(complaints);
        return {.verdict = {Outcome::no_endpoint, fmt::format("not sent: no endpoint at {}", where)},
                .library = {lines.begin(), lines.end()}};
    }
    CallResult report;
    std::string library;
    Observer watch(settings_, row, planned.values);
    vor_errno = 0;
    {
        Capture printed(STDOUT_FILENO);
        std::optional<Capture> complained; // of a platform, about a call that is only tried
        if (settings_.capture && !settings_.trace) {
            complained.emplace(STDERR_FILENO);
        }
        report.back = row.make(row, planned.values);
        library = printed.take();
    }
    if (vor_cfg_get_sock_endpoint() != nullptr) { // a call that fails leaves its connection open
        vor_cfg_remove_sock_endpoint();
    }
    for (const std::string_view line : vor::lines_in(library)) {
        report.library.push_back(vor::printable(without_secrets(line, planned.values)));
    }
    report.manager_errno = vor_errno;
    report.seen = std::move(watch.seen);
    const auto is_lost = [](const Message& message) { return !message.delivered; };
    if (!settings_.capture && (report.seen.unconnected || std::ranges::any_of(report.seen.messages, is_lost))) {
        report.seen.deserted = deserted_directory();
    }
    const bool captured = settings_.capture && (!report.seen.messages.empty() || report.seen.trace_switched);
    report.verdict = captured ? Verdict{Outcome::dry_run, "dry run, nothing sent"}
                              : judged(row, report.back, report.manager_errno, report.seen);
    return report;
}

namespace {

// The argument to shorten where a message is too long: the list, or the longest text.
std::size_t most_of(const PreparedCall& planned, Unfit unfit)
{
    const auto arguments = planned.row->arguments();
    std::size_t longest = 0;
    for (std::size_t i = 0; i < planned.values.size(); i++) {
        longest = planned.values[i].text.size() > planned.values[longest].text.size() ? i : longest;
    }
    return unfit == Unfit::elements ? arguments.size() - 1 : longest;
}

} // namespace

void rehearse(PreparedCall& planned)
{
    if (planned.row->channel == rows::Channel::none) {
        return;
    }
    const CallResult report = Session({.capture = true}, std::nullopt).make(planned);
    for (const Message& message : report.seen.messages) {
        if (message.unfit != Unfit::no) {
            const auto arguments = planned.row->arguments();
            const std::size_t value = most_of(planned, message.unfit);
            const std::string argument(arguments[std::min(value, arguments.size() - 1)].name);
            throw input::InputError{.text = fmt::format("{} does not fit: {}", argument, unfit_text(message)),
                                    .argument = argument,
                                    .word = planned.values[value].word,
                                    .call = planned.row->full_name()};
        }
    }
    if (report.seen.messages.empty() && !report.back.succeeded()) {
        throw input::InputError{
            .text = fmt::format("the library refuses this call and would send nothing (code {})", *report.back.code),
            .word = 1,
            .call = planned.row->full_name()};
    }
}

} // namespace vorcfg::call
