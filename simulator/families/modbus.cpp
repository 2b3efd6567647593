#include "tables/families.hpp"

namespace vorsim::families {

constexpr Exchange port = request(0x14003);
constexpr Exchange group = request(0x14006);
constexpr Exchange tcp = request(0x14008);

constexpr std::string_view serial_slave = "modbus port {modbus_port} slave {slave_id}";
constexpr std::string_view group_register = "register group {grp_name} register {reg_addr}";
constexpr std::string_view group_query = "register group {grp_name} query {query}";
constexpr std::string_view polled_register = "register group {reg_grp_name} register {reg_addr}";
constexpr std::string_view polled_query = "register group {reg_grp_name} query {query}";
constexpr std::string_view tcp_slave = "service {service_name} slave {slave_id}";

constexpr Field modbus_port = int16(65, "modbus_port");
constexpr Field mode = int16(66, "mode");
constexpr Field polling_freq = uint32(67, "polling_freq");
constexpr Field channel_name = text(68, "name");
constexpr Field slave_id = uint32(73, "slave_id");
constexpr Field reg_grp_name = text(74, "reg_grp_name");
constexpr Field opertn_type = int16(75, "opertn_type");
constexpr Field reg_type = int16(76, "reg_type");
constexpr Field reg_addr = uint32(77, "reg_addr");
constexpr Field set = int16(79, "set");
constexpr Field service_name = text(82, "service_name");
constexpr Field query = text(86, "query");
constexpr Field dev_mode = int16(87, "dev_mode");

// The same two elements, as other calls name them.
constexpr Field grp_name = text(74, "grp_name");
constexpr Field option = int16(79, "option");

constexpr MessageRow rows[] = {
    {port, "vor_cfg_set_modbus_channel_name", serial_slave, chain(modbus_port, channel_name, set, slave_id)},
    {port, "vor_cfg_set_modbus_baudrate", serial_slave, chain(modbus_port, text(69, "baudrate"), set, slave_id)},
    {port, "vor_cfg_set_modbus_parity", serial_slave, chain(modbus_port, text(70, "parity"), set, slave_id)},
    {port, "vor_cfg_set_modbus_data_bit", serial_slave, chain(modbus_port, uint32(71, "data_bit"), set, slave_id)},
    {port, "vor_cfg_set_modbus_stop_bit", serial_slave, chain(modbus_port, uint32(72, "stop_bit"), set, slave_id)},
    {port, "vor_cfg_set_modbus_slave_id", serial_slave, chain(modbus_port, dev_mode, slave_id, set)},
    {port, "vor_cfg_set_modbus_reg_grp_name", serial_slave, chain(modbus_port, grp_name, option, slave_id)},

    {group, "vor_cfg_set_modbus_config_polling", polled_register,
     chain(reg_grp_name, reg_addr, opertn_type, mode, polling_freq, option), "mode"},
    {group, "vor_cfg_set_modbus_query_config_polling", polled_query,
     chain(reg_grp_name, query, opertn_type, mode, reg_type, polling_freq, option)},
    {group, "vor_cfg_reset_modbus_config_mode", group_register, chain(grp_name, reg_addr, opertn_type, mode, option),
     "mode"},
    {group, "vor_cfg_set_modbus_reg_config", group_register,
     chain(grp_name, reg_addr, opertn_type, reg_type, uint32(78, "reg_no"), option)},
    {group, "vor_cfg_set_modbus_query_config", group_query, chain(grp_name, query, opertn_type, reg_type, option)},

    {tcp, "vor_cfg_set_modbus_tcp_service_protocol", "service {service_name}",
     chain(service_name, dev_mode, int16(85, "protocol"), set)},
    {tcp, "vor_cfg_set_modbus_tcp_slave_id", tcp_slave, chain(service_name, slave_id, set)},
    {tcp, "vor_cfg_set_modbus_tcp_slave_ip", tcp_slave, chain(service_name, text(83, "ip_address"), slave_id, option)},
    {tcp, "vor_cfg_set_modbus_tcp_slave_port", tcp_slave,
     chain(service_name, text(84, "port_number"), slave_id, option)},
    {tcp, "vor_cfg_set_modbus_tcp_reg_grp_name", tcp_slave, chain(service_name, grp_name, option, slave_id)},
    {tcp, "vor_cfg_set_modbus_tcp_channel_name", tcp_slave, chain(service_name, channel_name, set, slave_id)},
};

extern const Family modbus{"modbusmgr", rows};

} // namespace vorsim::families
