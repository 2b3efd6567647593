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

namespace vorsim {
namespace {

constexpr std::size_t most_control_clients = 16;
constexpr std::ptrdiff_t most_watching = 12;
constexpr std::size_t longest_request = 1 << 23;
constexpr std::size_t most_unread = 1 << 18; // of one that watches
constexpr std::size_t most_seen = 4096;
constexpr char end_of_request = '\0';

bool is_of(const Wait& wanted, const std::string& call, const std::string& object)
{
    return wanted.call == call && (wanted.object.empty() || wanted.object == object);
}

} // namespace

std::string directory()
{
    const char* const directory = vorinfra_directory();
    return directory != nullptr ? directory : throw UsageError("the platform directory cannot be used");
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
            return make_room_among(clients_, most_control_clients, no_descriptor,
                                   [this](int descriptor) { drop_client(descriptor); });
        },
        [this](Descriptor socket) { welcome(std::move(socket)); });
    loop_.in_turn([this] { return answer_all(); });
}

void Control::welcome(Descriptor socket)
{
    const int descriptor = socket.get();
    clients_.emplace(descriptor, Client{.socket = std::move(socket), .active = std::chrono::steady_clock::now()});
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
    if (size <= 0 || client.wish != Wish::answer) {
        drop_client(descriptor); // it has left, or talks into what it watches
        return;
    }
    client.active = std::chrono::steady_clock::now();
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
    for (const int descriptor : std::exchange(connection_, std::exchange(fresh_, {}))) {
        const auto client = clients_.find(descriptor);
        if (client != clients_.end()) {
            client->second.output = answer_to(client->second, std::exchange(client->second.input, {}));
            write_some(descriptor);
        }
    }
    return !connection_.empty();
}

std::string Control::answer_to(Client& client, const std::string& request)
{
    try {
        const Command command = parse_(request);
        if (const auto* const wanted = std::get_if<WatchRequest>(&command)) {
            return watch(client, *wanted);
        }
        if (const auto* const wanted = std::get_if<Wait>(&command)) {
            return wait(client, *wanted);
        }
        if (std::holds_alternative<Quit>(command)) {
            client.wish = Wish::one; // its connection tells by its end that all is over
            loop_.stop();
            return "+";
        }
        return fmt::format("+{}", std::get<Request>(command)(running_));
    } catch (const UsageError& error) {
        return fmt::format("?{}\n", error.what());
    } catch (const vor::JsonError&) {
        return "-the request cannot be understood\n";
    } catch (const std::exception& error) {
        return fmt::format("-{}\n", error.what());
    }
}

void Control::make_room_for_one_more() const
{
    const auto watches = [](const auto& one) { return one.second.wish != Wish::answer; };
    if (std::ranges::count_if(clients_, watches) == most_watching) {
        throw std::runtime_error(fmt::format("{} watch or wait already", most_watching));
    }
}

std::string Control::watch(Client& client, const WatchRequest& wanted)
{
    make_room_for_one_more();
    client.wish = Wish::all;
    client.all = wanted;
    return "+\n";
}

std::string Control::wait(Client& client, const Wait& wanted)
{
    make_room_for_one_more();
    const bool there =
        std::ranges::any_of(seen_, [&](const auto& one) { return is_of(wanted, one.first, one.second); });
    if (there) {
        return "+";
    }
    client.wish = Wish::one;
    client.one = wanted;
    return fmt::format("~{0} no {1}{2}{3} within {0} ms\n", wanted.within.count(), wanted.call,
                       wanted.object.empty() ? "" : " of ", wanted.object);
}

bool Control::is_watched() const
{
    return std::ranges::any_of(clients_, [](const auto& one) { return one.second.wish == Wish::all; });
}

void Control::note(const std::string& call, const std::string& object)
{
    if (!call.empty() && seen_.size() < most_seen) {
        seen_.emplace(call, object);
    }
    for (auto next = clients_.begin(); next != clients_.end();) {
        const int descriptor = next->first;
        Client& client = (next++)->second; // writing may drop it
        if (client.wish == Wish::one && !call.empty() && is_of(client.one, call, object)) {
            client.wish = Wish::answer;
            client.output += "+";
            write_some(descriptor);
        }
    }
}

void Control::publish(const Record& record, const std::string& json)
{
    const auto text_for = [&](const WatchRequest& wanted) {
        switch (wanted.as) {
        case WatchRequest::As::json:
            return json;
        case WatchRequest::As::event:
            return fmt::format("{} {}", record.seq, json_line(record, Extent::without_bytes));
        default:
            return record.line;
        }
    };
    for (auto next = clients_.begin(); next != clients_.end();) {
        const int descriptor = next->first;
        Client& client = (next++)->second; // writing may drop it
        if (client.wish != Wish::all || !client.all.filter.passes(record)) {
            continue;
        }
        const std::string line = fmt::format("+{}\n", text_for(client.all));
        if (client.output.size() + line.size() > most_unread) {
            ++client.lost;
            continue;
        }
        const bool idle = client.output.empty();
        if (client.lost > 0) {
            client.output += fmt::format("!vorsim: {} not shown: not read in time\n",
                                         vor::counted(std::exchange(client.lost, 0), "message"));
        }
        client.output += line;
        if (idle) {
            write_some(descriptor);
        }
    }
}

void Control::write_some(int descriptor)
{
    Client& client = clients_.at(descriptor);
    const ssize_t sent = send(descriptor, client.output.data(), client.output.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) {
        drop_client(descriptor);
        return;
    }
    client.active = sent > 0 ? std::chrono::steady_clock::now() : client.active;
    client.output.erase(0, static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    if (!client.output.empty()) {
        loop_.watch_writing(descriptor, [this, descriptor] { write_some(descriptor); });
    } else if (client.wish == Wish::answer) {
        drop_client(descriptor);
    } else {
        loop_.watch(descriptor, [this, descriptor] { read_request(descriptor); });
    }
}

void Control::drop_client(int descriptor)
{
    loop_.forget(descriptor);
    std::erase(fresh_, descriptor);
    std::erase(connection_, descriptor);
    clients_.erase(descriptor);
}

} // namespace vorsim
