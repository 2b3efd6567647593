// vorsim between a front end and a real manager, which it watches.
#include <csignal>
#include <fstream>
#include <thread>

#include "gateway_fixture.hpp"

namespace {

using processes::Gateway;
using processes::Output;
using processes::Tool;
using processes::Workplace;

constexpr vor_uint16 gpiomgr = 4;
constexpr vor_uint32 settings = 0x4004;

// A client that goes on after it has asked.
class Client {
public:
    explicit Client(vor_uint16 sap) : bound_(sap) {}

    void ask_to_set(vor_int16 port)
    {
        VORINFRA_MESSAGE request{};
        request.destination = gpiomgr;
        request.id = settings;
        TLV_CHAIN chain{};
        vor_int32 size = 0;
        vor_tlv_chain_init(&chain);
        for (const auto& [tag, value] : {std::pair<vor_uint16, vor_int16>{1, port}, {2, 1}, {6, 0}}) {
            vor_tlv_chain_add_vor_int16(&chain, tag, value);
        }
        vor_tlv_chain_serialize(&chain, request.data, &size);
        vor_tlv_chain_free(&chain, 0);
        request.payload_size = static_cast<vor_uint16>(size);
        EXPECT_EQ(0, vorinfra_forward(bound_, &request, ++sequence_));
    }
    // The status that came for the last request; -1 after a refusal, -2 without an answer.
    int status() const
    {
        pollfd polled{vorinfra_descriptor(bound_), POLLIN, 0};
        VORINFRA_MESSAGE answer{};
        if (poll(&polled, 1, 10'000) != 1 || vorinfra_receive_answer(bound_, &answer) != 1) {
            return answer.meta_data_size > 0 ? -1 : -2;
        }
        EXPECT_EQ(sequence_, answer.sequence);
        int status = -2;
        std::memcpy(&status, answer.payload, answer.payload_size);
        return status;
    }

private:
    Bound bound_;
    vor_uint16 sequence_ = 0;
};

// The gateway passes the messages of gpiomgr on to a directory of its own.
class Via : public GatewayTest {
protected:
    Via() { EXPECT_EQ("vorsim: gpiomgr passed on to REAL from SAP 65000", line()); }

    std::string real() const { return (there.path() / "run").string(); }
    // The gateway's next line, with the directory's name shortened.
    std::string line()
    {
        std::string text = gateway.next_line();
        const std::size_t at = text.find(real());
        return at == text.npos ? text : text.replace(at, real().size(), "REAL");
    }
    static std::string set(int port, const std::string& verdict, const std::string& what, const std::string& note = "")
    {
        return fmt::format("{:<9}  gpiomgr  vor_cfg_set_gpio_direction  port {}: {}direction=1 option=0{}", verdict,
                           port, what, note.empty() ? "" : "  [" + note + "]");
    }

    const Workplace there;
    Gateway gateway{place, {"--via", "gpiomgr=" + real(), "--strict"}};
    Client client{client_sap};
};

TEST_F(Via, example_manager_is_watched_until_it_dies)
{
    client.ask_to_set(3);
    EXPECT_EQ(-1, client.status());
    EXPECT_EQ(set(3, "NO ANSWER", "", "refused: nobody serves it in REAL"), line());

    Tool manager(there, "manager", {});
    manager.next_line();
    std::ifstream page(VOR_SOURCE_DIR "/docs/calls/gpio.md");
    std::string verdicts;
    for (std::string text; std::getline(page, text);) {
        if (text.starts_with("$ vorcfg ")) {
            const Output output = place.run(text.substr(2));
            EXPECT_EQ(0, output.exit_code) << text << '\n' << output.text;
            verdicts += line().substr(0, 1);
        }
    }
    EXPECT_EQ("ssssoa", verdicts) << "status, one-way, answered";
    EXPECT_TRUE(contains(place.run("vorsim show 'gpiomgr/port 3'").text, "name=\"door\""));

    manager.suspend();
    client.ask_to_set(3);
    place.run("vorsim show"); // after the request was passed on
    manager.signal(SIGKILL);
    EXPECT_EQ(set(3, "NO ANSWER", "", "no answer from REAL, where the manager has gone"), line());
    EXPECT_EQ(3, gateway.stop(SIGTERM));
}

TEST_F(Via, lies_are_reported_and_returned)
{
    const Gateway manager(there, {}); // which lies where it is told to
    const std::string fault = "VORINFRA_DIR=" + real() + " vorsim fault add 'gpiomgr: ";
    const std::pair<const char*, std::string> table[] = {
        {"id low", set(3, "INVALID 0", "answer has id 0x4005, expected 0x4004: ")},
        {"short 2", set(3, "INVALID", "answer has 2 bytes, expected 4: ") + " answer=0000"},
        {"status 9", set(3, "status 9", "")},
    };
    for (const auto& [lie, seen] : table) {
        place.run(fault + lie + ", once'");
        EXPECT_NE(0, place.run("vorcfg gpio set-direction 3 1 0").exit_code);
        EXPECT_EQ(seen, line());
    }
    EXPECT_EQ(1, place.run("vorsim show gpiomgr").exit_code) << "nothing was accepted";
    EXPECT_EQ(3, ask(Bound(201), gpiomgr, 0x4007)) << "not of the tables, but passed on";
    EXPECT_EQ("INVALID 3  gpiomgr  0x4007  payload has 0 bytes, expected 2", line());
    place.run("vorsim fault add 'gpiomgr: status 7, once'");
    client.ask_to_set(3);
    EXPECT_EQ(7, client.status());
    EXPECT_EQ(set(3, "status 7", "", "fault 1: status 7"), line());
    EXPECT_EQ(3, gateway.stop(SIGTERM));
}

// A manager of one's own there, in this process.
class ViaBound : public Via {
protected:
    ~ViaBound() override { vor_ipc_unbind(manager); }

    void answer(const VORINFRA_MESSAGE& request, vor_int32 status) const
    {
        EXPECT_EQ(0, vorinfra_answer(manager, &request, settings, &status, sizeof status));
    }

    VOR_IPC_HANDLE* manager = vorinfra_bind_in(real().c_str(), gpiomgr, gpiomgr);
};

TEST_F(ViaBound, answers_find_their_requests)
{
    Client other(201);
    client.ask_to_set(1);
    const VORINFRA_MESSAGE first = next(manager);
    other.ask_to_set(2);
    const VORINFRA_MESSAGE second = next(manager);
    EXPECT_NE(first.sequence, second.sequence);
    answer(second, 2);
    answer(first, 1);
    EXPECT_EQ(1, client.status());
    EXPECT_EQ(2, other.status());
    EXPECT_EQ(set(2, "status 2", ""), line());
    EXPECT_EQ(set(1, "status 1", ""), line());

    answer(first, 0);
    EXPECT_EQ("FOREIGN    gpiomgr  -  answer to no request 0x4004 from REAL", line());

    client.ask_to_set(3);
    const VORINFRA_MESSAGE late = next(manager);
    EXPECT_EQ(set(3, "NO ANSWER", "", "no answer from REAL"), line());
    answer(late, 0);
    EXPECT_EQ("FOREIGN    gpiomgr  -  late answer 0x4004 from REAL", line());

    client.ask_to_set(4);
    const VORINFRA_MESSAGE unwanted = next(manager);
    place.run("vorsim stop gpiomgr; vorsim start gpiomgr");
    EXPECT_EQ(set(4, "NO ANSWER", "", "stopped meanwhile"), line());
    answer(unwanted, 0);
    client.ask_to_set(5);
    answer(next(manager), 0);
    EXPECT_EQ(0, client.status()) << "of this request, not of one before";
    EXPECT_EQ(set(5, "status 0", ""), line());
}

// As for the clients of a manager itself, which wait until it has room.
TEST_F(ViaBound, slow_manager_loses_nothing)
{
    constexpr int many = 60;
    std::thread sender([] {
        const Bound bound(202);
        for (vor_uint16 port = 0; port < many; ++port) {
            Message notice;
            const vor_uint16 value[] = {port, 1};
            std::memcpy(notice.payload(), value, sizeof value);
            EXPECT_EQ(0, vor_ipc_send(bound, gpiomgr, 0x4006, &notice.ref, sizeof value, 0));
        }
    });
    place.run("vorcfg can set-id 1 5 1"); // others are served meanwhile
    for (vor_uint16 port = 0; port < many; ++port) {
        const VORINFRA_MESSAGE notice = next(manager);
        vor_uint16 received = 0;
        std::memcpy(&received, notice.payload, sizeof received);
        EXPECT_EQ(port, received);
    }
    sender.join();
}

} // namespace
