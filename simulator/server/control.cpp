#include "server/control.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <utility>

#include <sys/socket.h>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "record/json.hpp"
#include "server/memory.hpp"
#include "server/options.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::server {
namespace {

constexpr std::size_t most_control_clients = 16;
constexpr std::ptrdiff_t most_watching = 12;
constexpr std::size_t most_unread = 1 << 18;       // of a watching client
constexpr std::size_t most_in_an_answer = 1 << 20; // of the messages received
constexpr char end_of_request = '\0';

// The records that a client asked for, some in a turn.
class Receiving {
public:
    explicit Receiving(ReceivedRequest request) : request_(std::move(request)), sent_(request_.after) {}

    // What was asked for, once it is complete: up to the latest message, or as many as one answer holds.
    std::optional<std::string> go_on(const Memory& memory)
    {
        constexpr int records_in_a_turn = 50;
        const auto& remembered = memory.all();
        if (!first_) {
            first_ = memory.first();
            last_ = memory.last();
            sent_ = std::max(sent_, *first_ - 1);
        }
        for (int left = records_in_a_turn; sent_ < last_ && records_.size() < most_in_an_answer; --left) {
            const std::uint64_t next = remembered.empty() ? last_ + 1 : remembered.front().record.seq;
            if (next > sent_ + 1) {
                const std::uint64_t gap = std::min(next - 1, last_) - sent_;
                forgotten_ += gap;
                sent_ += gap;
                continue;
            }
            if (left <= 0) {
                return {};
            }
            const auto& one = remembered[static_cast<std::size_t>(++sent_ - next)];
            records_ += request_.filter.passes(one.record) ? one.json() + '\n' : "";
        }
        vor::Json head{{"first", *first_}, {"last", last_}, {"forgotten", forgotten_}};
        if (sent_ < last_) {
            head["last"] = sent_;
            head["more"] = true;
        }
        return vor::dump(head) + '\n' + records_;
    }

private:
    ReceivedRequest request_;
    std::optional<std::uint64_t> first_;
    std::uint64_t last_ = 0;
    std::uint64_t sent_; // or passed over
    std::uint64_t forgotten_ = 0;
    std::string records_;
};

Request request_of(const ReceivedRequest& request)
{
    const auto receiving = std::make_shared<Receiving>(request);
    return [receiving](Running& running) { return receiving->go_on(running.memory); };
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
    const auto until = [](const auto& one) {
        return one.second.mode == Mode::wait ? std::optional(one.second.until) : std::nullopt;
    };
    // A client that need not wait any longer has a turn at once.
    loop_.at([this, until] { return requested_.empty() ? sockets::earliest(clients_, until) : sockets::Loop::Time{}; },
             [this] { end_waits(); });
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
        if (const auto* const request = std::get_if<ReceivedRequest>(&command)) {
            return receive(client, *request);
        }
        if (std::holds_alternative<Quit>(command)) {
            client.mode = Mode::quit; // until the process ends, and the connection with it
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

// What has arrived already is the answer; else the client waits.
std::optional<std::string> Control::receive(Client& client, const ReceivedRequest& request)
{
    const auto& remembered = running_.memory.all();
    const auto is_asked_for = [&request](const Memory::Remembered& one) {
        return one.record.seq > request.after && request.filter.passes(one.record);
    };
    if (request.within.count() > 0 && std::none_of(remembered.rbegin(), remembered.rend(), is_asked_for)) {
        limit_watching();
        client.mode = Mode::wait;
        client.wait = request;
        client.until = std::chrono::steady_clock::now() + request.within;
        return "";
    }
    client.request = request_of(request);
    return answer_to(client);
}

void Control::answer(int descriptor)
{
    Client& client = clients_.at(descriptor);
    client.mode = Mode::answer;
    client.since = std::chrono::steady_clock::now();
    client.request = request_of(client.wait);
    loop_.forget(descriptor);
    requested_.push_back(descriptor);
}

bool Control::is_watched() const
{
    return std::ranges::any_of(clients_, [](const auto& one) { return one.second.mode == Mode::watch; });
}

void Control::note(const values::Record& record)
{
    for (const auto& [descriptor, client] : clients_) {
        if (client.mode == Mode::wait && record.seq > client.wait.after && client.wait.filter.passes(record)) {
            answer(descriptor);
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

void Control::end_waits()
{
    const auto now = std::chrono::steady_clock::now();
    for (const auto& [descriptor, client] : clients_) {
        if (client.mode == Mode::wait && client.until <= now) {
            answer(descriptor);
        }
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
