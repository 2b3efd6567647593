// Which calls overwrite each other's values: as vorcfg counts them, and as vorsim stores what it receives of them.
#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "call/call_key.hpp"
#include "call/prepare.hpp"
#include "call/session.hpp"
#include "example_lines.hpp"
#include "gateway/gateway.hpp"
#include "input/secret.hpp"
#include "konfd/konfd.hpp"

using namespace vorcfg;

namespace {

struct Sent {
    std::string line;
    std::vector<call::Setting> settings;
    std::vector<call::Message> messages;
};

// Nothing where a line is not valid, or changes nothing.
std::optional<Sent> sent(const Line& words)
try {
    input::Secrets secrets({.literals = true});
    call::PreparedCall planned = call::prepare(words, secrets);
    if (call::changes_nothing(planned)) {
        return {};
    }
    Sent sent{{},
              call::settings_of(call::key_of(planned)),
              call::Session({.capture = true}, std::nullopt).make(planned).seen.messages};
    for (const input::Word& word : words) {
        sent.line += word.text + ' ';
    }
    return sent;
} catch (const input::InputError&) {
    return {};
}

std::string payload_of(const call::Message& message)
{
    if (!message.chain) {
        return message.record;
    }
    TLV_CHAIN chain;
    vor_tlv_chain_init(&chain);
    for (const call::Element& element : message.elements) {
        auto* const bytes = reinterpret_cast<unsigned char*>(const_cast<char*>(element.bytes.data()));
        switch (element.kind) {
        case call::Element::Kind::int16:
            vor_tlv_chain_add_vor_int16(&chain, element.tag, static_cast<vor_int16>(element.number));
            break;
        case call::Element::Kind::int32:
            vor_tlv_chain_add_vor_int32(&chain, element.tag, element.number);
            break;
        case call::Element::Kind::text:
            vor_tlv_chain_add_str(&chain, element.tag, const_cast<char*>(element.bytes.c_str()));
            break;
        default:
            vor_tlv_chain_add_raw(&chain, element.tag, static_cast<vor_uint16>(element.bytes.size()), bytes);
        }
    }
    std::string payload(4096, '\0');
    vor_int32 size = 0;
    EXPECT_EQ(0, vor_tlv_chain_serialize(&chain, reinterpret_cast<unsigned char*>(payload.data()), &size));
    vor_tlv_chain_free(&chain, 0);
    payload.resize(static_cast<std::size_t>(size));
    return message.flag ? static_cast<char>(*message.flag) + payload : payload;
}

vorsim::gateway::Bytes bytes_of(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The gateway stores what the call sends; how many settings it then has.
std::size_t store(vorsim::gateway::Gateway& gateway, const Sent& sent)
{
    for (const call::Message& message : sent.messages) {
        const std::string option(message.option ? 1 : 0, static_cast<char>(message.option.value_or(0)));
        const std::string payload = payload_of(message);
        const auto decision = gateway.judge({.sap = message.sap,
                                             .id = message.id,
                                             .answer_wanted = message.way == call::Way::request,
                                             .meta_data = bytes_of(option),
                                             .payload = bytes_of(payload)});
        EXPECT_EQ("", decision.record.complaint) << sent.line;
        gateway.store(decision);
    }
    std::size_t count = 0;
    for (const auto& [sap, objects] : gateway.state().managers()) {
        for (const auto& [object, settings] : objects) {
            count += settings.size();
        }
    }
    return count;
}

// Whether the gateway stores the second call in place of the first.
bool is_replaced(const Sent& first, const Sent& second)
{
    vorsim::gateway::Gateway gateway({});
    const std::size_t one = store(gateway, first);
    vorsim::gateway::Gateway other({});
    return store(gateway, second) < one + store(other, second);
}

bool share_setting(const Sent& first, const Sent& second)
{
    return std::ranges::any_of(first.settings, [&](const call::Setting& setting) {
        return std::ranges::find(second.settings, setting) != second.settings.end();
    });
}

// The level of all tasks is stored beside theirs: which of them is the later one, its messages tell.
bool is_about_all_tasks(const Sent& sent)
{
    return sent.settings.size() > 1;
}

void compare(const Sent& first, const Sent& second)
{
    if (is_about_all_tasks(first) == is_about_all_tasks(second)) {
        EXPECT_EQ(is_replaced(first, second), share_setting(first, second)) << first.line << "\n" << second.line;
    }
}

bool goes_to_manager(const rows::Row& row)
{
    return row.is_setting() && row.channel == rows::Channel::manager;
}

// Other words for an argument.
std::vector<std::string> others(const rows::Argument& argument, const std::string& word)
{
    std::vector<std::string> others;
    for (const rows::Choice& choice : argument.choices) {
        others.emplace_back(choice.name);
    }
    if (argument.is_number()) {
        others.push_back(std::to_string(argument.range.least));
        others.push_back(std::to_string(argument.range.most));
    } else if (argument.kind == rows::Kind::ipv4) {
        others.emplace_back("10.9.8.7");
    } else if (argument.choices.empty()) {
        others.push_back(word + "-2");
    }
    return others;
}

TEST(settings, every_argument_is_object_or_value_on_both_sides)
{
    for (const rows::Row* const row : rows_that(goes_to_manager)) {
        for (const Line& line : variants(*row)) {
            const auto first = sent(line);
            for (const auto& [argument, at] : given_arguments(*row)) {
                for (const std::string& word : first ? others(argument, line[at].text) : std::vector<std::string>()) {
                    Line changed = line;
                    changed[at].text = word;
                    if (const auto second = sent(argument.choices.empty() ? changed : fitted(*row, changed))) {
                        compare(*first, *second);
                    }
                }
            }
        }
    }
}

TEST(settings, calls_are_grouped_alike_on_both_sides)
{
    std::vector<Sent> all;
    for (const rows::Row* const row : rows_that(goes_to_manager)) {
        Line line = example_of(*row);
        for (const auto& [argument, at] : given_arguments(*row)) {
            if (argument.is_object && argument.choices.empty()) {
                line[at].text = argument.is_number() ? "1" : argument.kind == rows::Kind::ipv4 ? "10.1.1.1" : "one";
            }
        }
        all.push_back(sent(line).value());
    }
    for (auto first = all.begin(); first != all.end(); ++first) {
        for (auto second = first + 1; second != all.end(); ++second) {
            if (first->messages.front().sap == second->messages.front().sap) {
                compare(*first, *second);
            }
        }
    }
}

TEST(settings, level_of_all_tasks_overwrites_that_of_each)
{
    const auto all = sent(input::words_of("debug set-info 1 all error")).value();
    const auto one = sent(input::words_of("debug set-info 1 canmgr info")).value();
    const auto other = sent(input::words_of("debug set-info 1 ethmgr info")).value();
    EXPECT_TRUE(share_setting(all, one));
    EXPECT_TRUE(share_setting(all, other));
    EXPECT_FALSE(share_setting(one, other));
}

std::set<std::string> lines_in(const std::vector<vorsim::konfd::Tree::Node>& nodes, const std::string& path = {})
{
    std::set<std::string> lines;
    for (const auto& node : nodes) {
        lines.insert(path + '/' + node.line);
        lines.merge(lines_in(node.children, path + '/' + node.line));
    }
    return lines;
}

// The calls that store lines in konfd's tree differ only in how they do it. Not counted is that a line goes with the
// one that it is under: with an interface's line, or with another network's name.
TEST(settings, stored_lines_are_grouped_as_konfd_stores_them)
{
    const char* const calls[] = {
        "konfd set-interface-ip eth0 10.0.0.1",
        "konfd set-interface-ip eth1 10.0.0.2",
        "konfd query --set --line ip-address 10.0.0.3 --pattern ip-address .* --path interface eth0",
        "konfd query --set --line mtu 1400 --pattern mtu [0-9]+ --path interface eth0",
        "konfd query --set --line mtu 1500 --pattern mtu [0-9]+ --path interface eth0",
        "konfd query --set --line mtu 1600 --pattern mtu [0-9]+ --path interface eth0 --path vlan 7",
        "konfd query --unset --pattern mtu [0-9]+ --path interface eth0",
        "wifi set-ssid-password one \"first secret\"",
        "wifi set-ssid-password two \"second secret\"",
        "konfd query --set --line ssid three --pattern ssid .* --path interface wlan0",
        "konfd query --set --line password four --pattern password .* --path interface wlan0 --path ssid one",
        "konfd query --set --line channel 4 --pattern channel .* --path interface wlan0",
    };
    for (const char* const one : calls) {
        for (const char* const other : calls) {
            const Sent first = sent(input::words_of(one)).value();
            const Sent second = sent(input::words_of(other)).value();
            vorsim::konfd::Konfd konfd({.show_secrets = true, .lenient = true});
            const auto execute = [&](const Sent& sent) {
                for (const call::Message& message : sent.messages) {
                    EXPECT_EQ("-o", konfd.execute(message.command).record.answer) << message.command;
                }
                return lines_in(konfd.lines());
            };
            const std::set<std::string> before = execute(first);
            const std::set<std::string> after = execute(second);
            const bool keeps = std::ranges::includes(after, before);
            const bool is_under_another = first.line.find("--path ssid") != std::string::npos;
            const bool removes = first.line.find("--unset") != std::string::npos;
            if (!is_under_another && !removes && first.line != second.line) {
                EXPECT_EQ(!keeps, share_setting(first, second)) << first.line << "\n" << second.line;
            }
        }
    }
}

} // namespace
