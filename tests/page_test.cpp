// The page to look at: who may see it, what it bears, and what a browser makes of it.
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/wait.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "platform_fixture.hpp"
#include "process/unix_socket.hpp"

namespace {

using Json = nlohmann::json;
using processes::Gateway;
using vorsim::Descriptor;

// A gateway with a page, and what it knows from its link.
class Page {
public:
    explicit Page(const std::vector<std::string>& options = {"--http-control"}) : gateway(place, with_page(options))
    {
        link = gateway.next_line();
        link.erase(0, link.find("http://"));
        token = link.substr(link.find('#') + 1);
        port = static_cast<std::uint16_t>(std::stoi(link.substr(link.rfind(':') + 1)));
    }

    Descriptor connected(const std::string& begin) const
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const bool there = connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                           vorsim::send_now(socket.get(), begin);
        return there ? std::move(socket) : Descriptor();
    }
    // Until the wanted text came, or the end.
    static std::string read_until(const Descriptor& socket, const std::string& wanted)
    {
        std::string text;
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        pollfd waiting{socket.get(), POLLIN, 0};
        for (char bytes[4096]; text.find(wanted) == text.npos && std::chrono::steady_clock::now() < patience &&
                               poll(&waiting, 1, 20'000) == 1;) {
            const ssize_t size = recv(socket.get(), bytes, sizeof bytes, 0);
            if (size <= 0) {
                break;
            }
            text.append(bytes, static_cast<std::size_t>(size));
        }
        return text;
    }
    std::string request(const std::string& what, const std::string& more = "", const std::string& body = "") const
    {
        const std::string host = more.find("Host:") != more.npos ? "" : fmt::format("Host: 127.0.0.1:{}\r\n", port);
        return fmt::format("{} HTTP/1.1\r\n{}{}Content-Length: {}\r\n\r\n{}", what, host, more, body.size(), body);
    }
    // The status and all behind it.
    std::string answer(const std::string& what, std::string more = "", const std::string& body = "") const
    {
        more += "Connection: close\r\n";
        const std::string text = read_until(connected(request(what, more, body)), std::string(1, '\0'));
        return text.substr(std::min<std::size_t>(text.size(), 9));
    }
    std::string with_token(const std::string& path) const { return fmt::format("{}?token={}", path, token); }

    processes::Workplace place;
    Gateway gateway;
    std::string link;
    std::string token;
    std::uint16_t port = 0;

private:
    static std::vector<std::string> with_page(std::vector<std::string> options)
    {
        options.insert(options.end(), {"--http", "0"});
        return options;
    }
};

TEST(page, is_for_who_holds_its_link)
{
    const Page page;
    const std::string events = "GET " + page.with_token("/events");
    const std::string state = "GET " + page.with_token("/state");
    const std::string command = "POST " + page.with_token("/command");
    const std::string own = fmt::format("Origin: http://127.0.0.1:{}\r\n", page.port);
    const std::tuple<std::string, std::string, std::string, std::string, std::string> table[] = {
        {"GET /", "", "", "200", "<!doctype html>"},
        {"GET /script.js", own, "", "200", "Content-Security-Policy: default-src 'none'"},
        {state, own, "", "200", "\"control\":true"},
        {state, fmt::format("Host: localhost:{}\r\n", page.port), "", "200", "\"served\":[{"},
        {state, "Host: evil.example\r\n", "", "403", "no other host"},
        {"GET /", fmt::format("Host: evil.example:{}\r\n", page.port), "", "403", "no other host"},
        {state, "Origin: null\r\n", "", "403", "another site's page"},
        {events, "Origin: http://127.0.0.1:1\r\n", "", "403", "another site's page"},
        {command, "Origin: https://evil.example\r\n", "fault clear", "403", "another site's page"},
        {"GET /state", "", "", "403", "token"},
        {"GET /state?token=" + page.token.substr(1), "", "", "403", "token"},
        {"GET /events?token=" + std::string(page.token.size(), '0'), "", "", "403", "token"},
        {"POST /command", own, "fault clear", "403", "token"},
        {"GET " + page.with_token("/command"), "", "", "404", ""},
        {"PUT " + page.with_token("/state"), "", "", "405", ""},
        {command, own, "fault add any: nothing", "400", "column 6 of the rule: \"nothing\""},
        {command, own, "quit", "400", "expected fault, stop"},
        {command, own, "fault clear 9", "409", "there is no fault 9"},
        {command, own, "stop ethmgr", "200", "ethmgr is stopped"},
        {command, own, "reset", "200", ""},
    };
    for (const auto& [what, more, body, status, text] : table) {
        const std::string answer = page.answer(what, more, body);
        EXPECT_EQ(status, answer.substr(0, 3)) << what << ' ' << more << body;
        EXPECT_TRUE(contains(answer, text)) << what << ' ' << more << body;
    }
    EXPECT_EQ("", page.answer(command, "", std::string(20'000, 'x'))) << "far more than a command";
    const Descriptor konfd = vorsim::connect_to((page.place.path() / "root/tmp/konfd.socket").string());
    EXPECT_TRUE(vorsim::send_now(konfd.get(), "-s -l \"password hunter2\"\n"));
    const std::string seen = Page::read_until(page.connected(page.request(events)), "\"-o\"");
    EXPECT_TRUE(contains(seen, "password ********\\\""));

    const Page read_only(std::vector<std::string>{});
    EXPECT_TRUE(contains(read_only.answer("GET " + read_only.with_token("/state")), "\"control\":false"));
    EXPECT_TRUE(contains(read_only.answer("POST " + read_only.with_token("/command"), "", "fault clear"),
                         "--http-control was not given"));
    const std::string taken = fmt::format("VORINFRA_DIR=$PWD/other vorsim --http {}", page.port);
    const processes::Output second = page.place.run(taken + "; echo $?; ls other 2>&1 | wc -l");
    EXPECT_TRUE(contains(second.text, fmt::format("--http {}: the page cannot be served at 127.0.0.1: Address already "
                                                  "in use\n2\n",
                                                  page.port)));
    EXPECT_FALSE(fs::exists(page.place.path() / "other/vorsim.control"));
}

TEST(page, holds_up_nobody)
{
    Page page;
    std::vector<Descriptor> idle;
    for (int client = 0; client < 200; ++client) {
        idle.push_back(page.connected(client % 2 == 0 ? "" : "POST /command HTTP/1.1\r\nHost: 127"));
    }
    std::vector<Descriptor> streams;
    const std::string events = page.request("GET " + page.with_token("/events"));
    for (int stream = 0; stream < 16; ++stream) {
        streams.push_back(page.connected(events));
        EXPECT_TRUE(contains(Page::read_until(streams.back(), "\r\n\r\n"), " 200 "));
    }
    EXPECT_TRUE(contains(page.answer("GET " + page.with_token("/events")), "16 look on already"));
    page.place.enter();
    const Bound front_end(client_sap);
    for (int message = 0; message < 3'000; ++message) { // unread by all streams but one
        Message one;
        vor_ipc_send(front_end, 10, 0xa00a, &one.ref, 0, 0);
    }
    EXPECT_EQ(0, page.place.run("vorcfg can set-baudrate 1 250000 1").exit_code);
    EXPECT_TRUE(contains(Page::read_until(streams.front(), "set_can_baudrate"), "set_can_baudrate"));
    EXPECT_EQ(0, page.gateway.stop(SIGTERM));
    EXPECT_EQ(-1, page.connected("").get());
}

TEST(page, ends_with_its_gateway_and_not_the_other_way_round)
{
    Page page;
    EXPECT_TRUE(contains(page.place.run(fmt::format("pkill -KILL -P {0}; vorsim show", page.gateway.pid())).text,
                         "vorsim: 0 messages"));
    EXPECT_EQ("vorsim: the page is served no more: its process ended by signal 9", page.gateway.next_line());
    EXPECT_EQ(0, page.gateway.stop(SIGTERM));
    Page other;
    other.gateway.stop(SIGKILL);
    for (int patience = 2'000; other.connected("").get() != -1; --patience) {
        ASSERT_GT(patience, 0);
        usleep(10'000);
    }
}

// Chromium without a window, spoken to over a pipe.
class Browser {
public:
    explicit Browser(const std::string& directory)
    {
        int in[2];
        int out[2];
        EXPECT_TRUE(pipe2(in, O_CLOEXEC) == 0 && pipe2(out, O_CLOEXEC) == 0);
        pid_ = fork();
        if (pid_ == 0) {
            const int from = fcntl(in[0], F_DUPFD, 10);
            const int to = fcntl(out[1], F_DUPFD, 10);
            dup2(from, 3);
            dup2(to, 4);
            dup2(::open("/dev/null", O_RDWR), STDERR_FILENO);
            execlp("chromium", "chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--remote-debugging-pipe",
                   "--disable-features=LocalNetworkAccessChecks", "--host-resolver-rules=MAP evil.example 127.0.0.1",
                   ("--user-data-dir=" + directory).c_str(), "about:blank", nullptr);
            _exit(127);
        }
        to_ = Descriptor(in[1]);
        from_ = Descriptor(out[0]);
        close(in[0]);
        close(out[1]);
        const Json target = call("Target.createTarget", {{"url", "about:blank"}});
        session_ = call("Target.attachToTarget", {{"targetId", target.value("targetId", "")}, {"flatten", true}})
                       .value("sessionId", "");
        call("Page.enable", Json::object());
    }
    ~Browser()
    {
        call("Browser.close", Json::object());
        to_ = Descriptor();
        waitpid(pid_, nullptr, 0);
    }

    Json call(const std::string& method, const Json& parameters)
    {
        Json request = {{"id", ++last_}, {"method", method}, {"params", parameters}};
        if (!session_.empty() && !method.starts_with("Browser.")) {
            request["sessionId"] = session_;
        }
        const std::string text = request.dump();
        EXPECT_EQ(static_cast<ssize_t>(text.size()) + 1, write(to_.get(), text.c_str(), text.size() + 1));
        pollfd waiting{from_.get(), POLLIN, 0};
        while (poll(&waiting, 1, 60'000) == 1) {
            char byte = 0;
            if (read(from_.get(), &byte, 1) != 1) {
                break;
            }
            pending_ += byte;
            if (byte == '\0') {
                const Json told = Json::parse(std::exchange(pending_, {}).c_str());
                if (told.value("id", 0) == last_) {
                    return told.value("result", Json::object());
                }
            }
        }
        ADD_FAILURE() << "the browser does not answer " << method;
        return Json::object();
    }
    // What the expression comes to in the page, when it comes to something; else nothing.
    Json in_page(const std::string& expression)
    {
        const std::string until = fmt::format("new Promise(async (done) => {{ for (let left = 300; left > 0; left--) "
                                              "{{ const is = await ({}); if (is) {{ return done(is); }} "
                                              "await new Promise((next) => setTimeout(next, 50)); }} done(null); }})",
                                              expression);
        const Json told =
            call("Runtime.evaluate", {{"expression", until}, {"awaitPromise", true}, {"returnByValue", true}});
        return told.contains("exceptionDetails") ? told["exceptionDetails"] : told["result"].value("value", Json());
    }
    void open(const std::string& link)
    {
        call("Page.navigate", {{"url", link}});
        in_page("document.readyState === 'complete'");
    }

private:
    pid_t pid_ = -1;
    Descriptor to_;
    Descriptor from_;
    std::string session_;
    std::string pending_;
    int last_ = 0;
};

TEST(page, shows_and_switches_in_a_browser_and_nothing_for_another_site)
{
    const Page page;
    if (page.place.run("command -v chromium").exit_code != 0) {
        GTEST_SKIP() << "chromium is missing";
    }
    Browser browser((page.place.path() / "browser").string());
    browser.call("Emulation.setDeviceMetricsOverride",
                 {{"width", 390}, {"height", 844}, {"deviceScaleFactor", 1}, {"mobile", true}});
    browser.open(page.link);
    EXPECT_EQ(true, browser.in_page("document.getElementById('connection').textContent === 'live'"));
    page.place.run(
        "vorcfg mqtt set-client-id '<img src=x onerror=document.title=1>' 1; vorcfg can set-baudrate 1 250000 1");
    EXPECT_EQ("canmgr", browser.in_page("document.querySelector('#list b')?.textContent"));
    EXPECT_EQ(true, browser.in_page("document.getElementById('served').textContent.includes('baudrate=\"250000\"')"));
    EXPECT_EQ(true, browser.in_page("!document.querySelector('img') && document.title === 'vorsim'")) << "text is text";
    EXPECT_EQ(390, browser.in_page("document.documentElement.scrollWidth")) << "nothing hangs out at a phone's width";

    const std::string add = "(document.getElementById('rule').value = '{}', document.querySelector('#faults form')"
                            ".requestSubmit(), true)";
    browser.in_page(fmt::format(fmt::runtime(add), "canmgr: status 7"));
    EXPECT_EQ(true, browser.in_page("document.getElementById('rules').textContent.includes('canmgr: status 7')"));
    EXPECT_TRUE(contains(page.place.run("vorcfg can set-baudrate 1 250000 1").text, "refused by canmgr: status 7"));
    EXPECT_EQ("status 7", browser.in_page("document.querySelector('#list .fault .outcome')?.textContent"));
    browser.in_page(fmt::format(fmt::runtime(add), "canmgr: sttus 7"));
    EXPECT_EQ("sttus 7", browser.in_page("getSelection().toString()")) << "where the rule is wrong";

    const std::string there = fmt::format("http://127.0.0.1:{}", page.port);
    browser.open("data:text/html,<title>another site</title>");
    EXPECT_EQ("unreadable", browser.in_page(fmt::format("fetch('{}').then((is) => is.text(), () => 'unreadable')",
                                                        there + page.with_token("/state"))));
    EXPECT_EQ("over",
              browser.in_page(fmt::format("fetch('{}', {{method: 'POST', mode: 'no-cors', body: 'fault clear'}})"
                                          ".then(() => 'over', () => 'over')",
                                          there + page.with_token("/command"))));
    EXPECT_TRUE(contains(page.place.run("vorsim fault list").text, "1: canmgr: status 7")) << "and did nothing";
    browser.open(fmt::format("http://evil.example:{}/#{}", page.port, page.token));
    EXPECT_TRUE(contains(browser.in_page("document.body.innerText").dump(), "no other host"));
}

} // namespace
