// call_key.hpp: a call's values, as they are stored, compared and made again.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "call/prepare.hpp"

namespace vorcfg::call {

// A text that is not UTF-8.
struct RawText {
    std::string text;

    auto operator<=>(const RawText&) const = default; // NOLINT(modernize-use-nullptr): compares with a literal 0
};

using KeptValue = std::variant<std::int64_t, RawText, std::string>;
using KeptValues = std::vector<KeptValue>;

std::string bytes_of(const KeptValue& value); // a number's digits

struct CallKey {
    const rows::Row* row = nullptr;
    std::vector<KeptValues> values; // per argument what is sent: none, one or a list; no secret in any form
    bool secret = false;            // it has one
    std::vector<std::pair<std::string, KeptValue>> unknown{}; // arguments that only another version has
    std::string fingerprint{}; // of its secrets, "KEY:MAC"; empty where there is none, or they are not read yet

    // Secrets are equal unless their fingerprints tell them apart.
    bool operator==(const CallKey& other) const;
    // Whether fingerprints tell: both have one, by the same key, and the calls are about the same thing.
    bool can_compare_secret(const CallKey& other) const;
};

CallKey key_of(const PreparedCall& call);
// The same of stored values.
CallKey key_of(const rows::Row& row, std::vector<KeptValues> values, bool secret);
// The call again. Throws an InputError where the values do not fit it.
PreparedCall prepare(const CallKey& key);

// What a call changes: the calls of one setting overwrite each other's values.
struct Setting {
    std::string name; // "ip route", or the name of the only call that changes it
    std::vector<KeptValues> objects;

    auto operator<=>(const Setting&) const = default; // NOLINT(modernize-use-nullptr): as above
};

// The call's own first; those of each other object too, where it is about all.
std::vector<Setting> settings_of(const CallKey& key);

// Whether it only queries, does nothing or stays on this machine, so that a gateway has nothing to accept.
bool changes_nothing(const PreparedCall& call);

// Per argument: whether its number was typed in hexadecimal.
std::vector<bool> hexadecimal_of(const PreparedCall& call);

// "ip set-ip-address 0"
std::string name_of(const CallKey& key, const std::vector<bool>& hexadecimal = {});
std::string name_of(const PreparedCall& call);
// One argument as it is shown: 192.168.1.10, "Tower 17", [1, 2], the word for a number, or "not given".
std::string shown(const rows::Argument& argument, const KeptValues& values, bool hexadecimal = false);
std::string shown(const rows::Argument& argument, const KeptValue& value,
                  bool hexadecimal = false); // an item of a list

} // namespace vorcfg::call
