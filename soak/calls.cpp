#include "calls.hpp"

#include <algorithm>

#include <device_mgmt/common.h>
#include <fmt/core.h>

#include "call/batch.hpp"
#include "expected.hpp"
#include "rows/families.hpp"
#include "rows_alone.hpp"

namespace soak {
namespace {

const Outcome agreed{"0", errno_before, 0};
const Outcome not_agreed{"-1", errno_before, 0};

std::vector<Outcome> expected_of_konfd(const Made& made)
{
    const Records& records = *made.records;
    const bool whole = !records.empty() && std::ranges::all_of(records, [](const Record& record) {
        return record.answered && !record.delayed && record.answer.size() > 1;
    });
    std::vector<Outcome> all{whole && records.back().answer.starts_with("-o") ? agreed : not_agreed};
    if (made.overdue) {
        all.push_back(not_agreed);
    }
    return all;
}

std::vector<Outcome> expected_of_none(const Made& made)
{
    return made.records->empty() ? std::vector{agreed} : std::vector<Outcome>{};
}

// A row of vorcfg with its example's words.
Call call_of(const vorcfg::rows::Row& row)
{
    std::string line = fmt::format("{} {}", row.full_name(), row.example);
    if (line.ends_with(" -")) { // a secret, which a batch may hold
        line.replace(line.size() - 1, 1, "secret");
    }
    auto planned =
        vorcfg::call::Batch(line, std::string(row.symbol), {.literals = true, .standard_input = false}).next();
    const bool konfd = row.channel == vorcfg::rows::Channel::konfd;
    const auto make = [given = std::move(planned->values), &row, konfd](const std::string& tag) {
        auto values = given;
        for (vorcfg::rows::Value& value : values) {
            value.text += konfd && !value.text.empty() ? tag : "";
        }
        const vorcfg::rows::Returned back = row.make(row, values);
        if (vor_cfg_get_sock_endpoint() != nullptr) { // a call that fails leaves its connection open
            vor_cfg_remove_sock_endpoint();
        }
        return std::to_string(back.succeeded() ? 0 : -1);
    };
    return {std::string(row.symbol), make, konfd ? expected_of_konfd : expected_of_none};
}

} // namespace

std::string Outcome::text() const
{
    return fmt::format("{}, vor_errno {}, {} buffers kept", code, manager_errno, kept);
}

std::vector<Call> all_calls()
{
    std::vector<Call> calls;
    for (const ::Row& row : rows_alone()) {
        calls.push_back({row.call, [row](const std::string&) { return row.make(); },
                         [row](const Made& made) { return expected_of(row, made); }});
    }
    for (const vorcfg::rows::Family* family : vorcfg::rows::families()) {
        for (const vorcfg::rows::Row& row : family->rows) {
            if (row.channel != vorcfg::rows::Channel::manager && row.make != nullptr && row.used_by.empty()) {
                calls.push_back(call_of(row));
            }
        }
    }
    return calls;
}

} // namespace soak
