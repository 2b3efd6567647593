/**
 * @file
 * lora.h: LoRa ports, held by the LoRa manager (SAP 24). vor_errno is left alone at the start.
 */
#ifndef DEVICE_MGMT_LORA_H
#define DEVICE_MGMT_LORA_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef vor_int32 tarn_int32;
typedef vor_int16 tarn_int16;
typedef vor_char tarn_char;
typedef vor_boolean tarn_boolean;

/**
 * Bind a port to a data channel.
 *
 * @param port_num      passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param set           accepted, never sent
 * @return the common codes; the manager must answer with the serial manager's message id 0x10004, any other id is -4
 */
tarn_int32 tarn_cfg_lora_set_channel(tarn_int16 port_num, tarn_char* channel_name, tarn_boolean set);

VOR_DECLARATIONS_END

#endif
