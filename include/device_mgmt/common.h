/**
 * @file
 * common.h: endpoints, text converters and the delayed restart.
 */
#ifndef DEVICE_MGMT_COMMON_H
#define DEVICE_MGMT_COMMON_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* The platform's handles. */
typedef struct _vor_ipc_handle_ VOR_IPC_HANDLE;
typedef struct _vor_unix_socket_ VOR_UNIX_SOCKET;

/**
 * Bind this process to the platform's messages. Every configuration call needs it.
 * Signal SIGRTMIN + 5 is blocked in the calling thread and stays blocked. A second
 * bind replaces the endpoint without unbinding the first. The endpoint is for this process, one thread at a time: a
 * forked process needs its own, and threads a lock around their calls.
 *
 * @param sap  the service access point of this process: one that no manager (0 to 24 and 240 are theirs) and no other
 *             program has; the platform defines which of the others are free. The examples take 200
 * @return 0 bound; -1 failed: the line "ERROR : IPC Bind failed " is printed and no endpoint is left
 */
vor_int16 vor_cfg_create_ipc_endpoint(vor_uint16 sap);

/**
 * Unbind the endpoint and forget it, also where the platform could not unbind it.
 *
 * @return what the platform's unbind returned, also for an endpoint never bound: not one of the common codes
 */
vor_int32 vor_cfg_remove_ipc_endpoint(void);

/**
 * Return the endpoint in use.
 *
 * @return the platform's handle, null when none is bound; do not free it
 */
VOR_IPC_HANDLE* vor_cfg_get_ipc_endpoint(void);

/**
 * Adopt an endpoint bound elsewhere. The one in use before is not unbound.
 *
 * @param p_ipc_hndl  the handle, which its owner still has to unbind; null for none
 */
void vor_cfg_set_ipc_endpoint(VOR_IPC_HANDLE* p_ipc_hndl);

/**
 * Connect to konfd. Needed before vor_konfd_bi_dir_comm.
 * A failed configuration or connection keeps the socket: remove it. There is one socket: a second connection, made here
 * or by vor_cfg_set_wifi_ssid_password and vor_cfg_set_interface_ip (konfd.h), loses the first one, which stays open.
 *
 * @return 0 connected; -1 failed
 */
vor_int16 vor_cfg_create_sock_endpoint(void);

/**
 * Close the connection to konfd and forget it.
 *
 * @return what the platform's close returned, also for a socket never made
 */
vor_int32 vor_cfg_remove_sock_endpoint(void);

/**
 * Return the socket in use.
 *
 * @return the platform's socket, null when there is none; do not free it
 */
VOR_UNIX_SOCKET* vor_cfg_get_sock_endpoint(void);

/**
 * Store a byte for the application. The library itself never reads it.
 *
 * @param flag  any value
 * @return 0
 */
vor_int16 vor_cfg_set_user_flag(vor_uchar flag);

/**
 * Return the application's byte.
 *
 * @return the byte stored last, 0 at first
 */
vor_uchar vor_cfg_get_user_flag(void);

/**
 * Convert a MAC address text to bytes.
 * Six groups of two hexadecimal digits; one character of any kind between groups
 * is skipped, nothing after the sixth group is read. A null pointer ends the program.
 *
 * @param mac_addr_str   such as 00:1a:2b:3c:4d:5e
 * @param mac_addr_byte  room for 6 bytes, provided by the caller
 * @return 0; -1500 at the first group that is not hexadecimal or is cut short; only the groups before it are written
 */
vor_int32 vor_convert_mac_address_from_str_to_byte(vor_char* mac_addr_str, vor_uchar* mac_addr_byte);

/**
 * Convert a dotted-quad text to an address.
 * Lenient: an empty part counts as 0 and whatever follows the fourth part is ignored. A null pointer ends the program.
 *
 * @param ip_address  such as 192.168.1.10
 * @param ip          the address in network byte order; written only on success
 * @return 0; -1 for a missing dot or a part above 255
 */
vor_int32 ip_aton(vor_char* ip_address, vor_ip_address* ip);

/**
 * Announce a restart and start the timer that reboots the gateway. It cannot be cancelled.
 * Milliseconds are counted in 32 bits: a negative time wraps. vor_errno is left alone.
 *
 * @param time_till_restart  seconds
 * @return 0, also when the platform had no timer and nothing will reboot; -1 no endpoint; -3 the notice was not sent;
 *         -4 no buffer: in each of these three cases no timer is started
 */
vor_int16 vor_system_restart(vor_int16 time_till_restart);

/**
 * Reboot the gateway now. The restart timer's callback, not meant to be called otherwise.
 */
void vor_restart_timer(void);

VOR_DECLARATIONS_END

#endif
