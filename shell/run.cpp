#include "run.hpp"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <iterator>

#include "batch.hpp"
#include "commands.hpp"
#include "complaint.hpp"
#include "json.hpp"
#include "report.hpp"
#include "session.hpp"

namespace vorcfg {

static void print(const Planned& planned, const Report& report, bool json)
{
    const std::string text = json ? json_of(planned, report) + '\n' : text_of(planned, report);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout); // a technician on a bad link sees each verdict as it comes
}

static void check_callable(const Row& row, const Options& options, const std::string& place)
{
    const std::string name = (place.empty() ? "" : place + ": ") + call_name(row);
    if (row.call == nullptr) {
        throw Complaint(name + " cannot be called on its own; what uses it: " + std::string(row.covered_by));
    }
    if ((row.marks & confirm) != 0 && !options.yes && !options.dry_run) {
        throw Complaint(name + " is made only with --yes");
    }
}

// The secret may be left out of the arguments: it then comes from where the
// options say, or from a prompt.
static void add_secret(const Row& row, const Options& options, std::vector<Token>& tokens)
{
    const auto arguments = arguments_of(row);
    const auto given = [](const Argument& argument) { return !argument.output && !argument.counted && !argument.list; };
    std::size_t at = 0;
    std::size_t wanted = 0;
    bool found = false;
    for (const Argument& argument : arguments) {
        at = argument.secret ? wanted : at;
        found = found || argument.secret;
        wanted += given(argument) ? 1 : 0;
    }
    if (options.password && !found) {
        throw Complaint(call_name(row) + " has no secret argument");
    }
    const bool there =
        at < tokens.size() && (tokens[at].text.starts_with('@') || tokens[at].text == "-" || tokens[at].text == "?");
    if (found && !there && tokens.size() + 1 == wanted) {
        tokens.insert(tokens.begin() + std::ptrdiff_t(at), options.password.value_or(Token{"?"}));
    } else if (options.password) {
        throw Complaint("the secret is given twice, or another argument is missing");
    }
}

// What a call started ends with this process.
static void stay(const Report& report)
{
    if (!report.seen.timer || report.verdict.outcome != Outcome::sent) {
        return;
    }
    const std::uint32_t milliseconds = *report.seen.timer;
    std::fprintf(stderr, "vorcfg: the timer ends with this process, which waits until it is due; interrupt to call the "
                         "timer off\n");
    timespec rest{time_t(milliseconds / 1000), long(milliseconds % 1000) * 1000000};
    nanosleep(&rest, nullptr);
}

int run_call(const Options& options)
{
    const Row& row = wanted_row(options.words[0].text, options.words[1].text);
    check_callable(row, options, "");
    std::vector<Token> tokens(options.words.begin() + 2, options.words.end());
    add_secret(row, options, tokens);
    Planned planned;
    try {
        planned = plan(row, tokens, {});
    } catch (const Complaint& complaint) {
        throw Complaint(call_name(row) + ": " + complaint.what(), complaint.exit);
    }
    Session session({options.dry_run, options.trace}, options.sap);
    const Report report = session.run(planned);
    print(planned, report, options.json);
    if ((row.marks & stays) != 0) {
        stay(report);
    }
    return exit_of(report.verdict.outcome);
}

// What a batch came to.
struct Tally {
    unsigned accepted = 0;
    unsigned sent = 0;
    unsigned unread = 0;
    unsigned dry = 0;
    unsigned other = 0; // done, nothing to do
    std::vector<std::string> failed;
    ExitCode worst = exit_ok;

    bool count(const Planned& planned, Outcome outcome)
    {
        const bool by_design = (planned.row->marks & answer_unread) != 0;
        if (outcome == Outcome::accepted) {
            accepted++;
        } else if (outcome == Outcome::sent) {
            sent++;
        } else if (outcome == Outcome::unread && by_design) {
            unread++;
        } else if (outcome == Outcome::dry_run) {
            dry++;
        } else if (exit_of(outcome) == exit_ok) {
            other++;
        } else {
            failed.push_back(planned.place.substr(planned.place.rfind(':') + 1));
            note(exit_of(outcome));
            return false;
        }
        return true;
    }

    // The worst of several failures is what leaves the site least known.
    void note(ExitCode code)
    {
        static constexpr ExitCode order[] = {exit_ok,      exit_unread,  exit_not_sent,      exit_usage,
                                             exit_refused, exit_unknown, exit_not_delivered, exit_contradiction,
                                             exit_unusable};
        const auto rank = [](ExitCode each) { return std::find(std::begin(order), std::end(order), each); };
        worst = rank(code) > rank(worst) ? code : worst;
    }
};

static std::string summary(const std::string& name, const Tally& tally, std::size_t left)
{
    std::string text =
        name + ": " + std::to_string(tally.accepted) + " accepted, " + std::to_string(tally.sent) + " sent";
    if (tally.unread != 0) {
        text += ", " + std::to_string(tally.unread) + " delivered with their verdict unread";
    }
    if (tally.dry != 0) {
        text += ", " + std::to_string(tally.dry) + " shown only (dry run)";
    }
    if (tally.other != 0) {
        text += ", " + std::to_string(tally.other) + " done here";
    }
    text += ", " + std::to_string(tally.failed.size()) + " failed";
    for (std::size_t i = 0; i < tally.failed.size(); i++) {
        text += (i == 0 ? tally.failed.size() == 1 ? " at line " : " at lines " : " ") + tally.failed[i];
    }
    return text + (left != 0 ? ", " + std::to_string(left) + " not made" : "") + '\n';
}

static std::string summary_json(const std::string& name, const Tally& tally, std::size_t left)
{
    return JsonObject()
               .number("schema", 1)
               .text("batch", name)
               .number("accepted", tally.accepted)
               .number("sent", tally.sent)
               .number("unread", tally.unread)
               .number("dry_run", tally.dry)
               .number("done", tally.other)
               .list("failed_lines", tally.failed)
               .number("not_made", std::int64_t(left))
               .number("exit", tally.worst)
               .str() +
           '\n';
}

int run_batch(const std::string& path, const Options& options)
{
    const std::string name = path == "-" ? "standard input" : path;
    const bool from_file = path != "-";
    std::vector<Planned> calls = plan_batch(
        read_batch(path), name, {true, from_file, std::filesystem::path(from_file ? path : "").parent_path()});
    for (const Planned& planned : calls) {
        check_callable(*planned.row, options, planned.place);
    }
    Session session({options.dry_run, options.trace}, options.sap);
    Tally tally;
    std::size_t made = 0;
    for (Planned& planned : calls) {
        const Report report = session.run(planned);
        print(planned, report, options.json);
        made++;
        if (!tally.count(planned, report.verdict.outcome) && !options.keep_going) {
            break;
        }
        if ((planned.row->marks & stays) != 0) {
            stay(report);
        }
    }
    const std::size_t left = calls.size() - made;
    const std::string text = options.json ? summary_json(name, tally, left) : summary(name, tally, left);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return tally.worst;
}

} // namespace vorcfg
