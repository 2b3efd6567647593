#include "process/server.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "faults/faults.hpp"
#include "faults/parse.hpp"
#include "process/commands.hpp"
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
      gateway_({.seed = options.seed, .show_secrets = options.show_secrets}), faults_(options.seed),
      managers_(loop_, [this](VOR_IPC_HANDLE* endpoint) { receive(endpoint); }),
      outbox_([this](std::uint16_t sap) { return managers_.endpoint(sap); }), delays_(options.seed, options.delays),
      konfd_({.show_secrets = options.show_secrets, .lenient = options.lenient_konfd}),
      journal_(options.journal_file ? Journal(*options.journal_file) : Journal()), signals_(stop_signals())
{
    std::signal(SIGPIPE, SIG_IGN);
    if (options_.faults_file) {
        for (faults::Rule& rule : faults::read_rules(*options_.faults_file)) {
            faults_.add(std::move(rule), std::chrono::steady_clock::now());
        }
    }
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
    for (const std::uint16_t sap : options_.without) {
        saps.erase(sap);
    }
    for (const std::uint16_t sap : saps) {
        managers_.start(sap);
    }
    bind_konfd();
    loop_.set_deadline(
        [this] {
            std::optional<Loop::Time> first = konfd_server_ ? konfd_server_->deadline() : std::nullopt;
            for (const auto& deadline : {outbox_.deadline(), managers_.deadline()}) {
                first = deadline ? std::min(*deadline, first.value_or(*deadline)) : first;
            }
            return first;
        },
        [this] {
            if (konfd_server_) {
                konfd_server_->on_deadline();
            }
            outbox_.on_deadline(std::chrono::steady_clock::now());
            managers_.on_deadline(std::chrono::steady_clock::now());
        });
    if (options_.state_file) {
        write_state(); // what cannot be written is better known now
    }
    loop_.watch(signals_.get(), [this] { loop_.stop(); });
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
        konfd_server_ = std::make_unique<KonfdServer>(loop_, konfd_, path.data(),
                                                      [this](konfd::Reply& each) { return reply(each); });
    } catch (const std::exception& error) {
        if (rooted) {
            throw;
        }
        // The real path may be a real konfd's.
        vor::print_line(
            stderr,
            fmt::format("vorsim: konfd is not served: {} (VORINFRA_ROOT gives it a place of its own)", error.what()));
    }
}

void Server::receive(VOR_IPC_HANDLE* endpoint)
{
    VORINFRA_MESSAGE message;
    const std::uint16_t sap = endpoint->sap_id;
    for (int turn = 0; turn < messages_in_turn && managers_.endpoint(sap) == endpoint; ++turn) {
        const int received = vorinfra_receive(endpoint, &message);
        if (received == 0) {
            return;
        }
        if (received > 0) {
            deliver(sap, message,
                    gateway_.judge({.sap = sap,
                                    .source = message.source,
                                    .id = message.id,
                                    .answer_wanted = message.answer_wanted != 0,
                                    .meta_data = {message.meta_data, message.meta_data_size},
                                    .payload = {message.payload, message.payload_size}}));
        }
    }
}

void Server::deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, Judgement judgement)
{
    using Sent = Outbox::Sent;
    const auto now = std::chrono::steady_clock::now();
    faults::Delivery delivery;
    if (const auto due = faults_.due({.sap = sap,
                                      .client = message.source,
                                      .id = message.id,
                                      .call = judgement.call,
                                      .object = judgement.object,
                                      .answered = judgement.answered},
                                     now)) {
        delivery = faults::disturb(judgement, *due);
    }
    gateway_.settle(judgement);
    if (delivery.way == faults::Delivery::Way::dying) {
        managers_.stop_until(sap, now + delivery.wait);
        outbox_.drop(sap);
    } else {
        delivery.wait += delays_.draw(sap);
    }
    const Sent sent = outbox_.send(sap, message, judgement, delivery, now);
    if (sent == Sent::gone) {
        judgement.report.line += " (the asker is gone)";
        judgement.report.record["delivered"] = false;
    } else if (sent == Sent::crowded) {
        judgement.report.line += " (too many answers are late: this one is not)";
    }
    report(judgement.report);
}

faults::Hearing Server::reply(konfd::Reply& reply)
{
    const auto due = faults_.due({.konfd = true,
                                  .object = reply.report.record["konfd"].get_ref<const std::string&>(),
                                  .answered = !reply.answer.empty()},
                                 std::chrono::steady_clock::now());
    const auto hearing = due ? faults::disturb(reply, *due) : faults::Hearing::whole;
    report(reply.report);
    return hearing;
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

std::string Server::show(std::string_view request)
{
    if (is_command(request)) {
        return obey(request);
    }
    return request == "show"        ? text()
           : request == "show json" ? fmt::format("{}\n", vor::dump(json(), 2))
                                    : "unknown request\n";
}

// Never a half-written file under the name.
void Server::write_state() const
{
    const std::string path = *options_.state_file;
    const std::string unfinished = fmt::format("{}.part", path);
    const mode_t before = umask(0077); // it may hold passwords in clear
    std::ofstream file(unfinished, std::ios::trunc);
    umask(before);
    file << vor::dump(json(), 2) << "\n";
    file.close();
    if (!file || std::rename(unfinished.c_str(), path.c_str()) != 0) {
        throw std::runtime_error(fmt::format("cannot write the state {}: {}", path, std::strerror(errno)));
    }
}

int Server::run()
{
    vor::print_line(stdout, fmt::format("vorsim: ready, {} managers{} in {}", managers_.count(),
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
