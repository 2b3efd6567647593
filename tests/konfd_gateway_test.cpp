// The library's konfd exchange against vorsim's konfd, over the real socket.
#include <gtest/gtest.h>

#include <device_mgmt.h>
#include <vorinfra.h>

#include "processes.hpp"

namespace {

class KonfdGateway : public testing::Test {
protected:
    KonfdGateway() { workplace_.enter(); }

    std::string held() const { return workplace_.run("vorsim show").text; }

    processes::Workplace workplace_;
    processes::Gateway gateway_{workplace_, {"--strict", "--show-secrets"}};
};

vor_char* text(const char* literal)
{
    return const_cast<vor_char*>(literal);
}

constexpr vor_uchar set = 1;
constexpr vor_uchar check = 2;
constexpr vor_uchar unset = 3;

vor_int32 send_query(vor_uchar operation, const char* key, const char* value, const char* pattern,
                     const char* interface = "eth1")
{
    VOR_CFG_PROTO* const query = vor_cfg_proto_init();
    vor_cfg_proto_set_op(query, operation);
    vor_cfg_proto_set_line_string(query, text(key), text(value));
    vor_cfg_proto_set_pattern_string(query, 1, text(key), text(pattern));
    if (interface != nullptr) {
        vor_cfg_proto_append_path_elm(query, text("interface"), text(interface));
    }
    const vor_int32 code = vor_konfd_bi_dir_comm(query);
    // cleanup leaves the path's records to whoever wants no leak
    VOR_CFG_PROTO_PATH* const element = query->path_head.stqh_first;
    vor_cfg_proto_cleanup(query);
    vor_free(element);
    return code;
}

// Each verdict is its own exchange's: padding makes no further command, and no
// answer is left over for the next.
TEST_F(KonfdGateway, answers_every_exchange_on_one_connection)
{
    ASSERT_EQ(vor_cfg_create_sock_endpoint(), 0);
    EXPECT_EQ(send_query(check, "mtu", "1400", "1400"), -1);
    EXPECT_EQ(send_query(set, "mtu", "1400", "[0-9]+"), -1) << "there is no such interface";
    EXPECT_EQ(send_query(set, "interface", "eth1", "eth1", nullptr), 0);
    EXPECT_EQ(send_query(set, "mtu", "1400", "[0-9]+"), 0);
    EXPECT_EQ(send_query(check, "mtu", "1400", "1400"), 0);
    EXPECT_EQ(send_query(set, "mtu", "1500", "[0-9]+"), 0);
    EXPECT_EQ(send_query(check, "mtu", "1400", "1400"), -1);
    EXPECT_NE(held().find("\n  interface eth1\n    mtu 1500\n"), std::string::npos) << held();
    EXPECT_EQ(send_query(unset, "mtu", "", "[0-9]+"), 0);
    EXPECT_EQ(send_query(check, "mtu", "1500", "1500"), -1);
    vor_cfg_remove_sock_endpoint();
}

} // namespace
