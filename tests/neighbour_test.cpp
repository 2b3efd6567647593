// A gateway among hostile neighbours: another user, planted links, a full disk, no descriptor left, a core.
#include <array>
#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "platform_fixture.hpp"

namespace {

using processes::contents;
using processes::Gateway;
using processes::Output;
using processes::Workplace;

constexpr uid_t stranger = 65534;

// The error of an action as another user; 0 if it succeeded.
int error_as_stranger(const std::function<bool()>& action)
{
    return WEXITSTATUS(status_of([&] {
        if (setgroups(0, nullptr) != 0 || setgid(stranger) != 0 || setuid(stranger) != 0) {
            _exit(255);
        }
        errno = 0;
        _exit(action() ? 0 : errno);
    }));
}

class Neighbour : public testing::Test {
protected:
    std::string path(const std::string& name) const { return (place.path() / name).string(); }

    Workplace place;
};

using Way = std::function<bool(const std::string& path)>;

bool connects(int type, const std::string& path)
{
    const sockaddr_un address = address_of(path);
    return connect(socket(AF_UNIX, type, 0), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool binds(const std::string& path)
{
    const sockaddr_un address = address_of(path);
    return bind(socket(AF_UNIX, SOCK_DGRAM, 0), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

TEST_F(Neighbour, other_user_has_no_access)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can be another user";
    }
    fs::permissions(place.path(), fs::perms(0755)); // what protects a gateway is its own
    fs::permissions(path("root/tmp"), fs::perms(01777));
    Gateway gateway(place, {"--journal", "journal", "--state", "state"});
    const struct {
        const char* what;
        const char* where;
        Way way;
    } table[] = {
        {"list", "run", [](auto& at) { return open(at.c_str(), O_RDONLY | O_DIRECTORY) >= 0; }},
        {"block", "run", [](auto& at) { return flock(open(at.c_str(), O_RDONLY), LOCK_EX | LOCK_NB) == 0; }},
        {"fill", "run/file", [](auto& at) { return open(at.c_str(), O_CREAT | O_WRONLY, 0600) >= 0; }},
        {"send to a manager", "run/sap-7", [](auto& at) { return connects(SOCK_DGRAM, at); }},
        {"answer for a manager", "run/sap-999", binds},
        {"take a manager away", "run/sap-7", [](auto& at) { return unlink(at.c_str()) == 0; }},
        {"ask for the state", "run/vorsim.control", [](auto& at) { return connects(SOCK_STREAM, at); }},
        {"speak to konfd", "root/tmp/konfd.socket", [](auto& at) { return connects(SOCK_STREAM, at); }},
        {"take konfd away", "root/tmp/konfd.socket", [](auto& at) { return unlink(at.c_str()) == 0; }},
        {"read the journal", "journal", [](auto& at) { return open(at.c_str(), O_RDONLY) >= 0; }},
        {"write the journal", "journal", [](auto& at) { return open(at.c_str(), O_WRONLY) >= 0; }},
        {"read the state", "state", [](auto& at) { return open(at.c_str(), O_RDONLY) >= 0; }},
    };
    for (const auto& [what, where, way] : table) {
        const int error = error_as_stranger([&way = way, at = path(where)] { return way(at); });
        EXPECT_TRUE(error == EACCES || error == EPERM || error == EBADF) << what << ": " << std::strerror(error);
    }
    expect_said(place, {{"vorcfg gpio set-direction 3 1 0", 0, "accepted"}});
}

// In a directory that others may write to, where a name points to may be their choice.
TEST_F(Neighbour, planted_links_are_refused)
{
    std::ofstream(path("mine")) << "mine";
    for (const char* const link : {"open/state", "open/run", "open/vorsim.control", "open/sap-7"}) {
        fs::create_directories(path("open"));
        fs::create_symlink(path("mine"), path(link));
    }
    fs::permissions(path("open"), fs::perms(01777));
    {
        Gateway gateway(place, {"--state", "open/state"});
        EXPECT_EQ(0, gateway.stop(SIGTERM));
    }
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(path("open/state"))));
    expect_said(place, {{"VORINFRA_DIR=" + path("open/run") + " vorsim", 2, "it is a symbolic link"}});
    fs::permissions(path("open"), fs::perms(0700));
    expect_said(place,
                {{"VORINFRA_DIR=" + path("open") + " vorcfg --sap 7 gpio set-direction 3 1 0", 7, "is not a socket"}});
    expect_said(place, {{"VORINFRA_DIR=" + path("open") + " vorsim", 2, "exists and is not a socket"}});
    EXPECT_EQ("mine", contents(path("mine")));
}

TEST_F(Neighbour, held_lock_is_waited_for_once)
{
    place.run("vorsim show"); // makes the directory
    const int held = open(path("run").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(0, flock(held, LOCK_EX));
    setenv("VORINFRA_TIMEOUT_MS", "1000", 1);
    std::ofstream(path("calls")) << "gpio set-value 1 1\ngpio set-value 2 1\n";
    expect_said(place, {{"timeout 10 vorcfg batch calls --keep-going", 7, "(neighbour_test) has locked the directory"},
                        {"timeout 10 vorsim", 2, "(neighbour_test) has locked the directory"}});
    unsetenv("VORINFRA_TIMEOUT_MS");
    close(held);
}

TEST_F(Neighbour, full_disk_is_reported)
{
    expect_said(place, {{"vorcfg list > /dev/full", 10, "vorcfg: standard output: No space left on device"}});
    expect_said(place, {{"ulimit -f 0; vorsim --state state", 2, // no file may grow
                         "cannot write the state state: File too large (ulimit -f allows 0 bytes)"}});
    expect_said(place, {{"ulimit -f 0; vorcfg list > list", 10,
                         "vorcfg: standard output: File too large (ulimit -f allows 0 bytes)"}});
    const Gateway gateway(place, {});
    expect_said(place, {{"vorsim show > /dev/full", 1, "cannot write to standard output: No space left on device"}});
}

TEST_F(Neighbour, descriptor_exhaustion_is_reported)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer needs descriptors to look at an object";
#endif
    std::ofstream(path("calls")) << "gpio set-direction 3 1 0\n";
    const auto limit = [this](const std::string& tool, int descriptors) {
        std::string script = contents(path("bin/" + tool));
        const std::size_t begin = script.find('\n') + 1;
        script.replace(begin, script.find("exec ") - begin, "ulimit -Sn " + std::to_string(descriptors) + "\n");
        std::ofstream(path("bin/" + tool)) << script;
    };
    constexpr int few = 40;
    limit("vorsim", 10);
    expect_said(place, {{"vorsim", 2, "Too many open files\nvorsim: cannot serve SAP"}});
    limit("vorsim", 1000);
    const Gateway gateway(place, {});
    const auto fails_at = [&](int descriptors) {
        limit("vorcfg", descriptors);
        const Output output = place.run("vorcfg batch calls");
        const bool reported =
            output.text.find("Too many open files") != std::string::npos ||
            output.text.find("open shared object file: Error 24") != std::string::npos; // the loader's
        EXPECT_EQ(output.exit_code != 0, reported) << descriptors << ": " << output.text;
        return output.exit_code != 0;
    };
    EXPECT_FALSE(fails_at(few));
    for (int descriptors = 4; fails_at(descriptors); descriptors++) {
        ASSERT_LT(descriptors, few);
    }
}

TEST_F(Neighbour, endless_and_foreign_input_is_refused)
{
    place.run("mkfifo pipe; mkdir folder; echo 'gpio set-direction 3 1 0' > calls; touch calls.journal; "
              "printf '{\"journal\":2}\\n{\"seq\":1,\"sap\":70000,\"source\":200,\"id\":\"0x1\"}\\n' > saps");
    expect_said(place,
                {{"vorcfg batch pipe", 8, "cannot read pipe: it is a pipe that no process writes to"},
                 {"vorcfg plan /dev/stdin < calls", 11, "1 to make"},
                 {"vorsim --faults folder", 2, "cannot read folder: Is a directory"},
                 {"vorsim decode /dev/zero", 1, "cannot read the journal /dev/zero: line 1 has more than 16 MiB"},
                 {"vorsim replay saps", 1, "saps:2: message 0x1 to SAP 0 is damaged, sap: "},
                 {"ln -s calls.journal link; vorcfg apply calls --journal link", 12, "link: it is a symbolic link"}});
    for (const char* const part : {"", "bin", "bin/vorcfg"}) {
        fs::permissions(path(part), fs::perms(0755));
    }
    const std::string as_stranger = "chown 1 calls.journal; setpriv --reuid 65534 --clear-groups ";
    if (place.run(as_stranger + "vorcfg --version").exit_code != 0) {
        GTEST_SKIP() << "no other user can run the tools";
    }
    expect_said(place, {{as_stranger + "vorcfg plan calls", 12, "calls.journal: it belongs to user 1"}});
}

// Aborts a process that holds a passphrase while the manager does not answer.
bool leaves_a_core(const std::function<void()>& dying, int ready)
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit any{RLIM_INFINITY, RLIM_INFINITY};
        setrlimit(RLIMIT_CORE, &any);
        dying();
        _exit(1);
    }
    char byte;
    EXPECT_EQ(1, read(ready, &byte, 1));
    kill(child, SIGABRT);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    return WCOREDUMP(status);
}

TEST_F(Neighbour, core_file_holds_no_passphrase)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer forbids cores";
#endif
    const Gateway gateway(place, {});
    gateway.suspend();
    place.enter();
    std::ofstream(path("secret")) << "Monsoon-17";
    int ready[2];
    ASSERT_EQ(0, pipe2(ready, O_CLOEXEC));
    const auto enter = [&] { // the secret as input, the trace as the sign that the call is under way
        dup2(open(path("secret").c_str(), O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        dup2(ready[1], STDERR_FILENO);
        return chdir(place.path().c_str());
    };
    const auto any_program = [&] {
        if (enter() == 0 && write(ready[1], "", 1) == 1) {
            pause();
        }
    };
    const auto shell = [&] {
        if (enter() == 0) {
            execl("bin/vorcfg", "vorcfg", "--trace", "gsm", "set-password", "1", "-", "1", nullptr);
        }
    };
    if (!leaves_a_core(any_program, ready[0])) {
        GTEST_SKIP() << "no program leaves a core here";
    }
    EXPECT_FALSE(leaves_a_core(shell, ready[0]));
    gateway.resume();
}

} // namespace
