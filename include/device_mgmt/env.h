/**
 * @file
 * env.h: the board's temperature, read by the platform manager (platmgr, SAP 2).
 *
 * Message buffers kept: the request's, when none is left for the answer.
 */
#ifndef DEVICE_MGMT_ENV_H
#define DEVICE_MGMT_ENV_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

/* The answer: a status, then the reading. */
typedef struct _sdk_api_status_ {
    vor_int32 status;
} VOR_SDK_API_STATUS;
VOR_LAYOUT(sizeof(VOR_SDK_API_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_SDK_API_STATUS, status) == 0);

typedef struct _vor_env_info_ {
    vor_int16 system_temperature;
} VOR_ENV_INFO;
VOR_LAYOUT(sizeof(VOR_ENV_INFO) == 2);
VOR_LAYOUT(offsetof(VOR_ENV_INFO, system_temperature) == 0);

/**
 * Read the board's temperature. Sets vor_errno to 0 first.
 *
 * @param system_temp  where the reading goes, in the manager's unit (the simulator's tenths of a degree); written only
 * when 0 is returned, with 0 if the manager accepted without a reading. A null pointer ends the program
 */
vor_int32 vor_cfg_get_system_temperature(vor_int16* system_temp);

VOR_DECLARATIONS_END

#endif
