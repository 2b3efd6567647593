// The page to look at: who may see it, what it bears, and what a browser makes of it.
#include <chrono>
#include <csignal>
#include <cstring>
#include <functional>

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
    // Presses the button of this accessible name, and releases it afterwards at the same place.
    void click(const std::string& name, const std::function<void()>& meanwhile)
    {
        Json mouse = in_page(fmt::format(R"((() => {{
            const button = [...document.querySelectorAll("button")].find((one) =>
                (one.getAttribute("aria-label") ?? one.textContent) === "{}" && one.checkVisibility() && !one.disabled);
            button?.scrollIntoView({{ block: "center" }});
            const {{ x, y, width, height }} = button?.getBoundingClientRect() ?? {{}};
            return button && {{ x: x + width / 2, y: y + height / 2, button: "left", clickCount: 1 }}; }})())",
                                         name));
        ASSERT_TRUE(mouse.is_object()) << name;
        mouse["type"] = "mousePressed";
        call("Input.dispatchMouseEvent", mouse);
        meanwhile();
        mouse["type"] = "mouseReleased";
        call("Input.dispatchMouseEvent", mouse);
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

// Settings that change all the time, as fast as a busy front end makes them.
class Traffic {
public:
    explicit Traffic(const Page& page) : handle_((page.place.enter(), client_sap)) {}

    void send(int messages, int milliseconds_apart = 5)
    {
        for (; messages > 0; --messages) {
            Message message;
            ++sent;
            std::memset(message.payload(), 0, 32);
            std::memcpy(message.payload(), &sent, sizeof sent);
            fmt::format_to_n(reinterpret_cast<char*>(message.payload(6)), 24, "task{}", sent % 7);
            vor_ipc_send(handle_, 0, 27, &message.ref, 32, 0);
            poll(nullptr, 0, milliseconds_apart);
        }
    }

    std::uint32_t sent = 0;

private:
    const Bound handle_;
};

TEST(page, every_click_acts_under_traffic)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "it is about the browser's side";
#endif
    const Page page({"--http-control", "--without", "snmpmgr"});
    if (page.place.run("command -v chromium").exit_code != 0) {
        GTEST_SKIP() << "chromium is missing";
    }
    Browser browser((page.place.path() / "browser").string());
    browser.call("Emulation.setDeviceMetricsOverride",
                 {{"width", 1000}, {"height", 640}, {"deviceScaleFactor", 1}, {"mobile", false}});
    browser.open(page.link);
    Traffic traffic(page);
    int clicks = 0;
    const auto click = [&](const std::string& name, const std::string& effect) {
        ++clicks;
        browser.click(name, [&] { traffic.send(30); });
        EXPECT_EQ(true, browser.in_page(effect)) << name;
    };
    const auto has = [](const char* id, const std::string& text) {
        return fmt::format("document.getElementById('{}').textContent.includes('{}')", id, text);
    };
    const auto button = [](const std::string& name) {
        return fmt::format("document.querySelector('[aria-label=\"{}\"]') !== null", name);
    };
    const auto type = [&](const char* id, const std::string& text) {
        browser.in_page(fmt::format("(document.getElementById('{}').value = '{}', true)", id, text));
    };
    traffic.send(10);
    browser.in_page(has("served", "7 objects"));
    browser.in_page("document.querySelector('#served details').open = true");

    type("rule", "system every 2nd: status 1");
    click("Add rule", has("rules", "system every 2nd"));
    page.place.run("vorsim fault add 'konfd: never'");
    click("clear rule 1", "!" + has("rules", "system every 2nd"));
    click("Clear all rules", "document.getElementById('rules').childElementCount === 0");
    type("reading", "temperature -85");
    click("Set reading", has("held", "temperature -85"));
    click("release temperature", "document.getElementById('held').childElementCount === 0");
    for (const char* manager : {"platmgr", "restmgr", "gpiomgr", "adcmgr", "ethmgr", "gsmmgr", "datamgr", "mqttmgr",
                                "serialmgr", "canmgr", "towermon"}) {
        for (int time = 0; time < 2; ++time) {
            click(fmt::format("stop {}", manager), button(fmt::format("start {}", manager)));
            click(fmt::format("start {}", manager), button(fmt::format("stop {}", manager)));
        }
    }
    click("Reset…", "document.getElementById('question').open");
    EXPECT_EQ(50, clicks);

    // What is selected and what has the focus is still the same, and so is its place on the screen.
    click("Cancel", "!document.getElementById('question').open");
    browser.in_page("(document.querySelector('[aria-label=\"stop canmgr\"]').focus(), window.place = (row) => "
                    "Math.round(row.getBoundingClientRect().top), true)");
    const std::string selected = browser
                                     .in_page("(() => { window.row = document.querySelector('#list .call').closest("
                                              "'li'); getSelection().selectAllChildren(row); window.top0 = "
                                              "place(row); return getSelection().toString(); })()")
                                     .string();
    traffic.send(200);
    EXPECT_EQ(true, browser.in_page(has("list", fmt::format("log_level={}", traffic.sent))));
    EXPECT_EQ(selected, browser.in_page("getSelection().toString()").string());
    EXPECT_EQ(true, browser.in_page("Math.abs(place(row) - top0) < 20"));
    EXPECT_EQ("stop canmgr", browser.in_page("document.activeElement.getAttribute('aria-label')"));

    page.place.run("vorsim reset");
    EXPECT_EQ(true, browser.in_page(has("list", "Reset"))) << "whoever made it";
    traffic.send(1'100, 1);
    EXPECT_EQ(true, browser.in_page("/^[0-9]+ earlier messages not listed$/.test(document.getElementById('earlier')"
                                    ".textContent)"));
    EXPECT_EQ(selected, browser.in_page("getSelection().toString()").string()) << "it stays listed";
    type("words", "nothing like this");
    EXPECT_EQ(true, browser.in_page("(document.getElementById('words').dispatchEvent(new Event('input')), "
                                    "!document.getElementById('unmatched').hidden)"));
}

TEST(page, legible_and_never_claims_what_it_does_not_know)
{
    Page page({"--http-control"});
    if (page.place.run("command -v chromium").exit_code != 0) {
        GTEST_SKIP() << "chromium is missing";
    }
    Browser browser((page.place.path() / "browser").string());
    browser.call("Emulation.setDeviceMetricsOverride",
                 {{"width", 390}, {"height", 844}, {"deviceScaleFactor", 1}, {"mobile", true}});
    browser.call("Emulation.setTouchEmulationEnabled", {{"enabled", true}, {"maxTouchPoints", 1}});
    const std::string empty = "document.body.innerText.includes('The tree is empty.')";
    const std::string dead = "document.querySelector('#served button').disabled && "
                             "/does not answer\\nNo answer since [0-9:]{8} UTC/.test(document.body.innerText)";
    page.gateway.suspend();
    browser.open(page.link);
    EXPECT_EQ(true, browser.in_page("document.body.innerText.includes('does not answer')"));
    EXPECT_EQ(false, browser.in_page("[" + empty + "]").elements().at(0));
    page.gateway.resume();
    EXPECT_EQ(true, browser.in_page(empty));
    page.place.run("vorsim set temperature 850; vorsim stop ethmgr; vorsim fault add 'gsmmgr: status 7, once'; "
                   "vorsim fault add 'canmgr: status 7'; vorcfg can set-baudrate 1 250000 1; vorcfg gsm activate 1; "
                   "vorcfg konfd query --set --line a b --pattern a --path none x");
    EXPECT_EQ(true, browser.in_page("document.querySelectorAll('#list li').length === 3"));
    browser.in_page("(document.querySelectorAll('details').forEach((one) => { one.open = true; }), "
                    "document.getElementById('reset').click(), true)");
    for (const char* scheme : {"light", "dark"}) {
        browser.call(
            "Emulation.setEmulatedMedia",
            {{"features", Json::array(std::vector<Json>{{{"name", "prefers-color-scheme"}, {"value", scheme}}})}});
        EXPECT_EQ("", browser
                          .in_page(R"((() => {
            const channels = (color) => color.match(/[0-9.]+/g).map(Number);
            const light = (color) => channels(color).slice(0, 3).map((one) => one / 255)
                .map((one) => one <= 0.04045 ? one / 12.92 : ((one + 0.055) / 1.055) ** 2.4)
                .reduce((sum, one, at) => sum + one * [0.2126, 0.7152, 0.0722][at], 0);
            const behind = (one) => {
                const color = getComputedStyle(one).backgroundColor;
                return channels(color)[3] === 0 ? behind(one.parentElement) : color;
            };
            const weak = [];
            for (const one of document.querySelectorAll("body *")) {
                const part = one.placeholder ? "::placeholder" : null;
                const text = [...one.childNodes].some((node) => node.nodeType === 3 && node.data.trim() !== "");
                if (!one.checkVisibility() || !(text || part)) continue;
                const [low, high] = [light(getComputedStyle(one, part).color), light(behind(one))].sort((a, b) => a - b);
                if ((high + 0.05) / (low + 0.05) < 4.5 || Number(getComputedStyle(one).opacity) < 1) weak.push(one.outerHTML);
            }
            return String(weak) || " ";
        })())")
                          .string()
                          .substr(1))
            << scheme;
    }
    EXPECT_EQ(true, browser.in_page("[...document.querySelectorAll('button, select, input, summary')].every((one) => "
                                    "!one.checkVisibility() || Math.min(one.offsetWidth, one.offsetHeight) >= 44)"));
    EXPECT_EQ(true, browser.in_page("(() => { const names = [...document.querySelectorAll('button')].map((one) => "
                                    "one.getAttribute('aria-label') ?? one.textContent); "
                                    "return new Set(names).size === names.length; })()"))
        << "no two buttons have the same name";
    page.gateway.suspend();
    EXPECT_EQ(true, browser.in_page(dead));
    page.gateway.resume();
    EXPECT_EQ(true, browser.in_page("!document.querySelector('#served button').disabled"));
}

} // namespace
