// A site's journal of any bytes: it is read, repaired, reverted and made again, or an error names the file.
#include "file.hpp"
#include "input.hpp"
#include "site/journal.hpp"
#include "site/plan.hpp"
#include "site/show.hpp"

using namespace vorcfg;
using namespace fuzz;

namespace {

const std::string file_name = "file";

void check_ledger(const site::Ledger& ledger)
{
    for (const site::Entry& entry : ledger.entries()) {
        name_of(entry.begun.key);
        try {
            require(key_of(prepare(entry.begun.key)).values == entry.begun.key.values,
                    "what was made can be made again");
        } catch (const input::InputError& error) {
            require(!error.text.empty(), "or an error says why not");
        }
    }
    for (const site::Undo& undo : ledger.undos()) {
        require(undo.before == nullptr || undo.before->begun.number < undo.calls.front()->begun.number,
                "what a call replaced was made before it");
    }
    ledger.confirmation(site::this_machine().clock.now());
    const site::Shown shown{.file = file_name, .journal = file_name, .gateway = {}, .json = true};
    const site::Plan plan = site::Planner({}).against(ledger);
    require(plan.tally().due == 0, "an empty file has nothing to make");
    require(!summary_of(plan, 0, shown).empty() && lines_of(plan, shown).find('\0') == std::string::npos,
            "a plan can be shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = file_of(data, size);
    try {
        const site::Journal read = site::Journal::read(site::this_machine(), path);
        check_ledger(read.ledger());
        const std::size_t entries = site::Journal::open(site::this_machine(), path).ledger().entries().size();
        require(entries == read.ledger().entries().size(), "a repair loses nothing that was read");
        require(site::Journal::read(site::this_machine(), path).ledger().entries().size() == entries,
                "a second repair changes nothing");
    } catch (const input::InputError& error) {
        require(error.text.find(path) != std::string::npos, "an error names the file");
    }
    return 0;
}
