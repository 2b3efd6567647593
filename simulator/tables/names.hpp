// names.hpp: the one check of the names that users type: of managers, calls, objects and fields.
//
// A filter, a rule or an expectation names its parts from left to right. Each is sought among the rows that the ones
// before it have left: a call among those of its manager, an object among those of its call.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tables/row.hpp"

namespace vorsim::tables {

// An unknown name, or one that does not belong to those before it; says so, and suggests another.
struct NameError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A manager's name, "19", "sap 19" or "SAP 19".
std::optional<std::uint16_t> sap_named(std::string_view name);
// The same; `others`, such as konfd, are suggested as well. Throws a NameError.
std::uint16_t checked_sap(std::string_view name, std::span<const std::string_view> others = {});

// Whether one is the other, where * in either stands for any text: a row may serve several calls.
bool same_call(const std::string& pattern, const std::string& other);

// The messages that can still be meant.
class Selection {
public:
    Selection(); // of any manager

    // What reaches one manager; a SAP without a manager has the calls that any has.
    void of(std::uint16_t sap);
    // Each throws a NameError, and leaves only the rows of that name.
    void call(const std::string& name);
    // As in the lines: "port 1" for a row's "port {port_num}".
    void object(std::string_view text);
    // Throws a NameError unless a row has the field, or the option or flag byte.
    void field(std::string_view name) const;

    // The objects that can be meant: "port N" or "peer N".
    std::string objects(std::string_view typed = {}) const;

    std::span<const MessageRow* const> rows() const { return rows_; }

private:
    std::string whose_; // the call, else the manager; empty: any
    std::vector<const MessageRow*> rows_;
    bool free_ = false; // what reaches an application may be about anything
};

// The field of a row, null where it has none; the option or flag byte is none.
const Field* field_named(const MessageRow& row, std::string_view name);
// The numbers that it can hold.
struct Range {
    std::int64_t least;
    std::int64_t most;
};
Range range_of(const Field& field);

} // namespace vorsim::tables
