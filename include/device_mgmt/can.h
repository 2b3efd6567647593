/**
 * @file
 * can.h: CAN ports and peers, held by the CAN manager (canmgr, SAP 19).
 *
 * Every call sets vor_errno to 0 first.
 *
 * Message buffers kept: the request's, when none is left for the answer; both, when
 * the request's has no room for a channel name or a bit rate.
 */
#ifndef DEVICE_MGMT_CAN_H
#define DEVICE_MGMT_CAN_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_canmgr_set_status_ {
    vor_int32 set_status;
} VOR_CANMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_CANMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_CANMGR_SET_STATUS, set_status) == 0);

/**
 * Name the data channel a peer feeds.
 *
 * @param peer_id  passed to the manager unchanged
 * @param name     channel name, passed to the manager unchanged
 * @param set      passed to the manager unchanged
 */
vor_int32 vor_cfg_set_can_channel_name(vor_uint32 peer_id, vor_char* name, vor_boolean set);

/**
 * Set a port's bit rate.
 *
 * @param can_port  passed to the manager unchanged
 * @param baudrate  passed to the manager unchanged
 * @param set       passed to the manager unchanged
 */
vor_int32 vor_cfg_set_can_baudrate(vor_uchar can_port, vor_char* baudrate, vor_boolean set);

/**
 * Set a port's CAN identifier.
 *
 * @param port_num  passed to the manager unchanged
 * @param can_id    passed to the manager unchanged
 * @param option    passed to the manager unchanged
 */
vor_int32 vor_cfg_set_can_id(vor_int16 port_num, vor_uint32 can_id, vor_int16 option);

/**
 * Set a port's peer.
 *
 * @param port_num  passed to the manager unchanged
 * @param peer_id   passed to the manager unchanged
 * @param option    passed to the manager unchanged
 */
vor_int32 vor_cfg_set_can_peer_id(vor_int16 port_num, vor_uint32 peer_id, vor_int16 option);

/**
 * Set the message identifier of a peer.
 *
 * @param peer_id  passed to the manager unchanged
 * @param msg_id   passed to the manager unchanged
 * @param option   passed to the manager unchanged
 */
vor_int32 vor_cfg_set_can_msg_id(vor_uint32 peer_id, vor_uint32 msg_id, vor_int16 option);

VOR_DECLARATIONS_END

#endif
