/*
 * straight_line.c: what the library is measured against. The same calls as a C
 * programmer writes them by hand: one function per call, each spelling out its
 * whole exchange, every failing path with what its family gives back there.
 *
 * Macros write the functions down; what they expand to shares nothing.
 */
#include <device_mgmt.h>
#include <vorinfra.h>

#define STRING(tag, value) vor_tlv_chain_add_str(&chain, tag, value);
#define INT16(tag, value) vor_tlv_chain_add_vor_int16(&chain, tag, (vor_int16)(value));
#define INT32(tag, value) vor_tlv_chain_add_vor_int32(&chain, tag, (vor_int32)(value));

/* How a call begins, and what it gives back. */
#define NOTHING
#define CLEAR_ERRNO vor_errno = 0
#define DROP_REQUEST vor_ipc_drop_msg_buf(&request)
#define DROP_RESPONSE vor_ipc_drop_msg_buf(&response)
#define DROP_BOTH                                                                                                      \
    DROP_REQUEST;                                                                                                      \
    DROP_RESPONSE

/* Where the payload goes. */
#define UNCHECKED payload = vor_ipc_get_payload_ptr(&request, 0)
#define CHECKED(drops)                                                                                                 \
    UNCHECKED;                                                                                                         \
    if (payload == NULL) {                                                                                             \
        drops;                                                                                                         \
        return -4;                                                                                                     \
    }
#define BEHIND_OPTION                                                                                                  \
    payload = vor_ipc_get_meta_data_ptr(&request);                                                                     \
    if (payload == NULL) {                                                                                             \
        DROP_BOTH;                                                                                                     \
        return -4;                                                                                                     \
    }                                                                                                                  \
    *payload = config_option;                                                                                          \
    payload = vor_ipc_get_payload_ptr(&request, 1);                                                                    \
    if (payload == NULL) {                                                                                             \
        DROP_BOTH;                                                                                                     \
        return -4;                                                                                                     \
    }

/* What becomes of an answer. */
#define OPCODE (((const VOR_IPC_MSG_HDR*)response.data_ptr)->opcode)
#define LOW_HALF_OPCODE ((vor_uint16)OPCODE)
#define FIND_STATUS(opcode, id, when_empty)                                                                            \
    if (opcode == id) {                                                                                                \
        status = vor_ipc_get_payload_ptr(&response, 0);                                                                \
        when_empty;                                                                                                    \
    }
#define KEEP_WHEN_EMPTY                                                                                                \
    if (status == NULL) {                                                                                              \
        return -4;                                                                                                     \
    }
#define READ_STATUS(drops, drop_request, drop_rest)                                                                    \
    if (status == NULL) {                                                                                              \
        drops;                                                                                                         \
        return -4;                                                                                                     \
    }                                                                                                                  \
    drop_request;                                                                                                      \
    if (*status != 0) {                                                                                                \
        vor_errno = *status;                                                                                           \
        drop_rest;                                                                                                     \
        return -1;                                                                                                     \
    }                                                                                                                  \
    drop_rest;                                                                                                         \
    return 0;
#define JUDGE(opcode, id)                                                                                              \
    FIND_STATUS(opcode, id, NOTHING)                                                                                   \
    READ_STATUS(DROP_BOTH, DROP_REQUEST, DROP_RESPONSE)
#define JUDGE_HOLDING_BOTH(opcode, id)                                                                                 \
    FIND_STATUS(opcode, id, NOTHING)                                                                                   \
    READ_STATUS(DROP_BOTH, NOTHING, DROP_BOTH)
#define JUDGE_NON_EMPTY(opcode, id)                                                                                    \
    FIND_STATUS(opcode, id, KEEP_WHEN_EMPTY)                                                                           \
    READ_STATUS(DROP_BOTH, NOTHING, DROP_BOTH)
#define JUDGE_REQUEST_DROPPED(opcode, id)                                                                              \
    DROP_REQUEST;                                                                                                      \
    FIND_STATUS(opcode, id, KEEP_WHEN_EMPTY)                                                                           \
    READ_STATUS(DROP_RESPONSE, NOTHING, DROP_RESPONSE)
#define JUDGE_UNREAD(opcode, id)                                                                                       \
    (void)status;                                                                                                      \
    DROP_BOTH;                                                                                                         \
    return -4;

/* The type is the library's own: a wrong parameter does not compile. */
#define CALL(call, parameters, declare_response, begin)                                                                \
    __typeof__(call) straight_##call;                                                                                  \
    vor_int32 straight_##call parameters                                                                               \
    {                                                                                                                  \
        VOR_IPC_HANDLE* handle;                                                                                        \
        VOR_IPC_MSG_REF request;                                                                                       \
        declare_response;                                                                                              \
        vor_uchar* payload;                                                                                            \
        vor_int32 size = 0;                                                                                            \
        TLV_CHAIN chain;                                                                                               \
        begin;                                                                                                         \
        handle = vor_cfg_get_ipc_endpoint();                                                                           \
        if (handle == NULL) {                                                                                          \
            return -1;                                                                                                 \
        }                                                                                                              \
        if (vor_ipc_get_buffer(&request) != 0) {                                                                       \
            return -4;                                                                                                 \
        }

#define TAKE_RESPONSE(lone)                                                                                            \
    if (vor_ipc_get_buffer(&response) != 0) {                                                                          \
        lone;                                                                                                          \
        return -4;                                                                                                     \
    }

#define PAYLOAD(place, elements)                                                                                       \
    place;                                                                                                             \
    vor_tlv_chain_init(&chain);                                                                                        \
    elements;                                                                                                          \
    vor_tlv_chain_serialize(&chain, payload, &size);                                                                   \
    vor_tlv_chain_free(&chain, 0);

#define ANSWERED(call, parameters, begin, lone, place, elements, sap, id, judge, opcode)                               \
    CALL(call, parameters, VOR_IPC_MSG_REF response; const vor_int32* status = NULL, begin)                            \
    TAKE_RESPONSE(lone)                                                                                                \
    PAYLOAD(place, elements)                                                                                           \
    if (vor_ipc_request_response(handle, sap, id, &request, &response, (vor_uint16)size, 0) != 0) {                    \
        DROP_BOTH;                                                                                                     \
        return -3;                                                                                                     \
    }                                                                                                                  \
    judge(opcode, id)                                                                                                  \
    }

/* The families' policies. */
#define GPIO(call, parameters, place, elements)                                                                        \
    ANSWERED(call, parameters, CLEAR_ERRNO, NOTHING, place, elements, 4, 0x4004, JUDGE, LOW_HALF_OPCODE)
#define ADC(call, parameters, place, elements)                                                                         \
    ANSWERED(call, parameters, CLEAR_ERRNO, NOTHING, place, elements, 5, 0x5004, JUDGE, LOW_HALF_OPCODE)
#define SERIAL(call, parameters, begin, lone, place, judge, elements)                                                  \
    ANSWERED(call, parameters, begin, lone, place, elements, 16, 0x10004, judge, OPCODE)
#define SENSOR(call, parameters, id, elements)                                                                         \
    ANSWERED(call, parameters, CLEAR_ERRNO, DROP_REQUEST, CHECKED(DROP_BOTH), elements, 14, id, JUDGE_REQUEST_DROPPED, \
             LOW_HALF_OPCODE)
#define SUB1G(call, parameters, id, place, elements)                                                                   \
    ANSWERED(call, parameters, CLEAR_ERRNO, DROP_REQUEST, place, elements, 8, id, JUDGE, LOW_HALF_OPCODE)
#define KEPT_32(call, parameters, sap, id, place, elements)                                                            \
    ANSWERED(call, parameters, CLEAR_ERRNO, NOTHING, place, elements, sap, id, JUDGE, OPCODE)
#define CAN(call, parameters, place, elements) KEPT_32(call, parameters, 19, 0x13003, place, elements)
#define GSM(call, parameters, id, elements) KEPT_32(call, parameters, 12, id, UNCHECKED, elements)
#define NTP(call, parameters, id, elements) KEPT_32(call, parameters, 22, id, UNCHECKED, elements)
#define MODBUS(call, parameters, id, place, elements) KEPT_32(call, parameters, 20, id, place, elements)
#define TOWER(call, parameters, id, elements) KEPT_32(call, parameters, 240, id, UNCHECKED, elements)
#define DROPPED_32(call, parameters, sap, id, elements)                                                                \
    ANSWERED(call, parameters, CLEAR_ERRNO, DROP_REQUEST, UNCHECKED, elements, sap, id, JUDGE, OPCODE)
#define MQTT(call, parameters, judge, elements)                                                                        \
    ANSWERED(call, parameters, NOTHING, DROP_REQUEST, BEHIND_OPTION, elements, 15, 0xf005, judge, LOW_HALF_OPCODE)
#define MQTT_SESSION(call, parameters, id, elements)                                                                   \
    CALL(call, parameters, NOTHING, NOTHING)                                                                           \
    PAYLOAD(CHECKED(DROP_REQUEST), elements)                                                                           \
    if (vor_ipc_send(handle, 15, id, &request, (vor_uint16)size, 0) != 0) {                                            \
        DROP_REQUEST;                                                                                                  \
        return -3;                                                                                                     \
    }                                                                                                                  \
    return 0;                                                                                                          \
    }
#define CREDENTIAL(mode, option, text)                                                                                 \
    if (mode <= 1 && option >= 1 && option <= 3) {                                                                     \
        STRING((vor_uint16)((mode == 1 ? 32 : 35) + option), text)                                                     \
    }
#define SNMP_NOTICE(call, parameters, id, elements)                                                                    \
    CALL(call, parameters, VOR_IPC_MSG_REF response, CLEAR_ERRNO)                                                      \
    TAKE_RESPONSE(DROP_REQUEST)                                                                                        \
    PAYLOAD(UNCHECKED, elements)                                                                                       \
    return vor_ipc_send(handle, 21, id, &request, (vor_uint16)size, 0);                                                \
    }

#pragma GCC diagnostic ignored "-Wunused-parameter"

GPIO(vor_cfg_set_gpio_direction, (vor_int16 port, vor_int16 direction, vor_int16 option), UNCHECKED,
     INT16(1, port) INT16(2, direction) INT16(6, option))
GPIO(vor_cfg_set_gpio_config_interrupt, (vor_int16 port, vor_int16 mode, vor_uchar type, vor_int16 option), UNCHECKED,
     INT16(1, port) INT16(3, mode) INT32(7, type) INT16(6, option))
GPIO(vor_cfg_set_gpio_config_polling, (vor_int16 port, vor_int16 mode, vor_uint32 frequency, vor_int16 option),
     UNCHECKED, INT16(1, port) INT16(3, mode) INT32(4, frequency) INT16(6, option))
GPIO(vor_cfg_set_gpio_channel_name, (vor_uchar port, vor_char* name, vor_boolean set), CHECKED(NOTHING),
     INT16(1, port) STRING(5, name) INT16(6, set))

ADC(vor_cfg_set_adc_config_polling,
    (vor_int16 adc, vor_int16 channel, vor_int16 mode, vor_uint32 frequency, vor_int16 option), UNCHECKED,
    INT16(1, adc) INT16(2, channel) INT16(3, mode) INT32(5, frequency) INT16(7, option))
ADC(vor_cfg_set_adc_channel_name, (vor_uchar adc, vor_uchar channel, vor_char* name, vor_boolean set), CHECKED(NOTHING),
    INT16(1, adc) INT16(2, channel) STRING(6, name) INT16(7, set))
ADC(vor_cfg_reset_adc_config_mode, (vor_int16 adc, vor_int16 channel, vor_int16 mode, vor_int16 option), UNCHECKED,
    INT16(1, adc) INT16(2, channel) INT16(3, mode) INT16(7, option))

SERIAL(vor_cfg_set_serial_polling, (vor_int16 port, vor_uint32 frequency, vor_int16 option), CLEAR_ERRNO, NOTHING,
       UNCHECKED, JUDGE, INT16(1, port) INT32(17, frequency) INT16(16, option))
SERIAL(vor_cfg_set_serial_databits, (vor_int16 port, vor_int16 bits), CLEAR_ERRNO, DROP_REQUEST, UNCHECKED,
       JUDGE_UNREAD, INT16(1, port) INT16(3, bits))
SERIAL(vor_cfg_set_serial_stopbits, (vor_int16 port, vor_int16 bits), CLEAR_ERRNO, DROP_REQUEST, UNCHECKED,
       JUDGE_UNREAD, INT16(1, port) INT16(4, bits))
SERIAL(vor_cfg_set_serial_speed, (vor_int16 port, vor_int32 speed), CLEAR_ERRNO, DROP_REQUEST, UNCHECKED, JUDGE,
       INT16(1, port) INT32(5, speed))
SERIAL(vor_cfg_set_serial_flowcontrol, (vor_int16 port, vor_int16 control), CLEAR_ERRNO, DROP_REQUEST, UNCHECKED,
       JUDGE_UNREAD, INT16(1, port) INT16(6, control))
SERIAL(vor_cfg_set_serial_parity, (vor_int16 port, vor_int16 parity), CLEAR_ERRNO, DROP_REQUEST, UNCHECKED,
       JUDGE_UNREAD, INT16(1, port) INT16(7, parity))
SERIAL(vor_cfg_serial_set_channel, (vor_int16 port, vor_char* name, vor_boolean set), NOTHING, DROP_REQUEST,
       CHECKED(DROP_BOTH), JUDGE, INT16(1, port) STRING(2, name))

SENSOR(vor_cfg_set_flow_data_template, (vor_char * sensor, vor_char* flow, vor_char* file, vor_boolean set), 0xe003,
       INT16(6, set) STRING(1, sensor) STRING(2, flow) STRING(4, file))
SENSOR(vor_cfg_set_flow_registration_template, (vor_char * sensor, vor_char* flow, vor_char* file, vor_boolean set),
       0xe003, INT16(6, set) STRING(1, sensor) STRING(2, flow) STRING(5, file))
SENSOR(vor_cfg_set_sensor_flow_chain, (vor_char * sensor, vor_char* flow, vor_char* name, vor_boolean set), 0xe003,
       INT16(6, set) STRING(1, sensor) STRING(2, flow) STRING(3, name))
SENSOR(vor_cfg_set_sensor_channel, (vor_char * sensor, vor_char* name, vor_boolean set), 0xe005,
       INT16(6, set) STRING(1, sensor) STRING(7, name))

SUB1G(vor_cfg_set_sub1g_frequency, (vor_int16 interface, vor_int16 frequency), 0x8004, UNCHECKED,
      INT16(1, interface) INT16(2, frequency))
SUB1G(vor_cfg_sub1g_set_channel, (vor_int16 port, vor_char* stream, vor_uchar classifier, vor_char* name), 0x8004,
      CHECKED(DROP_BOTH), INT16(1, port) STRING(3, stream) INT16(4, classifier) STRING(5, name))
SUB1G(vor_cfg_set_sub1g_power, (vor_int16 interface, vor_int16 power), 0x800b, UNCHECKED,
      INT16(1, interface) INT16(9, power))

CAN(vor_cfg_set_can_channel_name, (vor_uint32 peer, vor_char* name, vor_boolean set), CHECKED(NOTHING),
    STRING(4, name) INT16(10, set) INT32(11, peer))
CAN(vor_cfg_set_can_baudrate, (vor_uchar port, vor_char* rate, vor_boolean set), CHECKED(NOTHING),
    INT16(1, port) STRING(5, rate) INT16(10, set))
CAN(vor_cfg_set_can_id, (vor_int16 port, vor_uint32 id, vor_int16 option), UNCHECKED,
    INT16(1, port) INT32(6, id) INT16(10, option))
CAN(vor_cfg_set_can_peer_id, (vor_int16 port, vor_uint32 peer, vor_int16 option), UNCHECKED,
    INT16(1, port) INT32(11, peer) INT16(10, option))
CAN(vor_cfg_set_can_msg_id, (vor_uint32 peer, vor_uint32 message, vor_int16 option), UNCHECKED,
    INT32(11, peer) INT32(12, message) INT16(10, option))

GSM(vor_cfg_gsm_set_access_point_name, (vor_uchar port, vor_char* name, vor_uchar option), 0xc00a,
    INT16(1, port) STRING(2, name) INT16(8, option))
GSM(vor_cfg_gsm_set_username, (vor_uchar port, vor_char* name, vor_uchar option), 0xc00a,
    INT16(1, port) STRING(4, name) INT16(8, option))
GSM(vor_cfg_gsm_set_password, (vor_uchar port, vor_char* password, vor_uchar option), 0xc00a,
    INT16(1, port) STRING(3, password) INT16(8, option))
GSM(vor_cfg_gsm_activate, (vor_uchar port), 0xc002, INT16(1, port))

NTP(vor_set_ntp_server, (vor_char * server, vor_uint32 port, vor_int32 option), 0x16001,
    STRING(1, server) INT32(2, port) INT16(4, option))
NTP(vor_set_timezone_string, (vor_uint32 zone, vor_int32 option), 0x16002, INT32(3, zone) INT16(4, option))

MODBUS(vor_cfg_set_modbus_channel_name, (vor_uchar port, vor_char* name, vor_uint32 slave, vor_boolean set), 0x14003,
       CHECKED(NOTHING), INT16(65, port) STRING(68, name) INT16(79, set) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_baudrate, (vor_uchar port, vor_char* rate, vor_uint32 slave, vor_boolean set), 0x14003,
       CHECKED(NOTHING), INT16(65, port) STRING(69, rate) INT16(79, set) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_parity, (vor_uchar port, vor_char* parity, vor_uint32 slave, vor_boolean set), 0x14003,
       CHECKED(NOTHING), INT16(65, port) STRING(70, parity) INT16(79, set) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_data_bit, (vor_uchar port, vor_uint32 bit, vor_uint32 slave, vor_boolean set), 0x14003,
       CHECKED(NOTHING), INT16(65, port) INT32(71, bit) INT16(79, set) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_stop_bit, (vor_uchar port, vor_uchar bit, vor_uint32 slave, vor_boolean set), 0x14003,
       CHECKED(NOTHING), INT16(65, port) INT32(72, bit) INT16(79, set) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_slave_id, (vor_uchar port, vor_uchar mode, vor_uint32 slave, vor_boolean set), 0x14003,
       CHECKED(NOTHING), INT16(65, port) INT16(87, mode) INT32(73, slave) INT16(79, set))
MODBUS(vor_cfg_set_modbus_reg_grp_name, (vor_uchar port, vor_char* group, vor_uint32 slave, vor_boolean option),
       0x14003, UNCHECKED, INT16(65, port) STRING(74, group) INT16(79, option) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_config_polling,
       (vor_char * group, vor_uint32 address, vor_uchar operation, vor_uchar mode, vor_uint32 frequency,
        vor_boolean option),
       0x14006, UNCHECKED,
       STRING(74, group) INT32(77, address) INT16(75, operation) INT16(66, mode) INT32(67, frequency) INT16(79, option))
MODBUS(vor_cfg_set_modbus_query_config_polling,
       (vor_char * group, vor_char* query, vor_uchar operation, vor_uchar type, vor_uchar mode, vor_uint32 frequency,
        vor_boolean option),
       0x14006, UNCHECKED,
       STRING(74, group) STRING(86, query) INT16(75, operation) INT16(66, mode) INT16(76, type) INT32(67, frequency)
           INT16(79, option))
MODBUS(vor_cfg_reset_modbus_config_mode,
       (vor_char * group, vor_uint32 address, vor_uchar operation, vor_uchar mode, vor_boolean option), 0x14006,
       UNCHECKED, STRING(74, group) INT32(77, address) INT16(75, operation) INT16(66, mode) INT16(79, option))
MODBUS(vor_cfg_set_modbus_reg_config,
       (vor_char * group, vor_uint32 address, vor_uchar type, vor_uint32 number, vor_uchar operation,
        vor_boolean option),
       0x14006, UNCHECKED,
       STRING(74, group) INT32(77, address) INT16(75, operation) INT16(76, type) INT32(78, number) INT16(79, option))
MODBUS(vor_cfg_set_modbus_query_config,
       (vor_char * group, vor_char* query, vor_uchar type, vor_uchar operation, vor_boolean option), 0x14006, UNCHECKED,
       STRING(74, group) STRING(86, query) INT16(75, operation) INT16(76, type) INT16(79, option))
MODBUS(vor_cfg_set_modbus_tcp_service_protocol,
       (vor_char * service, vor_uchar mode, vor_int16 protocol, vor_boolean set), 0x14008, CHECKED(NOTHING),
       STRING(82, service) INT16(87, mode) INT16(85, protocol) INT16(79, set))
MODBUS(vor_cfg_set_modbus_tcp_slave_id, (vor_char * service, vor_uint32 slave, vor_boolean set), 0x14008,
       CHECKED(NOTHING), STRING(82, service) INT32(73, slave) INT16(79, set))
MODBUS(vor_cfg_set_modbus_tcp_slave_ip, (vor_char * service, vor_char* address, vor_uint32 slave, vor_boolean option),
       0x14008, UNCHECKED, STRING(82, service) STRING(83, address) INT32(73, slave) INT16(79, option))
MODBUS(vor_cfg_set_modbus_tcp_slave_port, (vor_char * service, vor_char* port, vor_uint32 slave, vor_boolean option),
       0x14008, UNCHECKED, STRING(82, service) STRING(84, port) INT32(73, slave) INT16(79, option))
MODBUS(vor_cfg_set_modbus_tcp_reg_grp_name, (vor_char * service, vor_char* group, vor_uint32 slave, vor_boolean option),
       0x14008, UNCHECKED, STRING(82, service) STRING(74, group) INT16(79, option) INT32(73, slave))
MODBUS(vor_cfg_set_modbus_tcp_channel_name, (vor_char * service, vor_char* name, vor_uint32 slave, vor_boolean set),
       0x14008, CHECKED(NOTHING), STRING(82, service) STRING(68, name) INT16(79, set) INT32(73, slave))

TOWER(vor_cfg_towermon_obj_aircon_channel_name, (vor_char * sensor, vor_char* name, vor_uchar option), 0x15003,
      STRING(19, sensor) STRING(6, name) INT16(4, option))
TOWER(vor_cfg_towermon_obj_battery_channel_name, (vor_char * sensor, vor_char* name, vor_uchar option), 0x15004,
      STRING(30, sensor) STRING(6, name) INT16(4, option))
TOWER(vor_cfg_towermon_obj_aircon_physical_id, (vor_char * sensor, vor_uchar id, vor_uchar option), 0x15003,
      STRING(6, sensor) INT16(23, id))
TOWER(vor_cfg_towermon_obj_ups_physical_id, (vor_char * sensor, vor_uchar id, vor_uchar option), 0x15009,
      STRING(19, sensor) INT16(23, id))
TOWER(vor_cfg_towermon_obj_battery_ups_name, (vor_char * battery, vor_char* ups, vor_uchar option), 0x15004,
      STRING(30, battery) STRING(31, ups))
TOWER(vor_cfg_towermon_obj_battery_string_num, (vor_char * battery, vor_uint16 number, vor_uchar option), 0x15004,
      STRING(30, battery) INT16(32, number))
TOWER(vor_cfg_towermon_obj_genset_alerts,
      (vor_char * sensor, vor_int32 a, vor_int32 b, vor_int32 c, vor_int32 d, vor_int32 e, vor_int32 f, vor_int32 g,
       vor_int32 h, vor_int32 i),
      0x15006,
      STRING(19, sensor) INT32(7, a) INT32(8, b) INT32(9, c) INT32(10, d) INT32(11, e) INT32(12, f) INT32(13, g)
          INT32(14, h) INT32(15, i))
TOWER(vor_cfg_towermon_obj_ups_alerts, (vor_char * sensor, vor_int32 a, vor_int32 b), 0x15009,
      STRING(19, sensor) INT32(7, a) INT32(8, b))
TOWER(vor_cfg_towermon_obj_temp_sensor_threshold_set,
      (vor_char * sensor, vor_int16 threshold, vor_int16 criticality, vor_int32 value, vor_uchar option), 0x1500b,
      STRING(19, sensor) INT16(20, threshold) INT16(21, criticality) INT16(22, value) INT16(4, option))
TOWER(vor_cfg_towermon_set_tower_name, (vor_char * name, vor_uchar option), 0x15011, STRING(24, name))
TOWER(vor_cfg_towermon_set_tower_location, (vor_char * location, vor_uchar option), 0x15012, STRING(25, location))
TOWER(vor_cfg_towermon_set_tower_id, (vor_uint32 id, vor_uchar option), 0x15013, INT32(26, id))
TOWER(vor_cfg_set_device_name, (vor_char * name, vor_uchar option), 0x15014, STRING(27, name))
TOWER(vor_cfg_set_device_location, (vor_char * location, vor_uchar option), 0x15015, STRING(28, location))
TOWER(vor_cfg_set_device_id, (vor_uint32 id, vor_uchar option), 0x15016, INT32(29, id))

DROPPED_32(vor_cfg_set_pcu_config_module, (vor_char * serial_number), 23, 0x17001, STRING(1, serial_number))
DROPPED_32(vor_cfg_set_snmp_server_v3_user_access, (vor_char * user, vor_uchar access), 21, 0x15001,
           STRING(40, user) INT16(2, access))
DROPPED_32(vor_cfg_set_snmp_server_v3_engine_id, (vor_char * id), 21, 0x15001, STRING(41, id))
DROPPED_32(vor_cfg_set_snmp_server_v3_credentials, (vor_char * text, vor_uchar mode, vor_uchar option), 21, 0x15001,
           CREDENTIAL(mode, option, text) INT16(4, option))
SNMP_NOTICE(vor_cfg_set_snmp_v2_server_community_name, (vor_char * name, vor_uchar mode, vor_uchar option), 0x15017,
            STRING(1, name) INT16(2, mode) INT16(4, option))
SNMP_NOTICE(vor_cfg_set_snmp_v2_trap_server, (vor_char * address, vor_char* name, vor_uchar option), 0x15017,
            STRING(3, address) STRING(5, name) INT16(4, option))
SNMP_NOTICE(vor_cfg_set_snmp_server_enable, (vor_uchar enabled), 0x15001, INT16(39, enabled))

MQTT(vor_cfg_set_mqtt_username_and_password,
     (vor_char * service, vor_uchar protocol, vor_char* user, vor_char* password, vor_uchar config_option),
     JUDGE_HOLDING_BOTH, STRING(10, service) INT16(6, protocol) STRING(12, user) STRING(13, password))
MQTT(vor_cfg_set_mqtt_application, (vor_char * service, vor_uchar protocol, vor_char* name, vor_uchar config_option),
     JUDGE_NON_EMPTY, STRING(10, service) INT16(6, protocol) STRING(11, name))
MQTT(vor_cfg_set_mqtt_bind_addr,
     (vor_char * service, vor_uchar protocol, vor_uint16 interface, vor_uchar config_option), JUDGE_NON_EMPTY,
     STRING(10, service) INT16(6, protocol) INT16(30, interface))
MQTT(vor_cfg_set_mqtt_registration_template,
     (vor_char * service, vor_uchar protocol, vor_char* file, vor_uchar config_option), JUDGE_NON_EMPTY,
     STRING(10, service) INT16(6, protocol) STRING(9, file))
MQTT(vor_cfg_set_mqtt_topic, (vor_char * topic, vor_uchar config_option), JUDGE_NON_EMPTY, STRING(2, topic))
MQTT(vor_cfg_set_mqtt_message, (vor_char * message, vor_uchar config_option), JUDGE_NON_EMPTY, STRING(14, message))
MQTT(vor_cfg_set_mqtt_qos_level, (vor_uchar qos, vor_uchar config_option), JUDGE_NON_EMPTY, INT16(15, qos))
MQTT(vor_cfg_set_mqtt_retain_flag, (vor_uchar flag, vor_uchar config_option), JUDGE_NON_EMPTY, INT16(16, flag))
MQTT(vor_cfg_set_mqtt_keep_alive_interval, (vor_uint32 interval, vor_uchar config_option), JUDGE_NON_EMPTY,
     INT32(5, interval))
MQTT(vor_cfg_set_mqtt_clean_session_flag, (vor_uint32 flag, vor_uchar config_option), JUDGE_NON_EMPTY, INT16(4, flag))
MQTT_SESSION(vor_cfg_mqtt_activate_session, (vor_char * service, vor_uchar protocol), 0xf009, STRING(10, service))
MQTT_SESSION(vor_cfg_mqtt_deactivate_session, (vor_char * service, vor_uchar protocol), 0xf00a, STRING(10, service))
