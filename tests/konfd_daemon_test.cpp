// The simulator's konfd: commands, the tree they leave, and clients' streams.
#include <random>
#include <sstream>

#include <regex.h>

#include <gtest/gtest.h>

#include "konfd/session.hpp"
#include "record/json.hpp"
#include "record/line.hpp"
#include "record/stored.hpp"
#include "text/json.hpp"

namespace {

using namespace vorsim::konfd;
using namespace std::chrono_literals;

const std::string set_ssid = "-s -l \"ssid site4\" -r \"^ssid \" \"interface wlan0\"";
const std::string set_password = "-s -l \"password hunter2\" -r \"^password \" \"interface wlan0\" \"ssid site4\"";

TEST(konfd_daemon, tree_after_each_command)
{
    struct Step {
        const char* command;
        const char* answer;
        const char* tree;
    };
    const Step steps[] = {
        {"-s -l \"b 1\" -r \"^b \" \"x\"", "-e\n", ""},
        {"-s -l \"x\"", "-o\n", "x\n"},
        {"-s -l \"b 1\" -r \"^b \" \"x\"", "-o\n", "x\n  b 1\n"},
        {"-s -l \"c 1\" -r \"^c \" \"x\"", "-o\n", "x\n  b 1\n  c 1\n"},
        {"-s -l \"b 2\" -r \"^b \" \"x\"", "-o\n", "x\n  b 2\n  c 1\n"}, // in the old line's place
        {"-s -l \"deep\" \"x\" \"b 2\"", "-o\n", "x\n  b 2\n    deep\n  c 1\n"},
        {"-s -l \"b 2\" -r \"^[bc] \" \"x\"", "-o\n", "x\n  b 2\n    deep\n"}, // itself: keeps what is under it
        {"-s -l \"late\" -p 9 \"x\"", "-o\n", "x\n  b 2\n    deep\n  late\n"},
        {"-s -l \"a\" -r \"^a$\" -p 5 \"x\"", "-o\n", "x\n  b 2\n    deep\n  a\n  late\n"},
        {"-s -l \"late\" -p 0 \"x\"", "-o\n", "x\n  b 2\n    deep\n  late\n  a\n"},
        {"-c -l \"b 2\" -r \"^b [0-9]+$\" \"x\"", "-o\n", nullptr},
        {"-c -l \"b 3\" -r \"^b [0-9]+$\" \"x\"", "-e\n", nullptr},
        {"-c -r \"^deep\" \"x\" \"b 2\"", "-o\n", nullptr},
        {"-c -r \"^deep\" \"y\"", "-e\n", nullptr},
        {"-u -r \"^b \" \"x\"", "-o\n", "x\n  late\n  a\n"},
        {"-u -r \"^b \" \"x\"", "-o\n", nullptr}, // none fitting
        {"-u -r \"^b \" \"nowhere\"", "-e\n", nullptr},
        {"-d \"nowhere\"", "-o\n", nullptr},
        {"-d \"x\"", "-o\n\"late\"\n\"a\" -p 5\n", nullptr},
        {"-d -s -l \"interface eth0\" -r \"interface eth1$\"",
         "-o\n\"x\"\n  \"late\"\n  \"a\" -p 5\n\"interface eth0\"\n", "x\n  late\n  a\ninterface eth0\n"},
    };
    Konfd konfd;
    std::string tree;
    for (const Step& step : steps) {
        EXPECT_EQ(step.answer, konfd.execute(step.command).answer) << step.command;
        tree = step.tree != nullptr ? step.tree : tree;
        EXPECT_EQ(tree, konfd.text()) << step.command;
    }
}

TEST(konfd_daemon, invalid_commands_change_nothing)
{
    const std::string long_line = "-s -l \"" + std::string(1025, 'x') + '"';
    const std::pair<const char*, const char*> table[] = {
        {"hello", "byte 1: expected an option or a quoted text"},
        {"-x", "byte 1: expected an option or a quoted text"},
        {"-s -l \"a", "byte 7: unclosed quote"},
        {"-s -l", "byte 4: -l needs a value"},
        {"-s -l a", "byte 4: -l needs a quoted text"},
        {"-s -r \"a\"", "-s needs -l"},
        {"-s -l \"\"", "-s needs -l"},
        {"-s -l \"a\" -l \"b\"", "byte 11: unexpected second -l"},
        {"-s -u -l \"a\"", "byte 4: unexpected second operation"},
        {"-u \"x\"", "-u needs -l or -r"},
        {"-c -p 1", "-c needs -l or -r"},
        {"-d -r \"a\"", "-d alone takes only path words"},
        {"\"x\" -s -l \"a\"", "byte 1: expected -s, -c, -u or -d first"},
        {"-s -l \"a\" -p high", "byte 14: priority must be 0 to 99999"},
        {"-s -l \"a\" \"\"", "byte 11: empty path word"},
        {"-s -l \"ssid a\"b\" -r \"^ssid \" \"i\"", "byte 15: expected an option or a quoted text"},
        {"-s -l \"a\x01\"", "byte 7: unexpected control character"},
        {long_line.c_str(), "byte 7: text longer than 1024 bytes"},
        {"-s -l \"a\" -r \"(\"", "the pattern is not a regular expression, or is too complex"},
        {"-s -l \"a\" -s -l \"b", "byte 17: unclosed quote"}, // the first is not carried out, either
    };
    Konfd konfd;
    for (const auto& [command, why] : table) {
        const Reply reply = konfd.execute(command);
        EXPECT_EQ("-e\n", reply.answer) << command;
        EXPECT_EQ(why, reply.record.complaint) << command;
    }
    EXPECT_EQ("", konfd.text());
    EXPECT_EQ("-o\n", konfd.execute("-s -l \"" + std::string(1024, 'x') + '"').answer) << "the longest";
}

// The C library is the measure, where a back reference does not part the two.
TEST(konfd_daemon, patterns_match_like_regcomp)
{
    constexpr const char* pieces[] = {
        "a",    "b",     "a",     "_",    ".",    "*",           "+",       "?",       "(",         ")",      "|",
        "[ab]", "[^a]",  "[a-c]", "[]a]", "[a-]", "[",           "-",       "^",       "$",         "{2}",    "{1,2}",
        "{,2}", "{0}",   "{1,}",  "{,}",  "{",    "}",           "\\b",     "\\w",     "\\S",       "\\`",    "\\.",
        "\\",   "[--a]", "[b-a]", "()",   ",",    "[[:alpha:]]", "[[.a.]]", "[[=a=]]", "[[:foo:]]", "[a-a-b]"};
    std::mt19937 random(5); // NOLINT: the same patterns every time
    const auto below = [&random](std::size_t end) { return random() % end; };
    int valid = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string expression;
        for (std::size_t left = 1 + below(6); left > 0; --left) {
            expression += pieces[below(std::size(pieces))];
        }
        regex_t theirs;
        const bool taken = regcomp(&theirs, expression.c_str(), REG_EXTENDED | REG_NOSUB) == 0;
        const auto ours = Pattern::compile(expression);
        ASSERT_EQ(taken, ours.has_value()) << expression;
        for (int line = 0; taken && line < 4; ++line) {
            std::string text;
            for (std::size_t left = below(7); left > 0; --left) {
                text += "aabb _1c-"[below(9)];
            }
            Work work(100'000);
            ASSERT_EQ(regexec(&theirs, text.c_str(), 0, nullptr, 0) == 0, ours->matches(text, work))
                << expression << " on " << text;
        }
        if (taken) {
            regfree(&theirs);
            ++valid;
        }
    }
    EXPECT_GT(valid, 5'000);
}

// What -d prints of any tree, given to -s line by line, makes the same tree.
TEST(konfd_daemon, output_of_dump_can_be_set)
{
    constexpr const char* pieces[] = {"a", " ", "ssid", "\\n", "'", "-p 1", "\xc3\xa9", "\xff", "\u202e", "$(x)"};
    std::mt19937 random(7); // NOLINT: the same trees every time
    const auto below = [&random](std::size_t end) { return random() % end; };
    for (int round = 0; round < 200; ++round) {
        Konfd konfd({.show_secrets = true});
        std::vector<std::string> places{""}; // a path's words, each after a blank
        for (int line = 0; line < 20; ++line) {
            const std::string place = places[below(places.size())];
            std::string text;
            for (std::size_t left = 1 + below(4); left > 0; --left) {
                text += pieces[below(std::size(pieces))];
            }
            const std::string priority = below(2) == 0 ? "" : " -p " + std::to_string(below(4));
            ASSERT_EQ("-o\n", konfd.execute("-s -l \"" + text + "\"" + priority + place).answer);
            places.push_back(place + " \"" + text + "\"");
        }
        const std::string dump = konfd.execute("-d").answer.substr(3);
        Konfd copy({.show_secrets = true});
        std::vector<std::string> path; // of the line before
        std::istringstream lines(dump);
        for (std::string line; std::getline(lines, line);) {
            const std::size_t begin = line.find('"');
            path.resize(begin / 2);
            std::string command = "-s -l " + line.substr(begin);
            for (const std::string& word : path) {
                command += " " + word;
            }
            ASSERT_EQ("-o\n", copy.execute(command).answer) << command;
            path.push_back(line.substr(begin, line.rfind('"') + 1 - begin));
        }
        ASSERT_EQ(dump, copy.execute("-d").answer.substr(3));
        ASSERT_EQ(vor::dump(vorsim::record::json_of(konfd)), vor::dump(vorsim::record::json_of(copy)));
    }
}

TEST(konfd_daemon, lenient_creates_missing_paths)
{
    Konfd konfd({.lenient = true});
    EXPECT_EQ("-e\n", konfd.execute("-c -l \"a\" \"x\"").answer);
    EXPECT_EQ("-o\n", konfd.execute("-u -l \"a\" \"x\"").answer);
    EXPECT_EQ("-o\n", konfd.execute("-s -l \"a\" \"x\"").answer);
    EXPECT_EQ("x\n  a\n", konfd.text());
}

TEST(konfd_daemon, full_tree_refuses_and_recovers)
{
    Konfd konfd({.lenient = true});
    int kept = 0;
    while (kept < 10000 &&
           konfd.execute("-s -l \"" + std::string(1000, 'x') + std::to_string(kept) + "\"").answer == "-o\n") {
        ++kept;
    }
    EXPECT_GT(kept, 100);
    EXPECT_LT(kept, 10000);
    EXPECT_EQ("-e\n", konfd.execute("-s -l \"" + std::string(1020, 'y') + "\"").answer);
    EXPECT_EQ("-o\n", konfd.execute("-u -r \"x\"").answer);
    EXPECT_EQ("-o\n", konfd.execute(set_ssid).answer);
    EXPECT_EQ("interface wlan0\n  ssid site4\n", konfd.text());
}

TEST(konfd_daemon, secrets_are_masked)
{
    for (const bool shown : {false, true}) {
        Konfd konfd({.show_secrets = shown, .lenient = true});
        std::string everything;
        for (const char* command :
             {"-s -l \"password hunter2\" -r \"^password hunter2$\" \"interface wlan0\"", "-d \"interface wlan0\"",
              "-c -r \"^passphrase hunter2\" \"PSK hunter2\"", "-s -l \"password hunter2"}) {
            const Reply reply = konfd.execute(command);
            everything +=
                vorsim::record::line_of(reply.record) + vorsim::record::json_line(reply.record) + reply.answer;
        }
        everything += konfd.text() + vor::dump(vorsim::record::json_of(konfd));
        EXPECT_EQ(shown, everything.find("hunter2") != std::string::npos) << everything;
    }
}

// One client, its clock in the test's hand.
class Client : public testing::Test {
protected:
    void send(const std::string& bytes, bool answer_unread = false)
    {
        for (std::string_view left = bytes; !left.empty();) {
            take(session.receive(left, now, answer_unread));
        }
    }
    void wait(std::chrono::milliseconds time)
    {
        now += time;
        if (session.deadline().value_or(Time::max()) <= now) {
            take(session.time_out());
        }
    }
    std::string heard() { return std::exchange(answers, {}); }

    Konfd konfd{{.lenient = true}};
    ClientSession session{konfd};
    Time now{};
    std::string answers;

private:
    void take(const std::optional<Exchange>& exchange) { answers += exchange ? exchange->reply.answer : ""; }
};

TEST_F(Client, one_answer_for_an_unterminated_pair)
{
    send(set_ssid + set_password);
    wait(9ms);
    EXPECT_EQ("", heard());
    wait(1ms);
    EXPECT_EQ("-o\n", heard());
    EXPECT_EQ("interface wlan0\n  ssid site4\n    password ********\n", konfd.text());

    send(set_ssid); // the two may come in two packets, the second one late
    wait(999ms);
    EXPECT_EQ("", heard());
    send(set_password + "\"");
    wait(1s);
    EXPECT_EQ("-e\n", heard()) << "one verdict for both";
}

TEST_F(Client, no_stale_answer)
{
    send(set_ssid);
    wait(1s);
    EXPECT_EQ("-o\n", heard());
    send(set_password, true); // so late that the answer to the first half is there already, unread
    wait(10ms);
    EXPECT_EQ("", heard());
    EXPECT_EQ("interface wlan0\n  ssid site4\n    password ********\n", konfd.text());
    send(set_password); // the answer was read: an exchange of its own
    wait(10ms);
    EXPECT_EQ("-o\n", heard());
}

TEST_F(Client, byte_a_second_is_refused)
{
    const std::string text = "-s -l \"interface number 1\"";
    for (std::size_t at = 0; at < 11; ++at) {
        send(text.substr(at, 1));
        EXPECT_EQ("", heard()) << at;
        wait(999ms);
    }
    EXPECT_EQ("-e\n", heard());
    EXPECT_EQ("", konfd.text());
}

TEST_F(Client, answer_fits_the_library_buffer)
{
    for (int line = 0; line < 10; ++line) {
        konfd.execute("-s -l \"interface number " + std::to_string(line) + "\"");
    }
    send("-d -s -l \"interface eth0\" -r \"interface eth1$\"");
    wait(10ms);
    EXPECT_EQ(50U, answers.size());
    EXPECT_EQ("-o\n", heard().substr(0, 3));
}

} // namespace
