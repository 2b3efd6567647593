// Messages in words.
#include <algorithm>
#include <arpa/inet.h>
#include <cstddef>
#include <cstring>
#include <span>

#include "observe.hpp"

namespace vorcfg {

struct ManagerName {
    std::uint16_t sap;
    const char* name;
};

static constexpr ManagerName managers[] = {
    {0, "the platform"}, {1, "sysmgr"},     {2, "platmgr"},  {3, "restmgr"},    {4, "gpiomgr"},      {5, "adcmgr"},
    {6, "blemgr"},       {7, "ethmgr"},     {8, "sub1gmgr"}, {9, "svcmgr"},     {10, "datamgr"},     {12, "gsmmgr"},
    {13, "appmgr"},      {14, "sensormgr"}, {15, "mqttmgr"}, {16, "serialmgr"}, {18, "wifimonitor"}, {19, "canmgr"},
    {20, "modbusmgr"},   {21, "snmpmgr"},   {22, "ntpmgr"},  {23, "pcumgr"},    {24, "loramgr"},     {240, "towermon"},
};

std::string manager_name(std::uint16_t sap)
{
    for (const ManagerName& manager : managers) {
        if (manager.sap == sap) {
            return manager.name;
        }
    }
    return "SAP " + std::to_string(sap);
}

// --- Texts ------------------------------------------------------------------

static bool is_control(char c)
{
    return std::uint8_t(c) < ' ' || c == 0x7f;
}

static std::string in_hex(char c)
{
    static constexpr char digits[] = "0123456789abcdef";
    return {digits[std::uint8_t(c) >> 4], digits[c & 15]};
}

std::string printable(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        out += is_control(c) && c != '\n' ? "\\x" + in_hex(c) : std::string(1, c);
    }
    return out;
}

std::string quoted(std::string_view text)
{
    std::string out = "\"";
    for (const char c : text) {
        out += c == '"' || c == '\\' ? "\\" : "";
        out += is_control(c) ? "\\x" + in_hex(c) : std::string(1, c);
    }
    return out + '"';
}

// --- Records, field by field ------------------------------------------------

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

static constexpr RecordField eth_config_ip[] = {
    FIELD(VOR_ETH_CONFIG_IP, eth_int_number, uint8),
    FIELD(VOR_ETH_CONFIG_IP, eth_conf_option, uint8),
    FIELD(VOR_ETH_CONFIG_IP, ip_address, address),
    FIELD(VOR_ETH_CONFIG_IP, subnet_mask, address),
};
static constexpr RecordField eth_dhcp_client[] = {
    FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_int_number, uint8),
    FIELD(VOR_ETH_DHCP_CLIENT_CONFIG, eth_conf_option, uint8),
};
static constexpr RecordField default_gateway[] = {
    FIELD(VOR_ETH_DEFAULT_GW_CONFIG, gw_conf_option, uint8),
    FIELD(VOR_ETH_DEFAULT_GW_CONFIG, iface_num, uint16),
    FIELD(VOR_ETH_DEFAULT_GW_CONFIG, default_gw, address),
};
static constexpr RecordField interface[] = {FIELD(VOR_INTERFACE, interface_num, uint8)};
static constexpr RecordField route_switch[] = {{"disable", 0, sizeof(std::uint32_t), FieldKind::uint32}};
static constexpr RecordField route_via[] = {FIELD(VOR_ETH_ROUTE_VIA, ip_address, address)};
static constexpr RecordField static_route[] = {
    FIELD(VOR_ETH_STATIC_ROUTE, device_no, uint16),
    FIELD(VOR_ETH_STATIC_ROUTE, ip_address, address),
};
static constexpr RecordField removed_route[] = {FIELD(VOR_ETH_STATIC_ROUTE, ip_address, address)};
static constexpr RecordField syslog_info[] = {
    FIELD(SYSLOG_INFO, mode, uint8),
    FIELD(SYSLOG_INFO, ip_address, address),
    FIELD(SYSLOG_INFO, port_number, uint16),
    FIELD(SYSLOG_INFO, protocol, uint8),
};
static constexpr RecordField log_info[] = {
    FIELD(LOG_INFO, log_level, int32),
    FIELD(LOG_INFO, sap_id, uint16),
    FIELD(LOG_INFO, proc_name, text),
};
static constexpr RecordField log_server[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option, int32), FIELD(LOG_UPLOAD_FILE_INFO, name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, server, text),      FIELD(LOG_UPLOAD_FILE_INFO, user_name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, password, secret),
};
static constexpr RecordField log_name[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option, int32),
    FIELD(LOG_UPLOAD_FILE_INFO, name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, file_name, text),
};
static constexpr RecordField log_frequency[] = {
    FIELD(LOG_UPLOAD_FILE_INFO, set_option, int32),
    FIELD(LOG_UPLOAD_FILE_INFO, name, text),
    FIELD(LOG_UPLOAD_FILE_INFO, upload_frequency, int32),
};
static constexpr RecordField gpio_set[] = {
    FIELD(VOR_GPIO_PORT_SET, gpio_sw_port, uint16),
    FIELD(VOR_GPIO_PORT_SET, value, uint16),
};
static constexpr RecordField gpio_pin[] = {FIELD(GPIO_PIN_NO, logical_port_no, uint16)};
static constexpr RecordField adc_pin[] = {
    FIELD(ADC_PIN_NO, adc_index, uint16),
    FIELD(ADC_PIN_NO, channel_index, uint16),
};
static constexpr RecordField restart[] = {{"seconds", 0, sizeof(std::int16_t), FieldKind::int16}};

static constexpr std::uint32_t log_file_id = 0x2028;

static constexpr Record records[] = {
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
static T load(const std::string& bytes, std::size_t offset)
{
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

static std::string dotted(std::uint32_t address)
{
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &address, text, sizeof text);
}

// Log-file fields that the option does not name hold what the buffer held, of
// whomever it was: they are not shown.
static std::span<const RecordField> log_fields(const std::string& record)
{
    switch (load<std::int32_t>(record, 0)) {
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

static std::string value_of(const RecordField& field, const std::string& record)
{
    if (field.offset + field.size > record.size()) {
        return "?";
    }
    switch (field.kind) {
    case FieldKind::uint8:
        return std::to_string(load<std::uint8_t>(record, field.offset));
    case FieldKind::uint16:
        return std::to_string(load<std::uint16_t>(record, field.offset));
    case FieldKind::int16:
        return std::to_string(load<std::int16_t>(record, field.offset));
    case FieldKind::uint32:
        return std::to_string(load<std::uint32_t>(record, field.offset));
    case FieldKind::int32:
        return std::to_string(load<std::int32_t>(record, field.offset));
    case FieldKind::address:
        return dotted(load<std::uint32_t>(record, field.offset));
    case FieldKind::text:
        return quoted({record.data() + field.offset, strnlen(record.data() + field.offset, field.size)});
    case FieldKind::secret:
        break;
    }
    return std::string(mask);
}

static std::string in_hex(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        text += (text.empty() ? "" : " ") + in_hex(byte);
    }
    return text;
}

static std::string record_text(const Message& message, std::span<const Value> values)
{
    std::span<const RecordField> fields;
    bool known = message.sap == 2 && message.id == log_file_id && message.record.size() == sizeof(LOG_UPLOAD_FILE_INFO);
    if (known) {
        fields = log_fields(message.record);
    }
    for (const Record& record : records) {
        if (record.sap == message.sap && record.id == message.id) {
            fields = record.fields;
            known = true;
        }
    }
    if (!known) {
        const bool holds_secret =
            std::any_of(values.begin(), values.end(), [](const Value& each) { return each.secret; });
        return " | " + std::to_string(message.record.size()) + " bytes " +
               (holds_secret ? std::string(mask) : in_hex(message.record));
    }
    std::string text;
    for (const RecordField& field : fields) {
        text += std::string(" | ") + field.name + ' ' + value_of(field, message.record);
    }
    return text;
}

// --- Chains and commands ----------------------------------------------------

// An address goes out as a number; the argument that it came from says so.
static std::string number_text(const Element& element, std::span<const Value> values)
{
    std::string text = std::to_string(element.number);
    for (const Value& value : values) {
        in_addr address{};
        if (element.kind == ElementKind::int32 && value.text.find('.') != std::string::npos &&
            inet_aton(value.text.c_str(), &address) != 0 && address.s_addr == std::uint32_t(element.number)) {
            return text + " (" + dotted(address.s_addr) + ')';
        }
    }
    return text;
}

static std::string element_text(const Element& element, std::span<const Value> values)
{
    const std::string tag = " | " + std::to_string(element.tag);
    switch (element.kind) {
    case ElementKind::int16:
        return tag + " i16 " + number_text(element, values);
    case ElementKind::int32:
        return tag + " i32 " + number_text(element, values);
    case ElementKind::raw:
        return tag + " raw " + in_hex(element.bytes);
    case ElementKind::text:
        break;
    }
    return tag + " str " + (element.secret ? std::string(mask) : quoted(element.bytes));
}

std::string without_passwords(std::string_view text)
{
    static constexpr std::string_view word = "password ";
    std::string masked;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word)) {
        const bool begins = at > 0 && (text[at - 1] == '"' || text[at - 1] == '^');
        masked += text.substr(0, at + word.size());
        text.remove_prefix(at + word.size());
        const std::size_t end = text.find('"');
        if (begins && end != 0) {
            masked += mask;
            text.remove_prefix(end == std::string_view::npos ? text.size() : end);
        }
    }
    return masked.append(text);
}

std::string described(const Message& message, std::span<const Value> values)
{
    if (message.way == Way::konfd) {
        return "konfd | " + std::to_string(message.counted) + " bytes | " + without_passwords(message.command);
    }
    char id[16];
    std::snprintf(id, sizeof id, "0x%x", unsigned(message.id));
    std::string text = manager_name(message.sap) + " (SAP " + std::to_string(message.sap) + ") " + id;
    text += message.way == Way::one_way ? " one-way" : "";
    if (message.option) {
        text += " | option " + std::to_string(*message.option);
    }
    if (message.flag) {
        text += " | flag " + std::to_string(*message.flag);
    }
    for (const Element& element : message.elements) {
        text += element_text(element, values);
    }
    if (!message.record.empty()) {
        text += record_text(message, values);
    } else if (message.elements.empty()) {
        text += " | empty";
    }
    return text;
}

} // namespace vorcfg
