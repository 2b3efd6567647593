#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <thread>

#include <fmt/core.h>

#include "client/ask.hpp"
#include "client/commands.hpp"
#include "client/received.hpp"
#include "record/expectation.hpp"
#include "server/commands.hpp"
#include "server/options.hpp"
#include "tables/names.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Waiting {
    std::string line;
    std::string call;
    std::string object;
    std::uint64_t count = 1;
    std::optional<std::int32_t> status;
    bool next = false;
    bool ready = false;
    milliseconds within{10'000};
};

template <class Number>
Number number_of(std::string_view option, std::string_view text, const char* expected)
{
    const auto number = vor::number_in<Number>(text);
    return number ? *number
                  : throw server::UsageError(fmt::format("{} must be {}, not {}", option, expected, vor::quoted(text)));
}

constexpr vor::OptionOf<Waiting> wait_options[] = {
    {{"--call", "NAME", ""}, vor::taken_as<&Waiting::call>},
    {{"--object", "O", ""}, vor::taken_as<&Waiting::object>},
    {{"--count", "N", ""},
     [](Waiting& waiting, std::string_view value) {
         waiting.count = number_of<std::uint32_t>("--count", value, "a number");
         if (waiting.count == 0) {
             throw server::UsageError("--count must be at least 1");
         }
     }},
    {{"--status", "N", ""},
     [](Waiting& waiting, std::string_view value) {
         waiting.status = number_of<std::int32_t>("--status", value, "a status such as 7");
     }},
    {{"--next", "", ""}, vor::taken_as<&Waiting::next>},
    {{"--ready", "", ""}, vor::taken_as<&Waiting::ready>},
    {{"--within", "T", ""},
     [](Waiting& waiting, std::string_view value) { waiting.within = server::time_of("--within", value); }},
};

milliseconds left_until(Clock::time_point end)
{
    return std::max(milliseconds(), std::chrono::ceil<milliseconds>(end - Clock::now()));
}

// A gateway answers once it serves its managers.
void wait_until_ready(milliseconds within)
{
    constexpr milliseconds between_tries{20};
    const auto end = Clock::now() + within;
    for (;;) {
        try {
            Received().skip();
            return;
        } catch (const NotRunning&) {
            if (Clock::now() >= end) {
                throw;
            }
            std::this_thread::sleep_for(std::min(between_tries, left_until(end)));
        }
    }
}

// What is waited for. Throws a UsageError.
record::Expectation expected_by(Waiting& waiting)
{
    if (!waiting.line.empty()) {
        try {
            auto expected = record::parse_expectation(waiting.line, record::Detail::as_wanted);
            if (!expected || expected->count.is_never()) {
                throw server::UsageError("wait needs a message to wait for");
            }
            waiting.count = std::max<std::uint64_t>(waiting.count, expected->count.least);
            expected->text = vor::quoted(expected->text);
            return *expected;
        } catch (const vor::WordError& error) {
            server::refuse_at(waiting.line, error);
        }
    }
    record::Expectation expected{.text = waiting.call, .call = waiting.call, .any_values = true};
    try {
        tables::Selection rows;
        rows.call(waiting.call);
        if (!waiting.object.empty()) {
            rows.object(waiting.object);
            expected.object = waiting.object;
            expected.text += " of " + waiting.object;
        }
    } catch (const tables::NameError& error) {
        throw server::UsageError(error.what());
    }
    return expected;
}

} // namespace

int wait(const std::vector<std::string>& arguments)
{
    Waiting waiting;
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!operands.take_option(wait_options, waiting)) {
            if (!waiting.line.empty()) {
                operands.end();
            }
            waiting.line = operands.take("LINE");
        }
    }
    if (waiting.ready + !waiting.line.empty() + !waiting.call.empty() != 1) {
        throw server::UsageError("wait needs one of LINE, --call NAME and --ready");
    }
    if (waiting.ready) {
        wait_until_ready(waiting.within);
        return 0;
    }
    using Kind = record::Expectation::Kind;
    const record::Expectation expected = expected_by(waiting);
    const bool any_outcome = !expected.verdict.empty() || expected.kind == Kind::complaint;
    const auto counts = [&](const values::Record& one) {
        return waiting.status ? one.status == waiting.status : any_outcome || one.accepted;
    };
    std::vector<std::string> filter;
    if (expected.sap) {
        filter = {"--manager", std::to_string(*expected.sap)};
    }
    if (expected.kind == Kind::message) {
        filter.insert(filter.end(), {"--call", expected.call});
    }
    Received received(filter);
    const auto end = Clock::now() + waiting.within;
    if (waiting.next) {
        received.skip();
    }
    received.update();
    std::uint64_t came = 0;
    std::uint64_t counted = 0;
    for (std::uint64_t first = received.first();; first = received.first()) {
        for (const values::Record& one : received.take()) {
            const bool matches = expected.matches(one);
            came += matches ? 1 : 0;
            counted += matches && counts(one) ? 1 : 0;
        }
        if (counted >= waiting.count) {
            return 0;
        }
        const milliseconds left = left_until(end);
        if (left.count() == 0) {
            const std::string number = counted > 0 ? fmt::format("only {} of {}", counted, waiting.count) : "no";
            throw std::runtime_error(
                fmt::format("{} {} within {} ms{}", number, expected.text, waiting.within.count(),
                            came > counted ? fmt::format(", but {} {}", came - counted,
                                                         waiting.status ? "with another status" : "not accepted")
                                           : ""));
        }
        received.update(left);
        if (received.first() != first) {
            came = counted = 0;
        }
    }
}

} // namespace vorsim::client
