#include "calls.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>
#include <unistd.h>

#include <device_mgmt/common.h>

namespace {

constexpr const char* legend =
    "  Q P request's, response's buffer asked for; q p given back; m 0 1 request's meta-data, payload pointer;\n"
    "  c chain written; x exchanged; s sent; a answer's payload pointer; e E vor_errno cleared, set to the status;\n"
    "  o something printed; r a text read too early; the others are in fake_vorinfra.hpp and calls.hpp";

vor_int32 refusal = -7; // of an exchange or a send

struct Fault {
    const char* column[2];
    void (*script)(fake::Script&);
};

const Fault faults[] = {
    {{"no", "endpoint"}, [](fake::Script&) { vor_cfg_set_ipc_endpoint(nullptr); }},
    {{"no", "request"}, [](fake::Script& platform) { platform.failing_buffer = 1; }},
    {{"no", "response"}, [](fake::Script& platform) { platform.failing_buffer = 2; }},
    {{"null", "meta-data"}, [](fake::Script& platform) { platform.null_meta_data = true; }},
    {{"null", "payload"}, [](fake::Script& platform) { platform.null_payload = 1; }},
    {{"refused", "exchange"}, [](fake::Script& platform) { platform.exchange_result = refusal; }},
    {{"refused", "send"}, [](fake::Script& platform) { platform.send_result = refusal; }},
    {{"id: low", "half"}, [](fake::Script& platform) { platform.answer_id_flips = 0x00000001; }},
    {{"high", "half"}, [](fake::Script& platform) { platform.answer_id_flips = 0x00010000; }},
    {{"empty", "answer"}, [](fake::Script& platform) { platform.null_payload = 2; }},
    {{"status", "7"},
     [](fake::Script& platform) {
         platform.answer = {7, 0, 0, 0x80};
     }},
    {{"status", "1"},
     [](fake::Script& platform) {
         platform.answer = {1, 0, 0, 0};
     }},
    {{"status", "0"}, [](fake::Script&) {}},
};

std::vector<std::string> cells_of(std::string_view text)
{
    std::istringstream stream{std::string(text)};
    return {std::istream_iterator<std::string>(stream), {}};
}

// A cell like the last one is a dot.
std::string strip_of(std::vector<std::string> cells)
{
    std::string text;
    for (size_t i = 0; i < cells.size(); ++i) {
        text += (i == 0 ? "" : " ") + (i + 1 < cells.size() && cells[i] == cells.back() ? "." : cells[i]);
    }
    return text;
}

std::string differences(const std::vector<std::string>& expected, const std::vector<std::string>& actual)
{
    std::string text;
    for (size_t i = 0; i < actual.size() && i < expected.size(); ++i) {
        const std::string& wanted = expected[i] == "." ? expected.back() : expected[i];
        if (wanted != actual[i]) {
            text += fake::text_of("  ", faults[i].column[0], " ", faults[i].column[1], ": ", wanted, " expected, ",
                                  actual[i], " seen\n");
        }
    }
    return text;
}

std::string names_of(const std::string& cells)
{
    std::string names;
    for (const Strip& strip : strips) {
        if (strip_of(cells_of(strip.cells)) == cells) {
            names += fake::text_of(names.empty() ? "" : ", ", strip.name);
        }
    }
    return names.empty() ? "no strip of strips.hpp yet" : names;
}

std::vector<std::string> cells_under_faults(const Row& row)
{
    std::vector<std::string> cells;
    for (const Fault& fault : faults) {
        printed_by([&] {
            const WatchedTexts watched;
            begin_call();
            fake::script.answer_skew = 1; // the sanitizers see a word read where it may not lie
            fake::script.answer_id = row.answered_as;
            fault.script(fake::script);
            cells.push_back(outcome(row.make()));
        });
    }
    return cells;
}

vor_int32 last_errno = 0;
off_t last_printed = 0;

void see_errno_and_output()
{
    if (vor_errno != last_errno) {
        vor_int32 status;
        std::memcpy(&status, fake::script.answer.data(), sizeof status);
        fake::mark(vor_errno == 0 ? 'e' : vor_errno == status ? 'E' : '=');
        last_errno = vor_errno;
    }
    std::fflush(stdout);
    if (const off_t printed = lseek(STDOUT_FILENO, 0, SEEK_CUR); printed != last_printed) {
        fake::mark('o');
        last_printed = printed;
    }
}

} // namespace

std::string shown(vor_int32 code)
{
    return code == refusal ? "R" : std::to_string(code);
}

std::string shown(const void* record)
{
    return record == nullptr                                              ? "null"
           : record == fake::data_of_buffer(2) + fake::script.answer_skew ? "answer"
                                                                          : "stray";
}

void begin_call()
{
    fake::reset();
    vor_cfg_set_ipc_endpoint(fake::handle());
    last_errno = vor_errno = 55;
    last_printed = lseek(STDOUT_FILENO, 0, SEEK_CUR);
    fake::script.witness = see_errno_and_output;
}

std::string outcome(const std::string& returned)
{
    return returned + ":" + fake::steps();
}

std::string printed_by(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

namespace {

void check_requests(const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        begin_call();
        const auto printed = printed_by([&] { row.make(); });
        std::string sent = fake::events();
        if (!printed.empty()) {
            sent += "; prints `" + fake::spelt(printed) + "`";
        }
        if (sent != row.sends) {
            ADD_FAILURE() << row.call << "\n  expected: " << row.sends << "\n  sent:     " << sent;
        }
    }
}

void check_outcomes(const std::vector<Row>& rows)
{
    for (const Row& row : rows) {
        if (row.strip.empty()) {
            continue;
        }
        const Strip& strip = *std::ranges::find(strips, row.strip, &Strip::name);
        for (const vor_int32 result : {-7, 7}) {
            refusal = result;
            const auto cells = cells_under_faults(row);
            if (const std::string seen = strip_of(cells); seen != strip_of(cells_of(strip.cells))) {
                ADD_FAILURE() << row.call << " does not go as the strip " << strip.name << ", refused with " << refusal
                              << ":\n"
                              << differences(cells_of(strip.cells), cells) << "It goes as " << names_of(seen) << ":\n  "
                              << seen << "\n"
                              << legend;
                break;
            }
        }
    }
}

class FamilyTest : public testing::Test {
public:
    explicit FamilyTest(std::function<void()> body) : body_(std::move(body)) {}
    void TestBody() override { body_(); }

private:
    const std::function<void()> body_;
};

} // namespace

Calls::Calls(const char* family, std::vector<Row> rows)
{
    for (const auto& [suite, check] :
         {std::pair{"requests", &check_requests}, std::pair{"outcomes", &check_outcomes}}) {
        testing::RegisterTest(suite, family, nullptr, nullptr, __FILE__, __LINE__,
                              [=]() -> testing::Test* { return new FamilyTest([=] { check(rows); }); });
    }
}
