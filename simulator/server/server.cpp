#include "server/server.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "faults/parse.hpp"
#include "server/commands.hpp"
#include "tables/managers.hpp"
#include "text/file.hpp"
#include "text/text.hpp"

namespace vorsim::server {
namespace {

namespace fs = std::filesystem;

constexpr char konfd_socket[] = "/tmp/konfd.socket";

// They must be two files, and not folders.
void check_files(const Options& options)
{
    std::error_code ignored;
    for (const auto* file : {&options.state_file, &options.journal_file}) {
        if (*file && fs::is_directory(**file, ignored)) {
            throw UsageError(fmt::format("{} is a folder", **file));
        }
    }
    if (options.state_file) {
        const fs::file_type is = fs::symlink_status(*options.state_file, ignored).type();
        if (is != fs::file_type::not_found && is != fs::file_type::regular && is != fs::file_type::symlink) {
            throw UsageError(fmt::format("{} is not a regular file", *options.state_file));
        }
    }
    if (!options.state_file || !options.journal_file) {
        return;
    }
    const fs::path state = fs::weakly_canonical(fs::absolute(*options.state_file), ignored);
    const fs::path journal = fs::weakly_canonical(fs::absolute(*options.journal_file), ignored);
    if (state == journal || fs::equivalent(state, journal, ignored)) {
        throw UsageError(fmt::format("--state and --journal must not be the same file: {}", *options.state_file));
    }
}

void expect_own(const Managers& managers, const faults::Rule& rule, const std::string& file)
{
    try {
        managers.expect_own(rule);
    } catch (const std::runtime_error& error) {
        throw UsageError(fmt::format("{}: rule {}: {}", file, vor::quoted(rule.text), error.what()));
    }
}

std::set<std::uint16_t> passed_on(const Options& options)
{
    std::set<std::uint16_t> saps;
    for (const auto& [sap, directory] : options.ways()) {
        saps.insert(sap);
    }
    return saps;
}

// vorsim's own directory would lead back to it.
Relay::Ways ways_of(const Options& options, const std::string& own)
{
    Relay::Ways ways = options.ways();
    for (const auto& [sap, directory] : ways) {
        std::error_code ignored;
        if (fs::equivalent(directory, own, ignored)) {
            throw UsageError(fmt::format("--via must name another directory than vorsim's own, {}", own));
        }
    }
    return ways;
}

} // namespace

Server::Server(const Options& options)
    : options_(options), page_(options.http ? std::make_unique<Page>(*options.http, options.http_control) : nullptr),
      directory_(directory()), stop_requests_(sockets::stop_requests()),
      world_({.seed = options.seed, .show_secrets = options.show_secrets, .passed_on = passed_on(options)},
             {.show_secrets = options.show_secrets, .lenient = options.lenient_konfd}),
      control_(loop_, running_, parse_command),
      recorder_(loop_, control_, memory_, {vor::screen_of(STDOUT_FILENO, options.color), options.ids}),
      messages_(loop_, world_, recorder_, options.seed, options.delays, ways_of(options, directory_),
                options.show_secrets),
      running_{world_, messages_, control_, recorder_, memory_}, spare_(open("/dev/null", O_RDONLY | O_CLOEXEC))
{
    std::signal(SIGPIPE, SIG_IGN);
    check_files(options_);
    for (const std::uint16_t sap : options_.without) {
        messages_.leave(sap);
    }
    for (const std::uint16_t sap : options_.served()) {
        messages_.own(sap);
    }
    if (options_.faults_file) {
        for (faults::Rule& rule : faults::read_rules(*options_.faults_file)) {
            expect_own(messages_.managers(), rule, *options_.faults_file);
            world_.faults.add(std::move(rule), std::chrono::steady_clock::now());
        }
    }
    for (const faults::Rule& rule : options_.faults) {
        expect_own(messages_.managers(), rule, "--fault");
        world_.faults.add(rule, std::chrono::steady_clock::now());
    }
    try {
        control_.listen(control_path(directory_)); // after the messages, which are served before requests about them
    } catch (const sockets::InUse&) {
        throw std::runtime_error(fmt::format("another vorsim is running in {}", directory_));
    }
    bind_managers();
    bind_konfd();
    if (options_.journal_file) {
        recorder_.open_journal(*options_.journal_file);
    }
    if (options_.state_file) {
        write_state(); // fails now rather than at exit
    }
    recorder_.begin_journal(options_.seed, options_.show_secrets);
    loop_.watch(stop_requests_.get(), [this] { loop_.stop(); });
    if (page_ != nullptr) {
        page_->start(loop_,
                     [this](const std::string& exit_reason) { recorder_.errors().line("vorsim: " + exit_reason); });
    }
}

void Server::bind_managers()
{
    for (const std::uint16_t sap : options_.served()) {
        messages_.start(sap);
    }
}

void Server::bind_konfd()
{
    std::array<char, 4096> path{};
    if (vorinfra_rooted_path(konfd_socket, path.data(), path.size()) != 0) {
        throw UsageError("cannot use konfd's socket path");
    }
    const bool rooted = std::strcmp(path.data(), konfd_socket) != 0;
    try {
        if (rooted) {
            const mode_t before = umask(0077); // a front end accepts no way that others can change
            std::filesystem::create_directories(std::filesystem::path(path.data()).parent_path());
            umask(before);
        }
        konfd_server_ = std::make_unique<KonfdServer>(
            loop_, world_.konfd, path.data(), [this](KonfdExchange& exchange) { return messages_.deliver(exchange); });
        running_.konfd_served = true;
    } catch (const std::exception& error) {
        if (rooted) {
            throw;
        }
        // The real path may be a real konfd's.
        recorder_.errors().line(fmt::format("vorsim: konfd is not served: {}\nhint: set VORINFRA_ROOT", error.what()));
    }
}

void Server::write_state()
{
    const std::string& path = *options_.state_file;
    const std::string text = std::get<Request>(parse_command("show --json"))(running_).value_or("");
    try {
        vor::replace_file(path, text, 0600); // it may hold passwords
    } catch (const vor::FileError& error) {
        throw std::runtime_error(fmt::format("cannot write the state {}: {}", path, error.what()));
    }
}

int Server::run()
{
    recorder_.out().line(fmt::format("vorsim: ready, {} managers{} in {}", messages_.managers().endpoints().size(),
                                     konfd_server_ != nullptr ? " and konfd" : ", no konfd,", directory_));
    for (const std::string& note : messages_.relay().notes()) {
        recorder_.out().line("vorsim: " + note);
    }
    if (page_ != nullptr) {
        recorder_.out().line(fmt::format("vorsim: page at {}", page_->link()));
    }
    loop_.run();
    messages_.end();
    page_.reset(); // before the sockets, whose removal signals the end to others
    spare_ = sockets::Descriptor();
    if (options_.state_file) {
        write_state();
    }
    if (recorder_.journal_failed()) {
        return 1;
    }
    const std::string complaints = options_.strict ? recorder_.complaints() : "";
    if (!complaints.empty()) {
        recorder_.errors().line(complaints);
    }
    return complaints.empty() ? 0 : 3;
}

} // namespace vorsim::server
