// call_key.hpp: what a call says, as it is kept, compared and made again.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "call/prepare.hpp"

namespace vorcfg {

// A text that is no UTF-8.
struct RawText {
    std::string text;

    auto operator<=>(const RawText&) const = default; // NOLINT(modernize-use-nullptr): compares with a literal 0
};

using KeptValue = std::variant<std::int64_t, RawText, std::string>;
using KeptValues = std::vector<KeptValue>;

struct CallKey {
    const Row* row = nullptr;
    std::vector<KeptValues> values; // one per argument: none, one or a list of what is sent; no secret in any form
    bool secret = false;            // it has one
    std::vector<std::pair<std::string, KeptValue>> unknown{}; // arguments that the row has not, of another version

    bool operator==(const CallKey&) const = default;
};

CallKey key_of(const PreparedCall& planned);
// The same of what was kept.
CallKey key_of(const Row& row, std::vector<KeptValues> values, bool secret);
// The call again. Throws a InputError where the values are none of this call.
PreparedCall planned(const CallKey& key);

// What two calls share that are about the same thing: the call, and the arguments marked as its object. Those of a
// family are in the order of its rows, those of a call in that of their objects, numbers as numbers.
struct Subject {
    const Row* row = nullptr;
    std::vector<KeptValues> objects;

    auto operator<=>(const Subject&) const = default; // NOLINT(modernize-use-nullptr): as above
};

Subject subject_of(const CallKey& key);
// Of the other calls of the family that undo this one, or are undone by it.
std::vector<Subject> opposites_of(const CallKey& key);

// Whether it asks, does nothing or stays on this machine: nothing that a gateway accepts.
bool changes_nothing(const PreparedCall& planned);

// "ip set-ip-address 0"
std::string name_of(const CallKey& key);
// One argument as it is shown: 192.168.1.10, "Tower 17", [1, 2], the word that stands for a number, or that it is not
// given.
std::string shown(const Argument& argument, const KeptValues& values);

} // namespace vorcfg
