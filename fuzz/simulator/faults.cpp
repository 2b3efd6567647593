// Fault rules of any text, one per line: how they are parsed and listed, and what they do to a message or an answer of
// konfd.
#include <array>

#include "faults/faults.hpp"
#include "faults/parse.hpp"
#include "input.hpp"
#include "record/json.hpp"
#include "record/line.hpp"

using namespace vorsim;
using namespace vorsim::faults;
using namespace fuzz;

namespace {

constexpr std::int32_t status = 3;

void apply_to_message(const DueRule& due)
{
    gateway::Decision decision;
    decision.answered = true;
    decision.answer = gateway::status_answer(status);
    decision.record.status = status;
    const Delivery delivery = apply(decision, due);
    require(decision.answer.size() <= sizeof status, "no answer grows");
    require(delivery.wait >= Milliseconds(0), "no answer comes before its request");
    require_printable(record::line_of(decision.record));
    require_printable(record::json_line(decision.record));
}

void apply_to_konfd(const DueRule& due)
{
    konfd::Reply reply;
    reply.answer = "-o\n";
    apply(reply, due);
    require_printable(record::line_of(reply.record));
    require_printable(record::json_line(reply.record));
}

// No message meets two faults, and no more messages meet one than the rule allows.
void check_rule(const Rule& rule)
{
    constexpr int messages = 8;
    RuleList plan(1);
    const Time now{};
    plan.add(rule, now);
    const bool konfd = rule.condition.who == Condition::Who::konfd;
    const Subject subject{.konfd = konfd,
                          .sap = rule.condition.sap,
                          .client = rule.condition.client.value_or(200),
                          .id = rule.condition.id.value_or(7),
                          .call = "vor_cfg_set_can_id",
                          .object = rule.condition.object,
                          .answered = true};
    unsigned acted = 0;
    for (int message = 0; message < messages; ++message) {
        if (const auto due = plan.due(subject, now)) {
            ++acted;
            require_printable(due->text());
            konfd ? apply_to_konfd(*due) : apply_to_message(*due);
        }
    }
    require(acted <= rule.end.times.value_or(messages), "a rule ends");
    require(rule.condition.when != Condition::When::nth || acted <= 1, "there is one n-th");
    std::string text = plan.text(now);
    require(!text.empty() && text.back() == '\n', "a rule is listed");
    text.pop_back();
    require_printable(text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view left(reinterpret_cast<const char*>(data), size);
    while (!left.empty()) {
        const std::string_view line = left.substr(0, left.find('\n'));
        left.remove_prefix(std::min(line.size() + 1, left.size()));
        try {
            const Rule rule = parse_rule(line);
            check_rule(rule);
            require(parse_rule(rule.text).text == rule.text, "a rule can be read as it is listed");
        } catch (const vorsim::faults::RuleError& error) {
            require(error.column >= 1 && error.column <= line.size() + 1, "an error has its column");
            require(error.what()[0] != '\0', "an error says what is wrong");
            require_printable(error.what());
        }
    }
    return 0;
}
