// A site's journal of any bytes: it is read, repaired, reverted and made again, or an error names the file.
#include "file.hpp"
#include "input.hpp"
#include "site/diff.hpp"
#include "site/journal.hpp"
#include "site/show.hpp"

using namespace vorcfg;
using namespace fuzz;

namespace {

const std::string file_name = "file";

void check_history(const site::History& history)
{
    for (const site::Entry& entry : history.entries()) {
        name_of(entry.begun.key);
        try {
            require(key_of(prepare(entry.begun.key)).values == entry.begun.key.values,
                    "what was made can be made again");
        } catch (const input::InputError& error) {
            require(!error.text.empty(), "or an error says why not");
        }
    }
    for (const site::History::Undo& undo : history.undos()) {
        require(undo.entry != nullptr &&
                    (undo.before == nullptr || undo.before->begun.number < undo.entry->begun.number),
                "what a call replaced was made before it");
    }
    const site::Shown shown{file_name, file_name, true};
    const site::Plan plan = site::Planner({}).against(history);
    require(plan.tally().due == 0, "an empty file has nothing to make");
    require(!summary_of(plan, shown).empty() && lines_of(plan, shown).find('\0') == std::string::npos,
            "a plan can be shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = file_of(data, size);
    try {
        const site::Journal read = site::Journal::read(path);
        check_history(read.history());
        const std::size_t entries = site::Journal::open(path).history().entries().size();
        require(entries == read.history().entries().size(), "a repair loses nothing that was read");
        require(site::Journal::read(path).history().entries().size() == entries, "a second repair changes nothing");
    } catch (const input::InputError& error) {
        require(error.text.find(path) != std::string::npos, "an error names the file");
    }
    return 0;
}
