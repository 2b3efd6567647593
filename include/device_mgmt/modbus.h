/**
 * @file
 * modbus.h: Modbus on serial lines and over TCP, held by the Modbus manager (modbusmgr, SAP 20).
 *
 * The manager checks baud rates, parities and register ranges. Every call sets
 * vor_errno to 0 first.
 *
 * Message buffers kept: the request's, when none is left for the answer; both, when
 * the request's has no room, by the serial calls for channel name, baud rate,
 * parity, data bits, stop bits and slave, and the TCP calls for protocol, slave and
 * channel name.
 */
#ifndef DEVICE_MGMT_MODBUS_H
#define DEVICE_MGMT_MODBUS_H
/* SPDX-License-Identifier: MIT */

#include <device_mgmt/types.h>

VOR_DECLARATIONS_BEGIN

typedef struct _vor_modbusmgr_set_status_ {
    vor_int32 set_status;
} VOR_MODBUSMGR_SET_STATUS;
VOR_LAYOUT(sizeof(VOR_MODBUSMGR_SET_STATUS) == 4);
VOR_LAYOUT(offsetof(VOR_MODBUSMGR_SET_STATUS, set_status) == 0);

/**
 * Name the data channel a serial slave feeds.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param name         channel name, passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param set          the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_channel_name(vor_uchar modbus_port, vor_char* name, vor_uint32 slave_id, vor_boolean set);

/**
 * Set a serial slave's baud rate.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param baudrate     passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param set          the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_baudrate(vor_uchar modbus_port, vor_char* baudrate, vor_uint32 slave_id, vor_boolean set);

/**
 * Set a serial slave's parity.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param parity       passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param set          the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_parity(vor_uchar modbus_port, vor_char* parity, vor_uint32 slave_id, vor_boolean set);

/**
 * Set a serial slave's data bits.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param data_bit     passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param set          the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_data_bit(vor_uchar modbus_port, vor_uint32 data_bit, vor_uint32 slave_id, vor_boolean set);

/**
 * Set a serial slave's stop bits.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param stop_bit     passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param set          the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_stop_bit(vor_uchar modbus_port, vor_uchar stop_bit, vor_uint32 slave_id, vor_boolean set);

/**
 * Name a slave of a serial port.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param dev_mode     device mode, passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param set          the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_slave_id(vor_uchar modbus_port, vor_uchar dev_mode, vor_uint32 slave_id, vor_boolean set);

/**
 * Assign a register group to a serial slave.
 *
 * @param modbus_port  serial port, passed to the manager unchanged
 * @param grp_name     register group, passed to the manager unchanged
 * @param slave_id     slave address, passed to the manager unchanged
 * @param option       the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_reg_grp_name(vor_uchar modbus_port, vor_char* grp_name, vor_uint32 slave_id,
                                          vor_boolean option);

/**
 * Have a register polled.
 *
 * @param reg_grp_name  register group, passed to the manager unchanged
 * @param reg_addr      passed to the manager unchanged
 * @param opertn_type   passed to the manager unchanged
 * @param mode          passed to the manager unchanged
 * @param polling_freq  in the manager's unit, passed to the manager unchanged
 * @param option        the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_config_polling(vor_char* reg_grp_name, vor_uint32 reg_addr, vor_uchar opertn_type,
                                            vor_uchar mode, vor_uint32 polling_freq, vor_boolean option);

/**
 * Have a query polled.
 *
 * @param reg_grp_name  register group, passed to the manager unchanged
 * @param query         query, passed to the manager unchanged
 * @param opertn_type   passed to the manager unchanged
 * @param reg_type      passed to the manager unchanged
 * @param mode          passed to the manager unchanged
 * @param polling_freq  in the manager's unit, passed to the manager unchanged
 * @param option        the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_query_config_polling(vor_char* reg_grp_name, vor_char* query, vor_uchar opertn_type,
                                                  vor_uchar reg_type, vor_uchar mode, vor_uint32 polling_freq,
                                                  vor_boolean option);

/**
 * Reset a register's polling.
 *
 * @param grp_name     register group, passed to the manager unchanged
 * @param reg_addr     passed to the manager unchanged
 * @param opertn_type  passed to the manager unchanged
 * @param mode         passed to the manager unchanged
 * @param option       the set flag, as the manager codes it
 */
vor_int32 vor_cfg_reset_modbus_config_mode(vor_char* grp_name, vor_uint32 reg_addr, vor_uchar opertn_type,
                                           vor_uchar mode, vor_boolean option);

/**
 * Describe a register of a group.
 *
 * @param grp_name     register group, passed to the manager unchanged
 * @param reg_addr     passed to the manager unchanged
 * @param reg_type     passed to the manager unchanged
 * @param reg_no       register number, passed to the manager unchanged
 * @param opertn_type  passed to the manager unchanged
 * @param option       the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_reg_config(vor_char* grp_name, vor_uint32 reg_addr, vor_uchar reg_type, vor_uint32 reg_no,
                                        vor_uchar opertn_type, vor_boolean option);

/**
 * Describe a query of a group.
 *
 * @param grp_name     register group, passed to the manager unchanged
 * @param query        query, passed to the manager unchanged
 * @param reg_type     passed to the manager unchanged
 * @param opertn_type  passed to the manager unchanged
 * @param option       the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_query_config(vor_char* grp_name, vor_char* query, vor_uchar reg_type,
                                          vor_uchar opertn_type, vor_boolean option);

/**
 * Set a Modbus TCP service's device mode and protocol.
 *
 * @param service_name  passed to the manager unchanged
 * @param dev_mode      device mode, passed to the manager unchanged
 * @param protocol      passed to the manager unchanged
 * @param set           the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_tcp_service_protocol(vor_char* service_name, vor_uchar dev_mode, vor_int16 protocol,
                                                  vor_boolean set);

/**
 * Name a slave of a TCP service.
 *
 * @param service_name  passed to the manager unchanged
 * @param slave_id      slave address, passed to the manager unchanged
 * @param set           the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_tcp_slave_id(vor_char* service_name, vor_uint32 slave_id, vor_boolean set);

/**
 * Set a TCP slave's address.
 *
 * @param service_name  passed to the manager unchanged
 * @param ip_address    passed to the manager unchanged
 * @param slave_id      slave address, passed to the manager unchanged
 * @param option        the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_tcp_slave_ip(vor_char* service_name, vor_char* ip_address, vor_uint32 slave_id,
                                          vor_boolean option);

/**
 * Set a TCP slave's port.
 *
 * @param service_name  passed to the manager unchanged
 * @param port_number   passed to the manager unchanged
 * @param slave_id      slave address, passed to the manager unchanged
 * @param option        the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_tcp_slave_port(vor_char* service_name, vor_char* port_number, vor_uint32 slave_id,
                                            vor_boolean option);

/**
 * Assign a register group to a TCP slave.
 *
 * @param service_name  passed to the manager unchanged
 * @param grp_name      register group, passed to the manager unchanged
 * @param slave_id      slave address, passed to the manager unchanged
 * @param option        the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_tcp_reg_grp_name(vor_char* service_name, vor_char* grp_name, vor_uint32 slave_id,
                                              vor_boolean option);

/**
 * Name the data channel a TCP slave feeds.
 *
 * @param service_name  passed to the manager unchanged
 * @param name          channel name, passed to the manager unchanged
 * @param slave_id      slave address, passed to the manager unchanged
 * @param set           the set flag, as the manager codes it
 */
vor_int32 vor_cfg_set_modbus_tcp_channel_name(vor_char* service_name, vor_char* name, vor_uint32 slave_id,
                                              vor_boolean set);

VOR_DECLARATIONS_END

#endif
