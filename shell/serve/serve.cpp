#include "serve/serve.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>

#include <fmt/core.h>

#include "call/batch.hpp"
#include "call/runner.hpp"
#include "output/output.hpp"
#include "serve/pipe.hpp"
#include "serve/request.hpp"
#include "site/commands.hpp"
#include "text/file.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorcfg::serve {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class Server {
public:
    explicit Server(const input::Options& options) : options_(options)
    {
        call::before_giving_up([this](int exit) { write_answer(exit); });
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() { call::before_giving_up({}); }

    int serve(std::string_view version)
    {
        vor::Json greeting = output::record("serve");
        greeting["version"] = version;
        bool is_read = pipe_.write(output::line_of(greeting));
        while (is_read) {
            auto line = pipe_.next();
            if (!line) {
                break;
            }
            is_read = write_answer(answer(*line));
        }
        if (!is_read) {
            vor::print_line(stderr, fmt::format("vorcfg: standard output: {}", vor::reason_of(errno)));
            return input::exit_no_output;
        }
        const auto left = std::chrono::ceil<milliseconds>(timer_due_ - steady_clock::now());
        if (left.count() > 0) { // it ends with this process
            pipe_.rest(static_cast<int>(std::min<milliseconds::rep>(left.count(), INT_MAX)));
        }
        return pipe_.has_signal() ? input::exit_ended : input::exit_ok;
    }

private:
    int answer(Line& line)
    {
        id_ = "null";
        try {
            if (!line.is_whole) {
                throw input::InputError{fmt::format("a request must not have more than {} MiB", longest_line >> 20)};
            }
            const vor::Json request = object_in(line.text);
            explicit_bzero(line.text.data(), line.text.size());
            id_ = id_of(request);
            return carry_out(request_in(request));
        } catch (const std::filesystem::filesystem_error& error) {
            return output::print_error({.text = fmt::format("{}: {}", error.path1().string(), error.code().message()),
                                        .exit = input::exit_no_input},
                                       true);
        } catch (const input::InputError& error) {
            return output::print_error(error, true);
        } catch (const std::bad_alloc&) {
            return output::print_error({.text = "not enough memory", .exit = input::exit_unusable}, true);
        }
    }

    int carry_out(Request request)
    {
        input::Options& options = request.options;
        options.trace = options_.trace;
        options.sap = options_.sap;
        options.yes = options.yes || options_.yes;
        options.timeout = options.timeout ? options.timeout : options_.timeout;
        if (request.is_call) {
            return make(options);
        }
        session_.reset(); // a process has one endpoint
        const Pipe::Interruptible interruptible(pipe_);
        std::optional<std::string> gateway;
        if (request.finds_journal) {
            std::string& journal = options.words[1].text;
            call::Batch batch = call::batch_of(journal, options);
            batch.leave_input();
            if (const int exit = call::check(
                    batch, [](const auto&) {}, output::error_printer(true), false);
                exit != input::exit_ok) {
                return exit;
            }
            site::SiteJournal found = site::journal_of(journal, batch, options);
            journal = std::move(found.path);
            gateway = std::move(found.gateway);
        }
        if (options.words[0].text == journal_command) {
            return site::run_journal(options.words[1].text, request.text, gateway, options);
        }
        return input::run(options);
    }

    int make(const input::Options& options)
    {
        input::Secrets secrets({.literals = true, .standard_input = false, .prompts = false});
        call::PreparedCall call = call::prepare(options.words, secrets);
        call::check_confirmed(call, options);
        call::rehearse(call);
        if (options.dry_run) {
            return report(call, call::Session({.capture = true}, std::nullopt).make(call));
        }
        if (limit_ != options.timeout) { // which an endpoint has for good
            session_.reset();
            limit_ = options.timeout;
        }
        if (!session_) {
            session_.emplace(call::Observer::Settings{.trace = options.trace, .gather = true}, options.sap);
        }
        call::limit_platform(options.timeout);
        call::Watchdog watchdog(options.timeout, call::Signals::all,
                                [&](const char* why) { return report(call, call::given_up(why)); });
        const call::CallResult result = [&] {
            const call::Watchdog::Call watched(watchdog);
            return session_->make(call);
        }();
        if (const auto timer = call::time_to_wait(*call.row, result)) {
            timer_due_ = std::max(timer_due_, steady_clock::now() + milliseconds(*timer));
        }
        return report(call, result);
    }

    static int report(const call::PreparedCall& call, const call::CallResult& result)
    {
        vor::print(stdout, output::json_of(call, result));
        return call::exit_of(result.verdict.outcome);
    }

    bool write_answer(int exit)
    {
        const std::string printed = pipe_.take_printed();
        std::string text;
        for (const std::string_view line : vor::lines_in(printed)) {
            const bool is_record = line.starts_with("{\"schema\":");
            text += text.empty() ? "" : ",";
            text += is_record ? line : vor::lines_in(output::text_json(line))[0];
        }
        return pipe_.write(fmt::format("{{\"schema\":{},\"type\":\"answer\",\"id\":{},\"exit\":{},\"output\":[{}]}}\n",
                                       output::schema, id_, exit, text));
    }

    const input::Options& options_; // of the command line
    Pipe pipe_;
    std::string id_ = "null"; // of the request under way
    std::optional<call::Session> session_;
    std::optional<unsigned> limit_; // that the session's endpoint has
    steady_clock::time_point timer_due_{};
};

} // namespace

int serve(std::string_view version, const input::Options& options)
{
    if (options.in_session) {
        throw input::InputError{"serve reads standard input, which the session is reading"};
    }
    return Server(options).serve(version);
}

} // namespace vorcfg::serve
