#include "server/control.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "record/json.hpp"
#include "server/options.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::server {
namespace {

constexpr std::size_t most_control_clients = 16;
constexpr std::ptrdiff_t most_watching = 12;
constexpr std::size_t most_unread = 1 << 18; // of a watching client
constexpr std::size_t most_seen = 4096;
constexpr char end_of_request = '\0';

bool matches(const Wait& wait, const std::string& call, const std::string& object)
{
    return wait.call == call && (wait.object.empty() || wait.object == object);
}

} // namespace

std::string directory()
{
    const char* const directory = vorinfra_directory();
    return directory != nullptr ? directory : throw UsageError("cannot use the platform directory");
}

std::string control_path(const std::string& directory)
{
    return fmt::format("{}/vorsim.control", directory);
}

void Control::listen(const std::string& path)
{
    listener_.emplace(
        loop_, path,
        [this](bool no_descriptor) {
            return sockets::make_room_among(clients_, most_control_clients, no_descriptor,
                                            [this](int descriptor) { drop_client(descriptor); });
        },
        [this](sockets::Descriptor socket) { welcome(std::move(socket)); });
    loop_.in_turn([this] { return answer_all(); });
    const auto end = [](const auto& one) {
        const auto since = one.second.slow_since();
        return since ? std::optional(*since + sockets::dropped_after) : std::nullopt;
    };
    loop_.at([this, end] { return sockets::earliest(clients_, end); }, [this] { drop_slow(); });
}

void Control::welcome(sockets::Descriptor socket)
{
    const int descriptor = socket.get();
    clients_.emplace(descriptor, Client{.socket = std::move(socket), .since = std::chrono::steady_clock::now()});
    loop_.watch(descriptor, [this, descriptor] { read_request(descriptor); });
}

void Control::read_request(int descriptor)
{
    Client& client = clients_.at(descriptor);
    std::array<char, 65536> bytes; // NOLINT: filled by the receive
    const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (size <= 0 || client.mode != Mode::answer) {
        drop_client(descriptor); // it is gone, or sends while it watches
        return;
    }
    client.input.append(bytes.data(), static_cast<std::size_t>(size));
    const std::size_t end = std::string_view(bytes.data(), static_cast<std::size_t>(size)).find(end_of_request);
    if (end == std::string_view::npos) {
        if (client.input.size() > longest_request) {
            drop_client(descriptor);
        }
        return;
    }
    client.input.resize(client.input.find(end_of_request));
    loop_.forget(descriptor);
    fresh_.push_back(descriptor);
}

bool Control::answer_all()
{
    for (const int descriptor : std::exchange(requested_, std::exchange(fresh_, {}))) {
        const auto client = clients_.find(descriptor);
        if (client == clients_.end()) {
            continue;
        }
        if (sockets::has_hung_up(descriptor)) {
            drop_client(descriptor);
            continue;
        }
        auto answer = answer_to(client->second);
        client->second.since = std::chrono::steady_clock::now();
        if (answer) {
            finish(descriptor, std::move(*answer));
        } else {
            requested_.push_back(descriptor);
        }
    }
    return !requested_.empty();
}

// Nothing, as long as there is more to do.
std::optional<std::string> Control::answer_to(Client& client)
{
    try {
        if (client.request) {
            auto result = client.request(running_);
            return result ? std::optional("+" + *result) : std::nullopt;
        }
        const Command command = parse_(std::exchange(client.input, {}));
        if (const auto* const request_to_watch = std::get_if<WatchRequest>(&command)) {
            return watch(client, *request_to_watch);
        }
        if (const auto* const request_to_wait = std::get_if<Wait>(&command)) {
            return wait(client, *request_to_wait);
        }
        if (std::holds_alternative<Quit>(command)) {
            client.mode = Mode::wait; // until the process ends, and the connection with it
            loop_.stop();
            return std::string{'+', end_of_request};
        }
        client.request = std::get<Request>(command);
        return answer_to(client);
    } catch (const UsageError& error) {
        return fmt::format("?{}\n", error.what());
    } catch (const vor::JsonError&) {
        return "-invalid request\n";
    } catch (const std::exception& error) {
        return fmt::format("-{}\n", error.what());
    }
}

void Control::limit_watching() const
{
    const auto watches = [](const auto& one) { return one.second.mode != Mode::answer; };
    if (std::ranges::count_if(clients_, watches) == most_watching) {
        throw std::runtime_error(fmt::format("at most {} clients can watch or wait", most_watching));
    }
}

std::string Control::watch(Client& client, const WatchRequest& request)
{
    limit_watching();
    client.mode = Mode::watch;
    client.watch = request;
    return "+\n";
}

std::string Control::wait(Client& client, const Wait& request)
{
    limit_watching();
    const bool there =
        std::ranges::any_of(seen_, [&](const auto& one) { return matches(request, one.first, one.second); });
    if (there) {
        return "+";
    }
    client.mode = Mode::wait;
    client.wait = request;
    return fmt::format("~{0} no {1}{2}{3} within {0} ms\n", request.within.count(), request.call,
                       request.object.empty() ? "" : " of ", request.object);
}

bool Control::is_watched() const
{
    return std::ranges::any_of(clients_, [](const auto& one) { return one.second.mode == Mode::watch; });
}

void Control::note(const std::string& call, const std::string& object)
{
    if (!call.empty() && seen_.size() < most_seen) {
        seen_.emplace(call, object);
    }
    for (auto next = clients_.begin(); next != clients_.end();) {
        const int descriptor = next->first;
        Client& client = (next++)->second; // writing may drop it
        if (client.mode == Mode::wait && !call.empty() && matches(client.wait, call, object)) {
            client.mode = Mode::answer;
            finish(descriptor, client.output + "+");
        }
    }
}

void Control::publish(const values::Record& record, const std::string& json)
{
    for (auto next = clients_.begin(); next != clients_.end();) {
        const int descriptor = next->first;
        Client& client = (next++)->second; // writing may drop it
        if (client.mode != Mode::watch || !client.watch.filter.passes(record)) {
            continue;
        }
        const std::string line =
            client.watch.json
                ? fmt::format("+{}\n", json)
                : fmt::format("+{} {}\n", record.seq, record::json_line(record, record::Extent::without_bytes));
        if (client.output.size() + line.size() > most_unread) {
            ++client.dropped;
            continue;
        }
        const bool idle = client.output.empty();
        if (client.dropped > 0) {
            client.output += fmt::format("!vorsim: {} dropped: output not read\n",
                                         vor::counted(std::exchange(client.dropped, 0), "line"));
        }
        client.output += line;
        if (idle) {
            write_some(descriptor);
        }
    }
}

void Control::finish(int descriptor, std::string answer)
{
    Client& client = clients_.at(descriptor);
    client.output = std::move(answer);
    if (client.mode == Mode::answer) {
        client.output += end_of_request;
    }
    write_some(descriptor);
}

void Control::write_some(int descriptor)
{
    Client& client = clients_.at(descriptor);
    const ssize_t sent = send(descriptor, client.output.data(), client.output.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) {
        drop_client(descriptor);
        return;
    }
    client.output.erase(0, static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    if (!client.output.empty()) {
        loop_.watch_writing(descriptor, [this, descriptor] { write_some(descriptor); });
    } else if (client.mode == Mode::answer) {
        drop_client(descriptor);
    } else {
        loop_.watch(descriptor, [this, descriptor] { read_request(descriptor); });
    }
}

// They have not sent their request, or taken its answer, in time.
void Control::drop_slow()
{
    const auto end = std::chrono::steady_clock::now() - sockets::dropped_after;
    for (auto next = clients_.begin(); next != clients_.end();) {
        const auto& [descriptor, client] = *next++;
        if (client.slow_since().value_or(sockets::Loop::Time::max()) > end) {
            continue;
        }
        if (client.output.empty()) {
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sockets::dropped_after).count();
            sockets::send_now(descriptor,
                              fmt::format("-the request took longer than {} s\n{}", seconds, end_of_request));
        }
        drop_client(descriptor);
    }
}

void Control::drop_client(int descriptor)
{
    loop_.forget(descriptor);
    std::erase(fresh_, descriptor);
    std::erase(requested_, descriptor);
    clients_.erase(descriptor);
}

} // namespace vorsim::server
