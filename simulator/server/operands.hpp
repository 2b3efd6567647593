// operands.hpp: what stands behind a command's name, taken one after the other.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/core.h>

#include "record/filter.hpp"
#include "server/options.hpp"
#include "text/options.hpp"

namespace vorsim {

class Operands {
public:
    explicit Operands(const std::vector<std::string>& words) : words_(words.begin(), words.end()), left_(words_) {}
    explicit Operands(std::vector<std::string>&&) = delete; // it looks at them

    bool empty() const { return left_.empty(); }
    std::string_view front() const { return left_.front(); }
    std::string_view take()
    {
        const std::string_view word = left_.front();
        left_ = left_.subspan(1);
        return word;
    }
    // What is no option; throws when nothing of that kind is there.
    std::string_view take(std::string_view what)
    {
        if (empty() || front().starts_with("-")) {
            throw UsageError(empty() ? fmt::format("{} is missing", what)
                                     : fmt::format("unknown option \"{}\"", front()));
        }
        return take();
    }
    // The option's value, where it stands in front.
    std::optional<std::string_view> take_option(const vor::Option& option)
    {
        const auto found = vor::option_in(std::span(&option, 1), left_);
        left_ = left_.subspan(found ? found->used : 0);
        return found ? std::optional(found->value) : std::nullopt;
    }
    bool take_filter(Filter& filter)
    {
        const auto found = vor::option_in(filter_options(), left_);
        if (found) {
            filter.set(*found->row, found->value);
            left_ = left_.subspan(found->used);
        }
        return found.has_value();
    }
    void end() const
    {
        if (!empty()) {
            throw UsageError(fmt::format("\"{}\" is too much here", front()));
        }
    }

private:
    std::vector<std::string_view> words_;
    std::span<const std::string_view> left_;
};

inline constexpr vor::Option json_option{"--json", "", ""};

} // namespace vorsim
