// Sends a journal's requests again, one after the other, and compares.
#include <array>
#include <cerrno>
#include <cstring>
#include <map>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <fmt/core.h>

#include <vorinfra_manager.h>

#include "client/ask.hpp"
#include "client/commands.hpp"
#include "record/bytes.hpp"
#include "record/filter.hpp"
#include "record/reader.hpp"
#include "server/control.hpp"
#include "server/options.hpp"
#include "sockets/endpoint.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

using vor::Json;

constexpr int patience_ms = 5000;
constexpr vor_uint16 answer_bit = 0x8000;

// A record that lacks the bytes to be sent.
struct Unsendable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Unbound : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string bytes_in(const std::optional<std::string>& text, const char* name)
{
    if (!text) {
        throw Unsendable(fmt::format("has no {}", name));
    }
    const auto bytes = record::bytes_of_hex(*text);
    if (!bytes) {
        throw Unsendable(record::is_masked(*text) ? "is masked (write the journal with --show-secrets)"
                                                  : fmt::format("has a damaged {}", name));
    }
    return *bytes;
}

enum class Show : std::uint8_t { values, size };

// "id 0x7003 status 0"
std::string answer_text(vor_uint32 id, std::string_view payload, Show show)
{
    std::int32_t status = 0;
    if (show == Show::size) {
        return fmt::format("id {:#x} {} bytes", id, payload.size());
    }
    if (payload.size() == sizeof status) {
        std::memcpy(&status, payload.data(), sizeof status);
        return fmt::format("id {:#x} status {}", id, status);
    }
    return fmt::format("id {:#x} {}", id, payload.empty() ? "no payload" : record::hex(payload));
}
constexpr char no_answer[] = "no answer";
constexpr char refused[] = "refused";

// A SAP to send from.
class Sender {
public:
    explicit Sender(vor_uint16 sap) : endpoint_(sap), sap_(sap)
    {
        if (endpoint_.handle() == nullptr) {
            throw Unbound(fmt::format("cannot send from SAP {}", sap));
        }
    }

    bool send(vor_uint16 sap, const std::string& datagram)
    {
        sockaddr_un to{};
        to.sun_family = AF_UNIX;
        const std::string path = fmt::format("{}/sap-{}", server::directory(), sap);
        path.copy(to.sun_path, sizeof to.sun_path - 1);
        return sendto(endpoint_.descriptor(), datagram.data(), datagram.size(), MSG_NOSIGNAL,
                      reinterpret_cast<const sockaddr*>(&to), sizeof to) >= 0;
    }

    std::string exchange(const values::Record& record, Show show)
    {
        const std::string meta_data = bytes_in(record.meta_data, "meta_data");
        const std::string payload = bytes_in(record.payload, "payload");
        VOR_IPC_MSG_HDR header;
        std::memset(&header, 0, sizeof header); // its padding is sent, too
        header.ipc_src_id = sap_;
        header.ipc_dest_id = record.sap;
        header.opcode = record.id;
        sequence_ = static_cast<vor_uint16>(sequence_ % 0x7fff + 1);
        header.flag = record.awaits ? sequence_ : vor_uint16{0};
        header.payload_sz = static_cast<vor_uint16>(payload.size());
        header.meta_data_sz = static_cast<vor_uint16>(meta_data.size());
        const std::string head(reinterpret_cast<const char*>(&header), sizeof header);
        if (!send(header.ipc_dest_id, head + meta_data + payload)) {
            return fmt::format("not delivered ({})", std::strerror(errno));
        }
        return record.awaits ? receive(show) : no_answer;
    }

private:
    std::string receive(Show show)
    {
        pollfd waiting{endpoint_.descriptor(), POLLIN, 0};
        std::array<char, sizeof(VOR_IPC_MSG_HDR) + VORINFRA_DATA_MAX> bytes; // NOLINT: filled by the receive
        while (poll(&waiting, 1, patience_ms) == 1) {
            const ssize_t size = recv(waiting.fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
            VOR_IPC_MSG_HDR header;
            if (size < static_cast<ssize_t>(sizeof header)) {
                continue;
            }
            std::memcpy(&header, bytes.data(), sizeof header);
            if (header.flag == (answer_bit | sequence_) && header.meta_data_sz > 0) {
                return refused; // no answer has meta-data
            }
            if (header.flag == (answer_bit | sequence_)) {
                return answer_text(header.opcode,
                                   std::string_view(bytes.data(), static_cast<std::size_t>(size)).substr(sizeof header),
                                   show);
            }
        }
        return no_answer;
    }

    sockets::Endpoint endpoint_;
    vor_uint16 sap_;
    vor_uint16 sequence_ = 0;
};

// A client of konfd that ends every text: each is answered once.
class Konfd {
public:
    std::string exchange(const std::string& text)
    {
        const std::string ended = text + "\n";
        if (socket_.get() < 0) {
            std::array<char, 4096> path{};
            const bool usable = vorinfra_rooted_path("/tmp/konfd.socket", path.data(), path.size()) == 0;
            socket_ = usable ? sockets::connect_to(path.data()) : sockets::Descriptor();
        }
        if (!sockets::send_now(socket_.get(), ended)) {
            return "not delivered";
        }
        // An answer may come in several pieces.
        std::string answer;
        pollfd waiting{socket_.get(), POLLIN, 0};
        while (poll(&waiting, 1, answer.empty() ? patience_ms : 0) == 1) {
            std::array<char, 65536> bytes; // NOLINT: filled by the receive
            const ssize_t size = recv(socket_.get(), bytes.data(), bytes.size(), 0);
            if (size <= 0) {
                socket_ = sockets::Descriptor();
                break;
            }
            answer.append(bytes.data(), static_cast<std::size_t>(size));
        }
        return answer.empty() ? no_answer : answer;
    }

private:
    sockets::Descriptor socket_;
};

struct ReplayOptions {
    std::string state; // empty: none
    bool ignore_readings = false;
    record::Filter filter;
};
constexpr vor::OptionOf<ReplayOptions> replay_options[] = {
    {{"--state", "FILE", ""}, vor::taken_as<&ReplayOptions::state>},
    {{"--ignore-readings", "", ""}, vor::taken_as<&ReplayOptions::ignore_readings>},
};

class Replay {
public:
    Replay(const std::string& path, const ReplayOptions& options) : journal_(path), options_(options) {}

    void run()
    {
        while (const auto line = journal_.next()) {
            if (line->record.seq == 0) {
                throw std::runtime_error(fmt::format("{}: not a journal record", journal_.place(*line)));
            }
            const bool message = line->record.kind == values::Record::Kind::message;
            if (!message && !line->record.via.empty()) {
                continue; // it came from a manager
            }
            if (!options_.filter.passes(line->record)) {
                ++left_out_;
                continue;
            }
            try {
                send_again(*line);
                ++sent_;
            } catch (const Unbound& why) {
                throw std::runtime_error(fmt::format("{}: {}", journal_.place(*line), why.what()));
            } catch (const Unsendable& why) {
                ++skipped_;
                vor::print_line(stderr,
                                fmt::format("{}: {} {}", journal_.place(*line), name(line->record), why.what()));
            }
        }
        if (journal_.torn()) {
            vor::print_line(stderr, "vorsim: skipping the unfinished last line");
        }
    }

    void report(const std::string& where, const std::string& was, const std::string& is)
    {
        ++differences_;
        print(fmt::format("{}: was {}, is {}\n", where, was, is));
    }

    int end() const
    {
        print(fmt::format("vorsim: {} sent again, {}{}{}\n", vor::counted(sent_, "message"),
                          differences_ == 0 ? "no difference" : vor::counted(differences_, "difference"),
                          skipped_ == 0 ? "" : fmt::format(", {} skipped", vor::counted(skipped_, "line")),
                          left_out_ == 0 ? "" : fmt::format(", {} left out by the filter", left_out_)));
        return differences_ + skipped_ == 0 ? 0 : 1;
    }

private:
    static std::string name(const values::Record& record)
    {
        if (record.kind == values::Record::Kind::konfd) {
            return fmt::format("konfd {}", record.commands);
        }
        if (!record.call.empty()) {
            return fmt::format("{} {}", record.call, record.object);
        }
        const std::string id =
            record.kind == values::Record::Kind::message ? fmt::format("{:#x}", record.id) : "without an id";
        return fmt::format("message {} to SAP {}", id, record.sap);
    }

    void send_again(const record::JournalLine& line)
    {
        const values::Record& record = line.record;
        if (line.of_version < record::journal_version) {
            throw Unsendable(fmt::format("is of journal version {}, which has no bytes", line.of_version));
        }
        if (!line.damage.empty() || !line.complete) {
            throw Unsendable(fmt::format("is damaged{}{}", line.damage.empty() ? "" : ", ", line.damage));
        }
        switch (record.kind) {
        case values::Record::Kind::message:
            compare_message(line);
            break;
        case values::Record::Kind::konfd:
            compare_konfd(line);
            break;
        default:
            sender(0xfffe).send(record.sap, bytes_in(record.datagram, "datagram"));
        }
    }

    void compare_message(const record::JournalLine& line)
    {
        const values::Record& record = line.record;
        const Show show = options_.ignore_readings && !record.answer_values.empty() ? Show::size : Show::values;
        std::string was = record.refused ? refused : no_answer;
        if (record.answer_id && record.delivered) {
            was = answer_text(*record.answer_id, bytes_in(record.answer_payload, "answer_payload"), show);
        }
        const std::string is = sender(record.source).exchange(record, show);
        if (was != is && record.delivered) {
            report(fmt::format("{}: {}", journal_.place(line), name(record)), was, is);
        }
    }

    void compare_konfd(const record::JournalLine& line)
    {
        const values::Record& record = line.record;
        const std::string text = bytes_in(record.text, "text");
        if (text.empty()) {
            throw Unsendable("was too long to be recorded");
        }
        const std::string is = konfd_.exchange(text);
        // A text that shared its answer with the previous one has none of its own.
        std::string was = bytes_in(record.answer_text, "answer_text");
        if (was.empty()) {
            was = record.delivered ? record.answer + "\n" : no_answer;
        }
        if (was != is) {
            report(fmt::format("{}: {}", journal_.place(line), name(record)), vor::quoted(was, 60),
                   vor::quoted(is, 60));
        }
    }

    Sender& sender(vor_uint16 sap) { return senders_.try_emplace(sap, sap).first->second; }

    record::JournalReader journal_;
    const ReplayOptions& options_;
    std::map<vor_uint16, Sender> senders_;
    Konfd konfd_;
    std::uint64_t sent_ = 0;
    std::uint64_t skipped_ = 0;
    std::uint64_t left_out_ = 0;
    std::uint64_t differences_ = 0;
};

// Null: there is none.
void compare_held(Replay& replay, const Json* was, const Json* is, const std::string& path)
{
    const auto text = [](const Json* held) { return held != nullptr ? vor::dump(*held) : "missing"; };
    const bool alike = was != nullptr && is != nullptr && was->type() == is->type();
    if (alike && was->is_object()) {
        for (const auto& [key, value] : was->members()) {
            compare_held(replay, &value, is->find(key), fmt::format("{}/{}", path, key));
        }
        for (const auto& [key, value] : is->members()) {
            if (!was->contains(key)) {
                compare_held(replay, nullptr, &value, fmt::format("{}/{}", path, key));
            }
        }
    } else if (alike && was->is_array() && was->size() == is->size()) {
        for (std::size_t at = 0; at < was->size(); ++at) {
            compare_held(replay, &was->elements()[at], &is->elements()[at], fmt::format("{}/{}", path, at));
        }
    } else if (!alike || *was != *is) {
        replay.report(path, text(was), text(is));
    }
}

} // namespace

int replay(const std::vector<std::string>& arguments)
{
    ReplayOptions options;
    std::string path;
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!operands.take_option(replay_options, options) &&
            !operands.take_option(record::filter_options, options.filter)) {
            if (!path.empty()) {
                operands.end();
            }
            path = operands.take("FILE");
        }
    }
    options.filter.check();
    if (path.empty()) {
        throw server::UsageError("needs FILE");
    }
    Json held;
    if (!options.state.empty()) {
        held = state_in(options.state);
    }
    Replay replay(path, options);
    replay.run();
    if (!options.state.empty()) {
        const std::string shown = ask("show --json");
        const Json now = Json::parse(shown, {.members = 1 << 16});
        for (const char* part : {"managers", "konfd"}) {
            compare_held(replay, held.find(part), &now.at(part), part);
        }
    }
    return replay.end();
}

} // namespace vorsim::client
