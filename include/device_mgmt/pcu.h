/**
 * @file
 * pcu.h: the power-control unit, held by its manager (SAP 23). Both calls set vor_errno to 0 first.
 */
#ifndef DEVICE_MGMT_PCU_H
#define DEVICE_MGMT_PCU_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_pcumgr_set_status_ {
    vor_int32 set_status;
} VOR_PCUMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_PCUMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_PCUMGR_SET_STATUS, set_status) == 0);

/**
 * Register the unit's module.
 *
 * @param serial_number  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_pcu_config_module(vor_char* serial_number);

/**
 * Enable or disable the unit. Prints "Success" when the manager accepted.
 *
 * @param is_enabled  passed to the manager unchanged
 */
vor_int32 vor_cfg_set_pcu_config_enable(vor_uchar is_enabled);

VOR_DECLARATIONS_END

#endif
