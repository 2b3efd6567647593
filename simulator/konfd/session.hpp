// session.hpp: from a client's bytes to commands and back to answers.
//
// A zero byte or a line end ends a text; each ended text is answered once. A
// text without an end is carried out when its sender has fallen quiet:
// - whole, it waits for `quiet`;
// - cut short (a quote open, an option without its text), for `patience`;
// - a network's name, set without an end, for `patience` as well: its sender
//   sets the password in a second message and reads one answer for both.
// A text that takes longer than `longest_time` to come in is refused.
// What comes unended while the answer before it is still unread belongs to
// the same exchange: it is carried out and adds no second answer.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "konfd/konfd.hpp"

namespace vorsim::konfd {

using Time = std::chrono::steady_clock::time_point;

constexpr std::chrono::milliseconds quiet{10};
constexpr std::chrono::milliseconds patience{1000};
constexpr std::chrono::milliseconds longest_time{10'000}; // from the first byte of a text to its end
constexpr std::size_t longest_text = 16384;

// A text and the reply to it.
struct Exchange {
    std::string text; // without its end; empty where it was too long to be kept
    Reply reply;
    bool too_slow = false; // its sender is to be dropped
};

class ClientSession {
public:
    explicit ClientSession(Konfd& konfd) : konfd_(&konfd) {}

    // Takes from the bytes that came in, up to the end of the first text;
    // answer_unread: the client has yet to read an earlier answer.
    std::optional<Exchange> receive(std::string_view& bytes, Time now, bool answer_unread);
    // The deadline has passed.
    std::optional<Exchange> time_out();
    // The client sends no more.
    std::optional<Exchange> end();

    std::optional<Time> deadline() const { return deadline_; }

private:
    Exchange execute();
    Exchange refuse(const std::string& why);
    std::chrono::milliseconds wait() const;

    Konfd* konfd_;
    std::string text_;
    bool too_long_ = false;
    bool answered_unended_ = false; // the last text answered had no end
    bool continues_ = false;        // its answer stands for the text that is coming in, too
    Time begun_;                    // the text
    std::optional<Time> deadline_;
};

} // namespace vorsim::konfd
