/**
 * @file
 * serial.h: serial ports, held by the serial manager (serialmgr, SAP 16).
 *
 * This side has no table of permitted speeds or formats: the manager
 * decides. Every call but vor_cfg_serial_set_channel sets vor_errno to 0 first.
 * vor_cfg_set_serial_polling keeps the request's message buffer when none is left
 * for the answer.
 *
 * The data-bits, stop-bits, flow-control and parity calls never read their
 * answer: delivered requests return -4, whatever the manager said.
 */
#ifndef DEVICE_MGMT_SERIAL_H
#define DEVICE_MGMT_SERIAL_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_serialmgr_set_status_ {
    vor_int32 set_status;
} VOR_SERIALMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_SERIALMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_SERIALMGR_SET_STATUS, set_status) == 0);

/**
 * Set how often a port is polled.
 *
 * @param port_num      passed to the manager unchanged
 * @param polling_freq  in the manager's unit, passed to the manager unchanged
 * @param option        passed to the manager unchanged
 */
vor_int32 vor_cfg_set_serial_polling(vor_int16 port_num, vor_uint32 polling_freq, vor_int16 option);

/**
 * Set a port's data bits.
 *
 * @param port_num   passed to the manager unchanged
 * @param data_bits  passed to the manager unchanged
 * @return -4 delivered, the verdict unread (or no buffer); -3 not sent or not answered in time; -1 no
 *         endpoint; never 0
 */
vor_int32 vor_cfg_set_serial_databits(vor_int16 port_num, vor_int16 data_bits);

/**
 * Set a port's stop bits.
 *
 * @param port_num   passed to the manager unchanged
 * @param stop_bits  passed to the manager unchanged
 * @return -4 delivered, the verdict unread (or no buffer); -3 not sent or not answered in time; -1 no
 *         endpoint; never 0
 */
vor_int32 vor_cfg_set_serial_stopbits(vor_int16 port_num, vor_int16 stop_bits);

/**
 * Set a port's line speed.
 *
 * @param port_num  passed to the manager unchanged
 * @param speed     in the manager's unit, passed to the manager unchanged
 */
vor_int32 vor_cfg_set_serial_speed(vor_int16 port_num, vor_int32 speed);

/**
 * Set a port's flow control.
 *
 * @param port_num      passed to the manager unchanged
 * @param flow_control  passed to the manager unchanged
 * @return -4 delivered, the verdict unread (or no buffer); -3 not sent or not answered in time; -1 no
 *         endpoint; never 0
 */
vor_int32 vor_cfg_set_serial_flowcontrol(vor_int16 port_num, vor_int16 flow_control);

/**
 * Set a port's parity.
 *
 * @param port_num  passed to the manager unchanged
 * @param parity    passed to the manager unchanged
 * @return -4 delivered, the verdict unread (or no buffer); -3 not sent or not answered in time; -1 no
 *         endpoint; never 0
 */
vor_int32 vor_cfg_set_serial_parity(vor_int16 port_num, vor_int16 parity);

/**
 * Name the data channel a port feeds. vor_errno is left alone at the start.
 *
 * @param port_num      passed to the manager unchanged
 * @param channel_name  passed to the manager unchanged
 * @param set           accepted, never sent: naming and un-naming send the same message
 */
vor_int32 vor_cfg_serial_set_channel(vor_int16 port_num, vor_char* channel_name, vor_boolean set);

VOR_DECLARATIONS_END

#endif
