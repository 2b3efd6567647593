// pattern.hpp: a client's regular expression, kept from doing harm.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <regex.h>

namespace vorsim::konfd {

// A POSIX extended regular expression, without back references.
class Pattern {
public:
    // Nothing when it is none, or would take too much to match.
    static std::optional<Pattern> compile(const std::string& expression);

    bool matches(const std::string& line) const;

private:
    struct Free {
        void operator()(regex_t* expression) const;
    };
    explicit Pattern(std::unique_ptr<regex_t, Free> expression) : expression_(std::move(expression)) {}

    std::unique_ptr<regex_t, Free> expression_;
};

} // namespace vorsim::konfd
