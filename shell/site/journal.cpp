#include "site/journal.hpp"

#include <cerrno>
#include <filesystem>

#include <fmt/core.h>

#include "text/json.hpp"
#include "text/json_lines.hpp"
#include "text/text.hpp"

namespace vorcfg::site {

namespace {

[[noreturn]] void fail(const std::string& path, std::string_view why)
{
    throw input::InputError{fmt::format("{}: {}", path, why), input::exit_journal};
}

[[noreturn]] void fail(const std::string& path, const vor::FileError& error)
{
    if (error.error == EWOULDBLOCK) {
        throw JournalInUse{{fmt::format("{}: in use by another vorcfg", path), input::exit_journal}};
    }
    fail(path, error.what());
}

// Also the beginning of one whose first line was cut short.
bool is_journal(std::string_view line)
{
    constexpr std::string_view beginning = R"({"vorcfg_journal":)";
    return beginning.starts_with(line.substr(0, beginning.size()));
}

// Perhaps it is the file of calls, whose name the journal's begins with.
[[noreturn]] void not_a_journal(const std::string& path)
{
    const std::string journal = path + ".journal";
    const bool has_one = std::filesystem::exists(journal);
    throw input::InputError{.text = fmt::format("{} is not a journal", path),
                            .exit = input::exit_journal,
                            .hint = has_one ? fmt::format("its journal is {}", journal) : ""};
}

std::string line_of(const Record& record)
{
    return text_of(record) + '\n';
}

} // namespace

Journal Journal::read(const Machine& machine, const std::string& path)
{
    Journal journal(machine, path);
    try {
        journal.file_ = machine.disk.open(path, Access::read);
        journal.load(false);
        journal.close();
    } catch (const vor::FileError& error) {
        if (error.error != ENOENT) {
            fail(path, error);
        }
    }
    return journal;
}

Journal Journal::open(const Machine& machine, const std::string& path, Access access, const std::string& gateway)
try {
    Journal journal(machine, path);
    journal.file_ = machine.disk.open(path, access);
    journal.load(true);
    if (!gateway.empty()) {
        journal.check_gateway(gateway);
    }
    if (journal.size_ == 0) {
        journal.append(GatewayNamed{gateway, true, machine.clock.stamp()});
        journal.file_->sync_name();
    } else if (journal.ledger_.gateway().empty() && !gateway.empty()) {
        if (!journal.ledger_.entries().empty()) {
            machine.note(fmt::format("{}: named no gateway, from now on it is the journal of {}", path, gateway));
        }
        journal.append(GatewayNamed{gateway, false, machine.clock.stamp()});
    }
    return journal;
} catch (const vor::FileError& error) {
    fail(path, error);
}

void Journal::check_gateway(const std::string& gateway) const
{
    const std::string& known = ledger_.gateway();
    if (known.empty() || known == gateway) {
        return;
    }
    throw input::InputError{
        .text = fmt::format("{}: belongs to gateway {}{}", path_, vor::quoted(known),
                            gateway.empty() ? ", which is not named" : ", not " + vor::quoted(gateway)),
        .exit = input::exit_journal,
        .hint = gateway.empty() ? fmt::format("begin the file with the line gateway {0}, or give --gateway {0}",
                                              vor::printable(known))
                                : ""};
}

// Every line ends. One that does not was cut off when the process or the machine stopped, before the call that it
// announces was sent.
void Journal::load(bool repair)
{
    const std::string content = file_->content();
    for (std::uint64_t number = 1; size_ < content.size(); number++) {
        const std::size_t end = std::min(content.find('\n', size_), content.size());
        const std::string_view line = std::string_view(content).substr(size_, end - size_);
        const bool is_first = number == 1;
        const bool is_last = end + 1 >= content.size();
        if (is_first && !is_journal(line)) { // before anything of it is repaired
            not_a_journal(path_);
        }
        if (end == content.size() || (is_last && !is_first && !vor::Json::read(line))) {
            machine_.note(fmt::format("{}: line {} is incomplete{}", path_, number, repair ? " and was removed" : ""));
            if (repair) {
                file_->truncate(size_);
            }
            return;
        }
        try {
            const Record record = record_in(line, is_first);
            note_place(record, line);
            ledger_.take(record);
        } catch (const vor::JsonError&) {
            fail(path_, fmt::format("line {} is not a valid record", number));
        } catch (const input::InputError& error) {
            fail(path_, fmt::format("line {}: {}", number, error.text));
        }
        size_ = end + 1;
    }
}

// Before the line is counted.
void Journal::note_place(const Record& record, std::string_view line)
{
    if (std::holds_alternative<ApplyPending>(record)) {
        const std::size_t at = line.find(not_reverting);
        not_reverting_at_ = at != std::string_view::npos ? size_ + at : 0;
    }
}

void Journal::append(const Record& record, bool on_disk)
try {
    const std::string line = line_of(record);
    file_->append(line, on_disk);
    note_place(record, line);
    size_ += line.size();
    ledger_.take(record);
} catch (const vor::FileError& error) {
    fail(path_, error);
}

void Journal::append_or_keep(const Record& record)
{
    if (kept_.empty()) {
        try {
            append(record);
            return;
        } catch (const input::InputError&) {
            mark_reverting();
        }
    }
    kept_ += line_of(record);
    ledger_.take(record);
    write_kept();
}

// So that nobody takes for made what is being reverted without a record.
void Journal::mark_reverting()
try {
    if (not_reverting_at_ != 0) {
        file_->overwrite(not_reverting_at_, now_reverting);
    }
} catch (const vor::FileError&) { // NOLINT(bugprone-empty-catch): it must be reverted all the same
}

bool Journal::write_kept()
try {
    if (!kept_.empty()) {
        file_->append(kept_, true);
        size_ += kept_.size();
        kept_.clear();
    }
    return true;
} catch (const vor::FileError&) {
    return false;
}

void Journal::sync()
try {
    file_->sync();
} catch (const vor::FileError& error) {
    fail(path_, error);
}

CallBegun Journal::begun(const call::PreparedCall& call) const
{
    return {.number = ledger_.entries().size() + 1,
            .at = machine_.clock.stamp(),
            .file = call.place.file,
            .line = call.place.line,
            .key = machine_.key_of(call, SecretKey::Missing::made)};
}

void Journal::begin(const call::PreparedCall& call)
{
    CallBegun record = begun(call);
    const Entry* const replaced = ledger_.replaced_by(record.key);
    record.replaces = replaced != nullptr ? std::optional(replaced->begun.number) : std::nullopt;
    append(record);
}

void Journal::begin_revert(const call::PreparedCall& call, const Entry& reverted)
{
    CallBegun record = begun(call);
    record.takes_back = reverted.begun.number;
    append_or_keep(record);
}

void Journal::end(const call::PreparedCall& call, const call::CallResult& result)
{
    const call::State state = call::state_of(*call.row, result.verdict.outcome, result.seen);
    const CallEnded record{.number = ledger_.entries().size(),
                           .at = machine_.clock.stamp(),
                           .outcome = std::string(call::name_of(result.verdict.outcome)),
                           .verdict = result.verdict.text,
                           .done = state == call::State::unknown ? std::nullopt : std::optional(call::is_made(state)),
                           .status = result.verdict.outcome == call::Outcome::refused && result.manager_errno != 0
                                         ? std::optional(result.manager_errno)
                                         : std::nullopt};
    ledger_.entries().back().begun.takes_back ? append_or_keep(record) : append(record, false);
}

} // namespace vorcfg::site
