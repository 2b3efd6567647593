#include "client/received.hpp"

#include <limits>
#include <string_view>

#include <fmt/core.h>

#include "client/ask.hpp"
#include "record/json.hpp"
#include "text/json.hpp"
#include "text/parse.hpp"

namespace vorsim::client {

void Received::update(std::chrono::milliseconds within)
{
    for (bool more = true; more; within = {}) {
        std::string line = fmt::format("received --after {}", last_);
        line += within.count() > 0 ? fmt::format(" --within {}ms", within.count()) : "";
        for (const std::string& word : filter_) {
            line += ' ' + vor::typed(word);
        }
        const std::string answer = ask(line, {}, within + patience);
        const std::vector<std::string_view> lines = vor::lines_in(answer);
        const vor::Json head = vor::Json::parse(lines.at(0));
        const auto first = head.at("first").number<std::uint64_t>();
        if (first != first_) {
            records_.clear();
            forgotten_ = 0;
        }
        first_ = first;
        last_ = head.at("last").number<std::uint64_t>();
        forgotten_ += head.at("forgotten").number<std::uint64_t>();
        more = head.value("more", false);
        for (std::size_t at = 1; at < lines.size(); ++at) {
            records_.push_back(record::read_line(lines[at]).record);
        }
    }
}

void Received::skip()
{
    last_ = std::numeric_limits<std::uint64_t>::max();
    update();
}

} // namespace vorsim::client
