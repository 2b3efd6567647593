/**
 * @file
 * svc.h: REST and protocol services, service chains, transport applications.
 *
 * All but the service chain are one-way: the manager's verdict never comes
 * back, and vor_errno is never touched. They keep their message buffer when it has no room.
 */
#ifndef DEVICE_MGMT_SVC_H
#define DEVICE_MGMT_SVC_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* The meta-data byte of the service-chain request. */
typedef struct _svc_chain_mode_ {
    vor_uchar chain_mode;
} SVC_CHAIN_MODE;
VOR_LAYOUT(sizeof(SVC_CHAIN_MODE) == 1);
VOR_LAYOUT(offsetof(SVC_CHAIN_MODE, chain_mode) == 0);

typedef struct _svc_chain_configure_status_ {
    vor_int32 set_status;
} SVC_CHAIN_CONFIGURE_STATUS;
VOR_LAYOUT(sizeof(SVC_CHAIN_CONFIGURE_STATUS) == 4);
VOR_LAYOUT(offsetof(SVC_CHAIN_CONFIGURE_STATUS, set_status) == 0);

/**
 * Bind the REST service to an interface (restmgr, SAP 3).
 *
 * @param service_name  passed to the manager unchanged
 * @param bind_iface    passed to the manager unchanged
 */
vor_int32 vor_cfg_rest_set_bind_addr(vor_char* service_name, vor_char* bind_iface);

/**
 * Name the REST service's application (restmgr, SAP 3).
 *
 * @param service_name  passed to the manager unchanged
 * @param app_name      passed to the manager unchanged
 */
vor_int32 vor_cfg_rest_set_app(vor_char* service_name, vor_char* app_name);

/**
 * Point the REST service at its peer (restmgr, SAP 3).
 *
 * @param service_name     passed to the manager unchanged
 * @param ip_address       passed to the manager unchanged
 * @param port_number      passed to the manager as a signed 16-bit number
 * @param security_option  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_rest_config(vor_char* service_name, vor_char* ip_address, vor_int16 port_number,
                                  vor_int16 security_option);

/**
 * Declare a protocol service (datamgr, SAP 10).
 *
 * @param service_name  passed to the manager unchanged
 * @param protocol      passed to the manager unchanged
 */
vor_int32 vor_cfg_set_protocol_svc(vor_char* service_name, vor_int16 protocol);

/**
 * Define a service chain and wait for the verdict (svcmgr, SAP 9). Sets vor_errno to 0 first.
 *
 * @param mode        passed to the manager unchanged
 * @param chain_name  passed to the manager unchanged
 * @param elm_count   how many member names follow; a message has room for 49, what is sent with more depends on the
 *                    platform (on a development machine: nothing, and -3 is returned)
 * @param ...         elm_count texts (vor_char*), the members in order
 * @return the common codes; -1 with vor_errno 0 also for an answer that is not the service chain's: both message
 *         buffers are then kept
 */
vor_int32 vor_cfg_set_service_chain(vor_uchar mode, vor_char* chain_name, vor_uchar elm_count, ...);

/**
 * Bind an application to a transport service, at the SAP the caller names.
 *
 * @param service_name  passed to the receiver unchanged
 * @param app_name      passed to the receiver unchanged
 * @param app_sap_id    the receiving SAP, as a 16-bit pattern
 */
vor_int32 vor_cfg_tp_set_app(vor_char* service_name, vor_char* app_name, vor_int16 app_sap_id);

VOR_DECLARATIONS_END

#endif
