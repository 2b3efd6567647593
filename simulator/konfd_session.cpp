#include "konfd_session.hpp"

namespace vorsim::konfd {
namespace {

bool is_blank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

bool ends_text(char character)
{
    return character == '\0' || character == '\n';
}

} // namespace

Verdict Session::execute()
{
    Verdict verdict = too_long_ ? Konfd::refuse("a text of more than " + std::to_string(longest_text) + " bytes")
                                : konfd_->execute(text_);
    text_.clear();
    too_long_ = false;
    return verdict;
}

std::chrono::milliseconds Session::wait() const
{
    const auto parsed = parse(text_);
    const auto* const commands = std::get_if<std::vector<Command>>(&parsed);
    if (too_long_ || commands == nullptr) {
        const bool incomplete = !too_long_ && std::get<Mistake>(parsed).incomplete;
        return incomplete ? patience : quiet;
    }
    const Command& last = commands->back();
    return last.operation == 's' && last.line->starts_with("ssid ") ? patience : quiet;
}

std::vector<Verdict> Session::feed(std::string_view bytes, Time now, bool answer_unread)
{
    std::vector<Verdict> verdicts;
    const bool anew = text_.empty() && !too_long_;
    for (const char byte : bytes) {
        const bool empty = text_.empty() && !too_long_;
        if (ends_text(byte)) {
            if (!empty) {
                verdicts.push_back(execute());
                answered_unended_ = false;
            }
        } else if (too_long_ || (empty && is_blank(byte))) {
            continue; // nothing to keep; blanks follow the terminator of a padded query
        } else if (text_.size() == longest_text) {
            too_long_ = true;
            text_.clear();
        } else {
            text_ += byte;
        }
    }
    deadline_.reset();
    if (!text_.empty() || too_long_) {
        deadline_ = now + wait();
        continues_ = anew ? answer_unread && answered_unended_ : continues_;
    }
    return verdicts;
}

std::vector<Verdict> Session::fall_quiet()
{
    deadline_.reset();
    if (text_.empty() && !too_long_) {
        return {};
    }
    Verdict verdict = execute();
    answered_unended_ = true;
    if (continues_) {
        verdict.line += " (one answer for both)";
        verdict.answer.clear();
    }
    return {verdict};
}

} // namespace vorsim::konfd
