// The managers' tables, held against each other and against the headers.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <fnmatch.h>
#include <gtest/gtest.h>

#include "gateway/answer.hpp"
#include "gateway/decoded.hpp"
#include "gateway/measurements.hpp"
#include "gateway/state.hpp"
#include "processes.hpp"
#include "tables/families.hpp"

namespace {

using vorsim::Field;
using vorsim::Form;
using vorsim::Row;
using Names = std::set<std::string, std::less<>>;

std::vector<const Row*> all_rows()
{
    std::vector<const Row*> rows;
    for (const vorsim::Family* family : vorsim::all_families()) {
        for (const Row& row : family->rows()) {
            rows.push_back(&row);
        }
    }
    return rows;
}

// A function as a header declares it.
struct Declared {
    Names parameters;
    bool any_number = false;     // "..." at its end
    const Names* record_members; // of its header
};

class Headers {
public:
    Headers()
    {
        for (const auto& file : std::filesystem::directory_iterator(VOR_SOURCE_DIR "/include/device_mgmt")) {
            read(without_comments(processes::contents(file.path())), members_[file.path().filename()]);
        }
    }

    const std::map<std::string, Declared>& calls() const { return calls_; }
    // Those that the pattern of a row's call stands for.
    std::vector<const Declared*> matching(std::string_view pattern) const
    {
        std::vector<const Declared*> matching;
        for (const auto& [name, declared] : calls_) {
            if (fnmatch(std::string(pattern).c_str(), name.c_str(), 0) == 0) {
                matching.push_back(&declared);
            }
        }
        return matching;
    }

private:
    static std::string without_comments(std::string text)
    {
        for (std::size_t begin = text.find("/*"); begin != text.npos; begin = text.find("/*", begin)) {
            text.erase(begin, text.find("*/", begin) + 2 - begin);
        }
        return text;
    }

    void read(const std::string& text, Names& members)
    {
        const std::sregex_iterator end;
        const std::regex member(R"(\n +\w[\w ]*[ *](\w+)(\[\w+\])?;)");
        for (std::sregex_iterator found(text.begin(), text.end(), member); found != end; ++found) {
            members.insert((*found)[1]);
        }
        const std::regex call(R"(((?!VOR_LAYOUT)\b\w+)\(([^;{}()]*)\);)");
        const std::regex parameter(R"((\w+)(,|$))");
        for (std::sregex_iterator found(text.begin(), text.end(), call); found != end; ++found) {
            const std::string list = (*found)[2];
            Declared declared{.parameters = {}, .any_number = list.ends_with("..."), .record_members = &members};
            for (std::sregex_iterator name(list.begin(), list.end(), parameter); name != end; ++name) {
                declared.parameters.insert((*name)[1]);
            }
            calls_.emplace((*found)[1], declared);
        }
    }

    std::map<std::string, Names> members_;
    std::map<std::string, Declared> calls_;
};

const Headers& headers()
{
    static const Headers headers;
    return headers;
}

bool same_elements(const Row& one, const Row& other)
{
    return std::ranges::equal(one.layout.fields(), other.layout.fields(), [](const Field& a, const Field& b) {
        return a.tag_or_offset == b.tag_or_offset && a.kind == b.kind && a.only_value == b.only_value;
    });
}

// A row that another row's message fits as well would never be found.
TEST(tables, tell_every_message_from_its_siblings)
{
    for (const vorsim::Manager& manager : vorsim::managers) {
        std::vector<const Row*> earlier;
        for (const vorsim::Family* family : vorsim::all_families()) {
            for (const Row& row : family->rows()) {
                if (!family->serves(row, manager.sap)) {
                    continue;
                }
                for (const Row* sibling : earlier) {
                    if (sibling->exchange.id == row.exchange.id) {
                        EXPECT_FALSE(same_elements(*sibling, row)) << sibling->call << " and " << row.call;
                        EXPECT_EQ(sibling->layout.form, row.layout.form) << sibling->call << " and " << row.call;
                        EXPECT_EQ(sibling->layout.length, row.layout.length) << sibling->call << " and " << row.call;
                    }
                }
                earlier.push_back(&row);
            }
        }
    }
}

TEST(tables, name_declared_calls_and_their_arguments)
{
    for (const Row* row : all_rows()) {
        const auto calls = headers().matching(row->call);
        EXPECT_FALSE(calls.empty()) << row->call << " is declared nowhere";
        for (const Declared* call : calls) {
            const auto is_argument = [&](std::string_view name) { return call->parameters.contains(name); };
            EXPECT_TRUE(row->layout.lead.empty() || is_argument(row->layout.lead))
                << row->call << " has no argument " << row->layout.lead;
            for (const Field& field : row->layout.fields()) {
                // The arguments behind the dots have no names, and a record may hold what the call works out.
                const bool in_record = row->layout.form == Form::record && call->record_members->contains(field.name);
                EXPECT_TRUE(field.repeated ? call->any_number : is_argument(field.name) || in_record)
                    << row->call << " has no argument " << field.name;
            }
        }
    }
}

TEST(tables, answer_with_the_fields_of_the_declared_records)
{
    for (const Row* row : all_rows()) {
        if (row->query == nullptr) {
            continue;
        }
        const vorsim::State state;
        vorsim::Measurements measurements(1);
        for (const vorsim::Value& value : row->query({.row = row}, state, measurements).values) {
            for (const Declared* call : headers().matching(row->call)) {
                EXPECT_TRUE(call->record_members->contains(value.name))
                    << row->call << " reads no field " << value.name;
            }
        }
    }
}

TEST(tables, know_every_call_that_sends_a_message)
{
    Names unknown;
    for (const auto& [name, declared] : headers().calls()) {
        unknown.insert(name);
    }
    for (const Row* row : all_rows()) {
        std::erase_if(unknown, [&](const std::string& name) {
            return fnmatch(std::string(row->call).c_str(), name.c_str(), 0) == 0;
        });
    }
    const Names send_none{// texts
                          "ip_aton", "vor_convert_mac_address_from_str_to_byte",
                          // this process's endpoints, flag and timer
                          "vor_cfg_create_ipc_endpoint", "vor_cfg_create_sock_endpoint", "vor_cfg_get_ipc_endpoint",
                          "vor_cfg_get_sock_endpoint", "vor_cfg_get_user_flag", "vor_cfg_remove_ipc_endpoint",
                          "vor_cfg_remove_sock_endpoint", "vor_cfg_set_ipc_endpoint", "vor_cfg_set_user_flag",
                          "vor_restart_timer",
                          // konfd instead of a manager
                          "vor_cfg_proto_append_path_elm", "vor_cfg_proto_cleanup", "vor_cfg_proto_get_command",
                          "vor_cfg_proto_init", "vor_cfg_proto_set_line_string", "vor_cfg_proto_set_op",
                          "vor_cfg_proto_set_pattern_string", "vor_cfg_proto_set_priority_string",
                          "vor_cfg_set_interface_ip", "vor_cfg_set_wifi_ssid_password", "vor_konfd_bi_dir_comm",
                          // the platform's
                          "vor_free",
                          // nothing at all
                          "vor_cfg_get_dhcp_server_address_range", "vor_cfg_get_interface_security_params",
                          "vor_cfg_get_ip_address", "vor_cfg_get_sysloginfo", "vor_cfg_set_adc_config_interrupt"};
    for (const std::string& call : unknown) {
        EXPECT_TRUE(send_none.contains(call)) << call << " sends a message that no row accepts";
    }
    for (const std::string& call : send_none) {
        EXPECT_TRUE(unknown.contains(call)) << call << " has a row, or is declared no more";
    }
}

} // namespace
