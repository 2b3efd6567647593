/**
 * @file
 * modbus.h: Modbus on serial lines and over TCP, held by the Modbus manager (modbusmgr, SAP 20).
 *
 * The manager checks baud rates, parities and register ranges. Every call sets
 * vor_errno to 0 first.
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
 * Names the data channel a serial slave feeds.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param name         channel name, passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param set          the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_channel_name(vor_uchar modbus_port, vor_char* name, vor_uint32 slave_id, vor_boolean set);

/**
 * Sets a serial slave's baud rate.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param baudrate     text, passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param set          the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_baudrate(vor_uchar modbus_port, vor_char* baudrate, vor_uint32 slave_id, vor_boolean set);

/**
 * Sets a serial slave's parity.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param parity       text, passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param set          the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_parity(vor_uchar modbus_port, vor_char* parity, vor_uint32 slave_id, vor_boolean set);

/**
 * Sets a serial slave's data bits.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param data_bit     passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param set          the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_data_bit(vor_uchar modbus_port, vor_uint32 data_bit, vor_uint32 slave_id, vor_boolean set);

/**
 * Sets a serial slave's stop bits.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param stop_bit     passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param set          the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_stop_bit(vor_uchar modbus_port, vor_uchar stop_bit, vor_uint32 slave_id, vor_boolean set);

/**
 * Names a slave of a serial port.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param dev_mode     device mode, passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param set          the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_slave_id(vor_uchar modbus_port, vor_uchar dev_mode, vor_uint32 slave_id, vor_boolean set);

/**
 * Gives a serial slave a register group.
 *
 * @param modbus_port  serial port, passed to the manager as it is
 * @param grp_name     register group, passed to the manager as it is
 * @param slave_id     slave address, passed to the manager as it is
 * @param option       the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_reg_grp_name(vor_uchar modbus_port, vor_char* grp_name, vor_uint32 slave_id,
                                          vor_boolean option);

/**
 * Has a register polled.
 *
 * @param reg_grp_name  register group, passed to the manager as it is
 * @param reg_addr      passed to the manager as it is
 * @param opertn_type   passed to the manager as it is
 * @param mode          passed to the manager as it is
 * @param polling_freq  passed to the manager as it is, its unit too
 * @param option        the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_config_polling(vor_char* reg_grp_name, vor_uint32 reg_addr, vor_uchar opertn_type,
                                            vor_uchar mode, vor_uint32 polling_freq, vor_boolean option);

/**
 * Has a query polled.
 *
 * @param reg_grp_name  register group, passed to the manager as it is
 * @param query         query text, passed to the manager as it is
 * @param opertn_type   passed to the manager as it is
 * @param reg_type      passed to the manager as it is
 * @param mode          passed to the manager as it is
 * @param polling_freq  passed to the manager as it is, its unit too
 * @param option        the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_query_config_polling(vor_char* reg_grp_name, vor_char* query, vor_uchar opertn_type,
                                                  vor_uchar reg_type, vor_uchar mode, vor_uint32 polling_freq,
                                                  vor_boolean option);

/**
 * Takes a register's polling back.
 *
 * @param grp_name     register group, passed to the manager as it is
 * @param reg_addr     passed to the manager as it is
 * @param opertn_type  passed to the manager as it is
 * @param mode         passed to the manager as it is
 * @param option       the set flag, in the manager's coding
 */
vor_int32 vor_cfg_reset_modbus_config_mode(vor_char* grp_name, vor_uint32 reg_addr, vor_uchar opertn_type,
                                           vor_uchar mode, vor_boolean option);

/**
 * Describes a register of a group.
 *
 * @param grp_name     register group, passed to the manager as it is
 * @param reg_addr     passed to the manager as it is
 * @param reg_type     passed to the manager as it is
 * @param reg_no       register number, passed to the manager as it is
 * @param opertn_type  passed to the manager as it is
 * @param option       the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_reg_config(vor_char* grp_name, vor_uint32 reg_addr, vor_uchar reg_type, vor_uint32 reg_no,
                                        vor_uchar opertn_type, vor_boolean option);

/**
 * Describes a query of a group.
 *
 * @param grp_name     register group, passed to the manager as it is
 * @param query        query text, passed to the manager as it is
 * @param reg_type     passed to the manager as it is
 * @param opertn_type  passed to the manager as it is
 * @param option       the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_query_config(vor_char* grp_name, vor_char* query, vor_uchar reg_type,
                                          vor_uchar opertn_type, vor_boolean option);

/**
 * Sets a Modbus TCP service's device mode and protocol.
 *
 * @param service_name  passed to the manager as it is
 * @param dev_mode      device mode, passed to the manager as it is
 * @param protocol      passed to the manager as it is
 * @param set           the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_tcp_service_protocol(vor_char* service_name, vor_uchar dev_mode, vor_int16 protocol,
                                                  vor_boolean set);

/**
 * Names a slave of a TCP service.
 *
 * @param service_name  passed to the manager as it is
 * @param slave_id      slave address, passed to the manager as it is
 * @param set           the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_tcp_slave_id(vor_char* service_name, vor_uint32 slave_id, vor_boolean set);

/**
 * Sets a TCP slave's address.
 *
 * @param service_name  passed to the manager as it is
 * @param ip_address    text, passed to the manager as it is
 * @param slave_id      slave address, passed to the manager as it is
 * @param option        the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_tcp_slave_ip(vor_char* service_name, vor_char* ip_address, vor_uint32 slave_id,
                                          vor_boolean option);

/**
 * Sets a TCP slave's port.
 *
 * @param service_name  passed to the manager as it is
 * @param port_number   text, passed to the manager as it is
 * @param slave_id      slave address, passed to the manager as it is
 * @param option        the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_tcp_slave_port(vor_char* service_name, vor_char* port_number, vor_uint32 slave_id,
                                            vor_boolean option);

/**
 * Gives a TCP slave a register group.
 *
 * @param service_name  passed to the manager as it is
 * @param grp_name      register group, passed to the manager as it is
 * @param slave_id      slave address, passed to the manager as it is
 * @param option        the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_tcp_reg_grp_name(vor_char* service_name, vor_char* grp_name, vor_uint32 slave_id,
                                              vor_boolean option);

/**
 * Names the data channel a TCP slave feeds.
 *
 * @param service_name  passed to the manager as it is
 * @param name          channel name, passed to the manager as it is
 * @param slave_id      slave address, passed to the manager as it is
 * @param set           the set flag, in the manager's coding
 */
vor_int32 vor_cfg_set_modbus_tcp_channel_name(vor_char* service_name, vor_char* name, vor_uint32 slave_id,
                                              vor_boolean set);

VOR_DECLARATIONS_END

#endif
