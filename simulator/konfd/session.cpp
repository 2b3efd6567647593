#include "konfd/session.hpp"

#include <algorithm>
#include <utility>

#include <fmt/core.h>

#include "konfd/command.hpp"

namespace vorsim::konfd {
namespace {

bool ends_text(char character)
{
    return character == '\0' || character == '\n';
}

} // namespace

Exchange ClientSession::execute()
{
    if (too_long_) {
        return refuse(fmt::format("text longer than {} bytes", longest_text));
    }
    Reply reply = konfd_->execute(text_);
    return {std::exchange(text_, {}), std::move(reply)};
}

Exchange ClientSession::refuse(const std::string& why)
{
    too_long_ = false;
    return {std::exchange(text_, {}), Konfd::refuse(why)};
}

std::chrono::milliseconds ClientSession::wait() const
{
    const auto parsed = parse(text_);
    const auto* const commands = std::get_if<std::vector<Command>>(&parsed);
    if (too_long_ || commands == nullptr) {
        const bool incomplete = !too_long_ && std::get<SyntaxError>(parsed).incomplete;
        return incomplete ? patience : quiet;
    }
    const Command& last = commands->back();
    return last.operation == 's' && last.line->starts_with("ssid ") ? patience : quiet;
}

std::optional<Exchange> ClientSession::receive(std::string_view& bytes, Time now, bool answer_unread)
{
    const bool begins_text = text_.empty() && !too_long_;
    deadline_.reset();
    while (!bytes.empty()) {
        const char byte = bytes.front();
        bytes.remove_prefix(1);
        const bool empty = text_.empty() && !too_long_;
        if (ends_text(byte)) {
            if (!empty) {
                answered_unended_ = false;
                return execute();
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
    if (!text_.empty() || too_long_) {
        begun_ = begins_text ? now : begun_;
        deadline_ = std::min(now + wait(), begun_ + longest_time);
        continues_ = begins_text ? answer_unread && answered_unended_ : continues_;
    }
    return {};
}

std::optional<Exchange> ClientSession::time_out()
{
    if (deadline_ && *deadline_ == begun_ + longest_time) {
        deadline_.reset();
        Exchange exchange = refuse(fmt::format("text not ended within {} s", longest_time / std::chrono::seconds(1)));
        exchange.too_slow = true;
        return exchange;
    }
    return end();
}

std::optional<Exchange> ClientSession::end()
{
    deadline_.reset();
    if (text_.empty() && !too_long_) {
        return {};
    }
    Exchange exchange = execute();
    answered_unended_ = true;
    if (continues_) {
        exchange.reply.record.notes.emplace_back("one answer for both");
        exchange.reply.answer.clear();
    }
    return exchange;
}

} // namespace vorsim::konfd
