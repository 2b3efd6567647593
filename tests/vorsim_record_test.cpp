// What vorsim remembers: its journal, sent again, and its state, asked for.
#include <csignal>
#include <fstream>
#include <regex>

#include "text/json.hpp"
#include <fmt/format.h>

#include "gateway_fixture.hpp"

namespace {

using processes::Gateway;
using processes::Output;

class Record : public GatewayTest {
protected:
    void tell(vor_uint16 sap, const std::string& datagram) const
    {
        send_raw(in_place("run/sap-" + std::to_string(sap)), datagram);
    }
    void commission(const std::string& file = "examples/site.conf") const
    {
        const Output output = place.run("vorcfg batch " + file);
        EXPECT_EQ(0, output.exit_code) << output.text;
    }
    void commission_anew(const std::vector<std::string>& options, const std::string& file = "examples/site.conf") const
    {
        const Gateway gateway(place, options);
        commission(file);
    }
    void save(const std::string& name, const std::string& text) const { std::ofstream(in_place(name)) << text; }
};

// A message as it travels, an answer's bit or the wrong address included.
std::string datagram(vor_uint16 source, vor_uint16 destination, vor_uint32 id, vor_uint16 flag,
                     const std::string& payload = {})
{
    const VOR_IPC_MSG_HDR header{source, destination, id, flag, static_cast<vor_uint16>(payload.size()), 0};
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + payload;
}

// One-way messages to all managers in turn: no answer tells that one was taken.
TEST_F(Record, arrival_order_across_managers)
{
    constexpr int rounds = 40;
    Gateway gateway(place, {"--journal", "journal"});
    for (int round = 0; round < rounds; ++round) {
        gateway.suspend();
        for (const vor_uint16 sap : std::initializer_list<vor_uint16>{20, 4, 15, 7, 2}) {
            tell(sap, datagram(200, sap, static_cast<vor_uint32>(round), 0));
        }
        gateway.resume();
        for (int line = 0; line < 5; ++line) {
            gateway.next_line();
        }
    }
    EXPECT_EQ(0, gateway.stop(SIGTERM));
    std::istringstream journal(held("journal"));
    std::string line;
    std::getline(journal, line);
    for (int round = 0; round < rounds; ++round) {
        for (const int sap : {20, 4, 15, 7, 2}) {
            ASSERT_TRUE(std::getline(journal, line));
            EXPECT_EQ(sap, vor::Json::parse(line)["sap"].number<int>()) << line;
        }
    }
}

TEST_F(Record, malformed_and_foreign_datagrams_fail_strict_run)
{
    Gateway gateway(place, {"--strict", "--journal", "journal"});
    tell(7, "abc");
    tell(7, datagram(200, 7, 0x7003, 0) + "more than it says");
    tell(7, datagram(200, 7, 0x7003, 0x8001, "late"));
    tell(7, datagram(200, 9, 0x7003, 0));
    EXPECT_EQ("vorsim: 0 messages, 2 malformed, 2 foreign\n", place.run("vorsim show").text);
    EXPECT_EQ(R"({"accepted":0,"complained":0,"invalid":0,"malformed":2,"foreign":2,"faulted":0})", vor::dump(state()["counters"]));
    EXPECT_EQ(3, gateway.stop(SIGTERM));
    const std::string decoded = place.run("vorsim decode --bytes --complaints --manager ethmgr journal").text;
    EXPECT_TRUE(contains(decoded, "MALFORMED  ethmgr  -  3 bytes, not a message\n    datagram 616263\n"));
    EXPECT_TRUE(contains(decoded, "FOREIGN    ethmgr  -  unexpected answer\n"));
    EXPECT_TRUE(contains(decoded, "FOREIGN    ethmgr  -  addressed to SAP 9\n"));
}

TEST_F(Record, secret_bytes_are_masked)
{
    // The texts of the site that must not be read by others.
    const std::string passwords[] = {"maintenance-17", "service-17-monsoon"};
    const auto in_hex = [](const std::string& text) { return fmt::format("{:02x}", fmt::join(text, "")); };
    for (const bool shown : {false, true}) {
        const std::string journal = shown ? "shown" : "masked";
        std::vector<std::string> options{"--journal", journal};
        options.resize(shown ? 3 : 2, "--show-secrets");
        Gateway gateway(place, options);
        commission();
        // Refused, cut short, and to the wrong manager: the password stands in them all the same.
        const std::string element = std::string("\0\4\3\0\x0e", 5) + passwords[0] + '\0';
        tell(7, datagram(200, 7, 0x7006, 0, element));
        tell(9, datagram(200, 9, 0x7006, 0, element + "cut"));
        tell(7, datagram(200, 7, 0x7006, 0, element) + "more than it says");
        gateway.stop(SIGTERM);
        const std::string text = held(journal);
        for (const std::string& password : passwords) {
            EXPECT_EQ(shown, text.find(password) != std::string::npos) << password;
            EXPECT_EQ(shown, text.find(in_hex(password)) != std::string::npos) << password;
        }
    }
}

TEST_F(Record, private_file_of_whole_lines)
{
    save("journal", "{\"seq\":1,\"id\":\"0x7003\"}\n{\"seq\":2,\"cu");
    fs::permissions(in_place("journal"), fs::perms(0666));
    {
        const Gateway gateway(place, {"--journal", "journal"});
        tell(7, "abc");
        expect_said(place, {{"vorsim replay journal", 1, "again"}}); // which it goes on writing
    }
    EXPECT_EQ(fs::perms(0600), fs::status(in_place("journal")).permissions());
    EXPECT_FALSE(contains(held("journal"), "{\"seq\":2,\"cu"));

    save("torn", held("journal") + "{\"seq\":9,");
    save("new", "{\"journal\":3}\n");
    save("old",
         "{\"seq\":1,\"time\":\"then\",\"sap\":7,\"source\":200,\"id\":\"0x7003\",\"call\":\"c\",\"object\":\"o\","
         "\"values\":{},\"status\":0}\n");
    expect_said(place, {{"vorsim decode torn", 0, "skipping the unfinished last line"},
                        {"vorsim decode new", 1, "new:1: journal version 3 is not supported"},
                        {"vorsim decode old", 0, "1  then  -  0x7003 c o -> status 0\n"}});
}

TEST_F(Record, foreign_files_are_refused_and_nothing_is_left)
{
    save("text", "a document");
    save("json", "{\"a\": \"document\"}");
    fs::create_symlink(in_place("text"), place.path() / "link");
    fs::create_directory(place.path() / "folder");
    const auto everything = [this] {
        std::string names;
        for (const auto& entry : fs::recursive_directory_iterator(place.path())) {
            names += entry.path().string() + "\n";
        }
        return names;
    };
    place.run("vorsim --seed none; mkdir -m 700 -p run");
    const std::string before = everything();
    for (const auto& [options, why] : std::initializer_list<std::pair<std::string, const char*>>{
             {"vorsim --journal link", "cannot write the journal link: it is a symbolic link"},
             {"vorsim --journal text", "cannot write the journal text: it is not a journal"},
             {"vorsim --journal json", "cannot write the journal json: it is not a journal"},
             {"mkfifo run/pipe; vorsim --state run/pipe; e=$?; rm run/pipe; exit $e", "run/pipe is not a regular file"},
             {"vorsim --journal folder", "folder is a folder"},
             {"vorsim --state folder --journal journal", "folder is a folder"},
             {"vorsim --state same --journal ./same", "--state and --journal must not be the same file: same"},
             {"vorsim --journal fresh --state nowhere/state", "cannot write the state nowhere/state"},
             {"vorsim --journal fresh --state state --sap 7 --sap x", "--sap must be 0 to 65535, not \"x\""},
             {"env VORINFRA_TIMEOUT_MS=soon vorsim", "VORINFRA_TIMEOUT_MS must be 1 to 600000, not \"soon\""},
         }) {
        expect_said(place, {{options, 2, why}});
        EXPECT_EQ(before, everything()) << options;
    }
    EXPECT_EQ("a document", held("text"));
    EXPECT_EQ("{\"a\": \"document\"}", held("json"));
}

TEST_F(Record, replay_without_difference)
{
    {
        const Gateway gateway(place, {"--show-secrets", "--journal", "journal", "--state", "state"});
        commission();
        tell(7, "abc");
    }
    {
        const Gateway gateway(place, {"--show-secrets", "--seed", "2"});
        expect_said(place,
                    {{"vorsim replay --ignore-readings --state state journal", 0, " sent again, no difference\n"},
                     {"vorcfg hostname set-plat-hostname other; touch none; vorsim replay --state state none", 1,
                      "managers/datamgr/objects/gateway/vor_cfg_set_plat_hostname/hostname: was \"tower-17\", "
                      "is \"other\"\n"},
                     {"vorsim replay --call vor_cfg_get_system_temperature journal", 1,
                      "vorsim: 1 message sent again, 1 difference, 160 left out by the filter\n"},
                     {"vorsim fault add 'platmgr 0x2021: short 2, once' && "
                      "vorsim replay --ignore-readings --manager platmgr journal",
                      1, "is id 0x2021 2 bytes\n"},
                     {"vorsim replay --manager canmgrr journal", 2, "did you mean canmgr?"}});
    }
    // Whoever serves the directory is compared: here nobody does.
    expect_said(place, {{"vorsim replay journal", 1, "is not delivered"}});
}

TEST_F(Record, replay_against_a_fault_shows_one_difference)
{
    commission_anew({"--show-secrets", "--journal", "journal"});
    const std::string rule = "towermon vor_cfg_towermon_obj_ups_alerts: status 7";
    save("faults", rule + "\n");
    Gateway gateway(place, {"--show-secrets", "--faults", "faults"});
    const Output output = place.run("vorsim replay journal");
    EXPECT_TRUE(std::regex_match(
        output.text, std::regex("journal:\\d+: vor_cfg_towermon_obj_ups_alerts ups ups-1: was id 0x[0-9a-f]+ status "
                                "0, is id 0x[0-9a-f]+ status 7\n"
                                "vorsim: \\d+ messages sent again, 1 difference\n")))
        << output.text;
    EXPECT_TRUE(contains(place.run("vorsim show").text, " messages, 1 faulted\n"));
    EXPECT_EQ(0, gateway.stop(SIGTERM));
    // A fault stands in the journal with what travelled: sent again under the same faults, nothing differs.
    save("faults", rule + "\nany 20th: refuse\nany 40th: id high\nkonfd 2nd: hang up\n");
    for (const char* line : {"4 differences", "no difference"}) {
        Gateway faulty(place, {"--show-secrets", "--faults", "faults", "--journal", "faulted"});
        const Output replayed = place.run("vorsim replay journal");
        EXPECT_TRUE(contains(replayed.text, std::string(" sent again, ") + line)) << replayed.text;
        EXPECT_EQ(0, faulty.stop(SIGTERM));
        fs::rename(in_place("faulted"), in_place("journal"));
    }
    EXPECT_TRUE(contains(held("journal"), R"("fault":{"number":1,"rule":")" + rule + R"("})"));
}

TEST_F(Record, masked_lines_are_not_replayed)
{
    save("site", "gsm set-password 1 sim-17 1\n");
    commission_anew({"--journal", "journal"}, "site");
    const Gateway gateway(place, {});
    expect_said(place, {{"vorsim replay journal", 1, "journal:2: vor_cfg_gsm_set_password port 1 is masked"},
                        {"vorsim replay journal", 1, "0 messages sent again, no difference, 1 line skipped\n"}});
}

TEST_F(Record, show_wait_reset_load)
{
    Gateway gateway(place, {"--show-secrets", "--state", "state"});
    commission();
    const auto kept = state();
    EXPECT_EQ(0U, place.run("vorsim show datamgr/gateway")
                      .text.find("datamgr\n  gateway\n    vor_cfg_set_plat_hostname  hostname=\"tower-17\"\n"));
    EXPECT_FALSE(contains(place.run("vorsim show datamgr/gateway").text, "ethmgr"));
    const std::string wait = "vorsim wait --call vor_cfg_set_plat_hostname ";
    expect_said(place, {{"vorsim show --json ethmgr", 0, "\"sap\": 7"},
                        {"vorsim show canmgr/'port 9'", 1, "vorsim: no settings of canmgr/port 9\n"},
                        {wait + "--within 0ms", 0, ""}, // it came already
                        {"vorsim show --json >kept && vorsim reset", 0, ""}});
    EXPECT_EQ("vorsim: 0 messages\n", place.run("vorsim show").text);
    expect_said(place, {{wait + "--object gateway --within 1ms", 1,
                         "vorsim: no vor_cfg_set_plat_hostname of gateway within 1 ms\n"},
                        {wait + "& vorcfg hostname set-plat-hostname tower-18 && wait $!", 0, ""},
                        {"vorsim load kept", 0, ""}});
    const auto loaded = state();
    EXPECT_EQ(kept["managers"], loaded["managers"]);
    EXPECT_EQ(kept["konfd"], loaded["konfd"]);
    EXPECT_EQ(0, place.run("vorsim quit").exit_code);
    EXPECT_FALSE(fs::exists(in_place("run/vorsim.control"))) << "all is over when it returns";
    EXPECT_EQ(loaded["managers"], vor::Json::parse(held("state"))["managers"]);
}

// A check must know that there was more.
TEST_F(Record, forgotten_messages_are_counted)
{
    const Gateway gateway(place, {});
    const Bound front_end(client_sap);
    const auto received = [this](const std::string& options) {
        const Stream control(in_place("run/vorsim.control"));
        control.send("received " + options + '\0');
        return control.line();
    };
    for (int message = 0; message < 10'002; ++message) {
        ask(front_end);
    }
    EXPECT_EQ("+{\"first\":1,\"last\":10002,\"forgotten\":2}\n", received("--manager canmgr"));
    EXPECT_EQ("+{\"first\":1,\"last\":10002,\"forgotten\":0}\n", received("--manager canmgr --after 5 --within 1ms"));
    EXPECT_EQ(0, place.run("vorsim reset").exit_code);
    EXPECT_EQ("+{\"first\":10003,\"last\":10002,\"forgotten\":0}\n", received(""));
}

TEST_F(Record, watch_filters_by_manager)
{
    Gateway gateway(place, {});
    const Output seen = place.run("vorsim watch --ids --manager ethmgr >lines & "
                                  "until [ -s lines ]; do vorcfg ip set-dhcp 1 1 >/dev/null; "
                                  "vorcfg hostname set-plat-hostname tower-18 >/dev/null; done; kill $!; cat lines");
    EXPECT_EQ(0U, seen.text.find("status 0   ethmgr 7 0x7007  vor_cfg_set_dhcp  interface 1")) << seen.text;
    EXPECT_EQ(std::string::npos, seen.text.find("hostname"));
}

} // namespace
