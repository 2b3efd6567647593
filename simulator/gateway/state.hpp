// state.hpp: what every manager has been told, by object.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/decode.hpp"

namespace vorsim {

class State {
public:
    struct Setting {
        const MessageRow* row;
        std::vector<Value> values;
    };
    // "port 2" before "port 10".
    struct Natural {
        bool operator()(const std::string& left, const std::string& right) const;
    };
    using Settings = std::vector<Setting>; // the latest told last
    using Objects = std::map<std::string, Settings, Natural>;
    using Managers = std::map<std::uint16_t, Objects>;

    // False when that would be more than is kept.
    bool has_room(const Decoded& decoded) const;
    bool keep(Decoded decoded);

    const Managers& managers() const { return managers_; }
    // The number last told to the object under this name, by whichever call.
    std::optional<std::int32_t> latest(std::uint16_t sap, const std::string& object, std::string_view name) const;

    std::string text() const;

private:
    // Null: nothing is held.
    const Settings* held(std::uint16_t sap, const std::string& object) const;
    // What all settings take once this one is kept.
    std::size_t size_with(const Decoded& decoded) const;

    Managers managers_;
    std::size_t size_ = 0;
};

} // namespace vorsim
