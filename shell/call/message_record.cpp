// Records, field by field.
#include <algorithm>
#include <arpa/inet.h>
#include <cstddef>
#include <cstring>

#include <fmt/core.h>

#include "call/message.hpp"

namespace vorcfg {

namespace {

enum class FieldKind : std::uint8_t { uint8, uint16, int16, uint32, int32, address, text, secret };

struct RecordField {
    const char* name;
    std::size_t offset;
    std::size_t size;
    FieldKind kind;
};

struct Record {
    std::uint16_t sap;
    std::uint32_t id;
    std::span<const RecordField> fields;
};

#define FIELD(record, field, kind)                                                                                     \
    {                                                                                                                  \
#field, offsetof(record, field), sizeof(record::field), FieldKind::kind                                        \
    }

constexpr RecordField eth_config_ip[] = {
    FIELD(VOR_ETH_CONFIG_IP, eth_int_number, uint8),
    FIELD(VOR_ETH_CONFIG_IP, eth_conf_option, uint8),
    FIELD(VOR_ETH_CONFIG_IP, ip_address, address),
    FIELD(VOR_ETH_CONFIG_IP, subnet_mask, address),
};
constexpr RecordField eth_dhcp_client[] = {
    FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_int_number, uint8),
    FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_conf_option, uint8),
};
constexpr RecordField default_gateway[] = {
    FIELD(VOR_ETH_DEFAULT_GW_CONFIG, gw_conf_option, uint8),
    FIELD(VOR_ETH_DEFAULT_GW_CONFIG, iface_num, uint16),
    FIELD(VOR_ETH_DEFAULT_GW_CONFIG, default_gw, address),
};
constexpr RecordField interface[] = {FIELD(VOR_INTERFACE, interface_num, uint8)};
constexpr RecordField route_switch[] = {{"enable_status", 0, sizeof(std::uint32_t), FieldKind::uint32}};
constexpr RecordField route_via[] = {FIELD(VOR_ETH_ROUTE_VIA, ip_address, address)};
constexpr RecordField static_route[] = {
    FIELD(VOR_ETH_STATIC_ROUTE, device_no, uint16),
    FIELD(VOR_ETH_STATIC_ROUTE, ip_address, address),
};
constexpr RecordField removed_route[] = {FIELD(VOR_ETH_STATIC_ROUTE, ip_address, address)};
constexpr RecordField syslog_info[] = {
    FIELD(SYSLOG_INFO, mode, uint8),
    FIELD(SYSLOG_INFO, ip_address, address),
    FIELD(SYSLOG_INFO, port_number, uint16),
    FIELD(SYSLOG_INFO, protocol, uint8),
};
constexpr RecordField log_info[] = {
    FIELD(LOG_INFO, log_level, int32),
    FIELD(LOG_INFO, sap_id, uint16),
    FIELD(LOG_INFO, proc_name, text),
};
constexpr RecordField log_server[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option, int32), FIELD(LOG_UPLOAD_FILE_INFO, name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, server, text),      FIELD(LOG_UPLOAD_FILE_INFO, user_name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, password, secret),
};
constexpr RecordField log_name[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option, int32),
    FIELD(LOG_UPLOAD_FILE_INFO, name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, file_name, text),
};
constexpr RecordField log_frequency[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option, int32),
    FIELD(LOG_UPLOAD_FILE_INFO, name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, upload_frequency, int32),
};
constexpr RecordField gpio_set[] = {
    FIELD(VOR_GPIO_PORT_SET, gpio_sw_port, uint16),
    FIELD(VOR_GPIO_PORT_SET, value, uint16),
};
constexpr RecordField gpio_pin[] = {FIELD(GPIO_PIN_NO, logical_port_no, uint16)};
constexpr RecordField adc_pin[] = {
    FIELD(ADC_PIN_NO, adc_index, uint16),
    FIELD(ADC_PIN_NO, channel_index, uint16),
};
constexpr RecordField restart[] = {{"seconds", 0, sizeof(std::int16_t), FieldKind::int16}};

constexpr std::uint32_t log_file_id = 0x2028;

constexpr Record records[] = {
    {0, 12, restart},
    {0, 27, log_info},
    {2, 0x2012, syslog_info},
    {4, 0x4006, gpio_set},
    {4, 0x4007, gpio_pin},
    {5, 0x5007, adc_pin},
    {7, 0x7003, eth_config_ip},
    {7, 0x7005, eth_config_ip},
    {7, 0x7007, eth_dhcp_client},
    {7, 0x7019, eth_dhcp_client},
    {7, 0x7010, default_gateway},
    {7, 0x700e, interface},
    {7, 0x700f, route_switch},
    {7, 0x7012, route_via},
    {7, 0x7011, static_route},
    {7, 0x7013, removed_route},
};

template <class T>
std::string number_text(const char* at)
{
    T value;
    std::memcpy(&value, at, sizeof value);
    return fmt::format("{}", value);
}

std::string address_text(const char* at)
{
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, at, text, sizeof text);
}

Field field_of(const RecordField& field, const std::string& record)
{
    const char* const at = record.data() + field.offset;
    if (field.offset + field.size > record.size()) {
        return {field.name, "?", Field::Kind::word};
    }
    switch (field.kind) {
    case FieldKind::uint8:
        return {field.name, number_text<std::uint8_t>(at)};
    case FieldKind::uint16:
        return {field.name, number_text<std::uint16_t>(at)};
    case FieldKind::int16:
        return {field.name, number_text<std::int16_t>(at)};
    case FieldKind::uint32:
        return {field.name, number_text<std::uint32_t>(at)};
    case FieldKind::int32:
        return {field.name, number_text<std::int32_t>(at)};
    case FieldKind::address:
        return {field.name, address_text(at), Field::Kind::word};
    case FieldKind::text:
        return {field.name, std::string(at, strnlen(at, field.size)), Field::Kind::text};
    case FieldKind::secret:
        break;
    }
    return {field.name, "", Field::Kind::secret};
}

// Log-file fields that the option does not name hold what the buffer held, of
// whomever it was: they are not shown.
std::span<const RecordField> log_fields(const std::string& record)
{
    std::int32_t option;
    std::memcpy(&option, record.data(), sizeof option);
    switch (option) {
    case 1:
        return log_server;
    case 2:
        return log_name;
    case 3:
        return log_frequency;
    default:
        return {};
    }
}

} // namespace

std::optional<std::vector<Field>> fields_of(const Message& message)
{
    std::span<const RecordField> known;
    if (message.sap == 2 && message.id == log_file_id && message.record.size() == sizeof(LOG_UPLOAD_FILE_INFO)) {
        known = log_fields(message.record);
    } else {
        const auto record = std::ranges::find_if(
            records, [&](const Record& each) { return each.sap == message.sap && each.id == message.id; });
        if (record == std::end(records)) {
            return std::nullopt;
        }
        known = record->fields;
    }
    std::vector<Field> fields;
    for (const RecordField& field : known) {
        fields.push_back(field_of(field, message.record));
    }
    return fields;
}

} // namespace vorcfg
