#include "call/session.hpp"

#include <algorithm>
#include <chrono>
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

// Tried in turn from the first on, so that several shells can run at once.
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

// A SAP that is in use is refused at once. What takes time, such as a directory that a process has locked, would take
// it again at every SAP, and at every call.
bool Session::bind()
{
    constexpr std::chrono::seconds most{1};
    const auto end = std::chrono::steady_clock::now() + most;
    const std::uint32_t last = sap_.value_or(last_sap);
    for (std::uint32_t sap = sap_.value_or(first_sap); sap <= last && !bound_ && !hopeless_; sap++) {
        Capture printed(STDOUT_FILENO);
        Capture complained(STDERR_FILENO);
        bound_ = vor_cfg_create_ipc_endpoint(static_cast<std::uint16_t>(sap)) == 0;
        if (!bound_ && complaints_.empty()) {
            complaints_ = complained.take() + printed.take();
        }
        hopeless_ = !bound_ && std::chrono::steady_clock::now() >= end;
    }
    return bound_;
}

CallResult Session::make(PreparedCall& call)
{
    const rows::Row& row = *call.row;
    if (row.channel == rows::Channel::manager && !settings_.capture && !bind()) {
        const std::string where = sap_ ? fmt::format("SAP {}", *sap_) : "any SAP";
        const std::vector<std::string_view> lines = vor::lines_in(complaints_);
        return {.verdict = {Outcome::no_endpoint, fmt::format("not sent: no endpoint at {}", where)},
                .library = {lines.begin(), lines.end()}};
    }
    CallResult result;
    std::string library;
    Observer observer(settings_, row, call.values);
    vor_errno = 0;
    {
        Capture printed(STDOUT_FILENO);
        std::optional<Capture> complained; // of a platform; about a call that is only tried, nobody is told
        if ((settings_.capture || settings_.gather) && !settings_.trace) {
            complained.emplace(STDERR_FILENO);
        }
        result.back = row.make(row, call.values);
        library = printed.take();
        library += complained && !settings_.capture ? complained->take() : "";
    }
    if (vor_cfg_get_sock_endpoint() != nullptr) { // a call that fails leaves its connection open
        vor_cfg_remove_sock_endpoint();
    }
    for (const std::string_view line : vor::lines_in(library)) {
        result.library.push_back(vor::printable(without_secrets(line, call.values)));
    }
    result.manager_errno = vor_errno;
    result.seen = std::move(observer.seen);
    const auto is_lost = [](const Message& message) { return !message.delivered; };
    if (!settings_.capture && (result.seen.unconnected || std::ranges::any_of(result.seen.messages, is_lost))) {
        result.seen.deserted = deserted_directory();
    }
    const bool captured = settings_.capture && (!result.seen.messages.empty() || result.seen.trace_switched);
    result.verdict = captured ? Verdict{Outcome::dry_run, "dry run, nothing sent"}
                              : judged(row, result.back, result.manager_errno, result.seen);
    return result;
}

namespace {

// The argument to shorten where a message is too long: the list, or the longest text.
std::size_t most_of(const PreparedCall& call, Unfit unfit)
{
    const auto arguments = call.row->arguments();
    std::size_t longest = 0;
    for (std::size_t i = 0; i < call.values.size(); i++) {
        longest = call.values[i].text.size() > call.values[longest].text.size() ? i : longest;
    }
    return unfit == Unfit::elements ? arguments.size() - 1 : longest;
}

} // namespace

void rehearse(PreparedCall& call)
{
    if (call.row->channel == rows::Channel::none) {
        return;
    }
    const CallResult result = Session({.capture = true}, std::nullopt).make(call);
    for (const Message& message : result.seen.messages) {
        if (message.unfit != Unfit::no) {
            const auto arguments = call.row->arguments();
            const std::size_t value = most_of(call, message.unfit);
            const std::string argument(arguments[std::min(value, arguments.size() - 1)].name);
            throw input::InputError{.text = fmt::format("{} does not fit: {}", argument, unfit_text(message)),
                                    .argument = argument,
                                    .word = call.values[value].word,
                                    .call = call.row->full_name()};
        }
    }
    if (result.seen.messages.empty() && !result.back.succeeded()) {
        throw input::InputError{
            .text = fmt::format("the library refuses this call and would send nothing (code {})", *result.back.code),
            .word = 1,
            .call = call.row->full_name()};
    }
}

} // namespace vorcfg::call
