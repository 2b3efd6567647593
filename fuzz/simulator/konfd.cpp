// Two clients of konfd, taking turns: what each sends, in which pieces, how long it is quiet, whether it has read.
#include <array>

#include "input.hpp"
#include "konfd/session.hpp"

using namespace vorsim::konfd;
using namespace fuzz;

namespace {

// The texts that one client has yet to end, and how many are ended.
struct Expected {
    std::string unended;
    std::size_t ended = 0;

    void add(std::string_view bytes)
    {
        ended = 0;
        for (const char byte : bytes) {
            if (byte != '\0' && byte != '\n') {
                unended += unended.empty() && (byte == ' ' || byte == '\t' || byte == '\r') ? "" : std::string(1, byte);
            } else if (!unended.empty()) {
                unended.clear();
                ++ended;
            }
        }
    }
};

// Matching a long pattern may take its time; that is not what is looked for.
bool is_costly(std::string_view text)
{
    constexpr std::size_t longest_pattern = 24;
    for (std::size_t at = text.find("-r"); at != text.npos; at = text.find("-r", at + 1)) {
        const std::size_t open = text.find('"', at);
        const std::size_t close = open == text.npos ? text.npos : text.find('"', open + 1);
        if (open != text.npos && std::min(close, text.size()) - open > longest_pattern) {
            return true;
        }
    }
    return false;
}

void check(const std::vector<Reply>& replies)
{
    for (const Reply& reply : replies) {
        require(reply.answer.empty() || reply.answer.starts_with("-o\n") || reply.answer.starts_with("-e\n"),
                "an answer is -o or -e");
        require_shown(reply.report.line);
        require_shown(vor::dump(reply.report.record));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Konfd konfd;
    struct Client {
        Session session;
        Expected expected;
    };
    std::array<Client, 2> clients{Client{Session(konfd), {}}, Client{Session(konfd), {}}};
    Time now{};
    while (!input.empty()) {
        const std::uint8_t action = input.byte();
        auto& [session, expected] = clients[action & 1];
        if ((action & 2) != 0) { // its sender falls quiet
            const auto deadline = session.deadline();
            require(deadline.has_value() == !expected.unended.empty(), "what has no end is waited for");
            now = std::max(now, deadline.value_or(now));
            const auto replies = session.time_out();
            require(replies.size() == (expected.unended.empty() ? 0 : 1), "what has no end is carried out once");
            check(replies);
            expected = {};
            continue;
        }
        const std::string bytes = input.text();
        expected.add(bytes);
        if (is_costly(expected.unended + bytes)) {
            return 0;
        }
        const auto replies = session.receive(bytes, now, (action & 4) != 0);
        require(replies.size() == expected.ended, "each ended text is answered once");
        check(replies);
        if (!expected.unended.empty()) {
            const auto parsed = parse(expected.unended);
            const auto* const complaint = std::get_if<Complaint>(&parsed);
            const bool cut = complaint != nullptr && complaint->incomplete && expected.unended.size() <= longest_text;
            require(session.deadline() == now + patience || (!cut && session.deadline() == now + quiet),
                    "what is cut short is waited for");
        }
    }
    const std::string text = konfd.text();
    require(text.empty() || text.back() == '\n', "the tree is lines");
    require(!vor::dump(konfd.json()).empty(), "the tree is JSON");
    return 0;
}
