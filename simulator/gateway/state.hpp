// state.hpp: the settings of every manager, by object.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/decode.hpp"

namespace vorsim::gateway {

class State {
public:
    struct Setting {
        const tables::MessageRow* row;
        std::vector<values::Value> values;
    };
    // "port 2" before "port 10".
    struct Natural {
        bool operator()(const std::string& left, const std::string& right) const;
    };
    using Settings = std::vector<Setting>; // the latest one last
    using Objects = std::map<std::string, Settings, Natural>;
    using Managers = std::map<std::uint16_t, Objects>;

    // False when the limit would be exceeded.
    bool has_room(const Decoded& decoded) const;
    bool keep(Decoded decoded);

    const Managers& managers() const { return managers_; }
    // The latest number of this name that any call set on the object.
    std::optional<std::int32_t> latest(std::uint16_t sap, const std::string& object, std::string_view name) const;

    std::string text() const;

private:
    // Null: there are none.
    const Settings* held(std::uint16_t sap, const std::string& object) const;
    // The size of all settings, this one included.
    std::size_t size_with(const Decoded& decoded) const;

    Managers managers_;
    std::size_t size_ = 0;
};

} // namespace vorsim::gateway
