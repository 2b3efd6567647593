// Modbus on serial lines and over TCP (modbusmgr). One tag space serves all
// eighteen calls; the order of the elements is each call's own.
#include <device_mgmt/modbus.h>

#include "request.hpp"

using namespace device_mgmt;

namespace {

constexpr Frame modbus = sap(20) | clears_errno;              // answers compared in all 32 bits, lone request kept
constexpr Frame modbus_guarded = modbus | null_payload_keeps; // checks the payload area first

constexpr MessageId serial_slave = 0x14003;
constexpr MessageId register_group = 0x14006;
constexpr MessageId tcp_slave = 0x14008;

} // namespace

vor_int32 vor_cfg_set_modbus_channel_name(vor_uchar modbus_port, vor_char* name, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, serial_slave>(int16<65>(modbus_port), str<68>(name), int16<79>(set),
                                                 int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_baudrate(vor_uchar modbus_port, vor_char* baudrate, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, serial_slave>(int16<65>(modbus_port), str<69>(baudrate), int16<79>(set),
                                                 int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_parity(vor_uchar modbus_port, vor_char* parity, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, serial_slave>(int16<65>(modbus_port), str<70>(parity), int16<79>(set),
                                                 int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_data_bit(vor_uchar modbus_port, vor_uint32 data_bit, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, serial_slave>(int16<65>(modbus_port), int32<71>(data_bit), int16<79>(set),
                                                 int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_stop_bit(vor_uchar modbus_port, vor_uchar stop_bit, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, serial_slave>(int16<65>(modbus_port), int32<72>(stop_bit), int16<79>(set),
                                                 int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_slave_id(vor_uchar modbus_port, vor_uchar dev_mode, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, serial_slave>(int16<65>(modbus_port), int16<87>(dev_mode), int32<73>(slave_id),
                                                 int16<79>(set));
}

vor_int32 vor_cfg_set_modbus_reg_grp_name(vor_uchar modbus_port, vor_char* grp_name, vor_uint32 slave_id,
                                          vor_boolean option)
{
    return request<modbus, serial_slave>(int16<65>(modbus_port), str<74>(grp_name), int16<79>(option),
                                         int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_config_polling(vor_char* reg_grp_name, vor_uint32 reg_addr, vor_uchar opertn_type,
                                            vor_uchar mode, vor_uint32 polling_freq, vor_boolean option)
{
    return request<modbus, register_group>(str<74>(reg_grp_name), int32<77>(reg_addr), int16<75>(opertn_type),
                                           int16<66>(mode), int32<67>(polling_freq), int16<79>(option));
}

vor_int32 vor_cfg_set_modbus_query_config_polling(vor_char* reg_grp_name, vor_char* query, vor_uchar opertn_type,
                                                  vor_uchar reg_type, vor_uchar mode, vor_uint32 polling_freq,
                                                  vor_boolean option)
{
    return request<modbus, register_group>(str<74>(reg_grp_name), str<86>(query), int16<75>(opertn_type),
                                           int16<66>(mode), int16<76>(reg_type), int32<67>(polling_freq),
                                           int16<79>(option));
}

vor_int32 vor_cfg_reset_modbus_config_mode(vor_char* grp_name, vor_uint32 reg_addr, vor_uchar opertn_type,
                                           vor_uchar mode, vor_boolean option)
{
    return request<modbus, register_group>(str<74>(grp_name), int32<77>(reg_addr), int16<75>(opertn_type),
                                           int16<66>(mode), int16<79>(option));
}

vor_int32 vor_cfg_set_modbus_reg_config(vor_char* grp_name, vor_uint32 reg_addr, vor_uchar reg_type, vor_uint32 reg_no,
                                        vor_uchar opertn_type, vor_boolean option)
{
    return request<modbus, register_group>(str<74>(grp_name), int32<77>(reg_addr), int16<75>(opertn_type),
                                           int16<76>(reg_type), int32<78>(reg_no), int16<79>(option));
}

vor_int32 vor_cfg_set_modbus_query_config(vor_char* grp_name, vor_char* query, vor_uchar reg_type,
                                          vor_uchar opertn_type, vor_boolean option)
{
    return request<modbus, register_group>(str<74>(grp_name), str<86>(query), int16<75>(opertn_type),
                                           int16<76>(reg_type), int16<79>(option));
}

vor_int32 vor_cfg_set_modbus_tcp_service_protocol(vor_char* service_name, vor_uchar dev_mode, vor_int16 protocol,
                                                  vor_boolean set)
{
    return request<modbus_guarded, tcp_slave>(str<82>(service_name), int16<87>(dev_mode), int16<85>(protocol),
                                              int16<79>(set));
}

vor_int32 vor_cfg_set_modbus_tcp_slave_id(vor_char* service_name, vor_uint32 slave_id, vor_boolean set)
{
    return request<modbus_guarded, tcp_slave>(str<82>(service_name), int32<73>(slave_id), int16<79>(set));
}

vor_int32 vor_cfg_set_modbus_tcp_slave_ip(vor_char* service_name, vor_char* ip_address, vor_uint32 slave_id,
                                          vor_boolean option)
{
    return request<modbus, tcp_slave>(str<82>(service_name), str<83>(ip_address), int32<73>(slave_id),
                                      int16<79>(option));
}

vor_int32 vor_cfg_set_modbus_tcp_slave_port(vor_char* service_name, vor_char* port_number, vor_uint32 slave_id,
                                            vor_boolean option)
{
    return request<modbus, tcp_slave>(str<82>(service_name), str<84>(port_number), int32<73>(slave_id),
                                      int16<79>(option));
}

vor_int32 vor_cfg_set_modbus_tcp_reg_grp_name(vor_char* service_name, vor_char* grp_name, vor_uint32 slave_id,
                                              vor_boolean option)
{
    return request<modbus, tcp_slave>(str<82>(service_name), str<74>(grp_name), int16<79>(option), int32<73>(slave_id));
}

vor_int32 vor_cfg_set_modbus_tcp_channel_name(vor_char* service_name, vor_char* name, vor_uint32 slave_id,
                                              vor_boolean set)
{
    return request<modbus_guarded, tcp_slave>(str<82>(service_name), str<68>(name), int16<79>(set),
                                              int32<73>(slave_id));
}
