/**
 * @file
 * hostname.h: the gateway's host name, held by the data manager (datamgr, SAP 10). vor_errno is never touched.
 */
#ifndef DEVICE_MGMT_HOSTNAME_H
#define DEVICE_MGMT_HOSTNAME_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/**
 * Set the host name. One-way: the manager's verdict never comes back.
 *
 * @param hostname  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_plat_hostname(vor_char* hostname);

VOR_DECLARATIONS_END

#endif
