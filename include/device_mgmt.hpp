/**
 * @file
 * device_mgmt.hpp: the calls from C++20, header-only.
 *
 *     device_mgmt::Endpoint endpoint(200);
 *     const auto result = device_mgmt::call<vor_cfg_set_ip_address>(0, "192.168.1.10", mask, 1);
 *
 * Texts are literals, std::string or std::string_view. An argument of another
 * kind, or a number too wide for its parameter, does not compile, nor does a
 * call that does nothing. An argument that the gateway would not get as it is
 * given is reported, and the call is not made: a number out of its range, a
 * null pointer, an invalid address, a word that the call does not know.
 * As in the library, one thread at a time.
 */
#ifndef DEVICE_MGMT_HPP
#define DEVICE_MGMT_HPP
/* SPDX-License-Identifier: MIT */

#if __cplusplus <= 201703L
#error "device_mgmt.hpp needs C++20 (-std=c++20), device_mgmt.h only C++11"
#else

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <concepts>
#include <cstdint>
#include <device_mgmt.h>
#include <device_mgmt/facts.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace device_mgmt {

/// Never better than what is known: a code other than 0 seldom says how far a call came.
enum class Outcome {
    accepted, ///< by the manager or konfd, or done by a call that asks neither
    sent,     ///< one-way: sent, no verdict will come
    refused,  ///< by the manager, with its status
    not_sent, ///< no endpoint, or an argument that the library or this header does not take
    unknown,  ///< it may have been applied
    undelivered [[deprecated("it is unknown")]] = unknown,
    unreadable [[deprecated("it is unknown")]] = unknown
};

struct Result {
    Outcome outcome = Outcome::not_sent;
    vor_int32 code = 0;     ///< as the call returned it; VOR_CODE_REFUSED where no record came
    vor_int32 status = 0;   ///< the manager's, when it refused with one
    std::size_t misfit = 0; ///< the argument that did not fit, from 1; the call was not made
    explicit operator bool() const { return outcome == Outcome::accepted || outcome == Outcome::sent; }
};

/// The outcome in a sentence, for a log or a user.
inline std::string to_string(const Result& result)
{
    const std::string code = result.code != 0 ? " (code " + std::to_string(result.code) + ")" : "";
    switch (result.outcome) {
    case Outcome::accepted:
        return "accepted";
    case Outcome::sent:
        return "sent; no verdict will come";
    case Outcome::refused:
        return "refused by the manager: status " + std::to_string(result.status);
    case Outcome::not_sent:
        return result.misfit != 0 ? "not sent: argument " + std::to_string(result.misfit) + " does not fit"
                                  : "not sent: no endpoint, or an argument that the call does not take" + code;
    default:
        return "unknown: it may have been applied" + code;
    }
}

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

/// How a call's message travels.
enum class Way {
    request,           ///< a manager answers
    one_way,           ///< there is no answer
    one_way_unchecked, ///< the call returns 0 whether it was sent or not
    konfd,
    local, ///< it sends nothing
    nothing
};

template <auto* Function>
inline constexpr Way way = Way::request;

/// What an argument must be.
struct Check {
    enum class Kind { number, address, decimal, word, text, konfd_text, count };
    Kind kind;
    std::size_t argument; // from 1
    std::int64_t least = 0, most = 0;
    const char* words = "";
};
constexpr Check number(std::size_t at, std::int64_t least, std::int64_t most)
{
    return {Check::Kind::number, at, least, most};
}
constexpr Check address(std::size_t at)
{
    return {Check::Kind::address, at};
}
constexpr Check decimal(std::size_t at, std::int64_t least, std::int64_t most)
{
    return {Check::Kind::decimal, at, least, most};
}
constexpr Check word(std::size_t at, const char* words)
{
    return {Check::Kind::word, at, 0, 0, words};
}
constexpr Check text(std::size_t at, std::int64_t most_bytes)
{
    return {Check::Kind::text, at, 0, most_bytes};
}
constexpr Check count(std::size_t at)
{
    return {Check::Kind::count, at};
}
constexpr Check konfd_text(std::size_t at)
{
    return {Check::Kind::konfd_text, at};
}

template <auto* Function>
inline constexpr Check checks[1] = {number(0, 0, 0)}; // none

#define DEVICE_MGMT_WAY(call, its_way)                                                                                 \
    template <>                                                                                                        \
    inline constexpr Way way<call> = Way::its_way;
#define DEVICE_MGMT_CHECK(call, ...)                                                                                   \
    template <>                                                                                                        \
    inline constexpr Check checks<call>[] = {__VA_ARGS__};
DEVICE_MGMT_WAYS(DEVICE_MGMT_WAY)
DEVICE_MGMT_CHECKS(DEVICE_MGMT_CHECK)
#undef DEVICE_MGMT_WAY
#undef DEVICE_MGMT_CHECK

/// The number of the argument that counts the texts after it; 0 for a call without such texts.
template <auto* Function>
inline constexpr std::size_t count_at = [] {
    for (const Check& check : checks<Function>) {
        if (check.kind == Check::Kind::count) {
            return check.argument;
        }
    }
    return std::size_t{0};
}();

/// Of a text in which a call reads a number, an address or a word.
inline bool holds(const Check& check, const std::string& text)
{
    in_addr parsed;
    switch (check.kind) {
    case Check::Kind::address:
        return inet_pton(AF_INET, text.c_str(), &parsed) == 1;
    case Check::Kind::decimal: {
        std::int64_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        return error == std::errc() && end == text.data() + text.size() && check.least <= number &&
               number <= check.most;
    }
    case Check::Kind::word:
        return !text.empty() && text.find(' ') == text.npos &&
               std::string_view(check.words).find(' ' + text + ' ') != text.npos;
    case Check::Kind::text:
        return std::cmp_less_equal(text.size(), check.most);
    case Check::Kind::konfd_text:
        for (const char character : text) {
            if (character == '"' || static_cast<unsigned char>(character) < ' ') {
                return false;
            }
        }
        return true;
    default:
        return true;
    }
}

/// What a code and vor_errno tell of a call before which the endpoint was bound or not.
constexpr Outcome outcome_of(Way way, vor_int32 code, vor_int32 status, bool bound)
{
    const bool asks_manager = way != Way::konfd && way != Way::local;
    if (code == VOR_CODE_DONE) {
        return way == Way::one_way             ? Outcome::sent
               : way == Way::one_way_unchecked ? Outcome::unknown
                                               : Outcome::accepted;
    }
    if (way == Way::local || code == VOR_CODE_TOO_MANY_SERVERS || code == VOR_CODE_MAC_ADDRESS ||
        (asks_manager && !bound)) {
        return Outcome::not_sent;
    }
    // Only a whole status is a manager's: a platform for development fills with 0xa5 what an answer lacks.
    const bool refused = code == VOR_CODE_REFUSED && status != 0 && static_cast<vor_uint32>(status) >> 24 != 0xa5U;
    return asks_manager && refused ? Outcome::refused : Outcome::unknown;
}

/// The one-way messages that nobody received: a platform for development counts them.
extern "C" unsigned vorinfra_messages_undelivered() __attribute__((weak));

inline unsigned lost_messages()
{
    return vorinfra_messages_undelivered != nullptr ? vorinfra_messages_undelivered() : 0;
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
    std::int64_t number = 0; // as given
    std::string text;        // a copy of the value, with its zero byte

    Argument(Argument&&) = delete;
    template <Taken<Parameter> Given>
    Argument(const Given& given)
    {
        if constexpr (std::is_pointer_v<Given>) {
            fits = given != nullptr;
        }
        if constexpr (std::same_as<Parameter, vor_char*>) {
            text = fits ? std::string_view(given) : std::string_view();
            value = text.data();
            fits = fits && text.find('\0') == text.npos;
        } else {
            if constexpr (std::same_as<Given, char>) { // a byte: its sign is the processor's
                number = static_cast<unsigned char>(given);
            } else if constexpr (std::integral<Parameter>) {
                number = given;
            }
            if constexpr (std::integral<Parameter>) {
                fits =
                    std::in_range<std::conditional_t<std::same_as<Parameter, char>, unsigned char, Parameter>>(number);
            }
            value = static_cast<Parameter>(given);
        }
    }

    /// As the call wants its argument of this number; of a list, the first stands for the rest.
    bool fits_as(std::size_t at, std::size_t fixed, std::span<const Check> its_checks) const
    {
        for (const Check& check : its_checks) {
            if (check.argument == std::min(at, fixed + 1)) {
                return check.kind == Check::Kind::number ? check.least <= number && number <= check.most
                                                         : fits && holds(check, text);
            }
        }
        return fits;
    }
};

template <auto* Function, class Returned, class... Parameters>
struct Call {
    static constexpr bool record = std::same_as<Returned, ADC_PIN_STATS*> || std::same_as<Returned, GPIO_PIN_STATS*>;
    static_assert(way<Function> != Way::nothing, "this call does nothing: it is kept so that programs link");
    static_assert(record || std::same_as<Returned, vor_int32> || std::same_as<Returned, vor_int16>,
                  "this call returns no code: call it as it is");

    static auto make(Argument<Parameters>... arguments,
                     const Taken<vor_char*> auto&... texts) requires(count_at<Function> != 0 || sizeof...(texts) == 0)
    {
        if constexpr (count_at<Function> != 0) {
            auto& count = std::get<count_at<Function> - 1>(std::tie(arguments...));
            count.fits = count.fits && static_cast<std::size_t>(count.value) == sizeof...(texts);
        }
        return made(arguments..., Argument<vor_char*>(texts)...);
    }

    static auto made(auto&&... arguments)
    {
        std::conditional_t<record, Reading<std::remove_pointer_t<Returned>>, Result> result;
        std::size_t at = 0;
        if (!(arguments.fits_as(++at, sizeof...(Parameters), checks<Function>) && ...)) {
            result.misfit = at;
            return result;
        }
        const bool bound = vor_cfg_get_ipc_endpoint() != nullptr;
        const unsigned lost = lost_messages();
        vor_errno = 0; // a status found there afterwards is from this call
        const auto returned = Function(arguments.value...);
        if constexpr (!record) {
            result.code = returned;
        } else if (returned != nullptr) {
            result.value = *returned; // at once: its buffer is already released
        } else {
            result.code = VOR_CODE_REFUSED;
        }
        result.outcome = outcome_of(way<Function>, result.code, vor_errno, bound);
        if (result && lost_messages() != lost) {
            result.outcome = Outcome::unknown;
        }
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
        Result result = call<vor_cfg_create_sock_endpoint>(); // without a connection nothing can leave
        if (result) {
            result = call<vor_konfd_bi_dir_comm>(query_);
        }
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
