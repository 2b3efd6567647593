#include "server/managers.hpp"

#include <stdexcept>

#include <fmt/core.h>

#include "tables/managers.hpp"
#include "tables/names.hpp"

namespace vorsim::server {

Managers::Managers(sockets::Loop& loop, OnReadable on_readable, OnError on_error)
    : loop_(loop), on_readable_(std::move(on_readable)), on_error_(std::move(on_error))
{
    loop_.at([this] { return sockets::earliest(back_, [](const auto& one) { return std::optional(one.second); }); },
             [this] { start_due(); });
}

void Managers::start(std::uint16_t sap)
{
    expect_own(sap);
    back_.erase(sap);
    if (endpoints_.contains(sap)) {
        return;
    }
    auto endpoint = std::make_unique<sockets::Endpoint>(sap);
    if (endpoint->handle() == nullptr) {
        throw std::runtime_error(fmt::format("cannot serve SAP {}", sap));
    }
    watch(*endpoint);
    endpoints_.emplace(sap, std::move(endpoint));
}

void Managers::watch(sockets::Endpoint& endpoint)
{
    loop_.watch(endpoint.descriptor(), [this, which = &endpoint] { on_readable_(*which); });
}

void Managers::pause(std::uint16_t sap)
{
    if (const sockets::Endpoint* const paused = endpoint(sap)) {
        loop_.forget(paused->descriptor());
    }
}

void Managers::resume(std::uint16_t sap)
{
    if (sockets::Endpoint* const paused = endpoint(sap)) {
        watch(*paused);
    }
}

void Managers::expect_own(std::uint16_t sap) const
{
    if (left_.contains(sap)) {
        throw std::runtime_error(fmt::format("{} is left to another program (--without)", tables::manager_key(sap)));
    }
    if (!own_.contains(sap)) {
        throw std::runtime_error(fmt::format("SAP {} is not served; start vorsim with --sap {}", sap, sap));
    }
}

void Managers::stop(std::uint16_t sap)
{
    expect_own(sap);
    back_.erase(sap);
    const auto found = endpoints_.find(sap);
    if (found != endpoints_.end()) {
        loop_.forget(found->second->descriptor());
        endpoints_.erase(found);
    }
}

sockets::Endpoint* Managers::endpoint(std::uint16_t sap) const
{
    const auto found = endpoints_.find(sap);
    return found == endpoints_.end() ? nullptr : found->second.get();
}

void Managers::expect_own(const faults::Rule& rule) const
{
    const faults::Condition& condition = rule.condition;
    if (condition.who == faults::Condition::Who::manager) {
        expect_own(condition.sap);
    }
    if (condition.who != faults::Condition::Who::any || condition.call.empty()) {
        return;
    }
    std::optional<std::uint16_t> left;
    for (const tables::ListedRow& row : tables::all_rows()) {
        if (tables::same_call(condition.call, std::string(row.row->call))) {
            if (row.manager == tables::any_manager || !left_.contains(static_cast<std::uint16_t>(row.manager))) {
                return;
            }
            left = static_cast<std::uint16_t>(row.manager);
        }
    }
    if (left) {
        expect_own(*left);
    }
}

void Managers::start_due()
{
    for (auto next = back_.begin(); next != back_.end();) {
        const auto [sap, back] = *next++; // starting removes it
        if (back > std::chrono::steady_clock::now()) {
            continue;
        }
        try {
            start(sap);
        } catch (const std::exception& error) {
            on_error_(fmt::format("vorsim: cannot restart {}: {}", tables::manager_key(sap), error.what()));
        }
    }
}

values::Record dropped(const sockets::Endpoint& endpoint, const char* message)
{
    values::Record record{.kind = values::Record::Kind::foreign};
    record.sap = endpoint.handle()->sap_id;
    record.why = message;
    if (!endpoint.is_message()) {
        record.kind = values::Record::Kind::malformed;
        record.why = fmt::format("{} bytes, not a message", endpoint.datagram().size());
    }
    return record;
}

Delays::Delays(std::uint64_t seed, const std::map<std::uint16_t, Delay>& delays)
{
    for (const auto& [sap, delay] : delays) {
        drawn_.emplace(sap, Drawn{delay, values::Random(seed, fmt::format("delay {}", sap))});
    }
}

faults::Milliseconds Delays::draw(std::uint16_t sap)
{
    const auto found = drawn_.find(sap);
    if (found == drawn_.end()) {
        return {};
    }
    auto& [delay, random] = found->second;
    const auto span = static_cast<std::uint64_t>((delay.most - delay.least).count());
    return delay.least + faults::Milliseconds(random.draw(span + 1));
}

} // namespace vorsim::server
