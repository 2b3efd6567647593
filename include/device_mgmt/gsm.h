/**
 * @file
 * gsm.h: the cellular data connection, held by the GSM manager (SAP 12).
 *
 * Every call sets vor_errno to 0 first. Message buffers kept: the request's, when none is left for the answer.
 */
#ifndef DEVICE_MGMT_GSM_H
#define DEVICE_MGMT_GSM_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

struct _vor_gsmmgr_set_status_ {
    vor_int32 set_status;
};
VOR_LAYOUT(sizeof(struct _vor_gsmmgr_set_status_) == 4);
VOR_LAYOUT(offsetof(struct _vor_gsmmgr_set_status_, set_status) == 0);

/**
 * Set a port's access point name.
 *
 * @param gsm_port           passed to the manager unchanged
 * @param access_point_name  passed to the manager unchanged
 * @param option             passed to the manager unchanged
 */
vor_int32 vor_cfg_gsm_set_access_point_name(vor_uchar gsm_port, vor_char* access_point_name, vor_uchar option);

/**
 * Set a port's user name.
 *
 * @param gsm_port  passed to the manager unchanged
 * @param username  passed to the manager unchanged
 * @param option    passed to the manager unchanged
 */
vor_int32 vor_cfg_gsm_set_username(vor_uchar gsm_port, vor_char* username, vor_uchar option);

/**
 * Set a port's password.
 *
 * @param gsm_port  passed to the manager unchanged
 * @param password  passed to the manager unchanged
 * @param option    passed to the manager unchanged
 */
vor_int32 vor_cfg_gsm_set_password(vor_uchar gsm_port, vor_char* password, vor_uchar option);

/**
 * Activate a port.
 *
 * @param gsm_port  passed to the manager unchanged
 */
vor_int32 vor_cfg_gsm_activate(vor_uchar gsm_port);

VOR_DECLARATIONS_END

#endif
