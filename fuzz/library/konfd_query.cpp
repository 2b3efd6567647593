// A query built of any texts: its command, what vorsim's konfd reads in it, and any answer to it.
#include <array>
#include <memory>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <device_mgmt/common.h>
#include <device_mgmt/konfd.h>
#include <vorinfra.h>

#include "input.hpp"
#include "konfd/command.hpp"
#include "processes.hpp"

using namespace fuzz;

namespace {

// A konfd that has its answer ready before it is asked.
class Daemon {
public:
    Daemon()
    {
        setenv("VORINFRA_ROOT", place_.path().c_str(), 1);
        setenv("VORINFRA_TIMEOUT_MS", "50", 1);
        std::filesystem::create_directory(place_.path() / "tmp");
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (place_.path() / "tmp/konfd.socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
        require(bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0, "the socket can be bound");
        require(listen(listener_, 1) == 0, "the socket can be bound");
    }

    // The verdict on the query, and what was sent for it.
    vor_int32 answer(VOR_CFG_PROTO* query, std::string_view answer, std::string& sent)
    {
        require(vor_cfg_create_sock_endpoint() == 0, "konfd is there");
        const int peer = accept(listener_, nullptr, nullptr);
        require(send(peer, answer.data(), answer.size(), 0) == static_cast<ssize_t>(answer.size()), "it answers");
        shutdown(peer, SHUT_WR);
        const vor_int32 verdict = vor_konfd_bi_dir_comm(query);
        vor_cfg_remove_sock_endpoint();
        std::array<char, 4096> bytes;
        for (ssize_t got; (got = recv(peer, bytes.data(), bytes.size(), 0)) > 0;) {
            sent.append(bytes.data(), static_cast<std::size_t>(got));
        }
        close(peer);
        return verdict;
    }

private:
    const processes::TemporaryDirectory place_;
    const int listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

// What the setters and the path's elements must produce.
struct Expected {
    vor_uchar op = 0;
    std::string line;
    std::string pattern;
    std::string priority;
    std::vector<std::string> path;
};

void build(Input& input, VOR_CFG_PROTO* query, Expected& expected)
{
    for (int steps = input.byte() % 16; steps > 0; --steps) {
        const std::uint8_t step = input.byte();
        std::string key = input.text().c_str();
        std::string value = input.text().c_str();
        switch (step % 4) {
        case 0:
            vor_cfg_proto_set_line_string(query, key.data(), value.data());
            expected.line += key + " " + value;
            break;
        case 1: {
            const auto type = static_cast<vor_uchar>(step / 4 % 4);
            if (vor_cfg_proto_set_pattern_string(query, type, key.data(), value.data()) == 0) {
                expected.pattern += "^" + key + (type == 1 ? " " + value : "") + "$";
            } else {
                require(type != 1 && type != 2, "two types are patterns");
            }
            break;
        }
        case 2:
            vor_cfg_proto_set_priority_string(query, key.data());
            expected.priority += key;
            break;
        default:
            vor_cfg_proto_append_path_elm(query, key.data(), value.data());
            expected.path.push_back(key + " " + value);
        }
    }
    vor_cfg_proto_set_op(query, expected.op = input.byte() % 5);
}

// A command whose texts need no escape is parsed by konfd as it was meant.
void check_meaning(const std::string& command, const Expected& expected)
{
    const auto parsed = vorsim::konfd::parse(command);
    const auto* const commands = std::get_if<std::vector<vorsim::konfd::Command>>(&parsed);
    const bool escapes = (expected.line + expected.pattern + expected.priority).find('"') != std::string::npos ||
                         std::ranges::any_of(expected.path, [](auto& word) { return word.find('"') != word.npos; });
    if (commands == nullptr || escapes) {
        return; // too long, too deep, a control character, a priority that is none
    }
    require(commands->size() == 1, "one query is one command");
    const auto& [operation, show, line, pattern, priority, path] = commands->front();
    require(operation == "?scu"[expected.op] && !show, "the operation arrives");
    require(expected.op == 3 ? !line : line == expected.line, "the line arrives");
    require(pattern == expected.pattern, "the pattern arrives");
    require(path == expected.path, "the path arrives");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Daemon daemon;
    Input input(data, size);
    std::string answer = input.text();
    VOR_CFG_PROTO* const query = vor_cfg_proto_init();
    std::vector<std::unique_ptr<VOR_CFG_PROTO_PATH, decltype(&free)>> records; // not freed by the cleanup
    Expected expected;
    build(input, query, expected);

    vor_int32 length = 0;
    vor_char* const command = vor_cfg_proto_get_command(query, &length);
    const bool whole = expected.op >= 1 && expected.op <= 3 && !expected.pattern.empty() &&
                       (expected.op == 3 || !expected.line.empty());
    require((command != nullptr) == whole, "a query that lacks nothing is a command");
    std::string bytes;
    if (command != nullptr) {
        bytes.assign(command, static_cast<std::size_t>(length));
        const std::size_t end = bytes.find('\0');
        require(end != bytes.npos, "a terminator is counted");
        require(bytes.find_first_not_of(' ', end + 1) == bytes.npos, "blanks follow the terminator");
        check_meaning(bytes.substr(0, end), expected);
        vor_free(command);
    }
    std::string sent;
    const bool agreed = whole && answer.starts_with("-o");
    require(daemon.answer(query, answer, sent) == (agreed ? 0 : -1), "only -o is accepted");
    require(sent == bytes, "the command is sent as it was counted");

    for (VOR_CFG_PROTO_PATH* record = query->path_head.stqh_first; record != nullptr;
         record = record->elm_link.stqe_next) {
        records.emplace_back(record, free);
    }
    vor_cfg_proto_cleanup(query);
    return 0;
}
