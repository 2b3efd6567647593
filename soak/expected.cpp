#include "expected.hpp"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace soak {
namespace {

// The columns of strips.hpp that can occur here.
enum Column : std::size_t {
    no_endpoint = 0,
    no_answer = 5,
    send_refused = 6,
    low_half = 7,
    high_half = 8,
    empty_answer = 9,
    status_other = 10,
    status_1 = 11,
    status_0 = 12,
};

constexpr int not_sent = 0xa5; // what the platform writes after an answer

class Strip {
public:
    explicit Strip(const ::Row& row)
    {
        std::istringstream text{std::string(std::ranges::find(strips, row.strip, &::Strip::name)->cells)};
        for (std::string cell; text >> cell;) {
            cells_.push_back(cell);
        }
    }

    bool concerns(Column column) const { return cells_.at(column) != "."; }

    Outcome outcome(Column column, vor_int32 status = 0) const
    {
        const std::string& cell = concerns(column) ? cells_[column] : cells_.back();
        const std::size_t colon = cell.find(':');
        Outcome outcome{cell.substr(0, colon), errno_before, 0};
        outcome.code = outcome.code == "R" ? "-1" : outcome.code;
        for (const char step : cell.substr(colon + 1)) {
            outcome.kept += step == 'Q' || step == 'P' ? 1 : step == 'q' || step == 'p' ? -1 : 0;
            outcome.manager_errno = step == 'e' ? 0 : step == 'E' ? status : outcome.manager_errno;
        }
        return outcome;
    }

private:
    std::vector<std::string> cells_;
};

Outcome answered(const Strip& strip, const ::Row& row, const Record& record)
{
    const vor_uint32 differs = record.answer_id ^ row.answered_as.value_or(record.id);
    if ((differs & 0xffff) != 0 && strip.concerns(low_half)) {
        return strip.outcome(low_half);
    }
    if (differs != 0 && strip.concerns(high_half)) {
        return strip.outcome(high_half);
    }
    if (record.answer.empty()) {
        return strip.outcome(empty_answer);
    }
    vor_int32 status;
    std::memset(&status, not_sent, sizeof status);
    std::memcpy(&status, record.answer.data(), std::min(sizeof status, record.answer.size()));
    return strip.outcome(status == 0 ? status_0 : status == 1 ? status_1 : status_other, status);
}

} // namespace

std::vector<Outcome> expected_of(const ::Row& row, const Made& made)
{
    const Strip strip(row);
    if (!made.endpoint) {
        return {strip.outcome(no_endpoint)};
    }
    const Records& records = *made.records;
    std::vector<Outcome> all;
    if (records.empty() || (records.front().awaited && !records.front().answered)) {
        all.push_back(strip.outcome(no_answer));
    } else if (!records.front().awaited) {
        all.push_back(strip.outcome(status_0));
    } else {
        all.push_back(answered(strip, row, records.front()));
        if (records.front().delayed && made.overdue) {
            all.push_back(strip.outcome(no_answer));
        }
    }
    if (made.overdue) { // a manager's queue was full for a one-way message
        all.push_back(strip.outcome(send_refused));
    }
    return all;
}

} // namespace soak
