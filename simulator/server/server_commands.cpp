// What the server does when it is told to.
#include <stdexcept>

#include <fmt/core.h>

#include "gateway/readings.hpp"
#include "server/commands.hpp"
#include "server/server.hpp"
#include "tables/managers.hpp"

namespace vorsim {
namespace {

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

std::string Server::obey(std::string_view request)
{
    const auto now = std::chrono::steady_clock::now();
    const auto add = [&](const AddFault& fault) {
        return fmt::format("fault {} is in force\n", faults_.add(fault.rule, now));
    };
    const auto list = [&](const ListFaults&) {
        const std::string text = faults_.text(now);
        return text.empty() ? std::string("no faults\n") : text;
    };
    const auto clear = [&](const ClearFaults& fault) {
        if (!fault.number) {
            faults_.clear();
            return std::string("no faults\n");
        }
        if (!faults_.clear(*fault.number)) {
            throw std::runtime_error(fmt::format("there is no fault {}", *fault.number));
        }
        return fmt::format("fault {} is cleared\n", *fault.number);
    };
    const auto stop = [&](const StopManager& manager) {
        managers_.stop(manager.sap);
        outbox_.drop(manager.sap);
        return fmt::format("{} is stopped\n", manager_key(manager.sap));
    };
    const auto start = [&](const StartManager& manager) {
        managers_.start(manager.sap);
        return fmt::format("{} is served\n", manager_key(manager.sap));
    };
    const auto set = [&](const SetReading& reading) {
        return fmt::format("{}\n", set_reading(reading.words, &gateway_.measurements()));
    };
    try {
        return std::visit(Overloaded{add, list, clear, stop, start, set}, command_of(request));
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("not done: {}", error.what()));
    }
}

} // namespace vorsim
