// halves.hpp: the second halves of answers, sent when the first were read.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "process/loop.hpp"

namespace vorsim {

class Halves {
public:
    void keep(int descriptor, std::string rest) { rests_[descriptor] += rest; }
    void forget(int descriptor) { rests_.erase(descriptor); }
    bool has(int descriptor) const { return rests_.contains(descriptor); }

    std::optional<Loop::Time> deadline() const;
    void on_deadline();

private:
    std::map<int, std::string> rests_;
};

// Bytes sent that the client has not received yet.
bool answer_unread(int descriptor);

} // namespace vorsim
