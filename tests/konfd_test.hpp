// konfd_test.hpp: a query under test.
#pragma once

#include <device_mgmt/common.h>
#include <device_mgmt/konfd.h>

#include "calls/calls.hpp"

class Query {
public:
    explicit Query(vor_uchar op) : record(vor_cfg_proto_init()) { vor_cfg_proto_set_op(record, op); }
    ~Query() { vor_cfg_proto_cleanup(record); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& line(const char* key, const char* value)
    {
        EXPECT_EQ(vor_cfg_proto_set_line_string(record, text(key), text(value)), 0);
        return *this;
    }
    Query& pattern(const char* key, const char* value)
    {
        EXPECT_EQ(vor_cfg_proto_set_pattern_string(record, value != nullptr ? 1 : 2, text(key), text(value)), 0);
        return *this;
    }
    Query& priority(const char* value)
    {
        EXPECT_EQ(vor_cfg_proto_set_priority_string(record, text(value)), 0);
        return *this;
    }
    Query& path(const char* key, const char* value)
    {
        EXPECT_EQ(vor_cfg_proto_append_path_elm(record, text(key), text(value)), 0);
        return *this;
    }
    // "counted length `all of its bytes`", or "null" and the length.
    std::string command(vor_int32 length = 0) const
    {
        const vor_int32 start = length;
        vor_char* rendered = vor_cfg_proto_get_command(record, &length);
        if (rendered == nullptr) {
            return "null " + std::to_string(length);
        }
        const std::string bytes(rendered, static_cast<size_t>(length - start));
        vor_free(rendered);
        return std::to_string(length) + " `" + fake::spelt(bytes) + "`";
    }

    VOR_CFG_PROTO* const record;

private:
    static vor_char* text(const char* text) { return const_cast<vor_char*>(text); }
};

// The example that most of the talk is held with.
inline Query& network(Query& query)
{
    return query.line("ssid", "x").pattern("ssid", "").path("interface", "wlan0");
}

// Memory is short from the nth allocation on.
inline void fail_allocation(int nth)
{
    fake::script.failing_allocation = fake::allocations() + nth;
}
