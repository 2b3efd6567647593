#include "server/memory.hpp"

#include <array>
#include <chrono>
#include <ctime>
#include <utility>

#include <fmt/core.h>

#include "record/json.hpp"

namespace vorsim::server {
namespace {

constexpr std::size_t most_remembered = 10'000;
constexpr std::size_t most_bytes_remembered = std::size_t{16} << 20;
constexpr std::size_t bytes_of_an_element = 64;

} // namespace

std::string time_text(sockets::Arrival time)
{
    const auto since = std::chrono::floor<std::chrono::microseconds>(time.time_since_epoch());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(since);
    const auto whole = static_cast<std::time_t>(seconds.count());
    tm parts{};
    gmtime_r(&whole, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    return fmt::format("{}.{:06}Z", text.data(), (since - seconds).count());
}

void Memory::add(values::Record& record, sockets::Arrival arrived)
{
    last_ = record.seq;
    record.meta_data = record.payload = record.answer_payload = record.text = record.answer_text = record.datagram =
        std::nullopt;
    std::size_t size = record.line.size() + record.commands.size() + record.complaint.size() + record.object.size();
    for (auto* const values : {&record.values, &record.answer_values}) {
        for (values::Value& value : *values) {
            value.text = {};
            const auto* const text = value.held<std::string>();
            const auto* const list = std::get_if<values::List>(&value.data);
            size += text != nullptr ? text->size() : 0;
            size += list != nullptr ? list->size() * bytes_of_an_element : 0;
        }
    }
    size_ += size;
    all_.push_back({std::move(record), arrived, size});
    while (all_.size() > most_remembered || size_ > most_bytes_remembered) {
        size_ -= all_.front().size;
        all_.pop_front();
    }
}

void Memory::forget()
{
    all_.clear();
    size_ = 0;
    first_ = last_ + 1;
}

std::string Memory::Remembered::json() const
{
    values::Record timed = record;
    timed.time = time_text(arrived);
    return record::json_line(timed, record::Extent::without_bytes);
}

} // namespace vorsim::server
