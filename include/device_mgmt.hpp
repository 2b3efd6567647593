/**
 * @file
 * device_mgmt.hpp: the calls from C++20, header-only.
 *
 *     device_mgmt::Endpoint endpoint(200);
 *     const auto result = device_mgmt::call<vor_cfg_set_ip_address>(0, "192.168.1.10", mask, 1);
 *
 * Texts are literals, std::string or std::string_view. An argument of another
 * kind, or a number too wide for its parameter, does not compile; one that does
 * not fit is told with the call unmade. The library's rule stands: one thread at
 * a time.
 */
#ifndef DEVICE_MGMT_HPP
#define DEVICE_MGMT_HPP
/* SPDX-License-Identifier: MIT */

#include <concepts>
#include <cstddef>
#include <device_mgmt.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace device_mgmt {

enum class Outcome {
    accepted,    ///< by the manager, or done by a call that asks none
    sent,        ///< one-way: handed over, no verdict ever comes
    refused,     ///< by the manager; its status beside it where the call keeps one
    not_sent,    ///< no endpoint, or an argument that the library or this header does not take
    undelivered, ///< the platform refused the exchange or the send
    unreadable   ///< nothing is known: no answer that can be read, or no message buffer
};

struct Result {
    Outcome outcome = Outcome::not_sent;
    vor_int32 code = 0;     ///< as the call returned it
    vor_int32 status = 0;   ///< the manager's, when it refused with one
    std::size_t misfit = 0; ///< the argument that did not fit, from 1; the call was not made
    explicit operator bool() const { return outcome == Outcome::accepted || outcome == Outcome::sent; }
};

/// The result of a query that returns a record: a copy of it, when there was one.
template <class Record>
struct Reading : Result {
    std::optional<Record> value;
};

namespace detail {

template <auto* Function>
struct Name {
};

template <auto* Function, auto*... Others>
inline constexpr bool is_one_of = (std::is_same_v<Name<Function>, Name<Others>> || ...);

template <auto* Function>
inline constexpr bool one_way =
    is_one_of<Function, vor_system_restart, vor_cfg_set_debug_info, vor_cfg_set_log_file, vor_cfg_set_plat_hostname,
              vor_cfg_set_gpio_value, vor_cfg_set_dhcp_server_dns_client, vor_cfg_enable_ip_routing,
              vor_cfg_set_via_route, vor_cfg_set_static_route, vor_cfg_remove_ip_route, vor_cfg_mqtt_activate_session,
              vor_cfg_mqtt_deactivate_session, vor_cfg_set_snmp_v2_server_community_name,
              vor_cfg_set_snmp_v2_trap_server, vor_cfg_set_snmp_server_enable, vor_cfg_rest_set_bind_addr,
              vor_cfg_rest_set_app, vor_cfg_set_rest_config, vor_cfg_set_protocol_svc, vor_cfg_tp_set_app,
              set_wifi_monitor_channel_name>;

/// Calls that go without the endpoint: their -1 is their own.
template <auto* Function>
inline constexpr bool by_konfd = is_one_of<Function, vor_konfd_bi_dir_comm, vor_cfg_set_wifi_ssid_password,
                                           vor_cfg_set_interface_ip, vor_cfg_create_sock_endpoint>;

/// The place of the number that counts the texts behind, from 0.
template <auto* Function>
inline constexpr std::size_t count_at = is_one_of<Function, vor_cfg_set_dhcp_server_dns> ? 1 : 2;

template <auto* Function>
Outcome outcome_of(vor_int32 code)
{
    switch (code) {
    case VOR_CODE_DONE:
        return one_way<Function> ? Outcome::sent : Outcome::accepted;
    case VOR_CODE_REFUSED:
        return vor_errno != 0                                               ? Outcome::refused
               : by_konfd<Function>                                         ? Outcome::unreadable
               : one_way<Function> || vor_cfg_get_ipc_endpoint() == nullptr ? Outcome::not_sent
                                                                            : Outcome::unreadable;
    case VOR_CODE_LATITUDE:
    case VOR_CODE_LONGITUDE:
        return Outcome::refused;
    case VOR_CODE_TOO_MANY_SERVERS:
    case VOR_CODE_MAC_ADDRESS:
        return Outcome::not_sent;
    case VOR_CODE_UNREADABLE:
        return one_way<Function> ? Outcome::not_sent : Outcome::unreadable;
    default:
        return Outcome::undelivered;
    }
}

/// What one parameter takes. Pointers go as they are, null too.
template <class Parameter>
struct Argument {
    Parameter value;
    bool fits = true;
    Argument(Parameter given) : value(given) {}
};

template <std::integral Parameter>
struct Argument<Parameter> {
    Parameter value;
    bool fits;
    // an int is let through for literals, and looked at when the program runs
    template <std::integral Given>
    requires(sizeof(Given) <= sizeof(int) || sizeof(Given) <= sizeof(Parameter)) Argument(Given given)
        : value(static_cast<Parameter>(given)),
          fits(static_cast<Given>(value) == given && (value < Parameter{}) == (given < Given{}))
    {
        if constexpr (std::same_as<Parameter, char>) { // a byte: its sign is the processor's
            fits = given <= 255 && (std::unsigned_integral<Given> || static_cast<long long>(given) >= -128);
        }
    }
};

template <>
struct Argument<vor_char*> {
    std::string text;
    bool fits = true;
    vor_char* value;
    Argument(std::string_view given) : text(given), fits(text.find('\0') == text.npos), value(text.data()) {}
    Argument(const std::string& given) : Argument(std::string_view(given)) {}
    Argument(const char* given) : Argument(std::string_view(given != nullptr ? given : "")) { fits = given != nullptr; }
    Argument(std::nullptr_t) = delete;
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;
};

template <class Returned>
using Told = std::conditional_t<std::is_pointer_v<Returned>, Reading<std::remove_pointer_t<Returned>>, Result>;

template <auto* Function, class Returned>
Told<Returned> made(auto&&... arguments)
{
    static_assert(std::is_pointer_v<Returned> || std::same_as<Returned, vor_int32> || std::same_as<Returned, vor_int16>,
                  "this call returns no code: call it as it is");
    Told<Returned> result;
    std::size_t fitting = 0;
    if (!((arguments.fits && ++fitting != 0) && ...)) {
        result.misfit = fitting + 1;
        return result;
    }
    vor_errno = 0; // a status found there afterwards is this call's
    if constexpr (std::is_pointer_v<Returned>) {
        if (const auto* const record = Function(arguments.value...)) {
            result.value = *record; // at once: its buffer is given back already
        }
        result.outcome = result.value                            ? Outcome::accepted
                         : vor_cfg_get_ipc_endpoint() == nullptr ? Outcome::not_sent
                                                                 : Outcome::unreadable;
    } else {
        result.code = Function(arguments.value...);
        result.outcome = outcome_of<Function>(result.code);
        result.status = result.outcome == Outcome::refused ? vor_errno : 0;
    }
    return result;
}

template <auto* Function, class Type = std::remove_pointer_t<decltype(Function)>>
struct Call;

template <auto* Function, class Returned, class... Parameters>
struct Call<Function, Returned(Parameters...)> {
    static Told<Returned> make(Argument<Parameters>... arguments) { return made<Function, Returned>(arguments...); }
};

template <auto* Function, class Returned, class... Parameters>
struct Call<Function, Returned(Parameters..., ...)> {
    static Told<Returned> make(Argument<Parameters>... arguments,
                               const std::convertible_to<std::string_view> auto&... texts)
    {
        auto& count = std::get<count_at<Function>>(std::tie(arguments...));
        count.fits = count.fits && static_cast<std::size_t>(count.value) == sizeof...(texts);
        return made<Function, Returned>(arguments..., Argument<vor_char*>(texts)...);
    }
};

} // namespace detail

/// Makes a call and tells how it ended. vor_errno begins at 0.
template <auto* Function>
auto call(const auto&... arguments) requires requires
{
    detail::Call<Function>::make(arguments...);
}
{
    return detail::Call<Function>::make(arguments...);
}

/// This process's endpoint, while it lives.
class Endpoint {
public:
    explicit Endpoint(vor_uint16 sap) : bound_(vor_cfg_create_ipc_endpoint(sap) == VOR_CODE_DONE) {}
    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;
    ~Endpoint()
    {
        if (bound_) {
            vor_cfg_remove_ipc_endpoint();
        }
    }
    explicit operator bool() const { return bound_; }

private:
    bool bound_;
};

/// A query to konfd, with everything it holds.
class Query {
public:
    explicit Query(vor_uchar operation) : query_(vor_cfg_proto_init())
    {
        vor_cfg_proto_set_op(query_.get(), operation);
    }
    Query& pattern(std::string_view key) { return add<vor_cfg_proto_set_pattern_string>(2, key, ""); }
    Query& pattern(std::string_view key, std::string_view value)
    {
        return add<vor_cfg_proto_set_pattern_string>(1, key, value);
    }
    Query& line(std::string_view key, std::string_view value) { return add<vor_cfg_proto_set_line_string>(key, value); }
    Query& priority(std::string_view value) { return add<vor_cfg_proto_set_priority_string>(value); }
    Query& path(std::string_view key, std::string_view value) { return add<vor_cfg_proto_append_path_elm>(key, value); }

    /// The command's text; none when the query is not whole.
    std::optional<std::string> command() const
    {
        vor_int32 length = 0;
        const std::unique_ptr<vor_char, decltype(&vor_free)> text(vor_cfg_proto_get_command(query_.get(), &length),
                                                                  &vor_free);
        return text && whole_ ? std::optional<std::string>(text.get()) : std::nullopt;
    }

    /// Connects, asks konfd, and disconnects.
    Result send()
    {
        Result result;
        if (whole_ && command()) {
            result = call<vor_cfg_create_sock_endpoint>();
            result = result ? call<vor_konfd_bi_dir_comm>(query_.get()) : Result{Outcome::undelivered, result.code};
            vor_cfg_remove_sock_endpoint();
        }
        return result;
    }

private:
    template <auto* Setter>
    Query& add(auto... arguments)
    {
        whole_ = call<Setter>(query_.get(), arguments...) && whole_;
        return *this;
    }

    struct Release {
        void operator()(VOR_CFG_PROTO* query) const
        {
            std::vector<VOR_CFG_PROTO_PATH*> elements; // the cleanup frees their texts and leaves them
            for (VOR_CFG_PROTO_PATH* each = query->path_head.stqh_first; each != nullptr;) {
                elements.push_back(each);
                each = each->elm_link.stqe_next;
            }
            vor_cfg_proto_cleanup(query);
            for (VOR_CFG_PROTO_PATH* const each : elements) {
                vor_free(each);
            }
        }
    };
    std::unique_ptr<VOR_CFG_PROTO, Release> query_;
    bool whole_ = true;
};

} // namespace device_mgmt

#endif
