// pipe.hpp: the two ends of a client's pipes. Standard output becomes the answer that is being made, so that nothing
// that a command, the library or the platform prints comes between two answers.
#pragma once

#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vorcfg::serve {

inline constexpr std::size_t longest_line = std::size_t{16} << 20;

struct Line {
    std::string text;
    bool is_whole = true; // false: it was too long
};

// Takes standard input and output for good: nobody else can read or write them, what this process forks included. It
// takes the signals that end the process, too; only one may be made.
class Pipe {
public:
    Pipe(); // throws an InputError

    // None at the end of input, and once a signal came.
    std::optional<Line> next();
    // Waits as long, or until a signal comes.
    void rest(int milliseconds);
    // What was printed since the last time.
    std::string take_printed();
    // False where nobody reads it any more, or will not in time after a signal.
    bool write(std::string_view text);

    static bool has_signal();

    // While it lives, a first signal does not wait to be noted, and the next one ends the process.
    class Interruptible {
    public:
        explicit Interruptible(const Pipe& pipe);
        Interruptible(const Interruptible&) = delete;
        Interruptible& operator=(const Interruptible&) = delete;
        ~Interruptible();

    private:
        const Pipe& pipe_;
    };

private:
    static inline Pipe* only_ = nullptr;
    static void leave(); // in a process that was forked

    // Whether it is ready; false after a signal.
    bool wait(int descriptor, short events, int milliseconds = -1);

    int input_ = -1;
    int output_ = -1;
    int printed_ = -1;
    sigset_t blocked_;
    int signals_ = -1;
    bool ended_ = false;
    std::string read_; // and not returned yet
    std::size_t searched_ = 0;
};

} // namespace vorcfg::serve
