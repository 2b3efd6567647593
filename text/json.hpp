// json.hpp: JSON documents, built, read and printed.
//
// For the edges, where text is read or written; everything in between is typed.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace vor {

// Text that is not JSON, or a document without the value that was looked for.
struct JsonError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// More of it than the reader's limits.
struct JsonLimit : JsonError {
    using JsonError::JsonError;
};

class Json {
public:
    using Array = std::vector<Json>;
    using Member = std::pair<std::string, Json>;
    using Object = std::vector<Member>; // in the order in which they were added
    // A number is natural where it does not fit a std::int64_t.
    using Held = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object>;
    enum class Type : std::uint8_t { null, boolean, integer, natural, real, text, array, object };

    Json() = default;
    Json(std::same_as<bool> auto truth) : held_(truth) {}
    Json(std::same_as<double> auto number) : held_(number) {}
    Json(std::string text) : held_(std::move(text)) {}
    Json(std::string_view text) : held_(std::string(text)) {}
    Json(const char* text) : held_(std::string(text)) {}
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Json(Number number) : held_(static_cast<std::int64_t>(number))
    {
        if (!std::in_range<std::int64_t>(number)) {
            held_ = static_cast<std::uint64_t>(number);
        }
    }
    template <class Enumerator>
    requires(std::is_enum_v<Enumerator>) Json(Enumerator value)
        : Json(static_cast<std::underlying_type_t<Enumerator>>(value))
    {
    }
    template <class Value>
    Json(const std::optional<Value>& value) : Json(value ? Json(*value) : Json())
    {
    }
    // {{"name", value}, ...}
    Json(std::initializer_list<Member> members) : held_(Object(members)) {}

    static Json of(Held held)
    {
        Json json;
        json.held_ = std::move(held);
        return json;
    }
    static Json array() { return of(Array()); }
    static Json object() { return of(Object()); }
    template <class Values>
    static Json array(const Values& values)
    {
        return of(Array(values.begin(), values.end()));
    }

    // A document within them takes bounded time and memory.
    struct Limits {
        std::size_t bytes = std::size_t{16} << 20;
        std::size_t depth = 64;     // documents are copied, printed and freed recursively
        std::size_t members = 1000; // of one object, which are looked up one after the other
        std::size_t values = std::size_t{1} << 20;
        bool repeated_names = true; // of members of one name the last counts
    };
    // Throws a JsonError that says what is wrong and where, a JsonLimit about the limit that it exceeds.
    static Json parse(std::string_view text, const Limits& limits);
    static Json parse(std::string_view text) { return parse(text, Limits()); }
    // The same; none where the text is not JSON or exceeds the limits.
    static std::optional<Json> read(std::string_view text);

    const Held& held() const { return held_; }
    Type type() const { return static_cast<Type>(held_.index()); }
    bool is_null() const { return type() == Type::null; }
    bool is_string() const { return type() == Type::text; }
    bool is_array() const { return type() == Type::array; }
    bool is_object() const { return type() == Type::object; }

    // Each throws a JsonError where the document has another type.
    bool boolean() const { return held<bool>("true or false"); }
    const std::string& string() const { return held<std::string>("a text"); }
    template <std::integral Number>
    Number number() const
    {
        const auto fitting = [this](auto number) {
            require(std::in_range<Number>(number), "a number of this size");
            return static_cast<Number>(number);
        };
        return type() == Type::natural ? fitting(std::get<std::uint64_t>(held_))
                                       : fitting(held<std::int64_t>("a whole number"));
    }
    const Array& elements() const { return held<Array>("an array"); }
    const Object& members() const { return held<Object>("an object"); }

    // Of an array.
    Json& push_back(Json value);
    // Of an object: the member, added where there is none.
    Json& operator[](std::string_view name);
    // The same, where the value is not none, false, 0 or an empty text.
    template <class Value>
    requires(!std::is_pointer_v<Value>) void add(std::string_view name, const Value& value)
    {
        if (value != Value()) {
            (*this)[name] = value;
        }
    }
    // Null where there is none, or this is not an object.
    const Json* find(std::string_view name) const;
    bool contains(std::string_view name) const { return find(name) != nullptr; }
    const Json& at(std::string_view name) const;
    const Json& operator[](std::string_view name) const { return at(name); }
    // The value of a member, or `otherwise` where there is none.
    std::string value(std::string_view name, std::string_view otherwise) const;
    template <std::integral Value>
    Value value(std::string_view name, Value otherwise) const
    {
        const Json* const found = find(name);
        if constexpr (std::same_as<Value, bool>) {
            return found != nullptr ? found->boolean() : otherwise;
        } else {
            return found != nullptr ? found->number<Value>() : otherwise;
        }
    }

    bool empty() const { return size() == 0; }
    std::size_t size() const; // 0 unless it is an array or an object
    bool operator==(const Json& other) const;

private:
    void require(bool holds, std::string_view what) const;
    template <class Wanted>
    const Wanted& held(std::string_view what) const
    {
        require(std::holds_alternative<Wanted>(held_), what);
        return std::get<Wanted>(held_);
    }

    Held held_;
};

// Always UTF-8, whatever bytes the texts have, with control characters escaped.
std::string dump(const Json& json, int indent = -1);

} // namespace vor
