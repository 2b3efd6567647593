/*
 * front_end.c: a front end in C11. It does the same as front_end.cpp.
 *
 *   cc front_end.c $(pkg-config --cflags --libs device_mgmt) -o front_end
 */
#include <device_mgmt.h>
#include <stdio.h>
#include <string.h>

/* The meaning of a call's code. vor_errno must be 0 before the call, because not every call clears it. */
static const char* outcome_of(vor_int32 code)
{
    switch (code) {
    case VOR_CODE_DONE:
        return "accepted";
    case VOR_CODE_REFUSED:
        return vor_errno != 0 ? "refused" : vor_cfg_get_ipc_endpoint() == NULL ? "not sent" : "unknown";
    case VOR_CODE_TOO_MANY_SERVERS:
        return "not sent";
    default:
        return "unknown"; /* it may have been applied */
    }
}

static void report(const char* what, vor_int32 code)
{
    printf("%s: %s", what, outcome_of(code));
    if (code == VOR_CODE_REFUSED && vor_errno != 0) {
        printf(", status %d", vor_errno);
    }
    puts("");
    vor_errno = 0; /* for the next call */
}

static void query_konfd(void)
{
    char hostname[] = "hostname", tower[] = "tower-17", interface[] = "interface", wlan0[] = "wlan0";
    VOR_CFG_PROTO* const query = vor_cfg_proto_init();
    vor_int32 length = 0;
    vor_cfg_proto_set_op(query, 1);
    vor_cfg_proto_set_line_string(query, hostname, tower);
    vor_cfg_proto_set_pattern_string(query, 2, hostname, NULL);
    vor_cfg_proto_append_path_elm(query, interface, wlan0);
    vor_char* const command = vor_cfg_proto_get_command(query, &length);
    printf("konfd: %s\n", command != NULL ? command : "incomplete");
    vor_free(command);
    const int agreed = vor_cfg_create_sock_endpoint() == 0 && vor_konfd_bi_dir_comm(query) == 0;
    printf("konfd: %s\n", agreed ? "accepted" : "unknown");
    vor_cfg_remove_sock_endpoint();
    vor_cfg_proto_cleanup(query);
}

int main(void)
{
    char address[] = "192.168.1.10", mask[] = "255.255.255.0", credential[] = "monsoon";
    char shelter[] = "shelter", first[] = "192.168.1.1", second[] = "9.9.9.9";
    report("before the endpoint", vor_cfg_set_gpio_direction(3, 1, 0));
    if (vor_cfg_create_ipc_endpoint(200) != 0) {
        return 1;
    }
    report("address", vor_cfg_set_ip_address(0, address, mask, 1));
    report("direction", vor_cfg_set_gpio_direction(3, 1, 0));
    /* one-way: 0 means that it was sent */
    printf("output: %s\n", vor_cfg_set_gpio_value(3, 1) == 0 ? "sent" : "not sent");
    report("parity", vor_cfg_set_serial_parity(1, 2));
    report("credential", vor_cfg_set_snmp_server_v3_credentials(credential, 1, 1));
    report("servers", vor_cfg_set_dhcp_server_dns(shelter, 2, 1, first, second));
    puts("too wide: not sent"); /* interface 300 does not fit into a byte: C would truncate it silently */

    vor_int16 temperature = 0;
    report("temperature", vor_cfg_get_system_temperature(&temperature));
    printf("temperature: %d\n", temperature);
    const GPIO_PIN_STATS* const borrowed = vor_cfg_get_gpio_port_stats(3);
    GPIO_PIN_STATS statistics;
    if (borrowed != NULL) {
        memcpy(&statistics, borrowed, sizeof statistics); /* at once: its buffer has been released already */
    }
    printf("statistics: %s\n", borrowed != NULL ? "accepted" : "unreadable");
    printf("statistics: port %d\n", borrowed != NULL ? statistics.logical_port_no : -1);
    query_konfd();
    vor_cfg_remove_ipc_endpoint();
    return 0;
}
