// json.hpp: JSON as the tools read and write it: a document that is built, looked into, and made a text.
//
// It stands at the edges, where a text is read or written; what happens in between is typed.
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
#include <vector>

namespace vor {

// A text that is not JSON, or a document that does not hold what was looked for.
struct JsonError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Json {
public:
    enum class Type : std::uint8_t { null, boolean, integer, natural, real, text, array, object };
    struct Member;
    using Array = std::vector<Json>;
    using Object = std::vector<Member>; // in the order in which they were added

    Json();
    Json(std::nullptr_t);
    Json(std::same_as<bool> auto truth) : Json(Type::boolean) { number_ = truth ? 1 : 0; }
    Json(std::same_as<double> auto number) : Json(Type::real) { real_ = number; }
    Json(std::string text);
    Json(std::string_view text);
    Json(const char* text);
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Json(Number number)
        : Json(std::in_range<std::int64_t>(number) ? Type::integer : Type::natural)
    {
        number_ = static_cast<std::uint64_t>(number);
    }
    template <class Enumerator>
    requires(std::is_enum_v<Enumerator>) Json(Enumerator value)
        : Json(static_cast<std::underlying_type_t<Enumerator>>(value))
    {
    }
    // {{"name", value}, ...}
    Json(std::initializer_list<Member> members);
    Json(const Json& other);
    Json(Json&& other) noexcept;
    Json& operator=(const Json& other);
    Json& operator=(Json&& other) noexcept;
    ~Json();

    static Json array();
    static Json object();
    template <class Values>
    static Json array(const Values& values)
    {
        Json json = array();
        for (const auto& value : values) {
            json.push_back(value);
        }
        return json;
    }

    // Throws a JsonError that says what is wrong and where; of two members of one name the later counts. Nothing is
    // built of what is nested deeper.
    static Json parse(std::string_view text, std::size_t deepest = std::numeric_limits<std::size_t>::max());
    // The same; none where the text is not JSON.
    static std::optional<Json> read(std::string_view text,
                                    std::size_t deepest = std::numeric_limits<std::size_t>::max());

    Type type() const { return type_; }
    bool is_null() const { return type_ == Type::null; }
    bool is_integer() const { return type_ == Type::integer || type_ == Type::natural; }
    bool is_string() const { return type_ == Type::text; }
    bool is_array() const { return type_ == Type::array; }
    bool is_object() const { return type_ == Type::object; }

    // Each throws a JsonError where the document holds something else.
    bool boolean() const;
    const std::string& string() const;
    template <std::integral Number>
    Number number() const
    {
        require(is_integer(), "a whole number");
        const bool fits = type_ == Type::integer ? std::in_range<Number>(static_cast<std::int64_t>(number_))
                                                 : std::in_range<Number>(number_);
        require(fits, "a number of this size");
        return static_cast<Number>(number_);
    }
    const Array& elements() const;
    const Object& members() const;

    // Of an array.
    void push_back(Json value);
    // Of an object: the member, added where there is none.
    Json& operator[](std::string_view name);
    // Null: there is none, or this is no object.
    const Json* find(std::string_view name) const;
    bool contains(std::string_view name) const { return find(name) != nullptr; }
    const Json& at(std::string_view name) const;
    const Json& operator[](std::string_view name) const { return at(name); }
    void erase(std::string_view name);
    // What a member holds, or `otherwise` where there is none.
    std::string value(std::string_view name, std::string_view otherwise) const;
    bool value(std::string_view name, std::same_as<bool> auto otherwise) const
    {
        const Json* const found = find(name);
        return found != nullptr ? found->boolean() : otherwise;
    }
    template <std::integral Number>
    requires(!std::same_as<Number, bool>) Number value(std::string_view name, Number otherwise)
    const
    {
        const Json* const found = find(name);
        return found != nullptr ? found->number<Number>() : otherwise;
    }

    bool empty() const { return size() == 0; }
    std::size_t size() const;
    bool operator==(const Json& other) const;

private:
    explicit Json(Type type);
    void require(bool holds, std::string_view what) const;
    friend void write(const Json& json, int indent, int depth, std::string& out);

    Type type_ = Type::null;
    std::uint64_t number_ = 0; // also a boolean
    double real_ = 0;
    std::string text_;
    Array elements_;
    Object members_;
};

struct Json::Member {
    std::string name;
    Json value;

    bool operator==(const Member&) const = default;
};

// Always UTF-8, whatever bytes the texts hold, and no control character raw.
std::string dump(const Json& json, int indent = -1);

} // namespace vor
