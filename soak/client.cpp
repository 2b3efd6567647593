#include "client.hpp"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <optional>
#include <thread>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include <device_mgmt/common.h>
#include <vorinfra_inspect.h>

#include "calls.hpp"
#include "text/text.hpp"
#include "values/random.hpp"

namespace soak {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint16_t first_sap = 200;
constexpr std::uint64_t calls_of_endpoint = 300;
constexpr std::uint64_t calls_of_life = 1000;

// Kills this process after a while.
void die_soon(std::uint64_t nanoseconds)
{
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer{};
    itimerspec when{};
    when.it_value.tv_nsec = static_cast<long>(nanoseconds);
    timer_create(CLOCK_MONOTONIC, &event, &timer);
    timer_settime(timer, 0, &when, nullptr);
}

class Client {
public:
    explicit Client(const Part& part)
        : part_(part), tally_(part.shared.tallies[part.client]),
          sap_(static_cast<std::uint16_t>(first_sap + part.client)), tag_(fmt::format("-of-{}-{}-", sap_, part.life)),
          calls_(all_calls()), random_(part.seed, fmt::format("client {} life {}", part.client, part.life))
    {
    }

    int run()
    {
        const std::uint64_t last = random_.draw(calls_of_life);
        for (std::uint64_t left = 0; Clock::now() < part_.end && failed_.empty(); --left) {
            if (left == 0) {
                left = 1 + random_.draw(calls_of_endpoint);
                renew_endpoint();
            }
            const Call& call = calls_[random_.draw(calls_.size())];
            const bool endpoint = random_.draw(100) != 0;
            const std::uint64_t delay = 1 + random_.draw(500'000);
            if (made_++ == last && endpoint) {
                die_soon(delay);
            }
            try_out(call, endpoint);
        }
        vor_cfg_remove_ipc_endpoint();
        require(vorinfra_buffers_taken() == 0, "buffers are taken without an endpoint");
        if (!failed_.empty()) {
            vor::print_line(stderr, fmt::format("soak: client {}, life {}: {}", part_.client, part_.life, failed_));
        }
        return failed_.empty() ? 0 : 1;
    }

private:
    void require(bool holds, const std::string& otherwise)
    {
        if (!holds && failed_.empty()) {
            failed_ = otherwise;
        }
    }

    void renew_endpoint()
    {
        vor_cfg_remove_ipc_endpoint();
        require(vorinfra_buffers_taken() == 0, "an endpoint that is gone keeps buffers");
        require(vor_cfg_create_ipc_endpoint(sap_) == 0, "no endpoint is available");
        handle_ = vor_cfg_get_ipc_endpoint();
    }

    // The records up to now; none if the gateway was killed.
    std::optional<Records> records()
    {
        VOR_IPC_MSG_REF mark;
        vor_ipc_get_buffer(&mark);
        ++marks_;
        while (vor_ipc_send(handle_, mark_sap, marks_, &mark, 0, 0) != 0 && part_.shared.gateway == gateway_) {}
        vor_ipc_drop_msg_buf(&mark);
        Records records;
        while (part_.shared.gateway == gateway_) {
            auto record = journal_->next();
            if (!record) {
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            } else if (record->sap == mark_sap && record->id == marks_) {
                return records;
            } else {
                records.push_back(std::move(*record));
            }
        }
        return {};
    }

    // Follows the current gateway, from the end of what its journal has already.
    void follow()
    {
        do {
            gateway_ = part_.shared.gateway;
            journal_.emplace(journal_of(part_.place, gateway_), sap_, tag_);
        } while (!records());
    }

    void try_out(const Call& call, bool endpoint)
    {
        if (part_.shared.gateway != gateway_) {
            follow();
        }
        const unsigned before = vorinfra_buffers_taken();
        vor_cfg_set_ipc_endpoint(endpoint ? handle_ : nullptr);
        vor_errno = errno_before;
        const auto start = Clock::now();
        const std::string tag = fmt::format("{}{}-", tag_, made_);
        const std::string code = call.make(tag);
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
        const Outcome seen{code, vor_errno, static_cast<int>(vorinfra_buffers_taken()) - static_cast<int>(before)};
        vor_cfg_set_ipc_endpoint(handle_);

        auto written = records();
        ++tally_.calls;
        tally_.kept += static_cast<unsigned>(seen.kept);
        if (!written) {
            ++tally_.undecided;
            return;
        }
        // konfd may execute an earlier call's command only now
        std::erase_if(*written, [&](const Record& one) { return one.konfd && one.text.find(tag) == tag.npos; });
        count(*written);
        const auto expected =
            call.expected({.endpoint = endpoint, .overdue = took >= patience_ms - 100, .records = &*written});
        if (std::ranges::find(expected, seen) == expected.end()) {
            fail(call, seen, expected, *written, took);
        }
    }

    void count(const Records& written)
    {
        const bool konfd = !written.empty() && written.front().konfd;
        const bool answered = !written.empty() && written.front().answered;
        ++(konfd ? tally_.konfd : answered ? tally_.answered : tally_.unanswered);
    }

    void fail(const Call& call, const Outcome& seen, const std::vector<Outcome>& expected, const Records& written,
              std::int64_t took)
    {
        std::vector<std::string> outcomes;
        std::ranges::transform(expected, std::back_inserter(outcomes), &Outcome::text);
        failed_ = fmt::format("call {}, {}, after {} ms\n  got:      {}\n  expected: {}", made_, call.name, took,
                              seen.text(), fmt::join(outcomes, "\n        or: "));
        for (const Record& record : written) {
            failed_ += fmt::format("\n  {}", record.line);
        }
    }

    const Part& part_;
    Shared::Tally& tally_;
    const std::uint16_t sap_;
    const std::string tag_;
    const std::vector<Call> calls_;
    vorsim::values::Random random_;
    VOR_IPC_HANDLE* handle_ = nullptr;
    std::optional<JournalTail> journal_;
    unsigned gateway_ = 0;
    std::uint32_t marks_ = part_.life << 20U; // of no life before
    std::uint64_t made_ = 0;
    std::string failed_;
};

} // namespace

std::string journal_of(const std::string& place, unsigned gateway)
{
    return fmt::format("{}/journal.{}", place, gateway);
}

int run(const Part& part)
{
    return Client(part).run();
}

} // namespace soak
