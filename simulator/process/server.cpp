#include "process/server.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>

#include <sys/signalfd.h>
#include <unistd.h>

#include <fmt/format.h>

#include "tables/managers.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

constexpr char konfd_socket[] = "/tmp/konfd.socket";
constexpr int messages_in_turn = 64;

std::string usable_directory()
{
    const char* const directory = vorinfra_directory();
    if (directory == nullptr) {
        throw UsageError("the platform directory cannot be used");
    }
    return directory;
}

// SIGTERM and SIGINT as readable events.
Descriptor stop_signals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return Descriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

} // namespace

Server::Server(const Options& options)
    : options_(options), directory_(usable_directory()),
      gateway_({.seed = options.seed, .show_secrets = options.show_secrets}), konfd_(options.show_secrets),
      journal_(options.journal_file ? Journal(*options.journal_file) : Journal()), signals_(stop_signals())
{
    std::signal(SIGPIPE, SIG_IGN);
    try {
        control_ = std::make_unique<Control>(loop_, control_path(directory_),
                                             [this](std::string_view request) { return show(request); });
    } catch (const InUse&) {
        throw std::runtime_error(fmt::format("another vorsim runs in {}", directory_));
    }
    std::set<std::uint16_t> saps(options_.more_saps.begin(), options_.more_saps.end());
    for (const Manager& manager : managers) {
        saps.insert(manager.sap);
    }
    for (const std::uint16_t sap : saps) {
        bind_manager(sap);
    }
    bind_konfd();
    if (options_.state_file) {
        write_state(); // what cannot be written is better known now
    }
    loop_.watch(signals_.get(), [this] { loop_.stop(); });
}

void Server::bind_manager(std::uint16_t sap)
{
    Endpoint endpoint(vor_ipc_bind(sap, 0));
    if (endpoint == nullptr) {
        throw std::runtime_error(fmt::format("cannot serve SAP {} in {}", sap, directory_));
    }
    VOR_IPC_HANDLE* const handle = endpoint.get();
    loop_.watch(vorinfra_descriptor(handle), [this, handle] { receive(handle); });
    endpoints_.push_back(std::move(endpoint));
}

void Server::bind_konfd()
{
    std::array<char, 4096> path{};
    if (vorinfra_rooted_path(konfd_socket, path.data(), path.size()) != 0) {
        throw UsageError("konfd's socket path cannot be used");
    }
    const bool rooted = std::strcmp(path.data(), konfd_socket) != 0;
    try {
        if (rooted) {
            std::filesystem::create_directories(std::filesystem::path(path.data()).parent_path());
        }
        konfd_server_ =
            std::make_unique<KonfdServer>(loop_, konfd_, path.data(), [this](const Report& what) { report(what); });
    } catch (const std::exception& error) {
        if (rooted) {
            throw;
        }
        // The real path may be a real konfd's.
        vor::print_line(
            stderr,
            fmt::format("vorsim: konfd is not served: {} (VORINFRA_ROOT gives it a place of its own)", error.what()));
        return;
    }
    loop_.set_deadline([this] { return konfd_server_->deadline(); }, [this] { konfd_server_->on_deadline(); });
}

void Server::receive(VOR_IPC_HANDLE* endpoint)
{
    VORINFRA_MESSAGE message;
    for (int turn = 0; turn < messages_in_turn; ++turn) {
        const int received = vorinfra_receive(endpoint, &message);
        if (received == 0) {
            return;
        }
        if (received > 0) {
            deliver(endpoint, message,
                    gateway_.judge({.sap = endpoint->sap_id,
                                    .source = message.source,
                                    .id = message.id,
                                    .answer_wanted = message.answer_wanted != 0,
                                    .meta_data = {message.meta_data, message.meta_data_size},
                                    .payload = {message.payload, message.payload_size}}));
        }
    }
}

void Server::deliver(VOR_IPC_HANDLE* endpoint, const VORINFRA_MESSAGE& message, Judgement judgement)
{
    if (judgement.answered && vorinfra_answer(endpoint, &message, judgement.answer_id, judgement.answer.data(),
                                              static_cast<vor_uint16>(judgement.answer.size())) != 0) {
        judgement.report.line += " (the asker is gone)";
        judgement.report.record["delivered"] = false;
    }
    report(judgement.report);
}

void Server::report(const Report& what)
{
    vor::print_line(stdout, what.line);
    journal_.write(what.record);
}

std::string Server::text() const
{
    const std::string konfd = konfd_.text();
    std::string text = fmt::format("vorsim: {}, {}\n{}", vor::counted(gateway_.messages(), "message"),
                                   vor::counted(gateway_.complaints(), "complaint"), gateway_.state().text());
    if (!konfd.empty()) {
        text += "konfd\n";
        for (std::size_t begin = 0; begin < konfd.size();) {
            const std::size_t end = konfd.find('\n', begin) + 1;
            text += fmt::format("  {}", konfd.substr(begin, end - begin));
            begin = end;
        }
    }
    return text;
}

Json Server::json() const
{
    return {{"schema", 1},
            {"messages", gateway_.messages()},
            {"complaints", gateway_.complaints()},
            {"managers", gateway_.state().json()},
            {"konfd", konfd_.json()}};
}

std::string Server::show(std::string_view request) const
{
    return request == "show"        ? text()
           : request == "show json" ? fmt::format("{}\n", vor::dump(json(), 2))
                                    : "unknown request\n";
}

// Never a half-written file under the name.
void Server::write_state() const
{
    const std::string path = *options_.state_file;
    const std::string unfinished = fmt::format("{}.part", path);
    unlink(unfinished.c_str());                   // one left behind, or a link that was planted
    const Descriptor file = open_own(unfinished); // it may hold passwords in clear
    if (file.get() < 0 || !write_all(file.get(), vor::dump(json(), 2) + "\n") ||
        std::rename(unfinished.c_str(), path.c_str()) != 0) {
        throw std::runtime_error(fmt::format("cannot write the state {}: {}", path, std::strerror(errno)));
    }
}

int Server::run()
{
    vor::print_line(stdout, fmt::format("vorsim: ready, {} managers{} in {}", endpoints_.size(),
                                        konfd_server_ != nullptr ? " and konfd" : ", no konfd,", directory_));
    loop_.run();
    if (options_.state_file) {
        write_state();
    }
    if (journal_.failed()) {
        return 1;
    }
    return options_.strict && gateway_.complaints() > 0 ? 3 : 0;
}

} // namespace vorsim
