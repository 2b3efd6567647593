#include "client/expect.hpp"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

#include <fmt/core.h>

#include "client/commands.hpp"
#include "client/received.hpp"
#include "record/line.hpp"
#include "text/file.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim::client {
namespace {

using record::Comparison;
using record::Expectation;
using record::Step;

constexpr std::size_t context = 3; // steps shown around a difference
constexpr std::size_t folded_indent = 4;
constexpr std::chrono::milliseconds between_comparisons{50};

// One line of what differs.
struct DiffRow {
    char sign;
    std::string stamp;
    std::string text;
};

class Difference {
public:
    Difference(const Check& check, const Received& received, const Comparison& comparison)
        : check_(check), received_(received), comparison_(comparison)
    {
    }

    std::string text(const vor::Screen& screen) const
    {
        std::string text;
        const std::vector<DiffRow> rows = rows_shown(screen);
        std::size_t widest = 0;
        for (const DiffRow& row : rows) {
            widest = std::max(widest, row.stamp.size());
        }
        for (const DiffRow& row : rows) {
            const std::string front = row.sign == '.' ? "" : fmt::format("{} {}", row.sign, row.stamp);
            std::string line = row.sign == '.' ? row.text : fmt::format("{:<{}}  {}", front, widest + 2, row.text);
            if (vor::characters_in(line) > screen.width) {
                const std::string below = '\n' + std::string(folded_indent, ' ');
                line = front + below + vor::joined(vor::wrapped(row.text, screen.width - folded_indent), below);
            }
            const vor::Color color = row.sign == '-'   ? vor::Color::red
                                     : row.sign == '+' ? vor::Color::green
                                                       : vor::Color::plain;
            text += screen.painted(line, color) + '\n';
        }
        return text + fmt::format("vorsim: {}: {}\n", check_.name(), summary());
    }

    std::string document() const
    {
        vor::Json missing = vor::Json::array();
        vor::Json unexpected = vor::Json::array();
        for (const Step& step : comparison_.steps) {
            if (step.kind == Step::Kind::missing) {
                const Expectation& expected = check_.expected[step.expected];
                missing.push_back({{"line", expected.line}, {"text", expected.text}});
            } else if (step.kind == Step::Kind::unexpected) {
                const values::Record& record = received_.records()[step.arrived];
                unexpected.push_back({{"seq", record.seq}, {"time", record.time}, {"text", record.line}});
            }
        }
        vor::Json all{{"holds", holds()},
                      {"messages", received_.records().size()},
                      {"forgotten", received_.forgotten()},
                      {"missing", missing},
                      {"unexpected", unexpected}};
        all.add("cut", comparison_.cut);
        return vor::dump(all, 2) + '\n';
    }

    // What is forgotten may have been unexpected, or what is missing.
    bool holds() const
    {
        const bool never =
            std::ranges::any_of(check_.expected, [](const Expectation& one) { return one.count.is_never(); });
        return comparison_.holds() && (received_.forgotten() == 0 || (check_.manner.subset && !never));
    }

private:
    std::string summary() const
    {
        const std::size_t same =
            static_cast<std::size_t>(std::ranges::count(comparison_.steps, Step::Kind::same, &Step::kind));
        std::string text;
        const auto add = [&text](const std::string& more) { text += (text.empty() ? "" : ", ") + more; };
        if (received_.forgotten() > 0) {
            const std::size_t kept = received_.records().size();
            add(fmt::format("{} came, only the latest {} are remembered",
                            vor::counted(received_.forgotten() + kept, "message"), kept));
        }
        if (comparison_.cut) {
            add(check_.manner.any_order ? "too many to be compared in any order" : "too many differ to be compared");
            return text;
        }
        if (comparison_.missing > 0) {
            add(fmt::format("{} missing", vor::counted(comparison_.missing, "message")));
        }
        if (comparison_.unexpected > 0) {
            add(fmt::format("{} unexpected", comparison_.missing > 0
                                                 ? std::to_string(comparison_.unexpected)
                                                 : vor::counted(comparison_.unexpected, "message")));
        }
        if (same > 0) {
            add(fmt::format("{} as expected", same));
        }
        return text;
    }

    DiffRow row_of(const Step& step, const vor::Screen& screen) const
    {
        if (step.kind == Step::Kind::missing) {
            const Expectation& expected = check_.expected[step.expected];
            return {'-', fmt::format("line {}", expected.line), expected.text};
        }
        const values::Record& record = received_.records()[step.arrived];
        std::string stamp = fmt::format("message {}", record.seq);
        stamp += screen.is_terminal ? "  " + record::local_time(record.time) : "";
        return {step.kind == Step::Kind::same ? ' ' : '+', stamp, record.line};
    }

    // The differences; in order, with what is around them.
    std::vector<DiffRow> rows_shown(const vor::Screen& screen) const
    {
        const auto& steps = comparison_.steps;
        std::vector<bool> shown(steps.size());
        for (std::size_t at = 0; at < steps.size(); ++at) {
            if (steps[at].kind == Step::Kind::missing || steps[at].kind == Step::Kind::unexpected) {
                const std::size_t around = check_.manner.any_order ? 0 : context;
                for (std::size_t near = at - std::min(at, around); near < steps.size() && near <= at + around; ++near) {
                    shown[near] = shown[near] || near == at || steps[near].kind == Step::Kind::same;
                }
            }
        }
        std::vector<DiffRow> rows;
        std::size_t times = 1; // that the last one is missing
        bool gap = false;
        for (std::size_t at = 0; at < steps.size(); ++at) {
            const Step& step = steps[at];
            if (!shown[at]) {
                gap = gap || (step.kind == Step::Kind::same && !check_.manner.any_order);
                continue;
            }
            if (gap) {
                rows.push_back({'.', "", "..."});
                gap = false;
            }
            const bool again = step.kind == Step::Kind::missing && at > 0 && steps[at - 1].kind == step.kind &&
                               steps[at - 1].expected == step.expected;
            times = again ? times + 1 : 1;
            if (again) {
                rows.back().text = fmt::format("{}  x{}", check_.expected[step.expected].text, times);
            } else {
                rows.push_back(row_of(step, screen));
            }
        }
        return rows;
    }

    const Check& check_;
    const Received& received_;
    const Comparison& comparison_;
};

// Identical neighbours are one line.
void record_to(const std::string& file)
{
    Received received;
    received.update();
    if (received.forgotten() > 0) {
        throw std::runtime_error(fmt::format("cannot record {}: only the latest {} are remembered",
                                             vor::counted(received.forgotten() + received.records().size(), "message"),
                                             received.records().size()));
    }
    std::string text;
    const auto& records = received.records();
    for (std::size_t at = 0; at < records.size();) {
        const std::string line = record::expectation_of(records[at]);
        std::size_t times = 1;
        while (at + times < records.size() && record::expectation_of(records[at + times]) == line) {
            ++times;
        }
        text += times == 1 ? fmt::format("{}\n", line) : fmt::format("{}  x{}\n", line, times);
        at += times;
    }
    if (file == "-") {
        print(text);
        return;
    }
    try {
        const mode_t mask = umask(0);
        umask(mask);
        vor::replace_file(file, text, 0666 & ~mask);
    } catch (const vor::FileError& error) {
        throw std::runtime_error(fmt::format("cannot write {}: {}", file, error.what()));
    }
}

} // namespace

void Check::read()
try {
    const std::string text = file == "-" ? vor::content_of(stdin) : vor::content_of(file);
    expected = record::read_expectations(text, name());
} catch (const vor::FileError& error) {
    throw server::UsageError(fmt::format("cannot read {}: {}", file, error.what()));
}

bool Check::run(std::FILE* to) const
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + within;
    Received received;
    for (;;) {
        received.update();
        const auto compared = Clock::now();
        const bool knows_all = received.forgotten() == 0 || manner.subset;
        const Comparison comparison = knows_all ? record::compare(expected, received.records(), manner) : Comparison();
        const Difference difference(*this, received, comparison);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (difference.holds() || left.count() <= 0) {
            if (json) {
                vor::print(to, difference.document());
            } else if (!difference.holds()) {
                vor::print(to, difference.text(vor::screen_of(fileno(to), color)));
            }
            return difference.holds();
        }
        received.update(left);
        std::this_thread::sleep_until(std::min(end, compared + between_comparisons));
    }
}

int expect(const std::vector<std::string>& arguments)
{
    struct Options : Check {
        std::string record;
    };
    static constexpr vor::OptionOf<Options> options[] = {
        {{"--record", "FILE", ""}, vor::taken_as<&Options::record>},
        {{"--color", "WHEN", ""}, [](Options& check, std::string_view value) { check.color = vor::color_when(value); }},
    };
    Options check;
    for (vor::Operands operands(arguments); !operands.empty();) {
        if (!operands.take_option(options, check) && !operands.take_option(check_options, static_cast<Check&>(check))) {
            if (!check.file.empty()) {
                operands.end();
            }
            check.file = operands.front() == "-" ? operands.take() : operands.take("FILE");
        }
    }
    if (check.file.empty() == check.record.empty()) {
        throw server::UsageError("expect needs either FILE or --record FILE");
    }
    if (!check.record.empty()) {
        record_to(check.record);
        return 0;
    }
    check.read();
    return check.run(stdout) ? 0 : 1;
}

} // namespace vorsim::client
