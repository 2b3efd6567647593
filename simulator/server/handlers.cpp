#include "server/handlers.hpp"

#include <algorithm>
#include <chrono>
#include <map>
#include <stdexcept>

#include <fmt/core.h>

#include "record/stored.hpp"
#include "tables/managers.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

namespace vorsim {
namespace {

using vor::Json;

constexpr std::size_t deepest_state = 10000; // of what is copied and shown by recursion

// The lines that concern one manager, or one of its objects.
std::string section(const std::string& text, const std::string& manager, const std::string& object)
{
    std::string found;
    bool in_manager = false;
    bool in_object = object.empty();
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin) + 1;
        const std::string_view line(text.data() + begin, end - begin);
        begin = end;
        if (!line.starts_with(" ")) {
            in_manager = line.substr(0, line.find_first_of("(\n")) == manager;
        } else if (in_manager && !line.starts_with("   ") && !object.empty()) {
            in_object = line.substr(2, line.size() - 3) == object;
        }
        found += in_manager && (in_object || !line.starts_with(" ")) ? line : "";
    }
    return found;
}

} // namespace

std::string Handlers::operator()(const Show& what) const
{
    const auto& [json, manager, object] = what;
    const auto nothing_held = [&manager = manager, &object = object] {
        return std::runtime_error(
            fmt::format("nothing is held for {}{}{}", manager, object.empty() ? "" : "/", object));
    };
    if (!json) {
        const std::uint64_t lost = recorder_.lines_lost();
        const std::string lines = lost > 0 ? fmt::format(", {} lost", vor::counted(lost, "line")) : "";
        const std::string all = world_.text();
        const std::string part = manager.empty() ? all : section(all, manager, object);
        if (!manager.empty() && std::ranges::count(part, '\n') < 2) {
            throw nothing_held();
        }
        return manager.empty() ? fmt::format("vorsim: {}{}\n{}", world_.counters.text(), lines, part) : part;
    }
    Json shown = world_.json(recorder_.lines_lost());
    if (manager == "konfd") {
        shown = Json(shown["konfd"]);
    } else if (!manager.empty()) {
        const Json held = shown["managers"];
        if (!held.contains(manager) || (!object.empty() && !held[manager]["objects"].contains(object))) {
            throw nothing_held();
        }
        shown = object.empty() ? held[manager] : held[manager]["objects"][object];
    }
    return fmt::format("{}\n", vor::dump(shown, 2));
}

std::string Handlers::operator()(const Overview&) const
{
    Json all = world_.json(recorder_.lines_lost());
    std::map<std::uint16_t, bool> served;
    for (const Manager& manager : managers) {
        served[manager.sap] = false;
    }
    for (const auto& [sap, inlet] : messages_.served()) {
        served[sap] = true;
    }
    for (const auto& [sap, is_served] : served) {
        all["served"].push_back({{"name", manager_key(sap)}, {"sap", sap}, {"served", is_served}});
    }
    all["konfd_served"] = konfd_served_;
    all["faults"] = json_of(world_.faults.list(std::chrono::steady_clock::now()));
    return vor::dump(all);
}

std::string Handlers::operator()(const Reset&) const
{
    world_.reset();
    control_.forget_past();
    return "";
}

std::string Handlers::operator()(const Load& what) const
{
    if (!what.document) {
        throw std::runtime_error(fmt::format("cannot read the state {}", what.file));
    }
    Json document;
    try {
        document = Json::parse(*what.document, deepest_state);
    } catch (const vor::JsonError&) {
        document = Json();
    }
    if (!document.is_object() || document.value("schema", 0) != 1) {
        throw std::runtime_error(fmt::format("{} is no state of a schema that is known (1)", what.file));
    }
    State state = stored_state(document.at("managers"));
    konfd::Konfd konfd(world_.settings_of_konfd);
    if (const Json* const lines = document.find("konfd")) {
        store_konfd(konfd, *lines);
    }
    world_.gateway.hold(std::move(state));
    world_.konfd = std::move(konfd);
    return "";
}

std::string Handlers::operator()(const Quit&) const
{
    loop_.stop();
    return "";
}

std::string Handlers::operator()(const Switch& what) const
{
    try {
        return std::visit(*this, what);
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("not done: {}", error.what()));
    }
}

std::string Handlers::operator()(const AddFault& fault) const
{
    return fmt::format("fault {} is in force\n", world_.faults.add(fault.rule, std::chrono::steady_clock::now()));
}

std::string Handlers::operator()(const ListFaults&) const
{
    const std::string text = world_.faults.text(std::chrono::steady_clock::now());
    return text.empty() ? "no faults\n" : text;
}

std::string Handlers::operator()(const ClearFaults& fault) const
{
    if (!fault.number) {
        world_.faults.clear();
        return "no faults\n";
    }
    if (!world_.faults.clear(*fault.number)) {
        throw std::runtime_error(fmt::format("there is no fault {}", *fault.number));
    }
    return fmt::format("fault {} is cleared\n", *fault.number);
}

std::string Handlers::operator()(const StopManager& manager) const
{
    messages_.stop(manager.sap);
    return fmt::format("{} is stopped\n", manager_key(manager.sap));
}

std::string Handlers::operator()(const StartManager& manager) const
{
    messages_.start(manager.sap);
    return fmt::format("{} is served\n", manager_key(manager.sap));
}

std::string Handlers::operator()(const Setting& setting) const
{
    apply(setting, world_.gateway.measurements());
    return fmt::format("{}\n", setting.said);
}

} // namespace vorsim
