#include "server/relay.hpp"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "tables/managers.hpp"
#include "text/text.hpp"

namespace vorsim::server {
namespace {

using namespace std::chrono_literals;

// The SAPs that the real managers see.
constexpr std::uint16_t first_relay_sap = 65000;
constexpr std::uint16_t last_relay_sap = 65031;

constexpr auto check_interval = 50ms; // of a manager that has not answered
constexpr auto retry_interval = 2ms;  // for a manager that has no room
constexpr auto late_memory = 60s;
constexpr std::size_t most_given_up = 1000;
constexpr std::size_t answers_in_turn = 64;
constexpr std::uint16_t most_sequence = 0x7fff;
constexpr int is_refusal = 2; // of vorinfra_receive_answer
constexpr std::size_t most_named = 3;

// A manager's answer is lost when the queue is full that it is put into: the kernel's length of it.
std::size_t queue_length()
{
    std::size_t length = 0;
    std::ifstream("/proc/sys/net/unix/max_dgram_qlen") >> length;
    return std::clamp<std::size_t>(length, 1, 1000);
}

} // namespace

Relay::Place::Place(const std::string& path)
    : directory(path), endpoint(path, first_relay_sap, last_relay_sap),
      sequence(static_cast<std::uint16_t>(std::random_device()() & most_sequence))
{
    if (endpoint.handle() == nullptr) {
        throw std::runtime_error(fmt::format("cannot pass messages on to {}", vor::escaped(directory)));
    }
    patience = std::chrono::milliseconds(vorinfra_timeout(endpoint.handle()));
}

// Answers to an earlier process must not match the first requests of this one, nor late ones a request of now.
std::uint16_t Relay::Place::next_sequence()
{
    do {
        sequence = static_cast<std::uint16_t>(sequence % most_sequence + 1);
    } while (awaited.contains(sequence) || given_up.contains(sequence));
    return sequence;
}

Relay::Relay(sockets::Loop& loop, Managers& managers, const Ways& ways, OnSettled on_settled, OnStray on_stray)
    : managers_(managers), on_settled_(std::move(on_settled)), on_stray_(std::move(on_stray)),
      most_awaited_(queue_length())
{
    std::map<std::string, std::shared_ptr<Place>> places;
    for (const auto& [sap, directory] : ways) {
        std::shared_ptr<Place>& place = places[directory];
        if (place == nullptr) {
            place = places_.emplace_back(std::make_shared<Place>(directory));
            loop.watch(place->endpoint.descriptor(), [this, which = place.get()] {
                receive(*which);
                send_waiting();
            });
        }
        ways_.emplace(sap, place);
    }
    if (!places_.empty()) {
        loop.at([this] { return next(); }, [this] { act(); });
    }
}

std::vector<std::string> Relay::notes() const
{
    std::vector<std::string> notes;
    for (const auto& place : places_) {
        std::vector<std::string> names;
        for (const auto& [sap, way] : ways_) {
            if (way == place) {
                names.push_back(tables::manager_key(sap));
            }
        }
        notes.push_back(
            fmt::format("{} passed on to {} from SAP {}",
                        names.size() > most_named ? vor::counted(names.size(), "manager") : vor::joined(names, ", "),
                        vor::printable(place->directory), place->endpoint.handle()->sap_id));
    }
    return notes;
}

// It was not received: to its client, nobody serves the manager.
void Relay::refuse(Passed& passed, const char* why)
{
    const bool awaits = passed.decision.answered;
    on_settled_(passed, {.kind = Outcome::Kind::refused,
                         .note = fmt::format("{}: {} in {}", awaits ? "refused" : "lost", why,
                                             vor::printable(passed.decision.record.via))});
}

void Relay::pass_on(const VORINFRA_MESSAGE& message, Passed passed)
{
    const std::uint16_t sap = passed.asker.sap;
    Place& place = *ways_.at(sap);
    passed.decision.record.via = place.directory;
    if (!send(place, message, passed)) {
        managers_.pause(sap);
        const Time until = std::chrono::steady_clock::now() + place.patience;
        waiting_.emplace(sap, std::make_unique<Waiting>(Waiting{message, std::move(passed), until}));
        retry_ = until - place.patience + retry_interval;
    }
}

// False: it has to wait. Otherwise it is on its way, or settled.
bool Relay::send(Place& place, const VORINFRA_MESSAGE& message, Passed& passed)
{
    const bool awaits = passed.decision.answered;
    if (awaits && place.awaited.size() >= most_awaited_) {
        return false;
    }
    const std::uint16_t sequence = awaits ? place.next_sequence() : std::uint16_t{0};
    if (vorinfra_forward(place.endpoint.handle(), &message, sequence) != 0) {
        if (errno == EAGAIN || errno == ENOBUFS) {
            return false;
        }
        refuse(passed, "nobody serves it");
    } else if (awaits) {
        const Time now = std::chrono::steady_clock::now();
        place.awaited.emplace(sequence, Awaited{std::move(passed), now + place.patience, now + check_interval});
    } else {
        on_settled_(passed, {.kind = Outcome::Kind::sent});
    }
    return true;
}

void Relay::send_waiting()
{
    if (waiting_.empty()) {
        return;
    }
    for (auto next = waiting_.begin(); next != waiting_.end();) {
        const std::uint16_t sap = next->first;
        Waiting& waiting = *next->second;
        Place& place = *ways_.at(sap);
        bool done = send(place, waiting.message, waiting.passed);
        if (!done && waiting.until <= std::chrono::steady_clock::now()) {
            refuse(waiting.passed, "it has no room");
            done = true;
        }
        next = done ? waiting_.erase(next) : std::next(next);
        if (done) {
            managers_.resume(sap);
        }
    }
    retry_ = std::chrono::steady_clock::now() + retry_interval;
}

void Relay::receive(Place& place)
{
    for (std::size_t turn = 0; turn < answers_in_turn; ++turn) {
        const auto arrived = place.endpoint.next();
        if (!arrived) {
            return;
        }
        VORINFRA_MESSAGE answer;
        const int received = place.endpoint.receive_answer(answer);
        if (received <= 0) {
            values::Record record = dropped(place.endpoint, "unexpected message");
            record.via = place.directory;
            on_stray_(place.endpoint, *arrived, std::move(record));
            continue;
        }
        const auto awaited = place.awaited.find(answer.sequence);
        if (awaited == place.awaited.end() || awaited->second.passed.asker.sap != answer.source) {
            report_stray(place, *arrived, answer);
            continue;
        }
        Passed passed = std::move(awaited->second.passed);
        place.awaited.erase(awaited);
        if (received == is_refusal) {
            refuse(passed, "the manager refused it");
        } else {
            on_settled_(
                passed,
                {.kind = Outcome::Kind::answered, .id = answer.id, .bytes = {answer.payload, answer.payload_size}});
        }
    }
}

// An answer that nobody awaits.
void Relay::report_stray(Place& place, sockets::Arrival arrived, const VORINFRA_MESSAGE& answer)
{
    const auto given_up = place.given_up.find(answer.sequence);
    const bool late = given_up != place.given_up.end() && given_up->second.sap == answer.source;
    const bool lost = late && given_up->second.lost;
    if (late) {
        place.given_up.erase(given_up);
    }
    if (!late || lost) {
        values::Record record{.kind = values::Record::Kind::foreign, .via = place.directory};
        record.sap = answer.source;
        record.why = fmt::format("{} {:#x} from {}", late ? "late answer" : "answer to no request", answer.id,
                                 vor::printable(place.directory));
        on_stray_(place.endpoint, arrived, std::move(record));
    }
}

void Relay::give_up(Place& place, std::uint16_t sequence, const Outcome& outcome)
{
    const auto found = place.awaited.find(sequence);
    Passed passed = std::move(found->second.passed);
    place.awaited.erase(found);
    const Time until = std::chrono::steady_clock::now() + late_memory;
    place.given_up.insert_or_assign(sequence, GivenUp{passed.asker.sap, outcome.kind == Outcome::Kind::lost, until});
    while (place.given_up.size() > most_given_up) {
        place.given_up.erase(
            std::ranges::min_element(place.given_up, {}, [](const auto& one) { return one.second.until; }));
    }
    on_settled_(passed, outcome);
}

// Gives up what is due, and what was asked of managers that have gone. Their last answers are received first.
void Relay::check(Place& place)
{
    const Time now = std::chrono::steady_clock::now();
    std::map<std::uint16_t, bool> there;
    for (auto& [sequence, awaited] : place.awaited) {
        if (awaited.check <= now) {
            const std::uint16_t sap = awaited.passed.asker.sap;
            if (!there.contains(sap)) {
                there[sap] = vorinfra_is_served(place.endpoint.handle(), sap) != 0;
            }
            awaited.check = now + check_interval;
        }
    }
    for (std::size_t left = place.awaited.size(); left > 0 && place.endpoint.next();
         left -= std::min(left, answers_in_turn)) {
        receive(place);
    }
    std::vector<std::pair<std::uint16_t, const char*>> gone;
    for (const auto& [sequence, awaited] : place.awaited) {
        const auto found = there.find(awaited.passed.asker.sap);
        const bool is_gone = found != there.end() && !found->second;
        if (is_gone || awaited.until <= now) {
            gone.emplace_back(sequence, is_gone ? ", where the manager has gone" : "");
        }
    }
    for (const auto& [sequence, why] : gone) {
        give_up(place, sequence,
                {.kind = Outcome::Kind::lost,
                 .note = fmt::format("no answer from {}{}", vor::printable(place.directory), why)});
    }
    std::erase_if(place.given_up, [now](const auto& one) { return one.second.until <= now; });
}

void Relay::drop(std::optional<std::uint16_t> sap)
{
    const Outcome stopped{.kind = Outcome::Kind::stopped, .note = "stopped meanwhile"};
    for (const auto& place : places_) {
        std::vector<std::uint16_t> dropped;
        for (const auto& [sequence, awaited] : place->awaited) {
            if (!sap || awaited.passed.asker.sap == *sap) {
                dropped.push_back(sequence);
            }
        }
        for (const std::uint16_t sequence : dropped) {
            give_up(*place, sequence, stopped);
        }
    }
    for (auto next = waiting_.begin(); next != waiting_.end();) {
        const auto waiting = next++;
        if (!sap || waiting->first == *sap) {
            on_settled_(waiting->second->passed, stopped);
            waiting_.erase(waiting);
        }
    }
}

std::optional<Relay::Time> Relay::next() const
{
    std::optional<Time> first;
    if (!waiting_.empty()) {
        first = retry_;
    }
    for (const auto& place : places_) {
        if (const auto check = sockets::earliest(place->awaited, [](const auto& one) {
                return std::optional(std::min(one.second.check, one.second.until));
            })) {
            first = std::min(*check, first.value_or(*check));
        }
    }
    return first;
}

void Relay::act()
{
    for (const auto& place : places_) {
        check(*place);
    }
    send_waiting();
}

} // namespace vorsim::server
