#include "commands.hpp"

#include <algorithm>
#include <string>

#include "complaint.hpp"
#include "konfd_query.hpp"

namespace vorcfg {

static constexpr Family all[] = {
    {"ip", "interface addressing, access point, DHCP server and routing", ip_rows, "ip"},
    {"hostname", "the gateway's host name", hostname_rows, "hostname"},
    {"gw", "where the gateway stands", gw_rows, "gw"},
    {"syslog", "the remote syslog server", syslog_rows, "syslog"},
    {"debug", "debug output of the managers, the log file", debug_rows, "debug"},
    {"env", "the board's temperature", env_rows, "env"},
    {"konfd", "the stored configuration", konfd_rows, "konfd"},
    {"wifi", "the stored Wi-Fi network", wifi_rows, "konfd"},
    {"svc", "REST and protocol services, service chains, applications", svc_rows, "svc"},
    {"mqtt", "MQTT services and sessions", mqtt_rows, "mqtt"},
    {"snmp", "the SNMP agent", snmp_rows, "snmp"},
    {"time", "the gateway's clock", time_rows, "time"},
    {"gsm", "the cellular data connection", gsm_rows, "gsm"},
    {"gpio", "digital inputs and outputs", gpio_rows, "gpio"},
    {"adc", "analogue inputs", adc_rows, "adc"},
    {"serial", "serial ports", serial_rows, "serial"},
    {"sensor", "sensor flows and templates", sensor_rows, "sensor"},
    {"sub1g", "the sub-1 GHz radio", sub1g_rows, "sub1g"},
    {"can", "CAN ports and peers", can_rows, "can"},
    {"lora", "LoRa ports", lora_rows, "lora"},
    {"pcu", "the power-control unit", pcu_rows, "pcu"},
    {"wifimonitor", "the Wi-Fi monitor", wifimonitor_rows, "wifimonitor"},
    {"modbus", "Modbus on serial lines and over TCP", modbus_rows, "modbus"},
    {"towermon", "the monitored objects of a tower site", towermon_rows, "towermon"},
    {"devicename", "the gateway device's identity", devicename_rows, "devicename"},
    {"common", "endpoints, text converters and the delayed restart", common_rows, "common"},
};

std::span<const Family> families()
{
    return all;
}

const Family* family_named(std::string_view name)
{
    const auto found =
        std::find_if(std::begin(all), std::end(all), [&](const Family& each) { return each.name == name; });
    return found != std::end(all) ? &*found : nullptr;
}

const Row* row_named(std::string_view family, std::string_view name)
{
    if (family == query_row.family && name == query_row.name) {
        return &query_row;
    }
    const Family* const found = family_named(family);
    for (const Row& row : found != nullptr ? found->rows() : std::span<const Row>()) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

// How many letters must be changed, added or left out to get from one word to
// the other.
static std::size_t distance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t i = 0; i < row.size(); i++) {
        row[i] = i;
    }
    for (std::size_t i = 0; i < from.size(); i++) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); j++) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, replaced});
        }
    }
    return row.back();
}

template <class Names>
static std::string nearest(std::string wanted, const Names& names, const std::string& listed)
{
    for (char& c : wanted) {
        c = c == '_' ? '-' : char(std::tolower(std::uint8_t(c)));
    }
    std::string_view best;
    std::size_t least = wanted.size() / 3 + 2;
    for (const auto& each : names) {
        const std::size_t away = distance(wanted, each.name);
        if (away < least) {
            least = away;
            best = each.name;
        }
    }
    return best.empty() ? "; " + listed + " lists them" : "; is it " + std::string(best) + '?';
}

const Family& wanted_family(std::string_view name)
{
    if (const Family* const family = family_named(name)) {
        return *family;
    }
    throw Complaint("no family \"" + std::string(name) + '"' + nearest(std::string(name), families(), "vorcfg --help"));
}

const Row& wanted_row(std::string_view family, std::string_view name)
{
    const Family& known = wanted_family(family);
    if (const Row* const row = row_named(family, name)) {
        return *row;
    }
    throw Complaint(std::string(family) + " has no call \"" + std::string(name) + '"' +
                        nearest(std::string(name), known.rows(), "vorcfg " + std::string(family) + " --help"),
                    exit_usage, Complaint::call_token);
}

} // namespace vorcfg
