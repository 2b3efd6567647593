/*
 * instructions.c: runs every measured call once as the library makes it and
 * once as straight-line C, for the instructions to be counted from outside.
 * Before that the two are held against each other under every fault.
 *
 * It prints a line per call: its name, the stack of both in bytes.
 */
#include <device_mgmt.h>
#include <stdio.h>
#include <string.h>

#include "platform.h"

#define CALL(name, ...) __typeof__(name) straight_##name;
#include "calls.def"
#undef CALL

static char text_a[] = "tower-17";
static char text_b[] = "north mast";
static char text_c[] = "flow.json";

struct outcome {
    vor_int32 result;
    vor_int32 error;
    char journal[4096];
};

static void keep(struct outcome* outcome, vor_int32 result)
{
    memset(outcome, 0, sizeof *outcome);
    outcome->result = result;
    outcome->error = vor_errno;
    strcpy(outcome->journal, platform_journal());
}

static int differ(const char* call, int fault, const struct outcome* library, const struct outcome* straight)
{
    if (memcmp(library, straight, sizeof *library) == 0) {
        return 0;
    }
    fprintf(stderr, "%s under fault %d:\n  library  %d, vor_errno %d: %s\n  straight %d, vor_errno %d: %s\n", call,
            fault, library->result, library->error, library->journal, straight->result, straight->error,
            straight->journal);
    return 1;
}

static int compare(void)
{
    static struct outcome library;
    static struct outcome straight;
    int differences = 0;
    for (int endpoint = 0; endpoint < 2; ++endpoint) {
        vor_cfg_set_ipc_endpoint(endpoint == 0 ? NULL : &platform_handle);
        for (int fault = 0; fault < fault_count; ++fault) {
#define CALL(name, ...)                                                                                                \
    platform_reset((enum fault)fault);                                                                                 \
    vor_errno = 77;                                                                                                    \
    keep(&library, name(__VA_ARGS__));                                                                                 \
    platform_reset((enum fault)fault);                                                                                 \
    vor_errno = 77;                                                                                                    \
    keep(&straight, straight_##name(__VA_ARGS__));                                                                     \
    differences += differ(#name, fault, &library, &straight);
#include "calls.def"
#undef CALL
        }
    }
    return differences;
}

static void run(void)
{
    unsigned library;
    unsigned straight;
    vor_cfg_set_ipc_endpoint(&platform_handle);
#define CALL(name, ...)                                                                                                \
    platform_reset(fault_none);                                                                                        \
    name(__VA_ARGS__);                                                                                                 \
    library = platform_stack();                                                                                        \
    platform_reset(fault_none);                                                                                        \
    straight_##name(__VA_ARGS__);                                                                                      \
    straight = platform_stack();                                                                                       \
    printf("%s %u %u\n", #name, library, straight);
#include "calls.def"
#undef CALL
}

int main(int argc, char** argv)
{
    if (argc == 2 && strcmp(argv[1], "compare") == 0) {
        return compare() == 0 ? 0 : 1;
    }
    run();
    return 0;
}
