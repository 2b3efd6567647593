// vorcfg's options and verdicts.
#include <gtest/gtest.h>

#include "call/verdict.hpp"
#include "input/options.hpp"
#include "output/output.hpp"
#include "rows/families.hpp"
#include "text/text.hpp"

using namespace vorcfg;

namespace {

TEST(options, anywhere_before_double_dash)
{
    const char* const words[] = {"gpio", "--json", "set-value", "-1", "--sap=0x1010", "--", "--yes"};
    const input::Options options = input::options_of({const_cast<char* const*>(words), std::size(words)});
    EXPECT_TRUE(options.json);
    EXPECT_FALSE(options.yes);
    EXPECT_EQ(0x1010, options.sap);
    ASSERT_EQ(4U, options.words.size());
    EXPECT_EQ("--yes", options.words[3].text);
}

TEST(konfd_query, passwords_are_masked)
{
    EXPECT_EQ("-s -l \"password ********\" -r \"^password \" \"ssid password\"",
              call::without_secrets("-s -l \"password a b\" -r \"^password \" \"ssid password\"", {}));
    EXPECT_EQ("-c -r \"^password ********\"", call::without_secrets("-c -r \"^password a$\"", {}));
    EXPECT_EQ("the password is", call::without_secrets("the password is", {}));
}

// --- Verdicts -----------------------------------------------------------------

call::Message by(call::Way way, bool delivered)
{
    call::Message message;
    message.way = way;
    message.sap = 4;
    message.delivered = delivered;
    return message;
}

call::Message request(std::optional<std::int32_t> status)
{
    call::Message message = by(call::Way::request, true);
    message.answer_id = message.id;
    message.answer_status = status;
    return message;
}

call::Message konfd_command(const char* answer)
{
    call::Message message = by(call::Way::konfd, true);
    message.answer = answer;
    return message;
}

TEST(verdict, outcome_and_exit_code)
{
    const rows::Row& setter = *rows::row_named("gpio", "set-direction");
    const rows::Row& unread = *rows::row_named("serial", "set-parity");
    const rows::Row& stub = *rows::row_named("ip", "get-ip-address");
    const rows::Row& stored = *rows::row_named("konfd", "set-interface-ip");
    const call::Message one_way = by(call::Way::one_way, true);
    const call::Message unsent = by(call::Way::one_way, false);
    call::Message unserved = unsent;
    unserved.unserved = true;
    call::Message timed_out = by(call::Way::request, false);
    timed_out.timed_out = true;
    call::Message foreign = request(0);
    foreign.answer_id = 1;
    struct VerdictCase {
        const rows::Row& row;
        std::int32_t code;
        std::int32_t manager_errno;
        std::vector<call::Message> messages;
        const char* name;
        int exit;
        const char* state;
    } const cases[] = {
        {setter, 0, 0, {request(0)}, "accepted", 0, "accepted"},
        {setter, -1, 7, {request(7)}, "refused", 1, "refused"},
        {setter, -1001, 0, {request(0)}, "refused", 1, "refused"},
        {setter, -1, 0, {request(7)}, "unread", 5, "unknown"},
        {setter, -4, 0, {request({})}, "unread", 5, "unknown"},
        {setter, -3, 0, {by(call::Way::request, false)}, "not delivered", 3, "not delivered"},
        {setter, -3, 0, {timed_out}, "unknown", 6, "unknown"},
        {setter, -4, 0, {}, "not sent", 4, "not delivered"},
        {setter, 0, 0, {one_way}, "sent", 0, "sent"},
        {setter, 0, 0, {unserved}, "not delivered", 3, "not delivered"},
        {setter, 0, 0, {unsent}, "not delivered", 3, "not delivered"},
        {setter, -3, 0, {one_way}, "contradiction", 9, "unknown"},
        {setter, 0, 0, {request(0), one_way}, "accepted", 0, "accepted"},
        {setter, 0, 0, {request(0), unserved}, "unknown", 6, "unknown"},
        {setter, -3, 0, {request(0), unsent}, "unknown", 6, "unknown"},
        {unread, -4, 0, {request(0)}, "unread", 5, "unread"},
        {unread, -4, 0, {request({})}, "unread", 5, "unknown"},
        {unread, -4, 0, {foreign}, "unread", 5, "unknown"},
        {unread, -4, 0, {request(7)}, "refused", 1, "refused"},
        {stub, 0, 0, {}, "nothing to do", 0, "accepted"},
        {stored, 0, 0, {konfd_command("-o")}, "accepted", 0, "accepted"},
        {stored, -1, 0, {konfd_command("-e")}, "refused", 1, "refused"},
        {stored, -1, 0, {by(call::Way::konfd, true)}, "unknown", 6, "unknown"},
        {stored, -1, 0, {by(call::Way::konfd, false)}, "not delivered", 3, "not delivered"},
        {stored, -1, 0, {konfd_command("-o")}, "contradiction", 9, "unknown"},
    };
    for (const VerdictCase& each : cases) {
        rows::Returned back;
        back.code = each.code;
        call::Observation seen;
        seen.messages = each.messages;
        const call::Verdict verdict = call::judged(each.row, back, each.manager_errno, seen);
        EXPECT_EQ(each.name, call::name_of(verdict.outcome)) << verdict.text;
        EXPECT_EQ(each.exit, call::exit_of(verdict.outcome)) << verdict.text;
        EXPECT_EQ(each.state, call::name_of(call::state_of(each.row, verdict.outcome, seen))) << verdict.text;
    }
}

TEST(options, timeout_units)
{
    const auto seconds = [](const std::string& text) {
        return input::options_of(input::words_of("--timeout " + text), {}).timeout;
    };
    for (const char* const text : {"7200", "7200s", "0x1c20", "120m", "120min", "2h", "7200000ms"}) {
        EXPECT_EQ(7200U, seconds(text)) << text;
    }
    for (const char* const text : {"0", "500ms", "86401", "25h", "2hours", "s", "-1"}) {
        EXPECT_THROW(seconds(text), input::InputError) << text;
    }
}

} // namespace
