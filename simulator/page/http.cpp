#include "page/http.hpp"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include <sys/socket.h>

#include <fmt/core.h>
#include <microhttpd.h>

namespace vorsim::page {
namespace {

constexpr std::ptrdiff_t most_clients = 48; // beyond that the oldest that is not a stream is closed
constexpr unsigned most_at_once = 64;
constexpr unsigned idle_seconds = 15;
constexpr std::size_t memory_of_client = 1 << 15;
constexpr std::size_t longest_body = 1 << 13;

constexpr std::pair<const char*, const char*> headers[] = {
    {"Cache-Control", "no-store"},
    {"Content-Security-Policy", "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
                                "img-src data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
};

std::string value_of(MHD_Connection* connection, MHD_ValueKind kind, const char* name)
{
    const char* const value = MHD_lookup_connection_value(connection, kind, name);
    return value != nullptr ? value : "";
}

} // namespace

struct Http::Client {
    MHD_Connection* connection;
    int descriptor;
    Source stream{};
    std::string unsent{};   // of the stream
    bool suspended = false; // the stream, until there is more
    bool ended = false;     // by us
};

// What the library calls.
struct Http::Callbacks {
    static void on_connection(void* where, MHD_Connection* connection, void**, MHD_ConnectionNotificationCode code)
    {
        Http& http = *static_cast<Http*>(where);
        if (code == MHD_CONNECTION_NOTIFY_CLOSED) {
            std::erase_if(http.clients_, [&](const auto& one) { return one.connection == connection; });
            return;
        }
        const auto* const info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
        http.make_room();
        http.clients_.push_back({.connection = connection, .descriptor = info->connect_fd});
    }

    static MHD_Result on_request(void* where, MHD_Connection* connection, const char* path, const char* method,
                                 const char*, const char* upload, std::size_t* upload_size, void** state)
    {
        if (*state == nullptr) {
            *state = new Request{.method = method,
                                 .path = path,
                                 .host = value_of(connection, MHD_HEADER_KIND, "Host"),
                                 .origin = value_of(connection, MHD_HEADER_KIND, "Origin"),
                                 .token = value_of(connection, MHD_GET_ARGUMENT_KIND, "token"),
                                 .last_event = value_of(connection, MHD_HEADER_KIND, "Last-Event-ID")};
            return MHD_YES;
        }
        Request& request = *static_cast<Request*>(*state);
        if (*upload_size > 0) {
            request.body.append(upload, *upload_size);
            *upload_size = 0;
            return request.body.size() <= longest_body ? MHD_YES : MHD_NO;
        }
        Http& http = *static_cast<Http*>(where);
        return send(*std::ranges::find(http.clients_, connection, &Http::Client::connection), http.answer_to_(request));
    }

    static void on_completed(void*, MHD_Connection*, void** state, MHD_RequestTerminationCode)
    {
        delete static_cast<Request*>(*state);
        *state = nullptr;
    }

    static MHD_Result send(Http::Client& client, Response answer)
    {
        MHD_Response* response = nullptr;
        if (answer.stream) {
            client.stream = std::move(answer.stream);
            response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 4096, on_room, &client, nullptr);
        } else {
            response = MHD_create_response_from_buffer(answer.body.size(), answer.body.data(), MHD_RESPMEM_MUST_COPY);
        }
        if (response == nullptr) {
            return MHD_NO;
        }
        for (const auto& [name, value] : headers) {
            MHD_add_response_header(response, name, value);
        }
        MHD_add_response_header(response, "Content-Type", answer.type.c_str());
        const MHD_Result queued = MHD_queue_response(client.connection, answer.status, response);
        MHD_destroy_response(response);
        return queued;
    }

    static ssize_t on_room(void* where, std::uint64_t, char* buffer, std::size_t room)
    {
        Http::Client& client = *static_cast<Http::Client*>(where);
        if (client.unsent.empty()) {
            client.unsent = client.stream();
        }
        if (client.unsent.empty()) {
            client.suspended = true;
            MHD_suspend_connection(client.connection);
            return 0;
        }
        const std::size_t size = client.unsent.copy(buffer, room);
        client.unsent.erase(0, size);
        return static_cast<ssize_t>(size);
    }
};

Http::Http(sockets::Loop& loop, int listener, Handler answer_to) : loop_(loop), answer_to_(std::move(answer_to))
{
    daemon_ = MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr, Callbacks::on_request,
                               this, MHD_OPTION_LISTEN_SOCKET, listener, MHD_OPTION_CONNECTION_LIMIT, most_at_once,
                               MHD_OPTION_CONNECTION_TIMEOUT, idle_seconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
                               memory_of_client, MHD_OPTION_STRICT_FOR_CLIENT, 1, MHD_OPTION_NOTIFY_CONNECTION,
                               Callbacks::on_connection, this, MHD_OPTION_NOTIFY_COMPLETED, Callbacks::on_completed,
                               this, MHD_OPTION_END);
    if (daemon_ == nullptr) {
        throw std::runtime_error("cannot start the HTTP server");
    }
    const auto* const info = MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD);
    loop_.watch(info->epoll_fd, [this] { MHD_run(daemon_); });
    const auto next = [this]() -> std::optional<sockets::Loop::Time> {
        MHD_UNSIGNED_LONG_LONG milliseconds = 0;
        if (MHD_get_timeout(daemon_, &milliseconds) != MHD_YES) {
            return {};
        }
        return milliseconds == 0 ? sockets::Loop::Time() // at once
                                 : std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    };
    loop_.at(next, [this] { MHD_run(daemon_); });
}

Http::~Http()
{
    wake(true); // suspended ones would not be closed
    MHD_stop_daemon(daemon_);
}

void Http::make_room()
{
    if (std::ranges::count(clients_, false, &Client::ended) < most_clients) {
        return;
    }
    const auto oldest = std::ranges::find_if(clients_, [](const Client& one) { return !one.stream && !one.ended; });
    if (oldest != clients_.end()) {
        oldest->ended = true;
        shutdown(oldest->descriptor, SHUT_RDWR); // to the library, the client has closed it
    }
}

void Http::wake(bool beat)
{
    for (Client& client : clients_) {
        if (client.stream && beat && client.unsent.empty()) {
            client.unsent = ":\n\n";
        }
        if (client.suspended) {
            client.suspended = false;
            MHD_resume_connection(client.connection);
        }
    }
    MHD_run(daemon_);
}

std::size_t Http::streams() const
{
    const auto streams = [](const Client& one) { return one.stream != nullptr; };
    return static_cast<std::size_t>(std::ranges::count_if(clients_, streams));
}

} // namespace vorsim::page
