// batch.hpp: files of calls, one a line.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "plan/plan.hpp"

namespace vorcfg {

// The column of the word complained about; behind the last for one that is missing.
std::size_t column_of(const Complaint& complaint, const std::vector<Word>& words);

std::string read_batch(const std::string& path); // - is standard input

// The calls of a batch, one after the other; none is kept, so that a batch of
// any length takes no more memory than its text and its secrets.
class Batch {
public:
    Batch(std::string text, std::string name, SecretSources sources);

    // The next line's call, tried when it is read for the first time; none at the end. Throws a Complaint with its
    // place, and goes on behind it.
    std::optional<Planned> next();
    void rewind(); // to make what was tried

    const std::string& name() const { return name_; }

private:
    std::string text_;
    std::string name_;
    Secrets secrets_;
    std::size_t at_ = 0;
    std::size_t line_ = 0;
    bool tried_ = false; // every call, by the first reading
};

} // namespace vorcfg
