// A site file of any bytes and its variables, planned and made: what was made is not to be made again.
#include <fstream>

#include "call/verdict.hpp"
#include "input.hpp"
#include "output/output.hpp"
#include "processes.hpp"
#include "site/diff.hpp"
#include "site/show.hpp"
#include "text/json.hpp"

using namespace vorcfg;
using namespace fuzz;

namespace {

const std::string site_name = "site";
const std::string journal_name = "journal";

void require_told(const InputError& complaint)
{
    require(!complaint.text.empty(), "a complaint says what is wrong");
    require(vor::Json::read(json_of(complaint)).has_value(), "a complaint is told in JSON");
}

// No secret of this machine's files, and nobody is asked.
std::string harmless(std::string text)
{
    std::ranges::replace(text, '@', 'a');
    std::ranges::replace(text, '?', 'q');
    return text;
}

Variables variables_of(const std::string& path, Input& input)
{
    Variables variables;
    for (int given = input.byte() % 3; given > 0; --given) {
        try {
            variables.set(harmless(input.text()));
        } catch (const InputError& complaint) {
            require_told(complaint);
        }
    }
    const std::string file = harmless(input.text());
    std::ofstream(path, std::ios::binary) << file;
    try {
        variables.read(path);
    } catch (const InputError& complaint) {
        require(complaint.place.line > 0 && complaint.place.column > 0, "a variable has its place");
        require_told(complaint);
    }
    return variables;
}

std::vector<PreparedCall> calls_in(Batch& batch)
{
    std::vector<PreparedCall> calls;
    for (;;) {
        try {
            auto planned = batch.next();
            if (!planned) {
                return calls;
            }
            calls.push_back(std::move(*planned));
        } catch (const InputError& complaint) {
            require_told(complaint);
        }
    }
}

Plan plan_of(const std::vector<PreparedCall>& calls, const History& history)
{
    Planner planner({});
    for (const PreparedCall& call : calls) {
        planner.add(call);
    }
    return planner.against(history);
}

// As an apply writes it down.
void make(const Plan& plan, History& history)
{
    for (const PlanLine& line : plan.lines) {
        const std::size_t number = history.entries().size() + 1;
        if (line.due) {
            history.take(CallBegun{.number = number, .key = line.key});
            history.take(CallEnded{.number = number, .outcome = std::string(name_of(Outcome::accepted)), .done = true});
        }
    }
}

void require_shown_plan(const Plan& plan)
{
    for (const bool json : {false, true}) {
        const Shown shown{site_name, journal_name, json};
        for (const char character : lines_of(plan, shown) + summary_of(plan, shown) + warnings_of(plan, shown)) {
            require(character == '\n' || (static_cast<unsigned char>(character) >= 0x20 && character != 0x7f),
                    "no control character is shown");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const processes::TemporaryDirectory place;
    Input input(data, size);
    Variables variables = variables_of((place.path() / "vars").string(), input);
    const Bytes rest = input.take(size);
    const std::string text = harmless({rest.begin(), rest.end()});
    Batch batch(text, site_name, {.literals = true, .standard_input = false}, std::move(variables));
    const std::vector<PreparedCall> calls = calls_in(batch);
    batch.unused_variables();

    History history;
    const Plan fresh = plan_of(calls, history);
    require_shown_plan(fresh);
    require(fresh.tally().due + fresh.asking <= calls.size(), "a line is one call");
    make(fresh, history);
    const Plan again = plan_of(calls, history);
    require_shown_plan(again);
    require(again.tally().due == 0, "what was accepted is not to be made again");
    return 0;
}
