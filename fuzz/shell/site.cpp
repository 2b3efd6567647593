// A batch or site file of any bytes and its variables: every line is a call that can be made, or an error at its place;
// what was planned and made is not due again.
#include <fstream>

#include "call/session.hpp"
#include "call/verdict.hpp"
#include "input.hpp"
#include "input/spreadsheet.hpp"
#include "output/output.hpp"
#include "processes.hpp"
#include "site/plan.hpp"
#include "site/show.hpp"
#include "text/json.hpp"

using namespace vorcfg;
using namespace fuzz;

namespace {

const std::string site_name = "site";
const std::string journal_name = "journal";

void require_printable(const std::string& text)
{
    require(std::ranges::none_of(text, [](unsigned char c) { return (c < 0x20 && c != '\n') || c == 0x7f; }),
            "no control character is printed");
}

void require_reported(const input::InputError& error)
{
    require(!error.text.empty(), "an error says what is wrong");
    require_printable(output::text_of(error));
    require(vor::Json::read(output::json_of(error)).has_value(), "an error can be reported in JSON");
}

// Reads no file of this machine and asks for no secret.
std::string harmless(std::string text)
{
    std::ranges::replace(text, '@', 'a');
    std::ranges::replace(text, '?', 'q');
    return text;
}

input::Variables variables_of(const std::string& path, Input& input)
{
    input::Variables variables;
    for (int given = input.byte() % 3; given > 0; --given) {
        try {
            variables.set(harmless(input.text()));
        } catch (const input::InputError& error) {
            require_reported(error);
        }
    }
    const std::string file = harmless(input.text());
    std::ofstream(path, std::ios::binary) << file;
    try {
        variables.read(path);
    } catch (const input::InputError& error) {
        require(error.place.line > 0 && error.place.column > 0, "a variable has its place");
        require_reported(error);
    }
    const std::string sheet_path = path + ".csv";
    std::ofstream(sheet_path, std::ios::binary) << file;
    try {
        const input::Spreadsheet sheet(sheet_path);
        const input::Spreadsheet::Cell& cell = sheet.rows().front().cells.front();
        require(cell.place.line > 1 && cell.place.column == 1, "a row begins its line");
        sheet.row_with({sheet.columns().front().text + '=' + cell.text});
    } catch (const input::InputError& error) {
        require_reported(error);
    }
    return variables;
}

std::vector<call::PreparedCall> calls_in(call::Batch& batch, std::size_t lines)
{
    std::vector<call::PreparedCall> calls;
    std::size_t line = 0;
    const auto require_next = [&](const input::Place& place) {
        require(place.line > line && place.line <= lines && place.column > 0, "lines are read in order, each once");
        line = place.line;
    };
    for (;;) {
        try {
            auto call = batch.next();
            if (!call) {
                return calls;
            }
            require_next(call->place);
            calls.push_back(*call);
            const call::CallResult result = call::Session({.capture = true}, std::nullopt).make(*call);
            require_printable(output::text_of(*call, result));
            require(vor::Json::read(output::json_of(*call, result)).has_value(), "a call can be reported in JSON");
        } catch (const input::InputError& error) {
            require_next(error.place);
            require_reported(error);
        }
    }
}

site::Plan plan_of(const std::vector<call::PreparedCall>& calls, const site::Ledger& ledger)
{
    site::Planner planner({});
    for (const call::PreparedCall& call : calls) {
        planner.add(call);
    }
    return planner.against(ledger);
}

// As an apply writes it down.
void make(const site::Plan& plan, site::Ledger& ledger)
{
    for (const site::PlanLine& line : plan.lines) {
        const std::size_t number = ledger.entries().size() + 1;
        if (line.due) {
            ledger.take(site::CallBegun{.number = number, .key = line.key});
            ledger.take(site::CallEnded{
                .number = number, .outcome = std::string(name_of(call::Outcome::accepted)), .done = true});
        }
    }
}

void require_printable_plan(const site::Plan& plan)
{
    for (const bool json : {false, true}) {
        const site::Shown shown{.file = site_name, .journal = journal_name, .gateway = {}, .json = json};
        require_printable(lines_of(plan, shown) + summary_of(plan, 0, shown));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const processes::TemporaryDirectory place;
    Input input(data, size);
    input::Variables variables = variables_of((place.path() / "vars").string(), input);
    const Bytes rest = input.take(size);
    const std::string text = harmless({rest.begin(), rest.end()});
    call::Batch batch(text, site_name, {.literals = true, .standard_input = false}, std::move(variables));
    const std::vector<call::PreparedCall> calls =
        calls_in(batch, static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1);
    batch.unused_variables();

    site::Ledger ledger;
    const site::Plan fresh = plan_of(calls, ledger);
    require_printable_plan(fresh);
    require(fresh.tally().due + fresh.asking <= calls.size(), "a line is one call");
    make(fresh, ledger);
    const site::Plan again = plan_of(calls, ledger);
    require_printable_plan(again);
    require(again.tally().due == 0, "what was accepted is not due again");
    return 0;
}
