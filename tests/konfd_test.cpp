// The query builder: its texts, their counted lengths, and what it does without memory.
#include "konfd_test.hpp"

TEST(konfd_query, command_and_counted_length)
{
    const struct {
        vor_uchar op;
        void (*build)(Query&);
        const char* command;
    } rows[] = {
        {1, [](Query& query) { network(query); }, R"(51 `-s -l "ssid x" -r "^ssid $" "interface wlan0"\0     `)"},
        {2, [](Query& query) { query.line("a", "b").pattern("a", nullptr); }, R"(24 `-c -l "a b" -r "^a$"\0   `)"},
        {3, [](Query& query) { query.line("a", "b").pattern("a", "b"); }, R"(15 `-u -r "^a b$"\0 `)"},
        {3,
         [](Query& query) {
             query.pattern("a", nullptr).priority("0x1").priority("0").path("i", "1").path("j", "\"2\"");
         },
         R"(39 `-u -r "^a$" -p 0x10 "i 1" "j "2""\0     `)"},
        {1, [](Query& query) { query.line("a", "b").line("c", "d").pattern("a", "b").pattern("c", nullptr); },
         R"(32 `-s -l "a bc d" -r "^a b$^c$"\0   `)"},
        {1, [](Query& query) { query.line("", "").pattern("", nullptr); }, R"(21 `-s -l " " -r "^$"\0   `)"},
        {1, [](Query& query) { query.pattern("a", "b").path("i", "1"); }, "null 0"},
        {2, [](Query& query) { query.line("a", "b"); }, "null 0"},
        {3, [](Query& query) { query.line("a", "b").priority("1"); }, "null 0"},
    };
    for (const auto& row : rows) {
        fake::reset();
        Query query(row.op);
        row.build(query);
        const int held = fake::live_allocations();
        EXPECT_EQ(query.command(), row.command);
        EXPECT_EQ(query.command(), row.command) << "rendering changes nothing";
        EXPECT_EQ(fake::live_allocations(), held);
        EXPECT_EQ(fake::events(), "nothing");
    }
}

TEST(konfd_query, length_is_added)
{
    fake::reset();
    Query query(1);
    network(query);
    EXPECT_EQ(query.command(100), R"(151 `-s -l "ssid x" -r "^ssid $" "interface wlan0"\0     `)");
    for (const vor_uchar unknown : std::initializer_list<vor_uchar>{0, 4, 255}) {
        vor_cfg_proto_set_op(query.record, unknown);
        EXPECT_EQ(query.command(33), "null 33");
    }
    EXPECT_EQ(Query(1).command(33), "null 0");
    EXPECT_EQ(Query(3).command(33), "null 0");
}

TEST(konfd_query, null_arguments)
{
    fake::reset();
    Query query(1);
    VOR_CFG_PROTO* const none = nullptr;
    vor_int32 length = 33;
    EXPECT_EQ(vor_cfg_proto_set_op(none, 1), -1);
    EXPECT_EQ(vor_cfg_proto_set_pattern_string(none, 1, "a"_t, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_pattern_string(query.record, 1, nullptr, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_pattern_string(query.record, 2, nullptr, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_pattern_string(query.record, 1, "a"_t, nullptr), -1);
    EXPECT_EQ(vor_cfg_proto_set_pattern_string(query.record, 0, "a"_t, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_pattern_string(query.record, 3, "a"_t, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_line_string(none, "a"_t, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_line_string(query.record, nullptr, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_set_line_string(query.record, "a"_t, nullptr), -1);
    EXPECT_EQ(vor_cfg_proto_set_priority_string(none, "x"_t), 0);
    EXPECT_EQ(vor_cfg_proto_set_priority_string(none, nullptr), 0);
    EXPECT_EQ(vor_cfg_proto_set_priority_string(query.record, nullptr), -1);
    EXPECT_EQ(vor_cfg_proto_append_path_elm(none, "a"_t, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_append_path_elm(query.record, nullptr, "b"_t), -1);
    EXPECT_EQ(vor_cfg_proto_append_path_elm(query.record, "a"_t, nullptr), -1);
    EXPECT_EQ(vor_cfg_proto_get_command(none, &length), nullptr);
    EXPECT_EQ(vor_cfg_proto_get_command(query.record, nullptr), nullptr);
    EXPECT_EQ(vor_cfg_proto_cleanup(none), 0);
    EXPECT_EQ(length, 33);
    EXPECT_EQ(fake::live_allocations(), 1) << "the record alone: nothing was built";
}

TEST(konfd_query, cleanup_leaves_path_elements)
{
    fake::reset();
    Query(2).line("a", "b").pattern("a", "b").priority("1").path("i", "1").path("j", "2");
    EXPECT_EQ(fake::live_allocations(), 2);
    EXPECT_EQ(fake::events(), "nothing");
}

TEST(konfd_query, setter_without_memory_keeps_text)
{
    for (int nth = 1;; ++nth) {
        fake::reset();
        Query query(1);
        query.line("a", "b").pattern("a", "b").priority("1");
        const int held = fake::live_allocations();
        fail_allocation(nth);
        query.line("c", "d").pattern("c", "d").priority("2"); // each still returns 0
        EXPECT_EQ(std::string(query.record->line).substr(0, 3), "a b");
        EXPECT_EQ(std::string(query.record->pattern).substr(0, 5), "^a b$");
        EXPECT_EQ(query.record->priority[0], '1');
        EXPECT_EQ(fake::live_allocations(), held);
        if (!fake::allocation_failed()) {
            break;
        }
    }
}

TEST(konfd_query, record_and_path_without_memory)
{
    fake::reset();
    fail_allocation(1);
    EXPECT_EQ(vor_cfg_proto_init(), nullptr);

    fake::reset();
    Query query(3);
    query.pattern("a", nullptr);
    fail_allocation(1);
    EXPECT_EQ(vor_cfg_proto_append_path_elm(query.record, "a"_t, "b"_t), -1);
    EXPECT_EQ(query.record->path_head.stqh_first, nullptr);
    fail_allocation(2);
    EXPECT_EQ(vor_cfg_proto_append_path_elm(query.record, "a"_t, "b"_t), 0) << "a text cut short goes unnoticed";
    EXPECT_NE(query.record->path_head.stqh_first, nullptr);
    fake::script.failing_allocation = 0;
    EXPECT_EQ(query.command(), R"(18 `-u -r "^a$" ""\0   `)") << "and is rendered as the empty text it is";
}

TEST(konfd_query, command_without_memory_is_null)
{
    for (int nth = 1;; ++nth) {
        fake::reset();
        Query query(1);
        network(query).priority("1");
        const int held = fake::live_allocations();
        fail_allocation(nth);
        const auto command = query.command(33);
        EXPECT_EQ(fake::live_allocations(), held);
        if (!fake::allocation_failed()) {
            EXPECT_GT(nth, 1) << "nothing was allocated";
            break;
        }
        EXPECT_EQ(command, "null 0") << "failing allocation " << nth;
    }
}

// What could not be appended is left out; the count and the memory behind it stay.
TEST(konfd_query, command_after_passing_shortage_keeps_count)
{
    for (int nth = 1;; ++nth) {
        fake::reset();
        Query query(1);
        network(query).priority("1");
        fail_allocation(nth);
        fake::script.memory_recovers = true;
        const auto command = query.command();
        if (!fake::allocation_failed()) {
            break;
        }
        if (command != "null 0") {
            EXPECT_EQ(command.substr(0, 4), "56 `") << "failing allocation " << nth;
        }
    }
}
