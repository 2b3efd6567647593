// The description of the interface: as it is kept in the tree, against the managers' tables, and enough to build the
// bytes of every call that it does not call computed.
#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include <fmt/core.h>
#include <fnmatch.h>
#include <gtest/gtest.h>

#include "call/session.hpp"
#include "output/output.hpp"
#include "processes.hpp"
#include "records.hpp"
#include "rows/families.hpp"
#include "tables/managers.hpp"
#include "text/json.hpp"
#include "text/text.hpp"

using namespace vorcfg;
using vor::Json;

namespace {

const std::filesystem::path kept = VOR_SOURCE_DIR "/docs/device_mgmt.json";

std::string name_of(const Json& call)
{
    return fmt::format("{} {}", call["family"].string(), call["name"].string());
}

// Null where the bytes of its message do not follow from the description alone.
const Json* wire_of(const Json& call)
{
    const Json* const wire = call.find("wire");
    return wire != nullptr && !wire->contains("computed") ? wire : nullptr;
}

// Of a list one item on each line, so that a difference shows what it is about.
std::vector<std::string> laid_out(const Json& description)
{
    std::vector<std::string> lines{"{"};
    for (const auto& [name, value] : description.members()) {
        lines.back() += lines.size() == 1 ? "" : ",";
        if (!value.is_array()) {
            lines.push_back(fmt::format("\"{}\": {}", name, vor::dump(value)));
            continue;
        }
        lines.push_back(fmt::format("\"{}\": [", name));
        for (const Json& item : value.elements()) {
            lines.push_back(fmt::format("{}{}", vor::dump(item), &item == &value.elements().back() ? "" : ","));
        }
        lines.emplace_back("]");
    }
    lines.emplace_back("}");
    return lines;
}

TEST(description, is_kept_in_the_tree)
{
    EXPECT_EQ("", processes::mismatch(output::description_json()));
    const std::vector<std::string> lines = laid_out(output::description());
    if (std::getenv("VOR_REGENERATE") != nullptr && !HasFailure()) {
        std::ofstream(kept) << vor::joined(lines, "\n") << '\n';
    }
    const std::string text = processes::contents(kept);
    const std::vector<std::string_view> before = vor::lines_in(text);
    EXPECT_EQ(before.size(), lines.size());
    for (std::size_t i = 0; i < std::min(lines.size(), before.size()); i++) {
        EXPECT_EQ(before[i], lines[i]) << "docs/device_mgmt.json: scripts/regenerate writes it anew";
    }
}

// --- The managers' tables ---------------------------------------------------------------

using vorsim::tables::Form;
using vorsim::tables::Kind;

// A part of a message, as both describe it.
struct Part {
    std::int64_t at; // a tag or an offset
    std::string kind;
    std::string from;
    bool repeats;

    bool operator==(const Part&) const = default;
};

void PrintTo(const Part& part, std::ostream* stream)
{
    *stream << part.from << " at " << part.at << ", " << part.kind << (part.repeats ? " each" : "");
}

std::vector<Part> described_parts(const Json& wire)
{
    std::vector<Part> parts;
    const Json* const elements = wire.find("elements");
    for (const Json& part : (elements != nullptr ? *elements : wire["record"]["fields"]).elements()) {
        const std::string kind = part["kind"].string();
        if (elements != nullptr) {
            const std::string shown = part.contains("address") ? "address" : kind;
            parts.push_back({part["tag"].number<int>(), shown, part["from"].string(), part.contains("each")});
        } else {
            const std::string shown = kind == "number" ? fmt::format("{} bytes", part["size"].number<int>()) : kind;
            parts.push_back({part["offset"].number<int>(), shown, part["from"].string(), false});
        }
    }
    return parts;
}

std::vector<Part> expected_parts(const vorsim::tables::Layout& layout)
{
    static constexpr const char* kinds[] = {"raw", "i16", "i32", "str"};
    std::vector<Part> parts;
    for (const vorsim::tables::Field& field : layout.fields()) {
        const std::string kind = field.display == vorsim::tables::Display::address ? "address"
                                 : layout.form == Form::record ? fmt::format("{} bytes", field.size())
                                                               : kinds[static_cast<std::size_t>(field.kind)];
        parts.push_back({field.tag_or_offset, kind, std::string(field.name), field.repeated});
    }
    return parts;
}

// The row of a call's message: one for several calls has a pattern for their names, and a call may have several.
const vorsim::tables::ListedRow* row_for(const std::string& symbol, std::uint32_t id)
{
    const vorsim::tables::ListedRow* found = nullptr;
    int best = 0;
    for (const auto& listed : vorsim::tables::all_rows()) {
        const std::string pattern(listed.row->call);
        const int likeness = fnmatch(pattern.c_str(), symbol.c_str(), 0) != 0 ? 0
                             : pattern != symbol                              ? 1
                             : listed.row->exchange.id != id                  ? 2
                                                                              : 3;
        found = likeness > best ? &listed : found;
        best = std::max(best, likeness);
    }
    return found;
}

bool has(const Json& numbers, std::int64_t number)
{
    return std::ranges::find(numbers.elements(), Json(number)) != numbers.elements().end();
}

void compare(const Json& wire, const vorsim::tables::ListedRow& listed)
{
    const vorsim::tables::MessageRow& row = *listed.row;
    const auto lead = [&](Form form) { return row.layout.form == form ? std::string(row.layout.lead) : ""; };
    EXPECT_TRUE(wire.contains("sap_from") ? listed.manager == vorsim::tables::any_manager
                                          : listed.serves(wire["sap"].number<std::uint16_t>()));
    EXPECT_EQ(row.exchange.answered, wire["way"].string() == "request");
    if (const Json* const answer = wire.find("answer"); answer != nullptr && !answer->at("ids").empty()) {
        EXPECT_TRUE(has(answer->at("ids"), row.exchange.answer_id));
        EXPECT_TRUE(!answer->contains("accepted") || has(answer->at("accepted"), row.exchange.accepted));
    }
    EXPECT_EQ(row.exchange.id, wire["id"].number<std::uint32_t>());
    EXPECT_EQ(lead(Form::option_byte), wire.value("option_from", ""));
    EXPECT_EQ(lead(Form::flag_byte), wire.value("flag_from", ""));
    EXPECT_EQ(row.layout.form != Form::record, wire.contains("elements"));
    if (row.layout.form == Form::record) {
        EXPECT_EQ(row.layout.length, wire["record"]["size"].number<int>());
    }
    std::vector<Part> expected = expected_parts(row.layout);
    const std::vector<Part> described = described_parts(wire);
    if (wire.contains("computed")) { // some of them
        std::erase_if(expected,
                      [&](const Part& part) { return std::ranges::find(described, part) == described.end(); });
    }
    EXPECT_EQ(expected, described);
}

TEST(description, agrees_with_the_managers)
{
    const Json description = output::description();
    std::size_t computed = 0;
    for (const Json& call : description["calls"].elements()) {
        const Json* const wire = call.find("wire");
        if (wire == nullptr) {
            continue;
        }
        SCOPED_TRACE(name_of(call));
        computed += wire->contains("computed") ? 1 : 0;
        if ((*wire)["way"].string() == "konfd") {
            continue;
        }
        const auto* const listed = row_for(call["symbol"].string(), (*wire)["id"].number<std::uint32_t>());
        ASSERT_NE(nullptr, listed) << "no manager receives its message";
        compare(*wire, *listed);
    }
    EXPECT_LE(computed, 20U);
}

// --- An encoder that knows the description only ------------------------------------------

using Values = std::map<std::string, std::vector<Json>>; // numbers and texts, by their arguments

struct Bytes {
    std::uint16_t sap = 0;
    std::uint32_t id = 0;
    bool awaits = false;
    std::string meta_data;
    std::string payload;
    std::string known; // of the payload: a byte that is not 0 for each that the call writes
};

class Encoder {
public:
    explicit Encoder(const Json& description) : chain_(description["chain"]) {}

    Bytes encoded(const Json& call, const Values& values) const
    {
        const Json& wire = call["wire"];
        const auto number = [&](const Json& from) { return values.at(from.string()).front().number<std::int64_t>(); };
        const auto byte = [&](const char* from) {
            return wire.contains(from) ? std::string(1, static_cast<char>(number(wire[from]))) : std::string();
        };
        Bytes bytes{.sap = wire["sap"].number<std::uint16_t>(),
                    .id = wire["id"].number<std::uint32_t>(),
                    .awaits = wire["way"].string() == "request",
                    .meta_data = byte("option_from"),
                    .payload = byte("flag_from"),
                    .known = {}};
        if (wire.contains("sap_from")) {
            bytes.sap = static_cast<std::uint16_t>(number(wire["sap_from"]));
        }
        if (const Json* const elements = wire.find("elements")) {
            for (const Json& element : elements->elements()) {
                for (const Json& value : values.at(element["from"].string())) {
                    bytes.payload += encoded_element(element, value);
                }
            }
            bytes.known.assign(bytes.payload.size(), '\1');
            return bytes;
        }
        bytes.payload.resize(wire["record"]["size"].number<std::size_t>());
        bytes.known.resize(bytes.payload.size());
        for (const Json& field : wire["record"]["fields"].elements()) {
            const auto size = field["size"].number<std::size_t>();
            const auto offset = field["offset"].number<std::size_t>();
            const Json& value = values.at(field["from"].string()).front();
            const std::uint64_t bits = field["kind"].string() == "address"
                                           ? address(value)
                                           : static_cast<std::uint64_t>(value.number<std::int64_t>());
            bytes.payload.replace(offset, size, digits(bits, size, false));
            bytes.known.replace(offset, size, std::string(size, '\1'));
        }
        return bytes;
    }

private:
    static std::string digits(std::uint64_t number, std::size_t size, bool high_byte_first)
    {
        std::string text;
        for (std::size_t i = 0; i < size; i++) {
            text += static_cast<char>(number >> (8 * (high_byte_first ? size - 1 - i : i)));
        }
        return text;
    }

    // Its first number is in the lowest byte.
    static std::uint64_t address(const Json& quad)
    {
        in_addr parsed{};
        EXPECT_EQ(1, inet_pton(AF_INET, quad.string().c_str(), &parsed));
        return parsed.s_addr;
    }

    std::string encoded_element(const Json& element, const Json& value) const
    {
        const bool high_byte_first = chain_["high_byte_first"].boolean();
        const std::string kind = element["kind"].string();
        std::string data;
        if (kind == "str") {
            data = value.string() + std::string(chain_["text_end"].number<std::size_t>(), '\0');
        } else {
            const std::size_t size = kind == "raw" ? 1 : kind == "i16" ? 2 : 4;
            const std::uint64_t bits =
                element.contains("address") ? address(value) : static_cast<std::uint64_t>(value.number<std::int64_t>());
            data = digits(bits, size, high_byte_first);
        }
        std::string header(chain_["header_size"].number<std::size_t>(), '\0');
        header.replace(chain_["tag_offset"].number<std::size_t>(), 2,
                       digits(element["tag"].number<std::uint16_t>(), 2, high_byte_first));
        header.replace(chain_["length_offset"].number<std::size_t>(), 2, digits(data.size(), 2, high_byte_first));
        header.replace(chain_["kind_offset"].number<std::size_t>(), 1,
                       digits(chain_["kinds"][kind].number<std::uint8_t>(), 1, high_byte_first));
        return header + data;
    }

    const Json& chain_;
};

// --- Values for a call's arguments -------------------------------------------------------

class Choice {
public:
    enum class Of : std::uint8_t { least, most, random };

    Choice(Of of, const Json& description) : of_(of), description_(description) {}

    Values values_for(const Json& call)
    {
        Values values;
        std::string counted;
        for (const Json& argument : call["arguments"].elements()) {
            const std::string name = argument["name"].string();
            if (argument.contains("counted")) {
                counted = name;
            } else if (argument.contains("list")) {
                values[name].resize(size_of(call, argument));
                std::ranges::generate(values[name], [&] { return value_for(call, argument); });
                values[counted] = {Json(values[name].size())};
            } else if (argument["kind"].string() != "result") {
                values[name] = {value_for(call, argument)};
            }
        }
        return values;
    }

private:
    std::int64_t number(std::int64_t least, std::int64_t most)
    {
        return of_ == Of::least  ? least
               : of_ == Of::most ? most
                                 : std::uniform_int_distribution<std::int64_t>(least, most)(random_);
    }

    std::size_t size_of(const Json& call, const Json& argument)
    {
        const auto room =
            description_["chain"]["most_elements"].number<std::size_t>() - call["wire"]["elements"].size();
        const auto most = std::min(room, argument["longest_list"].number<std::size_t>());
        return static_cast<std::size_t>(number(0, static_cast<std::int64_t>(most)));
    }

    Json value_for(const Json& call, const Json& argument)
    {
        const std::string kind = argument["kind"].string();
        if (kind == "text") {
            constexpr std::int64_t longest = 60;
            std::string text(static_cast<std::size_t>(number(1, longest)), 'x');
            std::ranges::generate(text, [this] { return static_cast<char>(number('!', '~')); });
            return text;
        }
        if (kind == "ipv4") {
            return fmt::format("{}.{}.{}.{}", number(0, 255), number(0, 255), number(0, 255), number(0, 255));
        }
        if (of_ == Of::random && call["wire"].value("sap_from", "") == argument["name"].string()) {
            return served_sap();
        }
        const auto most = argument["maximum"].number<std::int64_t>();
        const bool restarts = of_ == Of::random && call.contains("waits"); // long after the test
        return number(restarts ? most / 2 : argument["minimum"].number<std::int64_t>(), most);
    }

    // Of a manager to which another call's message goes.
    Json served_sap()
    {
        const auto& calls = description_["calls"].elements();
        for (;;) {
            const Json* const wire = wire_of(calls[static_cast<std::size_t>(number(0, std::ssize(calls) - 1))]);
            if (wire != nullptr && !wire->contains("sap_from")) {
                return (*wire)["sap"];
            }
        }
    }

    const Of of_;
    const Json& description_;
    std::mt19937 random_{17};
};

call::PreparedCall prepared(const rows::Row& row, const Values& values)
{
    call::PreparedCall call{&row, {}, {}};
    for (const rows::Argument& argument : row.arguments()) {
        const auto given = values.find(std::string(argument.name));
        for (const Json& value : given != values.end() ? given->second : std::vector<Json>(argument.is_list ? 0 : 1)) {
            rows::Value& made = call.values.emplace_back();
            made.text = value.is_string() ? value.string() : "";
            made.number = value.is_string() || value.is_null() ? 0 : value.number<std::int64_t>();
            made.text += argument.kind == rows::Kind::decimal ? std::to_string(made.number) : "";
        }
    }
    return call;
}

std::string in_hexadecimal(const std::string& bytes)
{
    std::string digits = vor::hexadecimal(bytes);
    std::erase(digits, ' ');
    return digits;
}

// The same payload but for the bytes that the call does not write.
std::string masked(std::string digits, const std::string& known)
{
    for (std::size_t i = 0; i < std::min(known.size(), digits.size() / 2); i++) {
        if (known[i] == '\0') {
            digits.replace(2 * i, 2, "..");
        }
    }
    return digits;
}

TEST(description, is_enough_to_build_every_message)
{
    const processes::Workplace place;
    place.enter();
    const std::filesystem::path journal = place.path() / "journal";
    processes::Gateway gateway(place, {"--journal", journal, "--show-secrets", "--sap", "65535"});
    const Json description = Json::parse(processes::contents(kept));
    const Encoder encoder(description);
    std::vector<std::pair<std::string, Bytes>> expected;
    {
        call::Session session({}, std::nullopt);
        using enum Choice::Of;
        for (const Choice::Of of : {least, most, random}) {
            Choice choice(of, description);
            for (const Json& call : description["calls"].elements()) {
                if (wire_of(call) == nullptr) {
                    continue;
                }
                const rows::Row& row = *rows::row_named(call["family"].string(), call["name"].string());
                for (int i = 0; i < (of == random ? 5 : 1); i++) {
                    const Values values = choice.values_for(call);
                    call::PreparedCall made = prepared(row, values);
                    session.make(made);
                    expected.emplace_back(name_of(call), encoder.encoded(call, values));
                    EXPECT_NE("", gateway.next_line()) << name_of(call);
                }
            }
        }
    }
    EXPECT_EQ(0, gateway.stop(SIGTERM));
    const std::string text = processes::contents(journal);
    auto next = expected.begin();
    for (const std::string_view line : vor::lines_in(text)) {
        const Json record = Json::parse(line);
        if (!record.contains("payload")) {
            continue;
        }
        ASSERT_NE(expected.end(), next) << line;
        const auto& [name, bytes] = *next++;
        EXPECT_EQ(bytes.sap, record["sap"].number<std::uint16_t>()) << name;
        EXPECT_EQ(fmt::format("0x{:x}", bytes.id), record["id"].string()) << name;
        EXPECT_EQ(bytes.awaits, record["awaits"].boolean()) << name;
        EXPECT_EQ(in_hexadecimal(bytes.meta_data), record["meta_data"].string()) << name;
        EXPECT_EQ(masked(in_hexadecimal(bytes.payload), bytes.known), masked(record["payload"].string(), bytes.known))
            << name;
    }
    EXPECT_EQ(expected.end(), next) << next->first;
}

} // namespace
