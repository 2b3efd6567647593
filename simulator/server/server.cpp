#include "server/server.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <set>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include "faults/faults.hpp"
#include "faults/parse.hpp"
#include "record/bytes.hpp"
#include "record/json.hpp"
#include "record/stored.hpp"
#include "server/commands.hpp"
#include "sockets/signals.hpp"
#include "tables/managers.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim {

using vor::Json;

namespace {

namespace fs = std::filesystem;

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

// Two files, neither of them a folder.
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
            throw UsageError(fmt::format("{} is no plain file", *options.state_file));
        }
    }
    if (!options.state_file || !options.journal_file) {
        return;
    }
    const fs::path state = fs::weakly_canonical(fs::absolute(*options.state_file), ignored);
    const fs::path journal = fs::weakly_canonical(fs::absolute(*options.journal_file), ignored);
    if (state == journal || fs::equivalent(state, journal, ignored)) {
        throw UsageError(fmt::format("--state and --journal are one file: {}", *options.state_file));
    }
}

// "2024-05-01T12:00:00.123456Z"
std::string time_text(Arrival time)
{
    const auto since = std::chrono::floor<std::chrono::microseconds>(time.time_since_epoch());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
    const auto whole = static_cast<std::time_t>(seconds.count());
    tm parts{};
    gmtime_r(&whole, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    return fmt::format("{}.{:06}Z", text.data(), (since - seconds).count());
}

Gateway::Settings gateway_settings(const Options& options)
{
    return {.seed = options.seed, .show_secrets = options.show_secrets};
}

konfd::Konfd::Settings konfd_settings(const Options& options)
{
    return {.show_secrets = options.show_secrets, .lenient = options.lenient_konfd};
}

Message message_of(std::uint16_t sap, const VORINFRA_MESSAGE& message)
{
    return {.sap = sap,
            .source = message.source,
            .id = message.id,
            .answer_wanted = message.answer_wanted != 0,
            .meta_data = {message.meta_data, message.meta_data_size},
            .payload = {message.payload, message.payload_size}};
}

// Whether the datagram has the form of a message.
bool is_message(const std::vector<std::uint8_t>& datagram)
{
    VOR_IPC_MSG_HDR header{};
    if (datagram.size() < sizeof header) {
        return false;
    }
    std::memcpy(&header, datagram.data(), sizeof header);
    return datagram.size() == sizeof header + std::size_t{header.meta_data_sz} + header.payload_sz;
}

// The lines that concern one manager, or one of its objects.
std::string section(const std::string& text, const std::string& manager, const std::string& object)
{
    std::string found;
    bool in_manager = false;
    bool in_object = object.empty();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin) + 1;
        const std::string_view line(text.data() + begin, end - begin);
        begin = end;
        if (!line.starts_with(" ")) {
            in_manager = line.substr(0, line.find_first_of("(\n")) == manager;
        } else if (in_manager && !line.starts_with("   ") && !object.empty()) {
            in_object = line.substr(2, line.size() - 3) == object;
        }
        found += in_manager && (in_object || !line.starts_with(" ")) ? line : "";
    }
    return found;
}

} // namespace

Server::Server(const Options& options)
    : options_(options), directory_(usable_directory()), stop_requests_(stop_requests()), out_(loop_, STDOUT_FILENO),
      errors_(loop_, STDERR_FILENO), gateway_(gateway_settings(options)), konfd_(konfd_settings(options)),
      faults_(options.seed), managers_(loop_, [this](Inlet& inlet) { receive(inlet); }),
      outbox_([this](std::uint16_t sap) {
          const Inlet* const inlet = managers_.inlet(sap);
          return inlet != nullptr ? inlet->handle() : nullptr;
      }),
      delays_(options.seed, options.delays), spare_(open("/dev/null", O_RDONLY | O_CLOEXEC))
{
    std::signal(SIGPIPE, SIG_IGN);
    check_files(options_);
    if (options_.faults_file) {
        for (faults::Rule& rule : faults::read_rules(*options_.faults_file)) {
            faults_.add(std::move(rule), std::chrono::steady_clock::now());
        }
    }
    loop_.in_turn([this] { return serve(); }); // before all that is asked about it
    try {
        control_ = std::make_unique<Control>(loop_, control_path(directory_),
                                             [this](const Json& request) { return answer(request); });
    } catch (const InUse&) {
        throw std::runtime_error(fmt::format("another vorsim runs in {}", directory_));
    }
    bind_managers();
    bind_konfd();
    if (options_.journal_file) {
        journal_ = Journal(*options_.journal_file);
    }
    if (options_.state_file) {
        write_state(); // what cannot be written is better known now
    }
    journal_.write(journal_head(time_text(std::chrono::system_clock::now()), options_.seed, options_.show_secrets));
    loop_.watch(stop_requests_.get(), [this] { loop_.stop(); });
}

void Server::bind_managers()
{
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
    loop_.at([this] { return managers_.deadline(); },
             [this] {
                 managers_.on_deadline(std::chrono::steady_clock::now(),
                                       [this](const std::string& why) { errors_.line(why); });
             });
    loop_.at([this] { return outbox_.deadline(); }, [this] { outbox_.on_deadline(std::chrono::steady_clock::now()); });
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
                                                      [this](KonfdExchange& exchange) { return deliver(exchange); });
    } catch (const std::exception& error) {
        if (rooted) {
            throw;
        }
        // The real path may be a real konfd's.
        errors_.line(
            fmt::format("vorsim: konfd is not served: {} (VORINFRA_ROOT gives it a place of its own)", error.what()));
    }
}

void Server::receive(Inlet& inlet)
{
    horizon_ = std::max(horizon_, inlet.next().value_or(Arrival{}));
}

// What arrived after the horizon waits for the next turn: only then is it known
// that nothing came before it at another manager.
bool Server::serve()
{
    for (int turn = 0; turn < messages_in_turn; ++turn) {
        Inlet* first = nullptr;
        for (const auto& [sap, inlet] : managers_.inlets()) {
            const auto next = inlet->known();
            if (next && *next <= horizon_ && (first == nullptr || *next < *first->known())) {
                first = inlet.get();
            }
        }
        if (first == nullptr) {
            break;
        }
        const std::uint16_t sap = first->handle()->sap_id;
        take(*first);
        if (Inlet* const still = managers_.inlet(sap)) {
            still->next();
        }
    }
    horizon_ = std::chrono::system_clock::now();
    return false; // what is left is readable still
}

void Server::take(Inlet& inlet)
{
    const Arrival arrived = *inlet.known();
    const std::uint16_t sap = inlet.handle()->sap_id;
    VORINFRA_MESSAGE message;
    const int received = inlet.receive(message);
    if (std::ferror(stderr) != 0) { // the platform's own line found no room
        std::clearerr(stderr);
        errors_.count_lost(1);
    }
    if (received < 0) {
        const bool answers = is_message(inlet.datagram());
        discard(inlet, arrived, answers ? Record::Kind::foreign : Record::Kind::malformed,
                answers ? "an answer that nobody awaits"
                        : fmt::format("{} bytes that are no message", inlet.datagram().size()));
    } else if (received > 0 && message.destination != sap) {
        discard(inlet, arrived, Record::Kind::foreign, fmt::format("a message to SAP {}", message.destination));
    } else if (received > 0) {
        deliver(sap, message, arrived, gateway_.judge(message_of(sap, message)));
    }
}

faults::Delivery Server::disturb(std::uint16_t sap, const VORINFRA_MESSAGE& message, Judgement& judgement)
{
    const auto now = std::chrono::steady_clock::now();
    faults::Delivery delivery;
    if (const auto due = faults_.due({.sap = sap,
                                      .client = message.source,
                                      .id = message.id,
                                      .call = judgement.record.call,
                                      .object = judgement.record.object,
                                      .answered = judgement.answered},
                                     now)) {
        ++counters_.faulted;
        delivery = faults::disturb(judgement, *due);
    }
    if (delivery.way == faults::Delivery::Way::dying) {
        managers_.stop_until(sap, now + delivery.wait);
        outbox_.drop(sap);
    } else {
        delivery.wait += delays_.draw(sap);
    }
    return delivery;
}

void Server::deliver(std::uint16_t sap, const VORINFRA_MESSAGE& message, Arrival arrived, Judgement judgement)
{
    using Way = faults::Delivery::Way;
    const faults::Delivery delivery = disturb(sap, message, judgement);
    gateway_.settle(judgement);
    Record& record = judgement.record;
    const auto sent = outbox_.send(sap, message, judgement, delivery, std::chrono::steady_clock::now());
    if (sent == Outbox::Sent::gone) {
        record.line += " (the asker is gone)";
        record.delivered = false;
    } else if (sent == Outbox::Sent::crowded) {
        record.line += " (too many answers are late: this one is not)";
    }
    ++counters_.messages;
    ++(record.complained ? counters_.complained : counters_.accepted);
    out_.line(record.line);
    if (bytes_wanted()) {
        record.meta_data = hex({message.meta_data, message.meta_data_size});
        record.payload = payload_record(message_of(sap, message), !record.complained, options_.show_secrets);
        record.refused = judgement.answered && delivery.way == Way::refused;
        if (judgement.answered && !record.refused && delivery.way != Way::never && delivery.way != Way::dying) {
            record.answer_id = judgement.answer_id;
            record.answer_payload = hex(judgement.answer);
        }
    }
    write_down(record, arrived);
}

void Server::discard(const Inlet& inlet, Arrival arrived, Record::Kind kind, const std::string& why)
{
    const bool foreign = kind == Record::Kind::foreign;
    ++(foreign ? counters_.foreign : counters_.malformed);
    Record record{.kind = kind};
    record.sap = inlet.handle()->sap_id;
    record.why = why;
    record.line = fmt::format("{}: {}: {}", foreign ? "foreign" : "malformed", manager_label(record.sap), why);
    if (bytes_wanted()) {
        record.datagram = datagram_record(inlet.datagram(), options_.show_secrets);
    }
    write_down(record, arrived);
}

faults::Hearing Server::deliver(KonfdExchange& exchange)
{
    auto& [text, reply] = exchange.exchange;
    Record& record = reply.record;
    auto hearing = faults::Hearing::whole;
    if (const auto due = faults_.due({.konfd = true, .object = record.commands, .answered = !reply.answer.empty()},
                                     std::chrono::steady_clock::now())) {
        ++counters_.faulted;
        hearing = faults::disturb(reply, *due);
    }
    ++(record.complained ? counters_.complained : counters_.accepted);
    out_.line(record.line);
    record.client = exchange.client;
    if (bytes_wanted()) {
        record.delivered = hearing != faults::Hearing::never && hearing != faults::Hearing::hung_up;
        record.text = konfd_record(text, options_.show_secrets);
        record.answer_text = record.delivered ? hex(reply.answer) : "";
    }
    write_down(record, exchange.arrived);
    return hearing;
}

void Server::write_down(Record& record, Arrival arrived)
{
    blamed_ = blamed_ || !counters_.blameless();
    record.seq = ++recorded_;
    if (bytes_wanted()) {
        const auto took = std::chrono::system_clock::now() - arrived;
        record.time = time_text(arrived);
        record.took = std::chrono::duration_cast<std::chrono::microseconds>(took).count();
        const std::string line = json_line(record);
        const bool failed = journal_.failed();
        journal_.write(line);
        if (journal_.failed() && !failed) {
            errors_.line(journal_.why());
        }
        control_->publish(line);
    }
    control_->note(record.call, record.object);
}

std::string Server::text() const
{
    const std::string konfd = konfd_.text();
    std::string text = gateway_.state().text();
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
    return json_of(counters_, out_.lost() + errors_.lost(), gateway_.state(), konfd_);
}

Json Server::overview() const
{
    Json all = json();
    std::map<std::uint16_t, bool> served;
    for (const Manager& manager : managers) {
        served[manager.sap] = false;
    }
    for (const auto& [sap, inlet] : managers_.inlets()) {
        served[sap] = true;
    }
    for (const auto& [sap, is_served] : served) {
        all["served"].push_back({{"name", manager_key(sap)}, {"sap", sap}, {"served", is_served}});
    }
    all["konfd_served"] = konfd_server_ != nullptr;
    all["faults"] = json_of(faults_.list(std::chrono::steady_clock::now()));
    return all;
}

std::string Server::answer(const Json& request)
{
    const std::string what = request.at("do").string();
    if (what == "show") {
        return show(request);
    }
    if (what == "overview") {
        return vor::dump(overview());
    }
    if (is_command(what)) {
        return obey(fmt::format("{} {}", what, request.at("words").string()));
    }
    if (what == "reset") {
        reset();
    } else if (what == "load") {
        load(request.at("state"));
    } else if (what == "quit") {
        loop_.stop();
    } else {
        throw std::runtime_error(fmt::format("\"{}\" is nothing that can be asked for", what));
    }
    return "";
}

std::string Server::show(const Json& request) const
{
    const std::string manager = request.value("manager", "");
    const std::string object = request.value("object", "");
    const auto nothing_held = [&] {
        return std::runtime_error(
            fmt::format("nothing is held for {}{}{}", manager, object.empty() ? "" : "/", object));
    };
    if (!request.value("json", false)) {
        const std::uint64_t lost = out_.lost() + errors_.lost();
        const std::string lines = lost > 0 ? fmt::format(", {} lost", vor::counted(lost, "line")) : "";
        const std::string all = text();
        const std::string part = manager.empty() ? all : section(all, manager, object);
        if (!manager.empty() && std::ranges::count(part, '\n') < 2) {
            throw nothing_held();
        }
        return manager.empty() ? fmt::format("vorsim: {}{}\n{}", counters_.text(), lines, part) : part;
    }
    Json shown = json();
    if (manager == "konfd") {
        shown = Json(shown["konfd"]);
    } else if (!manager.empty()) {
        const Json held = shown["managers"];
        if (!held.contains(manager) || (!object.empty() && !held[manager]["objects"].contains(object))) {
            throw nothing_held();
        }
        shown = object.empty() ? held[manager] : held[manager]["objects"][object];
    }
    return fmt::format("{}\n", vor::dump(shown, 2));
}

void Server::reset()
{
    gateway_ = Gateway(gateway_settings(options_));
    konfd_ = konfd::Konfd(konfd_settings(options_));
    counters_ = {};
    control_->forget_past();
}

void Server::load(const Json& document)
{
    State state = stored_state(document.at("managers"));
    konfd::Konfd konfd(konfd_settings(options_));
    if (const Json* const lines = document.find("konfd")) {
        store_konfd(konfd, *lines);
    }
    gateway_.hold(std::move(state));
    konfd_ = std::move(konfd);
}

// Never a half-written file under the name.
void Server::write_state() const
{
    const std::string path = *options_.state_file;
    std::string unfinished = fmt::format("{}.XXXXXX", path);
    const Descriptor file(mkostemp(unfinished.data(), O_CLOEXEC)); // its owner's alone: it may hold passwords in clear
    const std::string text = vor::dump(json(), 2) + "\n";
    if (file.get() < 0 || write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
        std::rename(unfinished.c_str(), path.c_str()) != 0) {
        const int error = errno;
        if (file.get() >= 0) {
            unlink(unfinished.c_str());
        }
        throw std::runtime_error(fmt::format("cannot write the state {}: {}", path, std::strerror(error)));
    }
}

void Server::accompany(const Companion& companion)
{
    announcement_ = companion.announcement;
    loop_.watch(companion.descriptor, [this, companion] {
        loop_.forget(companion.descriptor);
        errors_.line(companion.fate());
    });
}

int Server::run()
{
    out_.line(fmt::format("vorsim: ready, {} managers{} in {}", managers_.inlets().size(),
                          konfd_server_ != nullptr ? " and konfd" : ", no konfd,", directory_));
    if (!announcement_.empty()) {
        out_.line(announcement_);
    }
    loop_.run();
    spare_ = Descriptor();
    if (options_.state_file) {
        write_state();
    }
    if (journal_.failed()) {
        return 1;
    }
    return options_.strict && blamed_ ? 3 : 0;
}

} // namespace vorsim
