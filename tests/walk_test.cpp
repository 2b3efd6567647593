// A site's journal, walked: every write, sync, opening and answer of an apply, its confirmation and its reverting may
// fail or be the last, and what is reported afterwards is never better than the truth.
//
// One process has a clock of its own, a disk that loses what was not synced, and a gateway that knows the truth.
// VOR_WALK=LINES,FAULTS,KILLS walks further than the test does.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "call/batch.hpp"
#include "site/confirm.hpp"
#include "site/making.hpp"
#include "site/plan.hpp"
#include "site/revert.hpp"
#include "text/json_lines.hpp"
#include "text/parse.hpp"

using namespace vorcfg;
using namespace vorcfg::site;
using std::chrono::milliseconds;

namespace {

struct Ended {}; // the process, or the machine

// Every run takes another path: the choices made before, up to the last one that has a further alternative.
class Path {
public:
    std::size_t choose(std::size_t alternatives)
    {
        if (at_ == choices_.size()) {
            choices_.push_back({0, alternatives});
        }
        return choices_[at_++].taken;
    }

    std::string so_far() const
    {
        std::string text;
        for (std::size_t i = 0; i < at_; i++) {
            text += static_cast<char>('0' + choices_[i].taken);
        }
        return text;
    }

    bool next()
    {
        at_ = 0;
        while (!choices_.empty() && ++choices_.back().taken == choices_.back().alternatives) {
            choices_.pop_back();
        }
        return !choices_.empty();
    }

private:
    struct Choice {
        std::size_t taken;
        std::size_t alternatives;
    };
    std::vector<Choice> choices_;
    std::size_t at_ = 0;
};

// --- The machine and the gateway -----------------------------------------------------------

struct Limits {
    int lines = 0;
    int faults = 0;
    int kills = 0;
};

class World : public Clock, public Disk, public call::Caller {
public:
    explicit World(Path& path) : path_(path) {}

    struct File {
        std::string content;
        std::string on_disk;
        bool is_named = false; // on disk
    };

    enum class Answer { accepted, refused, late, lost, foreign, undelivered };

    // --- Clock
    Moment now() const override { return {"boot " + std::to_string(boot_), time_ - booted_, stamp({})}; }
    std::string stamp(std::chrono::seconds from_now) const override
    {
        return std::to_string(1'000'000 + std::chrono::duration_cast<std::chrono::seconds>(time_ + from_now).count());
    }
    void pass(milliseconds time)
    {
        time_ += time;
        is_full_ = is_full_ && time_ < room_at_;
    }

    // --- Disk
    std::unique_ptr<JournalFile> open(const std::string& path, Access access) override;

    // --- The gateway
    call::CallResult make(call::PreparedCall& call) override;
    int signal() const override { return 0; }
    void rest(unsigned) override {}

    // The process may end here, or the power may fail, with or without half of what was not synced.
    void step(const std::string& what);
    bool may_fail() { return faults_ > 0 && path_.choose(2) == 1 && faults_-- > 0; }
    std::size_t choose(std::size_t alternatives) { return path_.choose(alternatives); }
    void fill_disk()
    {
        history += "  the disk is full\n";
        is_full_ = true;
        room_at_ = time_ + std::chrono::seconds(8);
    }
    void change() { changes_++; }
    bool is_full() const { return is_full_; }
    void allow(const Limits& limits)
    {
        faults_ = limits.faults;
        kills_ = limits.kills;
        is_full_ = false;
    }
    int boots() const { return boot_; }
    std::string path_so_far() const { return path_.so_far(); }
    // All that the next command can depend on.
    std::string state() const
    {
        std::string text = fmt::format("{} {} {} {} {}", faults_, kills_, time_.count(), is_full_, boot_);
        for (const auto& [setting, key] : truth) {
            text += fmt::format("|{} {}", call::name_of(key),
                                key.values.size() > 1 ? call::shown(key.row->arguments()[1], key.values[1]) : "");
        }
        for (const auto& [path, file] : files_) {
            text += fmt::format("|{}|{}|{}", file.content, file.on_disk.size(), file.is_named);
        }
        return text;
    }
    std::string content(const std::string& path) const
    {
        const auto file = files_.find(path);
        return file != files_.end() ? file->second.content : "";
    }

    std::map<call::Setting, call::CallKey> truth;
    std::string history; // of a run, to be read where it fails

private:
    Path& path_;
    int faults_ = 0;
    int kills_ = 0;
    milliseconds time_{};
    milliseconds booted_{};
    milliseconds room_at_{};
    bool is_full_ = false;
    int boot_ = 1;
    std::size_t changes_ = 0;           // of the truth
    std::array<std::size_t, 4> left_{}; // by each kind of end offered last
    std::map<std::string, File> files_;
};

void World::step(const std::string& what)
{
    history += what + '\n';
    if (kills_ == 0) {
        return;
    }
    // an end that leaves what an earlier one left tells nothing new
    std::vector<int> ends{0};
    const auto offer = [&](int end, std::size_t bytes) {
        std::size_t& last = left_[static_cast<std::size_t>(end)];
        const std::size_t now =
            bytes * 1000 + changes_ * 10 + (files_.empty() || files_.begin()->second.is_named ? 1 : 2);
        if (last != now) {
            ends.push_back(end);
            last = now;
        }
    };
    std::size_t written = 0;
    std::size_t on_disk = 0;
    for (const auto& [path, file] : files_) {
        written += file.content.size();
        on_disk += file.on_disk.size();
    }
    offer(1, written);
    offer(2, on_disk);
    if (written != on_disk) {
        offer(3, written);
    }
    const int end = ends[path_.choose(ends.size())];
    if (end == 0) {
        return;
    }
    kills_--;
    history += end == 1 ? "  ended here\n" : "  power failure here\n";
    if (end > 1) {
        boot_++;
        booted_ = time_;
        for (auto& [path, each] : files_) {
            const std::size_t half = each.on_disk.size() + (each.content.size() - each.on_disk.size()) / 2;
            each.content = end == 2 ? each.on_disk : each.content.substr(0, half);
            each.on_disk = each.content;
        }
        std::erase_if(files_, [](const auto& each) { return !each.second.is_named; });
    }
    throw Ended();
}

class WalkedFile final : public JournalFile {
public:
    WalkedFile(World& world, World::File& file) : world_(world), file_(file) {}

    std::string content() override { return file_.content; }
    void truncate(std::size_t size) override
    {
        world_.step("truncate");
        file_.content.resize(size);
        file_.on_disk.resize(std::min(size, file_.on_disk.size()));
    }
    void append(std::string_view lines, bool on_disk) override
    {
        world_.step("append " + std::string(lines));
        if (world_.may_fail()) {
            world_.fill_disk();
        }
        if (world_.is_full()) {
            throw vor::FileError(ENOSPC);
        }
        file_.content += lines;
        if (on_disk) {
            sync();
        }
    }
    void overwrite(std::size_t offset, std::string_view text) override
    {
        world_.step("overwrite");
        world_.change();
        file_.content.replace(offset, text.size(), text);
        sync();
    }
    void sync() override
    {
        world_.step("sync");
        file_.on_disk = file_.content;
    }
    void sync_name() override
    {
        world_.step("sync the name");
        file_.is_named = true;
    }

private:
    World& world_;
    World::File& file_;
};

std::unique_ptr<JournalFile> World::open(const std::string& path, Access access)
{
    if (access != Access::read) { // what only reads changes nothing by ending
        step("open");
    }
    if (access != Access::create && !files_.contains(path)) {
        throw vor::FileError(ENOENT);
    }
    return std::make_unique<WalkedFile>(*this, files_[path]);
}

call::CallResult World::make(call::PreparedCall& call)
{
    step("send " + call::name_of(call));
    const auto answer = static_cast<Answer>(may_fail() ? 1 + path_.choose(5) : 0);
    if (answer == Answer::accepted || answer == Answer::late || answer == Answer::foreign) {
        const call::CallKey key = call::key_of(call);
        for (const call::Setting& setting : call::settings_of(key)) {
            truth[setting] = key;
            changes_++;
        }
    }
    step("answer " + std::to_string(static_cast<int>(answer)));
    static constexpr call::Outcome outcomes[] = {call::Outcome::accepted, call::Outcome::refused,
                                                 call::Outcome::unknown,  call::Outcome::unknown,
                                                 call::Outcome::unread,   call::Outcome::not_delivered};
    call::CallResult result;
    result.seen.messages.emplace_back();
    result.verdict.outcome = outcomes[static_cast<std::size_t>(answer)];
    result.verdict.text = std::string(call::name_of(result.verdict.outcome));
    pass(std::chrono::seconds(result.verdict.outcome == call::Outcome::unknown ? 3 : 0));
    return result;
}

// --- Commands ------------------------------------------------------------------------------

const std::string journal_path = "site.journal";

std::vector<call::PreparedCall> calls_of(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    call::Batch batch(text, "site", {});
    std::vector<call::PreparedCall> calls;
    while (auto call = batch.next()) {
        calls.push_back(*call);
    }
    return calls;
}

class Reports final : public call::Reporter {
public:
    bool report_call(const call::PreparedCall&, const call::CallResult&, std::size_t) override { return true; }
    void report_wait(unsigned) override {}
    int finish(const call::Tally& tally, std::size_t, bool) override { return tally.worst; }
};

using States = std::map<std::string, std::string>; // and the paths on which they were reached first

class Walk {
public:
    Walk(World& world, std::vector<call::PreparedCall> calls, bool confirmed, States& states)
        : world_(world), calls_(std::move(calls)), states_(states)
    {
        options_.retry_unknown = true;
        if (confirmed) {
            options_.confirm = 10;
        }
        for (const call::PreparedCall& call : calls_) {
            planner_.add(call);
        }
    }

    // apply, as far as it gets.
    void apply()
    {
        Journal journal = Journal::open(machine(), journal_path, Access::create);
        const auto confirmation = journal.ledger().confirmation(journal.now());
        if (journal.ledger().is_undecided()) {
            if (confirmation == Confirmation::waiting || !revert_in(journal)) {
                return;
            }
        }
        const Plan plan = planner_.against(journal.ledger());
        std::size_t at = 0;
        const auto next = [&]() -> std::optional<call::PreparedCall> {
            while (at < calls_.size() && !plan.is_due(calls_[at].place.line)) {
                at++;
            }
            return at < calls_.size() ? std::optional(calls_[at++]) : std::nullopt;
        };
        Reports reports;
        const Making making{
            .journal = journal, .options = options_, .calls = plan.tally().due, .reporter = reports, .caller = &world_};
        const bool confirms = options_.confirm && plan.tally().due != 0;
        before_apply_ = confirms ? known_truth(journal.ledger()) : before_apply_;
        const Made made = confirms ? make_confirmed(making, next,
                                                    [&] {
                                                        has_waiter_ = true;
                                                        return 1;
                                                    })
                                   : make(making, next);
        const int exit = exit_after(made.exit, planner_.against(journal.ledger()).tally());
        if (exit == input::exit_ok) {
            require(planner_.against(read().ledger()).tally().due == 0, "apply ends well, and the next plan has calls");
        }
    }

    // The waiting process, and whoever confirms meanwhile.
    void wait()
    {
        std::optional<milliseconds> confirmed_at;
        if (const std::size_t when = world_.choose(3); when != 0) { // in time, or when the deadline is over
            confirmed_at = world_.now().since_boot + std::chrono::seconds(when == 1 ? 5 : 12);
        }
        wait_and_revert(
            machine(), journal_path, read().ledger().pending()->first, options_,
            [&](milliseconds longest) {
                const milliseconds now = world_.now().since_boot;
                if (confirmed_at && *confirmed_at - now <= longest) {
                    world_.pass(std::max(*confirmed_at - now, milliseconds(0)));
                    confirmed_at.reset();
                    confirm();
                    return false;
                }
                world_.pass(longest);
                return false;
            },
            &world_);
    }

    void confirm()
    {
        try {
            Journal journal = Journal::open(machine(), journal_path);
            if (journal.ledger().is_undecided()) {
                journal.append(ApplyDecided{.confirmed = true});
            }
        } catch (const input::InputError&) { // the disk is full, which the technician is told
        }
    }

    // revert --expired, again and again
    void revert_expired()
    {
        Journal journal = Journal::open(machine(), journal_path);
        if (journal.ledger().confirmation(journal.now()) == Confirmation::expired) {
            revert_in(journal);
        }
    }

    // One run: an apply, what becomes of its confirmation, what is reported, and another apply.
    void run()
    {
        before_ = world_.truth;
        bool killed = !guarded([this] { apply(); });
        check("after apply");
        if (was_here("wait")) {
            return;
        }
        if (has_waiter_ && world_.boots() == 1) {
            const bool ended = !guarded([this] { wait(); });
            require(ended || !read().ledger().is_undecided(), "the waiting process ends before it has reverted");
            killed = killed || ended;
            check("after waiting");
        }
        if (killed && read().ledger().is_undecided()) {
            const bool has_machine_ended = world_.boots() > 1;
            static constexpr milliseconds outages[] = {std::chrono::seconds(1), std::chrono::seconds(60)};
            world_.pass(outages[has_machine_ended ? 1 : world_.choose(2)]); // another boot has expired anyway
            check("after the outage");
            switch (world_.choose(3)) {
            case 0:
                guarded([this] { revert_expired(); });
                break;
            case 1:
                guarded([this] { confirm(); });
                break;
            default:
                guarded([this] { apply(); });
            }
            check("after the next command");
        }
        world_.allow({0, 0, 0});
        if (!was_here("finish")) {
            finish();
        }
    }

private:
    Machine machine()
    {
        return {world_, world_, [](const std::string&) {}};
    }
    const Journal& read()
    {
        std::string content = world_.content(journal_path);
        if (!seen_ || content != seen_content_) {
            seen_.emplace(Journal::read(machine(), journal_path));
            seen_content_ = std::move(content);
        }
        return *seen_;
    }

    bool revert_in(Journal& journal)
    {
        return revert(journal, options_, call::Signals::none, {}, &world_) == Reverting::done && journal.write_kept();
    }

    // Whether runs that came here on another path go on from the same state.
    bool was_here(const std::string& stage)
    {
        const std::string state =
            fmt::format("{} {} {} {}", stage, has_waiter_, before_apply_.has_value(), world_.state());
        return states_.try_emplace(state, world_.path_so_far()).first->second != world_.path_so_far();
    }

    // False where the process ended.
    template <class Command>
    bool guarded(Command command)
    {
        try {
            command();
        } catch (const Ended&) {
            return false;
        } catch (const input::InputError&) { // as a technician sees it
        }
        return true;
    }

    void require(bool holds, const std::string& what)
    {
        if (!holds && failure.empty()) {
            failure = what;
        }
    }

    // The last apply that needed it.
    bool was_confirmed() const
    {
        const std::string content = world_.content(journal_path);
        const std::size_t confirmed = content.rfind(R"("confirmed":true)");
        return confirmed != std::string::npos && confirmed > content.rfind(R"("pending":)");
    }

    bool is_true(const Entry& entry, const call::Setting& setting) const
    {
        const auto truth = world_.truth.find(setting);
        return truth != world_.truth.end() && truth->second == entry.begun.key;
    }

    // What reverting returns to; what was unknown returns to the last that was accepted.
    std::optional<std::map<call::Setting, call::CallKey>> known_truth(const Ledger& ledger) const
    {
        const bool is_known =
            std::ranges::none_of(ledger.latest(), [&](const Entry* each) { return ledger.is_open(*each); });
        return is_known ? std::optional(world_.truth) : std::nullopt;
    }

    // Nothing that is reported is better than the truth.
    void check(const std::string& when)
    {
        world_.history += when + '\n';
        const Journal& journal = read();
        const Ledger& ledger = journal.ledger();
        for (const Entry* const entry : ledger.latest()) {
            for (const call::Setting& setting : entry->settings) {
                const Known& known = ledger.of(setting);
                if (known.open == nullptr && known.current == entry) {
                    require(is_true(*entry, setting), when + ": the report has what the gateway does not");
                }
            }
        }
        for (const PlanLine& line : planner_.against(ledger).lines) {
            for (const call::Setting& setting : call::settings_of(line.key)) {
                const auto truth = world_.truth.find(setting);
                const bool is_made = truth != world_.truth.end() && truth->second == line.key;
                require(!line.is_up_to_date() || line.state == LineState::overtaken || is_made,
                        when + ": the plan has a line as up to date that the gateway does not have");
            }
        }
        const auto confirmation = ledger.confirmation(journal.now());
        require(confirmation != Confirmation::waiting || world_.now().boot == ledger.pending()->boot,
                when + ": it waits for a time of another boot");
        for (const Undo& undo : ledger.undos()) {
            require(ledger.is_undecided() || was_confirmed() || !undo.can_still_be_reverted(),
                    when + ": given up, but it could still be reverted");
            if (!ledger.is_undecided() && undo.is_reverted()) {
                require(is_true(*undo.before, undo.before->settings.front()), when + ": reverted, but it is not");
            }
        }
        if (confirmation == Confirmation::reverted) {
            require(!before_apply_ || world_.truth == before_apply_, when + ": reverted, but something is left");
        }
    }

    // Without further faults everything ends: the confirmation, and the next apply.
    void finish()
    {
        world_.pass(std::chrono::minutes(2));
        if (read().ledger().is_undecided()) {
            guarded([this] { revert_expired(); });
            require(!read().ledger().is_undecided(), "an expired apply is not reverted");
            check("after reverting");
        }
        const auto confirmation = read().ledger().confirmation(world_.now());
        require(!has_waiter_ || was_confirmed() || !before_apply_ || world_.truth == before_apply_ ||
                    confirmation == Confirmation::partly_reverted,
                "nobody confirmed, and the changes stay");
        options_.confirm.reset();
        guarded([this] { apply(); });
        check("after the last apply");
        require(planner_.against(read().ledger()).tally().due == 0, "another apply does not converge");
        std::map<call::Setting, call::CallKey> wanted = before_;
        for (const call::PreparedCall& call : calls_) {
            const call::CallKey key = call::key_of(call);
            for (const call::Setting& setting : call::settings_of(key)) {
                wanted[setting] = key;
            }
        }
        require(world_.truth == wanted, "the gateway has not what the file says");
    }

    World& world_;
    const std::vector<call::PreparedCall> calls_;
    States& states_; // reached by all runs
    input::Options options_;
    Planner planner_{Selection{}};
    std::optional<Journal> seen_;
    std::string seen_content_;
    bool has_waiter_ = false;
    std::map<call::Setting, call::CallKey> before_;
    std::optional<std::map<call::Setting, call::CallKey>> before_apply_; // --confirm, where it was known

public:
    std::string failure;
};

// --- The walk ------------------------------------------------------------------------------

constexpr const char* addressed = "ip set-ip-address 0 192.168.1.10 255.255.255.0 1";
constexpr const char* by_dhcp = "ip set-dhcp 0 1";
constexpr const char* of_its_own = "can set-id 1 7 1";
const std::vector<std::string> before{addressed, "can set-id 1 6 1"};

// All files of so many lines about the two that overlap, and one with a line of its own.
std::vector<std::vector<std::string>> files_of(int count)
{
    std::vector<std::vector<std::string>> files{{}};
    for (int i = 0; i < count; i++) {
        std::vector<std::vector<std::string>> longer;
        for (const auto& file : files) {
            for (const char* const line : {addressed, by_dhcp}) {
                longer.push_back(file);
                longer.back().emplace_back(line);
            }
        }
        files = std::move(longer);
    }
    files.push_back(files.back());
    files.back().back() = of_its_own;
    return files;
}

Limits limits()
{
#ifndef VOR_WALK
#define VOR_WALK "2,1,1"
#endif
    const char* const given = std::getenv("VOR_WALK");
    Limits limits;
    char comma = 0;
    std::istringstream(given != nullptr ? given : VOR_WALK) >> limits.lines >> comma >> limits.faults >> comma >>
        limits.kills;
    return limits;
}

class SiteWalk : public testing::TestWithParam<std::pair<bool, bool>> {};

TEST_P(SiteWalk, reports_nothing_better_than_the_truth)
{
    const auto [has_before, confirmed] = GetParam();
    const Limits limit = limits();
    const std::vector<call::PreparedCall> first = calls_of(before);
    std::uint64_t runs = 0;
    for (const auto& file : files_of(limit.lines)) {
        const std::vector<call::PreparedCall> calls = calls_of(file);
        Path path;
        States states;
        do {
            World world(path);
            if (has_before) {
                Walk(world, first, false, states).apply();
            }
            world.allow(limit);
            Walk walk(world, calls, confirmed, states);
            walk.run();
            runs++;
            std::string text;
            for (const std::string& line : file) {
                text += line + '\n';
            }
            ASSERT_EQ("", walk.failure) << text << world.history;
        } while (path.next());
    }
    RecordProperty("runs", std::to_string(runs));
    std::printf("%llu runs\n", static_cast<unsigned long long>(runs));
}

INSTANTIATE_TEST_SUITE_P(, SiteWalk,
                         testing::Values(std::pair{false, false}, std::pair{true, false}, std::pair{false, true},
                                         std::pair{true, true}),
                         [](const auto& walk) {
                             return std::string(walk.param.first ? "over_another_file" : "from_nothing") +
                                    (walk.param.second ? "_confirmed" : "");
                         });

} // namespace
