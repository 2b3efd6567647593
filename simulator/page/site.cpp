#include "page/site.hpp"

#include <algorithm>
#include <stdexcept>

#include <fmt/core.h>

#include "page_files.hpp" // of the files in files/, by the build
#include "server/commands.hpp"
#include "server/options.hpp"
#include "text/parse.hpp"

namespace vorsim::page {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t most_events = 1000;
constexpr std::size_t most_bytes = 1 << 20;
constexpr std::size_t most_at_once = 1 << 16;
constexpr std::size_t most_streams = 16;
constexpr auto state_lasts = 200ms;
constexpr int state_share = 10; // the gateway spends at most one part in so many of its time on it
constexpr std::uint16_t http_port = 80;
constexpr auto between_beats = 2s;
constexpr auto patience = 1s; // with the gateway; meanwhile other requests wait

constexpr unsigned bad_request = 400;
constexpr unsigned forbidden = 403;
constexpr unsigned not_found = 404;
constexpr unsigned not_allowed = 405;
constexpr unsigned conflict = 409;
constexpr unsigned unavailable = 503;

struct File {
    std::string_view path;
    std::string_view stem;
    const char* type;
};
constexpr File files[] = {
    {"/", "index", "text/html; charset=utf-8"},
    {"/style.css", "style", "text/css; charset=utf-8"},
    {"/script.js", "script", "text/javascript; charset=utf-8"},
};

// Takes the same time wherever they differ.
bool equal_in_constant_time(std::string_view left, std::string_view right)
{
    unsigned difference = left.size() == right.size() ? 0 : 1;
    for (std::size_t at = 0; at < std::min(left.size(), right.size()); ++at) {
        difference |= static_cast<unsigned char>(left[at] ^ right[at]);
    }
    return difference == 0;
}

} // namespace

void Feed::add(std::uint64_t number, std::string data)
{
    events_.push_back({number, std::move(data)});
    size_ += events_.back().data.size();
    while (events_.size() > most_events || (size_ > most_bytes && events_.size() > 1)) {
        size_ -= events_.front().data.size();
        events_.pop_front();
    }
}

std::string Feed::after(std::uint64_t& seen) const
{
    std::string text;
    auto event = std::ranges::upper_bound(events_, seen, {}, &Event::number);
    for (; event != events_.end() && text.size() < most_at_once; ++event) {
        seen = event->number;
        text += fmt::format("id: {}\ndata: {}\n\n", seen, event->data);
    }
    return text;
}

Site::Site(sockets::Loop& loop, int listener, Settings settings)
    : settings_(std::move(settings)), loop_(loop), next_beat_(std::chrono::steady_clock::now()),
      http_(loop, listener, [this](const Request& request) { return answer(request); })
{
    loop_.at([this] { return next_beat_; },
             [this] {
                 next_beat_ = std::chrono::steady_clock::now() + between_beats;
                 if (watch_ == nullptr) {
                     watch();
                 }
                 http_.wake(true);
             });
}

void Site::watch()
{
    try {
        watch_ = std::make_unique<client::EventStream>("watch", patience);
        loop_.watch(watch_->descriptor(), [this] { receive(); });
    } catch (const std::exception&) {
        watch_.reset(); // retried at the next beat
    }
}

void Site::receive()
{
    bool more = false;
    try {
        more = watch_->read([this](client::EventStream::Kind kind, std::string_view line) {
            if (kind == client::EventStream::Kind::message) {
                const std::size_t blank = line.find(' ');
                feed_.add(vor::number_in<std::uint64_t>(line.substr(0, blank)).value_or(0),
                          std::string(line.substr(blank + 1)));
            }
        });
    } catch (const std::exception&) {
        more = false; // too many clients watch: retried at the next beat
    }
    if (!more) {
        loop_.forget(watch_->descriptor());
        watch_.reset();
    }
    http_.wake();
}

// Any other name that resolves to this machine may belong to another site's page.
std::optional<Response> Site::refusal(const Request& request) const
{
    const std::string port = settings_.port == http_port ? "" : fmt::format(":{}", settings_.port); // browsers omit it
    const std::string hosts[] = {"127.0.0.1" + port, "localhost" + port};
    const auto ours = [&](std::string_view scheme, std::string_view name) {
        return std::ranges::any_of(hosts,
                                   [&](const std::string& host) { return name == fmt::format("{}{}", scheme, host); });
    };
    if (!ours("", request.host)) {
        return Response{.status = forbidden, .body = fmt::format("expected host {}\n", hosts[0])};
    }
    if (!request.origin.empty() && !ours("http://", request.origin)) {
        return Response{.status = forbidden, .body = "requests from other sites are refused\n"};
    }
    if (request.method != "GET" && request.method != "POST") {
        return Response{.status = not_allowed, .body = "only GET and POST are supported\n"};
    }
    return {};
}

Response Site::answer(const Request& request)
{
    if (auto refused = refusal(request)) {
        return std::move(*refused);
    }
    const bool reads = request.method == "GET";
    const auto* const file = std::ranges::find(files, request.path, &File::path);
    if (reads && file != std::end(files)) {
        return {.type = file->type,
                .body = std::string(std::ranges::find(page_files, file->stem, &vor::BuiltIn::stem)->text)};
    }
    if (!equal_in_constant_time(request.token, settings_.token)) {
        return {.status = forbidden,
                .body = "the link's token is missing or out of date; open the link that vorsim printed\n"};
    }
    if (reads && request.path == "/state") {
        return state();
    }
    if (reads && request.path == "/events") {
        return events(request);
    }
    if (!reads && request.path == "/command") {
        return settings_.control
                   ? execute(request.body)
                   : Response{.status = forbidden, .body = "read-only: vorsim was started without --http-control\n"};
    }
    return {.status = not_found, .body = "not found\n"};
}

// After a failure, others fail at once for a while: a stopped gateway would keep each waiting.
std::string Site::ask(const std::string& command)
{
    if (std::chrono::steady_clock::now() < failing_until_) {
        throw std::runtime_error(failure_);
    }
    const auto begun = std::chrono::steady_clock::now();
    try {
        return client::ask(command, {}, patience);
    } catch (const std::exception& error) {
        const auto end = std::chrono::steady_clock::now();
        failure_ = error.what();
        failing_until_ = end - begun >= patience ? end + between_beats : failing_until_;
        throw;
    }
}

Response Site::state()
{
    const auto now = std::chrono::steady_clock::now();
    try {
        if (now >= state_due_) {
            state_ = ask("overview");
            const auto end = std::chrono::steady_clock::now();
            state_due_ = end + std::max<sockets::Loop::Time::duration>(state_lasts, state_share * (end - now));
        }
    } catch (const std::exception& error) {
        return {.status = unavailable, .body = fmt::format("{}\n", error.what())};
    }
    return {.type = "application/json",
            .body = fmt::format("{{\"control\":{},\"watched\":{},\"gateway\":{}}}\n", settings_.control,
                                watch_ != nullptr, state_)};
}

Response Site::events(const Request& request)
{
    if (http_.streams() >= most_streams) {
        return {.status = unavailable, .body = fmt::format("at most {} pages can be open\n", most_streams)};
    }
    const std::uint64_t seen = vor::number_in<std::uint64_t>(request.last_event).value_or(0);
    return {.type = "text/event-stream", .stream = [this, seen = seen]() mutable { return feed_.after(seen); }};
}

// The commands of the command line that change the simulation.
Response Site::execute(const std::string& command)
{
    state_due_ = {}; // the next request must see the effect
    const server::CommandRow* const row = server::command_named(server::first_word(command));
    if (row == nullptr || !row->on_page) {
        return {.status = bad_request, .body = "expected fault, stop, start, set or reset\n"};
    }
    try {
        return {.body = ask(command)};
    } catch (const server::UsageError& error) {
        return {.status = bad_request, .body = fmt::format("{}\n", error.what())};
    } catch (const std::exception& error) {
        return {.status = conflict, .body = fmt::format("{}\n", error.what())};
    }
}

} // namespace vorsim::page
