#include "text/json.hpp"

#include <algorithm>
#include <unordered_set>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "text/text.hpp"

namespace vor {

void Json::require(bool holds, std::string_view what) const
{
    if (!holds) {
        throw JsonError(fmt::format("expected {1}, not {0}", dump(*this), what));
    }
}

Json& Json::push_back(Json value)
{
    if (is_null()) {
        held_ = Array();
    }
    require(is_array(), "an array");
    return std::get<Array>(held_).emplace_back(std::move(value));
}

Json& Json::operator[](std::string_view name)
{
    if (is_null()) {
        held_ = Object();
    }
    require(is_object(), "an object");
    auto& members = std::get<Object>(held_);
    const auto found = std::ranges::find(members, name, &Member::first);
    return found != members.end() ? found->second : members.emplace_back(name, Json()).second;
}

const Json* Json::find(std::string_view name) const
{
    static const Object none;
    const auto& members = is_object() ? std::get<Object>(held_) : none;
    const auto found = std::ranges::find(members, name, &Member::first);
    return found != members.end() ? &found->second : nullptr;
}

const Json& Json::at(std::string_view name) const
{
    const Json* const found = find(name);
    return found != nullptr ? *found : throw JsonError(fmt::format("missing \"{}\"", name));
}

std::string Json::value(std::string_view name, std::string_view otherwise) const
{
    const Json* const found = find(name);
    return found != nullptr ? found->string() : std::string(otherwise);
}

std::size_t Json::size() const
{
    if (is_array()) {
        return elements().size();
    }
    return is_object() ? members().size() : 0;
}

// Written out: clang 14 crashes on the default.
bool Json::operator==(const Json& other) const
{
    return held_ == other.held_;
}

namespace {

// Of members of one name, the first gets the value of the last; the others are removed.
void merge_repeated(Json::Object& members)
{
    std::vector<Json::Member*> sorted;
    for (Json::Member& member : members) {
        sorted.push_back(&member);
    }
    std::ranges::stable_sort(sorted, {}, [](const Json::Member* member) { return std::string_view(member->first); });
    std::unordered_set<const Json::Member*> repeated;
    for (std::size_t i = sorted.size(); i-- > 1;) {
        if (sorted[i]->first == sorted[i - 1]->first) {
            sorted[i - 1]->second = std::move(sorted[i]->second);
            repeated.insert(sorted[i]);
        }
    }
    std::erase_if(members, [&](const Json::Member& member) { return repeated.contains(&member); });
}

// Builds a document from the parser's events.
class Builder {
public:
    explicit Builder(const Json::Limits& limits) : limits_(limits) {}

    bool null() { return take({}); }
    bool boolean(bool truth) { return take(truth); }
    bool number_integer(std::int64_t number) { return take(number); }
    bool number_unsigned(std::uint64_t number) { return take(number); }
    bool number_float(double number, const std::string&) { return take(number); }
    bool string(std::string& text) { return take(std::move(text)); }
    bool binary(std::vector<std::uint8_t>&) { return false; }
    bool start_object(std::size_t) { return open(Json::Object()); }
    bool start_array(std::size_t) { return open(Json::Array()); }
    bool key(std::string& name)
    {
        auto& members = std::get<Json::Object>(open_.back());
        limit(members.size() + 1, limits_.members, "members in an object");
        members.emplace_back(std::move(name), Json());
        return true;
    }
    bool end_object()
    {
        auto& members = std::get<Json::Object>(open_.back());
        const std::size_t given = members.size();
        merge_repeated(members);
        if (!limits_.repeated_names && members.size() != given) {
            throw JsonLimit("two members of one name");
        }
        return close();
    }
    bool end_array() { return close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error)
    {
        const std::string_view what = error.what(); // "[kind] where: what"
        throw JsonError(std::string(what.substr(what.find("] ") + 2)));
    }

    Json take_result() { return std::move(result_); }

private:
    static void limit(std::size_t number, std::size_t most, std::string_view what)
    {
        if (number > most) {
            throw JsonLimit(fmt::format("more than {} {}", most, what));
        }
    }
    bool take(Json value)
    {
        limit(++values_, limits_.values, "values");
        if (open_.empty()) {
            result_ = std::move(value);
        } else if (auto* const members = std::get_if<Json::Object>(&open_.back())) {
            members->back().second = std::move(value);
        } else {
            std::get<Json::Array>(open_.back()).push_back(std::move(value));
        }
        return true;
    }
    bool open(Json::Held container)
    {
        limit(open_.size() + 1, limits_.depth, "levels");
        open_.push_back(std::move(container));
        return true;
    }
    bool close()
    {
        Json container = Json::of(std::move(open_.back()));
        open_.pop_back();
        return take(std::move(container));
    }

    const Json::Limits limits_;
    std::size_t values_ = 0;
    Json result_;
    std::vector<Json::Held> open_; // from the outermost on
};

} // namespace

Json Json::parse(std::string_view text, const Limits& limits)
{
    if (text.size() > limits.bytes) {
        throw JsonLimit(fmt::format("more than {} MiB", limits.bytes >> 20));
    }
    Builder builder(limits);
    nlohmann::json::sax_parse(text, &builder);
    return builder.take_result();
}

std::optional<Json> Json::read(std::string_view text)
try {
    return parse(text);
} catch (const JsonError&) {
    return {};
}

namespace {

class Writer {
public:
    explicit Writer(int indent) : indent_(indent) {}

    void operator()(std::monostate) { out_ += "null"; }
    void operator()(bool truth) { out_ += truth ? "true" : "false"; }
    void operator()(std::integral auto number) { out_ += std::to_string(number); }
    void operator()(double number) { out_ += nlohmann::json(number).dump(); }
    void operator()(const std::string& text);
    void operator()(const Json& json) { std::visit(*this, json.held()); }
    void operator()(const Json::Array& elements) { write('[', elements, ']'); }
    void operator()(const Json::Object& members) { write('{', members, '}'); }
    void operator()(const Json::Member& member)
    {
        (*this)(member.first);
        out_ += indent_ >= 0 ? ": " : ":";
        (*this)(member.second);
    }

    std::string take_result() { return std::move(out_); }

private:
    void begin_line()
    {
        if (indent_ >= 0) {
            out_ += '\n';
            out_.append(static_cast<std::size_t>(indent_ * depth_), ' ');
        }
    }
    template <class Items>
    void write(char open, const Items& items, char close)
    {
        out_ += open;
        depth_++;
        for (const auto& item : items) {
            out_ += &item == &items.front() ? "" : ",";
            begin_line();
            (*this)(item);
        }
        depth_--;
        if (!items.empty()) {
            begin_line();
        }
        out_ += close;
    }

    const int indent_;
    int depth_ = 0;
    std::string out_;
};

bool needs_no_escape(char character)
{
    return character >= ' ' && character < 0x7f && character != '"' && character != '\\';
}

void Writer::operator()(const std::string& text)
{
    if (std::ranges::all_of(text, needs_no_escape)) {
        out_ += fmt::format("\"{}\"", text);
        return;
    }
    const auto spelt = [](std::string_view part, bool ascii) {
        return nlohmann::json(part).dump(-1, ' ', ascii, nlohmann::json::error_handler_t::replace);
    };
    const std::string all = spelt(text, false);
    for (std::string_view left = all; !left.empty();) {
        const std::string_view character = left.substr(0, character_length(left));
        const std::string escaped = is_visible(character) ? "" : spelt(character, true);
        out_ += escaped.empty() ? character : std::string_view(escaped).substr(1, escaped.size() - 2);
        left.remove_prefix(character.size());
    }
}

} // namespace

std::string dump(const Json& json, int indent)
{
    Writer writer(indent);
    writer(json);
    return writer.take_result();
}

} // namespace vor
