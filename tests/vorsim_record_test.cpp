// What vorsim remembers: its journal, sent again, and its state, asked for.
#include <csignal>
#include <cstring>
#include <fstream>
#include <regex>

#include <sys/stat.h>
#include <sys/un.h>

#include <nlohmann/json.hpp>

#include "platform_fixture.hpp"
#include "process/unix_socket.hpp"

namespace {

using processes::contents;
using processes::Gateway;
using processes::Output;
using processes::Workplace;

class Record : public testing::Test {
protected:
    Record() { place.enter(); }

    std::string in_place(const std::string& name) const { return (place.path() / name).string(); }
    // A datagram of any bytes, from nobody.
    void send_raw(vor_uint16 sap, const std::string& bytes) const
    {
        const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un to{};
        to.sun_family = AF_UNIX;
        in_place("run/sap-" + std::to_string(sap)).copy(to.sun_path, sizeof to.sun_path - 1);
        EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
                  sendto(descriptor, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&to), sizeof to));
        close(descriptor);
    }
    void commission(const std::string& file = "examples/site.conf") const
    {
        const Output output = place.run("vorcfg batch " + file);
        EXPECT_EQ(0, output.exit_code) << output.text;
    }
    void save(const std::string& name, const std::string& text) const { std::ofstream(in_place(name)) << text; }

    Workplace place;
};

// A message as it travels, an answer's bit or the wrong address included.
std::string datagram(vor_uint16 source, vor_uint16 destination, vor_uint32 id, vor_uint16 flag,
                     const std::string& payload = {})
{
    VOR_IPC_MSG_HDR header;
    std::memset(&header, 0, sizeof header);
    header.ipc_src_id = source;
    header.ipc_dest_id = destination;
    header.opcode = id;
    header.flag = flag;
    header.payload_sz = static_cast<vor_uint16>(payload.size());
    return std::string(reinterpret_cast<const char*>(&header), sizeof header) + payload;
}

std::string without_times(const std::string& journal)
{
    return std::regex_replace(std::regex_replace(journal, std::regex(R"("time":"[^"]*")"), ""),
                              std::regex(R"("took":\d+)"), "");
}

TEST_F(Record, of_two_runs_with_one_seed_differs_in_times_alone)
{
    std::string first;
    for (const char* journal : {"one", "two"}) {
        Gateway gateway(place, {"--seed", "9", "--journal", in_place(journal)});
        commission();
        send_raw(7, "abc");
        send_raw(7, datagram(200, 7, 0x7003, 0x8001));
        place.run("vorcfg adc get-system-temperature; vorcfg gpio get-gpio-port-stats 3");
        EXPECT_EQ(0, gateway.stop(SIGTERM));
        first = first.empty() ? without_times(contents(in_place(journal))) : first;
    }
    EXPECT_EQ(first, without_times(contents(in_place("two"))));
    EXPECT_GT(std::count(first.begin(), first.end(), '\n'), 150);
}

// One-way messages to all managers in turn: no answer tells that one was taken.
TEST_F(Record, is_in_the_order_of_arrival_across_managers)
{
    constexpr int rounds = 40;
    Gateway gateway(place, {"--journal", in_place("journal")});
    for (int round = 0; round < rounds; ++round) {
        gateway.suspend();
        for (const vor_uint16 sap : std::initializer_list<vor_uint16>{20, 4, 15, 7, 2}) {
            send_raw(sap, datagram(200, sap, static_cast<vor_uint32>(round), 0));
        }
        gateway.resume();
        for (int line = 0; line < 5; ++line) {
            gateway.next_line();
        }
    }
    EXPECT_EQ(0, gateway.stop(SIGTERM));
    std::istringstream journal(contents(in_place("journal")));
    std::string line;
    std::getline(journal, line);
    for (int round = 0; round < rounds; ++round) {
        for (const int sap : {20, 4, 15, 7, 2}) {
            ASSERT_TRUE(std::getline(journal, line));
            EXPECT_EQ(sap, nlohmann::json::parse(line)["sap"]) << line;
        }
    }
}

TEST_F(Record, holds_what_was_no_message_and_fails_a_strict_run)
{
    Gateway gateway(place, {"--strict", "--journal", in_place("journal")});
    send_raw(7, "abc");
    send_raw(7, datagram(200, 7, 0x7003, 0x8001, "late"));
    send_raw(7, datagram(200, 9, 0x7003, 0));
    EXPECT_EQ("vorsim: 0 messages, 0 complaints, 1 malformed, 2 foreign\n", place.run("vorsim show").text);
    const auto shown = nlohmann::json::parse(place.run("vorsim show --json").text);
    EXPECT_EQ(R"({"accepted":0,"complained":0,"faulted":0,"foreign":2,"malformed":1})", shown["counters"].dump());
    EXPECT_EQ(3, gateway.stop(SIGTERM));
    const std::string decoded = place.run("vorsim decode --bytes --complaints --manager ethmgr journal").text;
    EXPECT_TRUE(contains(decoded, "malformed: ethmgr(7): 3 bytes that are no message\n    datagram 616263\n"));
    EXPECT_TRUE(contains(decoded, "foreign: ethmgr(7): an answer that nobody awaits\n"));
    EXPECT_TRUE(contains(decoded, "foreign: ethmgr(7): a message to SAP 9\n"));
}

TEST_F(Record, masks_secrets_in_bytes_unless_asked)
{
    // The texts of the site that must not be read by others.
    const std::string passwords[] = {"maintenance-17", "service-17-monsoon"};
    const auto in_hex = [](const std::string& text) {
        std::string hex;
        for (const char byte : text) {
            const char digits[] = "0123456789abcdef";
            hex += {digits[byte >> 4], digits[byte & 15]};
        }
        return hex;
    };
    for (const bool shown : {false, true}) {
        const std::string journal = in_place(shown ? "shown" : "masked");
        std::vector<std::string> options{"--journal", journal};
        if (shown) {
            options.emplace_back("--show-secrets");
        }
        Gateway gateway(place, options);
        commission();
        // Refused, cut short, and to the wrong manager: the password stands in them all the same.
        const std::string element = std::string("\0\4\3\0\x0e", 5) + passwords[0] + '\0';
        send_raw(7, datagram(200, 7, 0x7006, 0, element));
        send_raw(9, datagram(200, 9, 0x7006, 0, element + "cut"));
        send_raw(7, datagram(200, 7, 0x7006, 0, element) + "more than it says");
        EXPECT_EQ(0, gateway.stop(SIGTERM));
        const std::string text = contents(journal);
        for (const std::string& password : passwords) {
            EXPECT_EQ(shown, text.find(password) != std::string::npos) << password;
            EXPECT_EQ(shown, text.find(in_hex(password)) != std::string::npos) << password;
        }
    }
}

TEST_F(Record, is_its_owners_alone_and_holds_whole_lines)
{
    const std::string journal = in_place("journal");
    save("journal", "{\"seq\":1,\"id\":\"0x7003\"}\n{\"seq\":2,\"cu");
    chmod(journal.c_str(), 0666);
    {
        Gateway gateway(place, {"--journal", journal});
        send_raw(7, "abc");
        EXPECT_EQ(0, gateway.stop(SIGTERM));
    }
    struct stat status {};
    ASSERT_EQ(0, stat(journal.c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 0777U);
    EXPECT_EQ(std::string::npos, contents(journal).find("{\"seq\":2,\"cu"));

    save("torn", contents(journal) + "{\"seq\":9,");
    const Output torn = place.run("vorsim decode torn");
    EXPECT_EQ(0, torn.exit_code);
    EXPECT_TRUE(contains(torn.text, "the last line was never finished; it is left out"));
    save("new", "{\"journal\":3}\n");
    EXPECT_TRUE(contains(place.run("vorsim decode new").text, "new:1: a journal of version 3, which"));
    save("old",
         "{\"seq\":1,\"time\":\"then\",\"sap\":7,\"source\":200,\"id\":\"0x7003\",\"call\":\"c\",\"object\":\"o\","
         "\"values\":{},\"status\":0}\n");
    EXPECT_EQ("1 then  0x7003 c o -> status 0\n", place.run("vorsim decode old").text);
}

TEST_F(Record, refuses_files_that_are_not_its_own_and_leaves_nothing)
{
    save("text", "a document");
    std::filesystem::create_symlink(in_place("text"), place.path() / "link");
    std::filesystem::create_directory(place.path() / "folder");
    const auto everything = [this] {
        std::string names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place.path())) {
            names += entry.path().string() + "\n";
        }
        return names;
    };
    place.run("vorsim --seed none; mkdir -m 700 -p run");
    const std::string before = everything();
    const std::pair<const char*, const char*> table[] = {
        {"--journal link", "cannot write the journal link: it is a link"},
        {"--journal text", "cannot write the journal text: it is no journal"},
        {"--journal folder", "folder is a folder"},
        {"--state folder --journal journal", "folder is a folder"},
        {"--state same --journal ./same", "--state and --journal are one file: same"},
        {"--journal fresh --state nowhere/state", "cannot write the state nowhere/state"},
        {"--journal fresh --state state --sap 7 --sap x", "--sap is \"x\""},
    };
    for (const auto& [options, why] : table) {
        const Output output = place.run(std::string("timeout 20 vorsim ") + options);
        EXPECT_EQ(2, output.exit_code) << options;
        EXPECT_TRUE(contains(output.text, why)) << options;
        EXPECT_EQ(before, everything()) << options;
    }
    EXPECT_EQ(2, place.run("VORINFRA_TIMEOUT_MS=soon timeout 20 vorsim").exit_code);
    EXPECT_EQ(before, everything());
    EXPECT_EQ("a document", contents(in_place("text")));
}

TEST_F(Record, of_the_sample_site_replayed_shows_no_difference)
{
    const std::vector<std::string> options{"--show-secrets", "--journal", in_place("journal"), "--state",
                                           in_place("state")};
    {
        Gateway gateway(place, options);
        commission();
        send_raw(7, "abc");
        place.run("vorcfg adc get-system-temperature");
        EXPECT_EQ(0, gateway.stop(SIGTERM));
    }
    {
        Gateway gateway(place, {"--show-secrets"});
        const Output same = place.run("vorsim replay --state state journal");
        EXPECT_EQ(0, same.exit_code) << same.text;
        EXPECT_TRUE(contains(same.text, " sent again, no difference\n"));
        // Held now, but not then.
        place.run("vorcfg hostname set-plat-hostname other");
        const Output held = place.run("vorsim replay --state state journal; vorcfg hostname set-plat-hostname other; "
                                      "printf '' >none; vorsim replay --state state none");
        EXPECT_TRUE(contains(held.text, "managers/datamgr/objects/gateway/vor_cfg_set_plat_hostname/hostname: was "
                                        "\"tower-17\", is \"other\"\n"));
    }
    // Whoever serves the directory is compared: here nobody does.
    const Output nobody = place.run("vorsim replay journal");
    EXPECT_EQ(1, nobody.exit_code);
    EXPECT_TRUE(contains(nobody.text, "is nobody receives"));
}

TEST_F(Record, names_the_lines_that_cannot_be_replayed)
{
    {
        Gateway gateway(place, {"--journal", in_place("journal")});
        save("site", "gsm set-password 1 sim-17 1\n");
        commission("site");
        EXPECT_EQ(0, gateway.stop(SIGTERM));
    }
    Gateway gateway(place, {});
    const Output output = place.run("vorsim replay journal");
    EXPECT_EQ(1, output.exit_code);
    EXPECT_TRUE(contains(output.text, "journal:2: vor_cfg_gsm_set_password port 1 is masked"));
    EXPECT_TRUE(contains(output.text, "0 messages sent again, no difference, 1 line refused\n"));
}

TEST_F(Record, is_asked_for_by_scripts)
{
    Gateway gateway(place, {"--show-secrets", "--state", in_place("state")});
    commission();
    const std::string all = place.run("vorsim show --json").text;
    EXPECT_EQ(0U, place.run("vorsim show datamgr/gateway")
                      .text.find("datamgr(10)\n  gateway\n    vor_cfg_set_plat_hostname  hostname=\"tower-17\"\n"));
    EXPECT_FALSE(contains(place.run("vorsim show datamgr/gateway").text, "(7)"));
    EXPECT_TRUE(contains(place.run("vorsim show --json ethmgr").text, "\"sap\": 7"));
    const Output none = place.run("vorsim show canmgr/none");
    EXPECT_EQ(1, none.exit_code);
    EXPECT_EQ("vorsim: nothing is held for canmgr/none\n", none.text);

    EXPECT_EQ(0, place.run("vorsim wait --call vor_cfg_set_plat_hostname --within 0ms").exit_code) << "it came already";
    EXPECT_EQ(0, place.run("vorsim show --json >kept && vorsim reset").exit_code);
    EXPECT_EQ("vorsim: 0 messages, 0 complaints\n", place.run("vorsim show").text);
    const Output late = place.run("vorsim wait --call vor_cfg_set_plat_hostname --object gateway --within 1ms");
    EXPECT_EQ(1, late.exit_code);
    EXPECT_EQ("vorsim: no vor_cfg_set_plat_hostname of gateway within 1 ms\n", late.text);
    const Output waited = place.run("vorsim wait --call vor_cfg_set_plat_hostname & "
                                    "vorcfg hostname set-plat-hostname tower-18 && wait $!");
    EXPECT_EQ(0, waited.exit_code) << waited.text;

    EXPECT_EQ("", place.run("vorsim load kept").text);
    const auto loaded = nlohmann::json::parse(place.run("vorsim show --json").text);
    const auto kept = nlohmann::json::parse(all);
    EXPECT_EQ(kept["managers"], loaded["managers"]);
    EXPECT_EQ(kept["konfd"], loaded["konfd"]);
    EXPECT_EQ(0, place.run("vorsim quit").exit_code);
    EXPECT_FALSE(std::filesystem::exists(in_place("run/vorsim.control"))) << "all is over when it returns";
    EXPECT_EQ(loaded["managers"], nlohmann::json::parse(contents(in_place("state")))["managers"]);
}

TEST_F(Record, is_watched_from_a_second_terminal)
{
    Gateway gateway(place, {});
    const Output seen = place.run("vorsim watch --manager ethmgr >lines & "
                                  "until [ -s lines ]; do vorcfg ip set-dhcp 1 1 >/dev/null; "
                                  "vorcfg hostname set-plat-hostname tower-18 >/dev/null; done; kill $!; cat lines");
    EXPECT_EQ(0U, seen.text.find("ethmgr(7) 0x7007 vor_cfg_set_dhcp  interface 1")) << seen.text;
    EXPECT_EQ(std::string::npos, seen.text.find("hostname"));
}

} // namespace
