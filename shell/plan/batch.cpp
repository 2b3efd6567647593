#include "plan/batch.hpp"

#include <algorithm>
#include <cstdio>

namespace vorcfg {

std::string read_batch(const std::string& path)
{
    return path == "-" ? content_of(stdin, "standard input") : content_of(std::fopen(path.c_str(), "re"), path);
}

Batch::Batch(std::string text, std::string name, SecretSources sources)
    : text_(std::move(text)), name_(std::move(name)), secrets_(std::move(sources))
{
    if (text_.starts_with("\xef\xbb\xbf")) { // a byte order mark
        text_.erase(0, 3);
    }
}

void Batch::rewind()
{
    at_ = 0;
    line_ = 0;
    tried_ = true;
}

std::size_t column_of(const Complaint& complaint, const std::vector<Word>& words)
{
    if (complaint.place.column != 0) {
        return complaint.place.column;
    }
    if (complaint.word == Complaint::no_word) {
        return words.empty() ? 1 : words.front().column;
    }
    return complaint.word < words.size() ? words[complaint.word].column
                                         : words.back().column + words.back().text.size();
}

std::optional<Planned> Batch::next()
{
    while (at_ < text_.size()) {
        const std::size_t end = std::min(text_.find('\n', at_), text_.size());
        const std::string_view line = std::string_view(text_).substr(at_, end - at_);
        at_ = end + 1;
        line_++;
        std::vector<Word> words;
        try {
            words = words_of(line);
            if (!words.empty()) {
                const std::size_t call = words.size() > 1 ? words[1].column : words[0].column;
                Planned planned = plan(words, secrets_, {name_, line_, call});
                if (!tried_) {
                    rehearse(planned);
                }
                return planned;
            }
        } catch (Complaint& complaint) {
            complaint.place = {name_, line_, column_of(complaint, words)};
            throw;
        }
    }
    return std::nullopt;
}

} // namespace vorcfg
