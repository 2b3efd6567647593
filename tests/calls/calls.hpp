// calls.hpp: the tables of rows, one family's calls in each. A row says what a call sends, and its steps under every
// fault.
#pragma once

#include "../fake_vorinfra/fake_vorinfra.hpp"
#include "strips.hpp"

#include <device_mgmt/types.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct Row {
    const char* call;
    std::string (*make)(); // makes the call and shows what it returned
    const char* sends;
    std::string_view strip = {};                // none: another row of the same call has it
    std::optional<vor_uint32> answered_as = {}; // the answer's id where it is not the id sent
};

// clang-format off
#define CALL(call, sends, strip, ...)                                                                                  \
    Row { #call, [] { return shown(call); }, sends, strip_named(#strip) __VA_OPT__(, ) __VA_ARGS__ }
// One more request of a call that has its row.
#define SENDS(call, sends)                                                                                             \
    Row { #call, [] { return shown(call); }, sends }
// One family's rows: CALLS(can) = {...};
#define CALLS(family) const Calls family##_calls = FamilyName{#family}
// clang-format on

// Rows that are tested: what they send by requests.FAMILY, how they go by outcomes.FAMILY.
class Calls {
public:
    Calls(const char* family, std::vector<Row> rows);
};

struct FamilyName {
    const char* text;

    Calls operator=(std::vector<Row> rows) const { return {text, std::move(rows)}; }
};

#ifdef ROWS_ALONE // the tests beside the rows become templates that are never instantiated
#undef TEST
#define TEST(suite, name)                                                                                              \
    template <class>                                                                                                   \
    void suite##_##name()
#endif

std::string shown(vor_int32 code);
std::string shown(const void* record); // null, or the answer's payload

// Begins a call's test: a fresh platform, the endpoint bound, vor_errno 55.
void begin_call();
// "return:steps" of the call that just returned, the fake's letters and these:
//   e E =  vor_errno cleared, set to the answer's status, set to anything else
//   o      something printed
std::string outcome(const std::string& returned);
inline std::string outcome(vor_int32 code)
{
    return outcome(shown(code));
}

// What the action prints on standard output.
std::string printed_by(const std::function<void()>& action);

// The calls take texts as char*, and write to none.
char* operator""_t(const char* text, size_t length);

// While one is alive, the first of these texts that anybody reads is noted among the steps.
class WatchedTexts {
public:
    WatchedTexts();
    ~WatchedTexts();
    WatchedTexts(const WatchedTexts&) = delete;
    WatchedTexts& operator=(const WatchedTexts&) = delete;
};
