/**
 * @file
 * snmp.h: the SNMP agent, held by the SNMP manager (snmpmgr, SAP 21).
 *
 * Every call sets vor_errno to 0 first. The two v2 calls and the switch are
 * one-way, return what the platform's send returned (not -3) and keep their two
 * message buffers, sent or not.
 */
#ifndef DEVICE_MGMT_SNMP_H
#define DEVICE_MGMT_SNMP_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* Also the status of the tower-monitoring manager's answers. */
typedef struct _vor_snmp_set_status_ {
    vor_int32 set_status;
} VOR_SNMP_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_SNMP_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_SNMP_SET_STATUS, set_status) == 0);

/**
 * Set an SNMPv2 community. One-way: the manager's verdict never comes back.
 *
 * @param name    community name, passed to the manager unchanged
 * @param mode    passed to the manager unchanged
 * @param option  passed to the manager unchanged
 * @return the platform's send result; -1 no endpoint; -4 no buffer
 */
vor_int32 vor_cfg_set_snmp_v2_server_community_name(vor_char* name, vor_uchar mode, vor_uchar option);

/**
 * Set the SNMPv2 trap receiver. One-way: the manager's verdict never comes back.
 *
 * @param ip_addr         passed to the manager unchanged
 * @param community_name  passed to the manager unchanged
 * @param option          passed to the manager unchanged
 * @return the platform's send result; -1 no endpoint; -4 no buffer
 */
vor_int32 vor_cfg_set_snmp_v2_trap_server(vor_char* ip_addr, vor_char* community_name, vor_uchar option);

/**
 * Set one SNMPv3 credential.
 *
 * @param input_string  the credential, passed to the manager unchanged
 * @param mode          1 or 0, the group of credentials; any other value sends no credential, only the option
 * @param option        1, 2 or 3, the credential within the group; any other value sends no credential, only itself
 */
vor_int32 vor_cfg_set_snmp_server_v3_credentials(vor_char* input_string, vor_uchar mode, vor_uchar option);

/**
 * Enable or disable the SNMP agent. One-way: the manager's verdict never comes back.
 *
 * @param is_enabled  passed to the manager unchanged
 * @return the platform's send result; -1 no endpoint; -4 no buffer
 */
vor_int32 vor_cfg_set_snmp_server_enable(vor_uchar is_enabled);

/**
 * Set an SNMPv3 user's access.
 *
 * @param input_string  user name, passed to the manager unchanged
 * @param access        passed to the manager unchanged
 */
vor_int32 vor_cfg_set_snmp_server_v3_user_access(vor_char* input_string, vor_uchar access);

/**
 * Set the SNMPv3 engine id.
 *
 * @param input_string  engine id, passed to the manager unchanged
 */
vor_int32 vor_cfg_set_snmp_server_v3_engine_id(vor_char* input_string);

VOR_DECLARATIONS_END

#endif
