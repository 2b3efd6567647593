#include "commands.hpp"

namespace vorcfg {

static constexpr Row rows[] = {
    command<vor_cfg_set_modbus_channel_name>("modbus", "set-channel-name", "modbus_port name slave_id set",
                                             "Names the data channel a serial slave feeds.", "1 meter 17 1"),
    command<vor_cfg_set_modbus_baudrate>("modbus", "set-baudrate", "modbus_port baudrate slave_id set",
                                         "Sets a serial slave's baud rate.", "1 9600 17 1"),
    command<vor_cfg_set_modbus_parity>("modbus", "set-parity", "modbus_port parity slave_id set",
                                       "Sets a serial slave's parity.", "1 even 17 1"),
    command<vor_cfg_set_modbus_data_bit>("modbus", "set-data-bit", "modbus_port data_bit slave_id set",
                                         "Sets a serial slave's data bits.", "1 8 17 1"),
    command<vor_cfg_set_modbus_stop_bit>("modbus", "set-stop-bit", "modbus_port stop_bit slave_id set",
                                         "Sets a serial slave's stop bits.", "1 1 17 1"),
    command<vor_cfg_set_modbus_slave_id>("modbus", "set-slave-id", "modbus_port dev_mode slave_id set",
                                         "Adds or removes a slave on a serial port.", "1 1 17 1"),
    command<vor_cfg_set_modbus_reg_grp_name>("modbus", "set-reg-grp-name", "modbus_port grp_name slave_id option",
                                             "Gives a serial slave a register group.", "1 energy 17 1"),
    command<vor_cfg_set_modbus_config_polling>("modbus", "set-config-polling",
                                               "reg_grp_name reg_addr opertn_type mode polling_freq option",
                                               "Has a register polled.", "energy 40001 3 1 1000 1"),
    command<vor_cfg_set_modbus_query_config_polling>("modbus", "set-query-config-polling",
                                                     "reg_grp_name query opertn_type reg_type mode polling_freq option",
                                                     "Has a query polled.", "energy \"40001,2\" 3 1 1 1000 1"),
    command<vor_cfg_reset_modbus_config_mode>("modbus", "reset-config-mode",
                                              "grp_name reg_addr opertn_type mode option",
                                              "Takes a register's polling back.", "energy 40001 3 1 0"),
    command<vor_cfg_set_modbus_reg_config>("modbus", "set-reg-config",
                                           "grp_name reg_addr reg_type reg_no opertn_type option",
                                           "Adds or removes a register of a group.", "energy 40001 1 2 3 1"),
    command<vor_cfg_set_modbus_query_config>("modbus", "set-query-config", "grp_name query reg_type opertn_type option",
                                             "Adds or removes a query of a group.", "energy \"40001,2\" 1 3 1"),
    command<vor_cfg_set_modbus_tcp_service_protocol>(
        "modbus", "set-tcp-service-protocol", "service_name dev_mode protocol set",
        "Sets a Modbus TCP service's device mode and protocol.", "genset-bus 1 2 1"),
    command<vor_cfg_set_modbus_tcp_slave_id>("modbus", "set-tcp-slave-id", "service_name slave_id set",
                                             "Adds or removes a TCP slave.", "genset-bus 5 1"),
    command<vor_cfg_set_modbus_tcp_slave_ip>("modbus", "set-tcp-slave-ip", "service_name ip_address slave_id option",
                                             "Sets a TCP slave's address.", "genset-bus 192.168.1.40 5 1"),
    command<vor_cfg_set_modbus_tcp_slave_port>("modbus", "set-tcp-slave-port",
                                               "service_name port_number slave_id option", "Sets a TCP slave's port.",
                                               "genset-bus 502 5 1"),
    command<vor_cfg_set_modbus_tcp_reg_grp_name>("modbus", "set-tcp-reg-grp-name",
                                                 "service_name grp_name slave_id option",
                                                 "Gives a TCP slave a register group.", "genset-bus engine 5 1"),
    command<vor_cfg_set_modbus_tcp_channel_name>("modbus", "set-tcp-channel-name", "service_name name slave_id set",
                                                 "Names the data channel a TCP slave feeds.", "genset-bus genset 5 1"),
};

std::span<const Row> modbus_rows()
{
    return rows;
}

} // namespace vorcfg
