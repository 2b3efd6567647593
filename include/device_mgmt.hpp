/**
 * @file
 * device_mgmt.hpp: the calls from C++20, header-only.
 *
 *     device_mgmt::Endpoint endpoint(200);
 *     const auto result = device_mgmt::call<vor_cfg_set_ip_address>(0, "192.168.1.10", mask, 1);
 *
 * Texts are literals, std::string or std::string_view. An argument of another
 * kind, or a number too wide for its parameter, does not compile. One that does
 * not fit, or a null pointer, is reported and the call is not made. As in the
 * library, one thread at a time.
 */
#ifndef DEVICE_MGMT_HPP
#define DEVICE_MGMT_HPP
/* SPDX-License-Identifier: MIT */

#if __cplusplus <= 201703L
#error "device_mgmt.hpp needs C++20 (-std=c++20), device_mgmt.h only C++11"
#else

#include <concepts>
#include <device_mgmt.h>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace device_mgmt {

enum class Outcome {
    accepted,    ///< by the manager, or done by a call that asks no manager
    sent,        ///< one-way: sent, no verdict will come
    refused,     ///< by the manager; with its status where the call keeps one
    not_sent,    ///< no endpoint, or an argument that the library or this header does not take
    undelivered, ///< the platform refused the exchange or the send, or no answer came in time: perhaps it was done
    unreadable   ///< nothing is known: no answer that can be read, or no message buffer
};

struct Result {
    Outcome outcome = Outcome::not_sent;
    vor_int32 code = 0;     ///< as the call returned it; VOR_CODE_REFUSED where no record came
    vor_int32 status = 0;   ///< the manager's, when it refused with one
    std::size_t misfit = 0; ///< the argument that did not fit, from 1; the call was not made
    explicit operator bool() const { return outcome == Outcome::accepted || outcome == Outcome::sent; }
};

/// The result of a call that returns a record: a copy of it, when there was one.
template <class Record>
struct Reading : Result {
    std::optional<Record> value;
};

namespace detail {

template <auto*>
struct Name {
};

template <auto* Function, auto*... Others>
inline constexpr bool is_one_of = (std::same_as<Name<Function>, Name<Others>> || ...);

template <auto* Function>
inline constexpr bool one_way =
    is_one_of<Function, vor_system_restart, vor_cfg_set_debug_info, vor_cfg_set_log_file, vor_cfg_set_plat_hostname,
              vor_cfg_set_gpio_value, vor_cfg_set_dhcp_server_dns_client, vor_cfg_enable_ip_routing,
              vor_cfg_set_via_route, vor_cfg_set_static_route, vor_cfg_remove_ip_route, vor_cfg_mqtt_activate_session,
              vor_cfg_mqtt_deactivate_session, vor_cfg_set_snmp_v2_server_community_name,
              vor_cfg_set_snmp_v2_trap_server, vor_cfg_set_snmp_server_enable, vor_cfg_rest_set_bind_addr,
              vor_cfg_rest_set_app, vor_cfg_set_rest_config, vor_cfg_set_protocol_svc, vor_cfg_tp_set_app,
              set_wifi_monitor_channel_name>;

/// Calls that need no endpoint: their -1 means something else.
template <auto* Function>
inline constexpr bool by_konfd = is_one_of<Function, vor_konfd_bi_dir_comm, vor_cfg_set_wifi_ssid_password,
                                           vor_cfg_set_interface_ip, vor_cfg_create_sock_endpoint>;

/// The index of the number that counts the texts after it; 0 for a call without such texts.
template <auto* Function>
inline constexpr std::size_t count_at =
    is_one_of<Function, vor_cfg_set_dhcp_server_dns>                                     ? 1
    : is_one_of<Function, vor_cfg_set_service_chain, vor_cfg_set_dhcp_server_dns_client> ? 2
                                                                                         : 0;

template <auto* Function>
Outcome outcome_of(vor_int32 code)
{
    switch (code) {
    case VOR_CODE_DONE:
        return one_way<Function> ? Outcome::sent : Outcome::accepted;
    case VOR_CODE_LATITUDE:
    case VOR_CODE_LONGITUDE:
        return Outcome::refused;
    case VOR_CODE_TOO_MANY_SERVERS:
    case VOR_CODE_MAC_ADDRESS:
        return Outcome::not_sent;
    case VOR_CODE_REFUSED:
        if (vor_errno != 0) {
            return Outcome::refused;
        }
        if (!by_konfd<Function> && vor_cfg_get_ipc_endpoint() == nullptr) {
            return Outcome::not_sent;
        }
        [[fallthrough]];
    case VOR_CODE_UNREADABLE:
        return one_way<Function> ? Outcome::not_sent : Outcome::unreadable;
    default:
        return Outcome::undelivered;
    }
}

/// What a parameter takes. An int is allowed for literals, and checked at run time.
template <class Given, class Parameter>
concept Taken = !std::same_as<Given, std::nullptr_t> &&
                (std::integral<Parameter>
                     ? std::integral<Given> && (sizeof(Given) <= sizeof(int) || sizeof(Given) <= sizeof(Parameter))
                 : std::same_as<Parameter, vor_char*> ? std::convertible_to<Given, std::string_view>
                                                      : std::convertible_to<Given, Parameter>);

/// The argument of one parameter.
template <class Parameter>
struct Argument {
    Parameter value{};
    bool fits = true;
    std::string text; // a copy of the value, with its zero byte

    Argument(Argument&&) = delete;
    template <Taken<Parameter> Given>
    Argument(const Given& given)
    {
        if constexpr (std::is_pointer_v<Given>) {
            fits = given != nullptr;
        }
        if constexpr (std::same_as<Parameter, char>) { // a byte: its sign is the processor's
            fits = std::in_range<signed char>(+given) || std::in_range<unsigned char>(+given);
        } else if constexpr (std::integral<Parameter>) {
            fits = std::in_range<Parameter>(+given);
        }
        if constexpr (std::same_as<Parameter, vor_char*>) {
            text = fits ? std::string_view(given) : std::string_view();
            value = text.data();
            fits = fits && text.find('\0') == text.npos;
        } else {
            value = static_cast<Parameter>(given);
        }
    }
};

template <auto* Function, class Returned, class... Parameters>
struct Call {
    static constexpr bool record = std::same_as<Returned, ADC_PIN_STATS*> || std::same_as<Returned, GPIO_PIN_STATS*>;
    static_assert(record || std::same_as<Returned, vor_int32> || std::same_as<Returned, vor_int16>,
                  "this call returns no code: call it as it is");

    static auto make(Argument<Parameters>... arguments,
                     const Taken<vor_char*> auto&... texts) requires(count_at<Function> != 0 || sizeof...(texts) == 0)
    {
        if constexpr (count_at<Function> != 0) {
            auto& count = std::get<count_at<Function>>(std::tie(arguments...));
            count.fits = count.fits && static_cast<std::size_t>(count.value) == sizeof...(texts);
        }
        return made(arguments..., Argument<vor_char*>(texts)...);
    }

    static auto made(auto&&... arguments)
    {
        std::conditional_t<record, Reading<std::remove_pointer_t<Returned>>, Result> result;
        std::size_t fitting = 0;
        if (!((arguments.fits && ++fitting != 0) && ...)) {
            result.misfit = fitting + 1;
            return result;
        }
        vor_errno = 0; // a status found there afterwards is from this call
        const auto returned = Function(arguments.value...);
        if constexpr (!record) {
            result.code = returned;
        } else if (returned != nullptr) {
            result.value = *returned; // at once: its buffer is already released
        } else {
            result.code = VOR_CODE_REFUSED;
        }
        result.outcome = outcome_of<Function>(result.code);
        result.status = result.outcome == Outcome::refused ? vor_errno : 0;
        return result;
    }
};

template <auto* Function, class Returned, class... Parameters>
Call<Function, Returned, Parameters...> call_of(Returned (*)(Parameters...));
template <auto* Function, class Returned, class... Parameters>
Call<Function, Returned, Parameters...> call_of(Returned (*)(Parameters..., ...));

} // namespace detail

/// Makes a call and returns how it ended. Sets vor_errno to 0 first.
template <auto* Function>
auto call(const auto&... arguments) -> decltype(decltype(detail::call_of<Function>(Function))::make(arguments...))
{
    return decltype(detail::call_of<Function>(Function))::make(arguments...);
}

/// This process's endpoint, while it lives; false where the process already has one, or binding failed.
class Endpoint {
public:
    explicit Endpoint(const std::integral auto& sap)
        : bound_(vor_cfg_get_ipc_endpoint() == nullptr && call<vor_cfg_create_ipc_endpoint>(sap))
    {
    }
    Endpoint(Endpoint&&) = delete;
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

/// A query to konfd. Releases everything it holds.
class Query {
public:
    explicit Query(const std::integral auto& operation) : query_(vor_cfg_proto_init())
    {
        add<vor_cfg_proto_set_op>(operation);
    }
    Query(Query&&) = delete;
    ~Query()
    {
        VOR_CFG_PROTO_PATH* element = query_ != nullptr ? query_->path_head.stqh_first : nullptr;
        vor_cfg_proto_cleanup(query_); // frees the elements' texts, not the elements
        while (element != nullptr) {
            vor_free(std::exchange(element, element->elm_link.stqe_next));
        }
    }

    /// One of the setters, with its arguments after the query: add<vor_cfg_proto_set_line_string>("key", "value").
    template <auto* Setter>
    Query& add(const auto&... arguments)
    {
        whole_ = call<Setter>(query_, arguments...) && whole_;
        return *this;
    }

    /// The command's text; none when the query is incomplete.
    std::optional<std::string> command() const
    {
        vor_int32 length = 0;
        vor_char* const rendered = whole_ ? vor_cfg_proto_get_command(query_, &length) : nullptr;
        std::optional<std::string> text;
        if (rendered != nullptr) {
            text = rendered;
            vor_free(rendered);
        }
        return text;
    }

    /// Connects, asks konfd, and disconnects.
    Result send() const
    {
        if (!command()) {
            return {};
        }
        Result result = call<vor_cfg_create_sock_endpoint>();
        result = result ? call<vor_konfd_bi_dir_comm>(query_) : Result{Outcome::undelivered, result.code};
        vor_cfg_remove_sock_endpoint();
        return result;
    }

private:
    VOR_CFG_PROTO* query_;
    bool whole_ = true;
};

} // namespace device_mgmt

#endif
#endif
