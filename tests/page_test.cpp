// The page to look at: who may see it, what it bears, and what a browser makes of it.
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/wait.h>

#include "text/json.hpp"
#include <fmt/core.h>

#include "platform_fixture.hpp"
#include "sockets/unix_socket.hpp"

namespace {

using processes::Gateway;
using vor::Json;
using vorsim::sockets::Descriptor;

// Up to and with the wanted text, or what came before the end.
std::string read_until(const Descriptor& socket, std::string_view wanted)
{
    std::string text;
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    pollfd waiting{socket.get(), POLLIN, 0};
    for (char bytes[4096]; std::chrono::steady_clock::now() < patience && poll(&waiting, 1, 20'000) == 1;) {
        const ssize_t size = recv(socket.get(), bytes, sizeof bytes, MSG_PEEK);
        const std::size_t before = text.size();
        text.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        const std::size_t found = text.find(wanted, before - std::min(before, wanted.size()));
        text.resize(std::min(text.size(), found + std::min(wanted.size(), text.npos - found)));
        if (recv(socket.get(), bytes, text.size() - before, 0) <= 0 || found != text.npos) {
            break;
        }
    }
    return text;
}

// A gateway with a page, and what it knows from its link.
class Page {
public:
    explicit Page(std::vector<std::string> options)
        : gateway(place, (options.insert(options.end(), {"--http", "0"}), options))
    {
        link = gateway.next_line();
        link.erase(0, link.find("http://"));
        token = "?token=" + link.substr(link.find('#') + 1);
        own = link.substr(7, link.find("/#") - 7);
    }

    Descriptor connected(const std::string& begin) const
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(own.substr(own.find(':') + 1))));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const bool there = connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                           vorsim::sockets::send_now(socket.get(), begin);
        return there ? std::move(socket) : Descriptor();
    }
    // The answer to a request, up to the wanted text or its end.
    Descriptor asked(const std::string& what, const std::string& headers, const std::string& body = "") const
    {
        const std::string host = headers.find("Host:") != headers.npos ? "" : fmt::format("Host: {}\r\n", own);
        return connected(
            fmt::format("{} HTTP/1.1\r\n{}{}Content-Length: {}\r\n\r\n{}", what, host, headers, body.size(), body));
    }
    std::string answer(const std::string& what, const std::string& headers = "", const std::string& body = "") const
    {
        return read_until(asked(what, headers + "Connection: close\r\n", body), std::string(1, '\0'));
    }

    processes::Workplace place;
    Gateway gateway;
    std::string link;
    std::string token; // as a query
    std::string own;   // host and port
};

TEST(page, access_requires_token)
{
    const Page page({"--http-control"});
    const std::string events = "GET /events" + page.token;
    const std::string state = "GET /state" + page.token;
    const std::string command = "POST /command" + page.token;
    const std::string own = fmt::format("Origin: http://{}\r\n", page.own);
    const std::tuple<std::string, std::string, std::string, int, std::string> table[] = {
        {"GET /", "", "", 200, "<!doctype html>"},
        {"GET /script.js", own, "", 200, "Content-Security-Policy: default-src 'none'"},
        {state, own, "", 200, "\"control\":true"},
        {state, fmt::format("Host: localhost{}\r\n", page.own.substr(9)), "", 200, "\"served\":[{"},
        {state, "Host: evil.example\r\n", "", 403, "expected host"},
        {state, "Origin: null\r\n", "", 403, "other sites"},
        {events, "Origin: http://127.0.0.1:1\r\n", "", 403, "other sites"},
        {command, "Origin: https://evil.example\r\n", "fault clear", 403, "other sites"},
        {"GET /state", "", "", 403, "token"},
        {"GET /events" + page.token.substr(0, page.token.size() - 1), "", "", 403, "token"},
        {"POST /command?token=" + std::string(32, '0'), own, "fault clear", 403, "token"},
        {"GET /command" + page.token, "", "", 404, ""},
        {"PUT /state" + page.token, "", "", 405, ""},
        {command, own, "fault add any: nothing", 400, "column 6: unexpected \"nothing\""},
        {command, own, "quit", 400, "expected fault, stop"},
        {command, own, "fault clear 9", 409, "no fault 9"},
        {command, own, "stop ethmgr", 200, "ethmgr stopped"},
        {command, own, "reset", 200, ""},
    };
    for (const auto& [what, headers, body, status, text] : table) {
        const std::string answer = page.answer(what, headers, body);
        EXPECT_TRUE(contains(answer, fmt::format("HTTP/1.1 {} ", status))) << what << ' ' << headers << body;
        EXPECT_TRUE(contains(answer, text)) << what << ' ' << headers << body;
    }
    EXPECT_EQ("", page.answer(command, "", std::string(20'000, 'x'))) << "far more than a command";
    EXPECT_TRUE(contains(page.answer("GET /state" + page.token), "\"watched\":true")) << "and it goes on";
    const Descriptor konfd = vorsim::sockets::connect_to((page.place.path() / "root/tmp/konfd.socket").string());
    EXPECT_TRUE(vorsim::sockets::send_now(konfd.get(), "-s -l \"password hunter2\"\n"));
    EXPECT_TRUE(contains(read_until(page.asked(events, ""), "\"-o\""), "password ********\\\""));

    const Page read_only({});
    EXPECT_TRUE(contains(read_only.answer("GET /state" + read_only.token), "\"control\":false"));
    EXPECT_TRUE(contains(read_only.answer("POST /command" + read_only.token, "", "fault clear"), "HTTP/1.1 403 "));
    const std::string port = page.own.substr(page.own.find(':') + 1);
    EXPECT_EQ(fmt::format("vorsim: cannot serve the page at 127.0.0.1:{}: Address already in use\n2\n", port),
              page.place.run(fmt::format("VORINFRA_DIR=$PWD/b vorsim --http {}; echo $?; ls b 2>&-", port)).text);
}

TEST(page, never_blocks_and_ends_with_gateway)
{
    Page page({});
    std::vector<Descriptor> clients;
    for (int client = 0; client < 200; ++client) {
        clients.push_back(page.connected(client % 2 == 0 ? "" : "POST /command HTTP/1.1\r\nHost: 127"));
    }
    for (int stream = 0; stream < 16; ++stream) {
        clients.push_back(page.asked("GET /events" + page.token, ""));
        EXPECT_TRUE(contains(read_until(clients.back(), "\r\n\r\n"), " 200 "));
    }
    EXPECT_TRUE(contains(page.answer("GET /events" + page.token), "at most 16 pages"));
    page.place.enter();
    const Bound front_end(client_sap);
    for (int message = 0; message < 3'000; ++message) { // unread by all streams but one
        Message one;
        vor_ipc_send(front_end, 10, 0xa00a, &one.ref, 0, 0);
    }
    EXPECT_EQ(0, page.place.run("vorcfg can set-baudrate 1 250000 1").exit_code);
    EXPECT_TRUE(contains(read_until(clients.back(), "set_can_baudrate"), "set_can_baudrate"));
    EXPECT_EQ(0, page.gateway.stop(SIGTERM));
    EXPECT_EQ(-1, page.connected("").get());

    Page killed({});
    killed.gateway.stop(SIGKILL);
    for (int patience = 2'000; killed.connected("").get() != -1; --patience) {
        ASSERT_GT(patience, 0);
        usleep(10'000);
    }
    Page dying({});
    dying.place.run(fmt::format("pkill -KILL -P {}", dying.gateway.pid()));
    EXPECT_EQ("vorsim: the page is no longer served: vorsim-page ended with signal 9", dying.gateway.next_line());
    EXPECT_EQ(0, dying.gateway.stop(SIGTERM));
}

// Chromium without a window, told what to do over a socket that is its descriptors 3 and 4.
class Browser {
public:
    explicit Browser(const std::string& directory)
    {
        int ends[2];
        EXPECT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
        pid_ = fork();
        if (pid_ == 0) {
            const int own = fcntl(ends[1], F_DUPFD, 10);
            dup2(own, 3);
            dup2(own, 4);
            dup2(::open("/dev/null", O_RDWR), STDERR_FILENO);
            execlp("chromium", "chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--remote-debugging-pipe",
                   "--disable-features=LocalNetworkAccessChecks", "--host-resolver-rules=MAP evil.example 127.0.0.1",
                   ("--user-data-dir=" + directory).c_str(), "about:blank", nullptr);
            _exit(127);
        }
        socket_ = Descriptor(ends[0]);
        close(ends[1]);
        const std::string target = call("Target.createTarget", {{"url", "about:blank"}}).value("targetId", "");
        session_ = call("Target.attachToTarget", {{"targetId", target}, {"flatten", true}}).value("sessionId", "");
    }
    ~Browser()
    {
        session_.clear();
        call("Browser.close", Json::object());
        waitpid(pid_, nullptr, 0);
    }

    Json call(const std::string& method, const Json& parameters)
    {
        Json request = {{"id", ++last_}, {"method", method}, {"params", parameters}};
        if (!session_.empty()) {
            request["sessionId"] = session_;
        }
        EXPECT_TRUE(vorsim::sockets::send_now(socket_.get(), vor::dump(request) + '\0'));
        for (std::string text; !(text = read_until(socket_, std::string_view("", 1))).empty();) {
            const auto told = Json::read(text.c_str());
            if (!told || told->value("id", 0) == last_) {
                return told && told->contains("result") ? told->at("result") : Json::object();
            }
        }
        return Json::object();
    }
    // What the expression comes to in the page, as soon as that is something.
    Json in_page(const std::string& expression)
    {
        const std::string until = fmt::format("(async () => {{ for (let left = 300; left > 0; left--) "
                                              "{{ const is = await ({}); if (is) {{ return is; }} "
                                              "await new Promise((next) => setTimeout(next, 50)); }} }})()",
                                              expression);
        const Json told =
            call("Runtime.evaluate", {{"expression", until}, {"awaitPromise", true}, {"returnByValue", true}});
        const Json* const value =
            told.contains("exceptionDetails") ? &told["exceptionDetails"] : told["result"].find("value");
        return value != nullptr ? *value : Json();
    }
    void open(const std::string& link)
    {
        call("Page.navigate", {{"url", link}});
        in_page("document.readyState === 'complete'");
    }

private:
    pid_t pid_ = -1;
    Descriptor socket_;
    std::string session_;
    int last_ = 0;
};

TEST(page, browser_shows_and_switches)
{
    const Page page({"--http-control"});
    if (page.place.run("command -v chromium").exit_code != 0) {
        GTEST_SKIP() << "chromium is missing";
    }
    Browser browser((page.place.path() / "browser").string());
    browser.call("Emulation.setDeviceMetricsOverride",
                 {{"width", 390}, {"height", 844}, {"deviceScaleFactor", 1}, {"mobile", true}});
    browser.open(page.link);
    EXPECT_EQ(true, browser.in_page("document.getElementById('connection').textContent === 'live'"));
    page.place.run(
        "vorcfg konfd query --set --line img '<img src=x>' --pattern img x; vorcfg can set-baudrate 1 250000 1");
    EXPECT_EQ(true, browser.in_page("document.querySelector('#list b')?.textContent === 'canmgr'"));
    EXPECT_EQ(true, browser.in_page("document.getElementById('served').textContent.includes('baudrate=\"250000\"')"));
    EXPECT_EQ(true, browser.in_page("document.getElementById('tree').textContent === 'img <img src=x>'"))
        << "text is text";
    EXPECT_EQ(390, browser.in_page("document.documentElement.scrollWidth")) << "nothing hangs out at a phone's width";

    const std::string add = "(document.getElementById('rule').value = '{}', document.querySelector('#faults form')"
                            ".requestSubmit(), true)";
    browser.in_page(fmt::format(fmt::runtime(add), "canmgr: status 7"));
    EXPECT_EQ(true, browser.in_page("document.getElementById('rules').textContent.includes('canmgr: status 7')"));
    EXPECT_TRUE(contains(page.place.run("vorcfg can set-baudrate 1 250000 1").text, "refused by canmgr: status 7"));
    EXPECT_EQ(true, browser.in_page("document.querySelector('#list .fault .outcome')?.textContent === 'status 7'"));
    browser.in_page(fmt::format(fmt::runtime(add), "canmgr: sttus 7"));
    EXPECT_EQ("sttus 7", browser.in_page("getSelection().toString()")) << "where the rule is wrong";

    browser.open("data:text/html,<title>another site</title>");
    const std::string fetch =
        fmt::format("fetch('http://{}{}{}', {}).then((is) => is.text()).catch(() => 'unreadable')", page.own, "{}",
                    page.token, "{}");
    browser.in_page(
        fmt::format(fmt::runtime(fetch), "/command", "{method: 'POST', mode: 'no-cors', body: 'fault clear'}"));
    EXPECT_TRUE(contains(page.place.run("vorsim fault list").text, "1: canmgr: status 7")) << "and switches nothing";
    browser.open(fmt::format("http://evil.example{}", page.link.substr(page.link.rfind(':'))));
    EXPECT_TRUE(contains(vor::dump(browser.in_page("document.body.innerText")), "expected host"));
}

} // namespace
