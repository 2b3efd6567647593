// state.hpp: what every manager has been told, by object.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "gateway/decoded.hpp"

namespace vorsim {

class State {
public:
    // False when that would be more than is kept.
    bool keep(const Decoded& decoded);

    // The number last told to the object under this name, by whichever call.
    std::optional<std::int32_t> latest(std::uint16_t sap, const std::string& object, std::string_view name) const;

    std::string text() const;
    // {"ethmgr": {"sap": 7, "objects": {"interface 0": {"vor_cfg_set_dhcp": {...}}}}}
    Json json() const;

private:
    struct Setting {
        const Row* row;
        std::vector<Value> values;
        std::size_t size{}; // in bytes, as shown
    };
    // "port 2" before "port 10".
    struct Natural {
        bool operator()(const std::string& left, const std::string& right) const;
    };
    using Settings = std::vector<Setting>; // the latest told last
    using Objects = std::map<std::string, Settings, Natural>;

    std::map<std::uint16_t, Objects> managers_;
    std::size_t size_ = 0;
};

} // namespace vorsim
