#include "konfd/session.hpp"

#include <fmt/format.h>

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

Reply Session::execute()
{
    Reply reply =
        too_long_ ? Konfd::refuse(fmt::format("a text of more than {} bytes", longest_text)) : konfd_->execute(text_);
    text_.clear();
    too_long_ = false;
    return reply;
}

std::chrono::milliseconds Session::wait() const
{
    const auto parsed = parse(text_);
    const auto* const commands = std::get_if<std::vector<Command>>(&parsed);
    if (too_long_ || commands == nullptr) {
        const bool incomplete = !too_long_ && std::get<Complaint>(parsed).incomplete;
        return incomplete ? patience : quiet;
    }
    const Command& last = commands->back();
    return last.operation == 's' && last.line->starts_with("ssid ") ? patience : quiet;
}

std::vector<Reply> Session::receive(std::string_view bytes, Time now, bool answer_unread)
{
    std::vector<Reply> replies;
    const bool anew = text_.empty() && !too_long_;
    for (const char byte : bytes) {
        const bool empty = text_.empty() && !too_long_;
        if (ends_text(byte)) {
            if (!empty) {
                replies.push_back(execute());
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
    return replies;
}

std::vector<Reply> Session::time_out()
{
    deadline_.reset();
    if (text_.empty() && !too_long_) {
        return {};
    }
    Reply reply = execute();
    answered_unended_ = true;
    if (continues_) {
        reply.report.line += " (one answer for both)";
        reply.answer.clear();
    }
    return {reply};
}

} // namespace vorsim::konfd
