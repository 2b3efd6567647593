#include "text/json.hpp"

#include <algorithm>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

namespace vor {

Json::Json() = default;
Json::Json(std::nullptr_t) {}
Json::Json(std::string text) : type_(Type::text), text_(std::move(text)) {}
Json::Json(std::string_view text) : type_(Type::text), text_(text) {}
Json::Json(const char* text) : type_(Type::text), text_(text) {}
Json::Json(std::initializer_list<Member> members) : type_(Type::object), members_(members) {}
Json::Json(Type type) : type_(type) {}
Json::Json(const Json& other) = default;
Json::Json(Json&& other) noexcept = default;
Json& Json::operator=(const Json& other) = default;
Json& Json::operator=(Json&& other) noexcept = default;
Json::~Json() = default;

Json Json::array()
{
    return Json(Type::array);
}

Json Json::object()
{
    return Json(Type::object);
}

void Json::require(bool holds, std::string_view what) const
{
    if (!holds) {
        throw JsonError(fmt::format("{} stands where {} is expected", dump(*this), what));
    }
}

bool Json::boolean() const
{
    require(type_ == Type::boolean, "true or false");
    return number_ != 0;
}

const std::string& Json::string() const
{
    require(is_string(), "a text");
    return text_;
}

const Json::Array& Json::elements() const
{
    require(is_array(), "an array");
    return elements_;
}

const Json::Object& Json::members() const
{
    require(is_object(), "an object");
    return members_;
}

void Json::push_back(Json value)
{
    type_ = is_null() ? Type::array : type_;
    require(is_array(), "an array");
    elements_.push_back(std::move(value));
}

Json& Json::operator[](std::string_view name)
{
    type_ = is_null() ? Type::object : type_;
    require(is_object(), "an object");
    const auto found = std::ranges::find(members_, name, &Member::name);
    return found != members_.end() ? found->value : members_.emplace_back(std::string(name), Json()).value;
}

const Json* Json::find(std::string_view name) const
{
    const auto found = std::ranges::find(members_, name, &Member::name);
    return found != members_.end() ? &found->value : nullptr;
}

const Json& Json::at(std::string_view name) const
{
    const Json* const found = find(name);
    return found != nullptr ? *found : throw JsonError(fmt::format("there is no \"{}\"", name));
}

void Json::erase(std::string_view name)
{
    std::erase_if(members_, [name](const Member& member) { return member.name == name; });
}

std::string Json::value(std::string_view name, std::string_view otherwise) const
{
    const Json* const found = find(name);
    return found != nullptr ? found->string() : std::string(otherwise);
}

std::size_t Json::size() const
{
    return is_array() ? elements_.size() : is_object() ? members_.size() : is_null() ? 0 : 1;
}

bool Json::operator==(const Json& other) const = default;

namespace {

// Builds a document of what the parser meets.
class Builder {
public:
    explicit Builder(std::size_t deepest) : deepest_(deepest) {}

    bool null() { return take({}); }
    bool boolean(bool truth) { return take(truth); }
    bool number_integer(std::int64_t number) { return take(number); }
    bool number_unsigned(std::uint64_t number) { return take(number); }
    bool number_float(double number, const std::string&) { return take(number); }
    bool string(std::string& text) { return take(std::move(text)); }
    bool binary(std::vector<std::uint8_t>&) { return false; }
    bool start_object(std::size_t) { return open(Json::object()); }
    bool start_array(std::size_t) { return open(Json::array()); }
    bool key(std::string& name)
    {
        member_ = &(*open_.back())[name];
        return true;
    }
    bool end_object() { return close(); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error)
    {
        throw JsonError(error.what());
    }

    Json take_result() { return std::move(result_); }

private:
    Json& place()
    {
        if (open_.empty()) {
            return result_;
        }
        if (open_.back()->is_object()) {
            return *member_;
        }
        open_.back()->push_back({});
        return const_cast<Json&>(open_.back()->elements().back());
    }
    bool take(Json value)
    {
        place() = std::move(value);
        return true;
    }
    bool open(Json container)
    {
        if (open_.size() == deepest_) {
            throw JsonError("it is nested too deep");
        }
        Json& at = place();
        at = std::move(container);
        open_.push_back(&at);
        return true;
    }
    bool close()
    {
        open_.pop_back();
        return true;
    }

    std::size_t deepest_;
    Json result_;
    std::vector<Json*> open_; // from the outermost on
    Json* member_ = nullptr;  // whose value comes next
};

} // namespace

Json Json::parse(std::string_view text, std::size_t deepest)
{
    Builder builder(deepest);
    nlohmann::json::sax_parse(text, &builder);
    return builder.take_result();
}

std::optional<Json> Json::read(std::string_view text, std::size_t deepest)
try {
    return parse(text, deepest);
} catch (const JsonError&) {
    return {};
}

namespace {

bool is_plain(char character)
{
    return character >= ' ' && character < 0x7f && character != '"' && character != '\\';
}

void write_text(const std::string& text, std::string& out)
{
    if (std::ranges::all_of(text, is_plain)) {
        out += fmt::format("\"{}\"", text);
        return;
    }
    const std::string spelt = nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    for (std::size_t at = 0; at < spelt.size(); ++at) {
        const auto byte = static_cast<unsigned char>(spelt[at]);
        const auto next = static_cast<unsigned char>(at + 1 < spelt.size() ? spelt[at + 1] : 0);
        if (byte == 0x7f) {
            out += "\\u007f";
        } else if (byte == 0xc2 && next < 0xa0) { // the second set of control characters
            out += fmt::format("\\u00{:02x}", next);
            ++at;
        } else {
            out += spelt[at];
        }
    }
}

} // namespace

void write(const Json& json, int indent, int depth, std::string& out)
{
    const auto begin_line = [&](int deep) {
        if (indent >= 0) {
            out += '\n';
            out.append(static_cast<std::size_t>(indent * deep), ' ');
        }
    };
    const auto write_all = [&](char open, const auto& items, auto write_item, char close) {
        out += open;
        bool first = true;
        for (const auto& item : items) {
            out += first ? "" : ",";
            first = false;
            begin_line(depth + 1);
            write_item(item);
        }
        if (!items.empty()) {
            begin_line(depth);
        }
        out += close;
    };
    switch (json.type_) {
    case Json::Type::null:
        out += "null";
        break;
    case Json::Type::boolean:
        out += json.number_ != 0 ? "true" : "false";
        break;
    case Json::Type::integer:
        out += std::to_string(static_cast<std::int64_t>(json.number_));
        break;
    case Json::Type::natural:
        out += std::to_string(json.number_);
        break;
    case Json::Type::real:
        out += nlohmann::json(json.real_).dump();
        break;
    case Json::Type::text:
        write_text(json.text_, out);
        break;
    case Json::Type::array:
        write_all(
            '[', json.elements_, [&](const Json& element) { write(element, indent, depth + 1, out); }, ']');
        break;
    case Json::Type::object:
        write_all(
            '{', json.members_,
            [&](const Json::Member& member) {
                write_text(member.name, out);
                out += indent >= 0 ? ": " : ":";
                write(member.value, indent, depth + 1, out);
            },
            '}');
        break;
    }
}

std::string dump(const Json& json, int indent)
{
    std::string out;
    write(json, indent, 0, out);
    return out;
}

} // namespace vor
