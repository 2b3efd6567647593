/**
 * @file
 * konfd.h: the stored configuration, edited by text queries to konfd.
 *
 * Build a query with vor_cfg_proto_init, vor_cfg_proto_set_op and the setters,
 * send it with vor_konfd_bi_dir_comm and release it with vor_cfg_proto_cleanup.
 * Nothing is escaped: a double quote in a text breaks the query's quoting.
 * vor_errno is never touched. Text for which there is not enough memory is silently
 * left out: its setter still returns 0, its command lacks it.
 *
 * After -1 from a call that asks konfd, the change may have been made: konfd's
 * answer may have come too late.
 */
#ifndef DEVICE_MGMT_KONFD_H
#define DEVICE_MGMT_KONFD_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_cfg_proto_path_ {
    vor_char* path_elm; /* key, a blank, value */
    struct {
        struct _vor_cfg_proto_path_* stqe_next;
    } elm_link;
} VOR_CFG_PROTO_PATH;
VOR_LAYOUT(sizeof(VOR_CFG_PROTO_PATH) == 2 * sizeof(void*));
VOR_LAYOUT(offsetof(VOR_CFG_PROTO_PATH, path_elm) == 0);
VOR_LAYOUT(offsetof(VOR_CFG_PROTO_PATH, elm_link) == sizeof(void*));

/* A queue of path elements; stqh_last is where the next one is linked. */
struct _path_head_ {
    struct _vor_cfg_proto_path_* stqh_first;
    struct _vor_cfg_proto_path_** stqh_last;
};
VOR_LAYOUT(sizeof(struct _path_head_) == 2 * sizeof(void*));
VOR_LAYOUT(offsetof(struct _path_head_, stqh_first) == 0);
VOR_LAYOUT(offsetof(struct _path_head_, stqh_last) == sizeof(void*));

typedef struct _vor_cfg_proto_ {
    vor_uchar op;
    vor_char* line;
    vor_char* pattern;
    vor_char* priority;
    struct _path_head_ path_head;
} VOR_CFG_PROTO;
VOR_LAYOUT(sizeof(VOR_CFG_PROTO) == 6 * sizeof(void*));
VOR_LAYOUT(offsetof(VOR_CFG_PROTO, op) == 0);
VOR_LAYOUT(offsetof(VOR_CFG_PROTO, line) == sizeof(void*));
VOR_LAYOUT(offsetof(VOR_CFG_PROTO, pattern) == 2 * sizeof(void*));
VOR_LAYOUT(offsetof(VOR_CFG_PROTO, priority) == 3 * sizeof(void*));
VOR_LAYOUT(offsetof(VOR_CFG_PROTO, path_head) == 4 * sizeof(void*));

/* Frees what vor_cfg_proto_get_command returned. It is part of libvorinfra: link that too, as this library's pkg-config
 * and CMake files do. */
extern void vor_free(void* memory);

/**
 * Make an empty query.
 *
 * @return the query, to be released with vor_cfg_proto_cleanup; null when there is not enough memory
 */
VOR_CFG_PROTO* vor_cfg_proto_init(void);

/**
 * Set what the query does.
 *
 * @param handle  the query
 * @param value   1 for -s, 2 for -c, 3 for -u; not checked here. konfd defines what they do; the simulator's
 *                sets, checks and unsets
 * @return 0; -1 for a null handle
 */
vor_int32 vor_cfg_proto_set_op(VOR_CFG_PROTO* handle, vor_uchar value);

/**
 * Append to the pattern of the query's lines, between the anchors ^ and $.
 *
 * @param handle  the query
 * @param type    1 for key and value, 2 for the key alone
 * @param key     the key
 * @param value   the value; ignored for type 2
 * @return 0; -1 for another type or a null handle, key or (type 1) value
 */
vor_int32 vor_cfg_proto_set_pattern_string(VOR_CFG_PROTO* handle, vor_uchar type, vor_char* key, vor_char* value);

/**
 * Append to the line that the query stores: key, space, value.
 *
 * @param handle  the query
 * @param key     the key
 * @param value   the value
 * @return 0; -1 for a null handle, key or value
 */
vor_int32 vor_cfg_proto_set_line_string(VOR_CFG_PROTO* handle, vor_char* key, vor_char* value);

/**
 * Append to the query's priority.
 *
 * @param handle  the query; null does nothing and returns 0
 * @param value   the priority as text
 * @return 0; -1 for a null value
 */
vor_int32 vor_cfg_proto_set_priority_string(VOR_CFG_PROTO* handle, vor_char* value);

/**
 * Add one element at the end of the query's path.
 *
 * @param handle      the query
 * @param path_key    such as interface
 * @param path_value  such as wlan0
 * @return 0; -1 for a null handle, key or value, or when there is not enough memory
 */
vor_int32 vor_cfg_proto_append_path_elm(VOR_CFG_PROTO* handle, vor_char* path_key, vor_char* path_value);

/**
 * Release a query. The path's element records stay allocated; only their texts are freed.
 *
 * @param handle  the query; null does nothing
 * @return 0
 */
vor_int32 vor_cfg_proto_cleanup(VOR_CFG_PROTO* handle);

/**
 * Render a query as konfd's command text.
 * The count is larger than the text; the bytes in between are the terminator and
 * spaces of the same allocation.
 *
 * @param handle  the query; stays as it is
 * @param length  start it at 0: the counted length is added to it; set to 0 when a line or pattern is missing
 * @return the command, to be freed with vor_free; null for a null argument, an unknown operation, a missing
 *         line or pattern, or when there is no memory for the counted bytes
 */
vor_char* vor_cfg_proto_get_command(VOR_CFG_PROTO* handle, vor_int32* length);

/**
 * Send a query to konfd and wait for its verdict.
 * Connect first with vor_cfg_create_sock_endpoint; the connection stays open.
 *
 * @param handle  the query, still the caller's
 * @return 0 accepted by konfd; -1 for every failure
 */
vor_int32 vor_konfd_bi_dir_comm(VOR_CFG_PROTO* handle);

/**
 * Store the Wi-Fi network of wlan0. Connects and disconnects by itself.
 * konfd refuses it unless the line "interface wlan0" is stored, which konfd query does. Two commands are sent, and the
 * one answer of konfd that is read counts for both. A connection made before with vor_cfg_create_sock_endpoint is lost
 * and stays open: remove it first. After a failure this call's own may stay open.
 *
 * @param ssid      network name
 * @param password  passphrase
 * @return 0 accepted by konfd; -1 for every failure, also a null argument: then nothing was sent
 */
vor_int32 vor_cfg_set_wifi_ssid_password(vor_char* ssid, vor_char* password);

/**
 * Store an interface's address. Connects and disconnects by itself.
 * Prints its progress on standard output, where one line says dhcp whatever
 * the address. The first command's line says eth0 whatever the interface; its
 * answer is ignored. konfd refuses the second command unless the interface's
 * line is stored. A connection made before with vor_cfg_create_sock_endpoint
 * is lost and stays open: remove it first. After a failure this call's own may
 * stay open.
 *
 * @param interface   such as eth1
 * @param ip_address  dotted quad, or the word dhcp; null fails after the first command
 * @return 0 accepted by konfd; -1 for every failure, also a null interface: then nothing was sent
 */
vor_int32 vor_cfg_set_interface_ip(vor_char* interface, vor_char* ip_address);

VOR_DECLARATIONS_END

#endif
