// Two clients of konfd in turns: what each sends, in which pieces, how long it pauses, whether it has read its answer.
#include <array>
#include <utility>

#include "input.hpp"
#include "konfd/session.hpp"
#include "record/json.hpp"
#include "record/line.hpp"
#include "record/stored.hpp"
#include "text/json.hpp"

using namespace vorsim::konfd;
using namespace fuzz;

namespace {

// What one client's bytes mean.
struct Expected {
    std::string unended;
    std::string ended; // the text terminated last; empty: none

    void add(std::string_view bytes)
    {
        ended.clear();
        for (const char byte : bytes) {
            if (byte == '\0' || byte == '\n') {
                ended = std::exchange(unended, {});
            } else if (!unended.empty() || (byte != ' ' && byte != '\t' && byte != '\r')) {
                unended += byte;
            }
        }
    }
};

void check(const Exchange& exchange)
{
    const auto& [answer, record] = exchange.reply;
    require(answer.empty() || answer.starts_with("-o\n") || answer.starts_with("-e\n"), "an answer is -o or -e");
    require_printable(vorsim::record::line_of(record));
    require_printable(vorsim::record::json_line(record));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Konfd konfd;
    struct Client {
        ClientSession session;
        Expected expected;
    };
    std::array<Client, 2> clients{Client{ClientSession(konfd), {}}, Client{ClientSession(konfd), {}}};
    Time now{};
    while (!input.empty()) {
        const std::uint8_t action = input.byte();
        auto& [session, expected] = clients[action & 1];
        if ((action & 2) != 0) { // its sender pauses
            const auto deadline = session.deadline();
            require(deadline.has_value() == !expected.unended.empty(), "an unterminated text is waited for");
            now = std::max(now, deadline.value_or(now));
            const auto exchange = session.time_out();
            require(exchange.has_value() == deadline.has_value(), "an unterminated text is executed once");
            if (exchange) {
                check(*exchange);
            }
            expected = {};
            continue;
        }
        const std::string bytes = input.text();
        for (std::string_view left = bytes; !left.empty();) {
            const std::string_view before = left;
            const auto exchange = session.receive(left, now, (action & 4) != 0);
            expected.add(before.substr(0, before.size() - left.size()));
            require(exchange.has_value() == !expected.ended.empty(), "each terminated text is answered once");
            if (exchange) {
                require(exchange->text == expected.ended || expected.ended.size() > longest_text, "as it was sent");
                check(*exchange);
            }
        }
        if (!bytes.empty() && !expected.unended.empty()) {
            const auto parsed = parse(expected.unended);
            const auto* const complaint = std::get_if<SyntaxError>(&parsed);
            const bool cut = complaint != nullptr && complaint->incomplete && expected.unended.size() <= longest_text;
            require(session.deadline() == now + patience || (!cut && session.deadline() == now + quiet),
                    "an incomplete command is waited for");
        }
    }
    const std::string text = konfd.text();
    require(text.empty() || text.back() == '\n', "the tree is lines");
    require(!vor::dump(vorsim::record::json_of(konfd)).empty(), "the tree is JSON");
    return 0;
}
