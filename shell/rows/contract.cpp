#include "rows/contract.hpp"

#include <algorithm>
#include <cctype>
#include <map>

#include <fmt/core.h>

#include "input/input_error.hpp"
#include "input/words.hpp"
#include "rows/binding.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

#include "header_texts.hpp" // of the headers themselves, by the build

namespace vorcfg::rows {

namespace {

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\n*");
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t\n") + 1 - first);
}

void join(std::string& text, std::string_view more)
{
    if (!text.empty() && !more.empty()) {
        text += ' ';
    }
    text += more;
}

// The lines of a comment without asterisks.
std::vector<std::string_view> lines_of_comment(std::string_view comment)
{
    std::vector<std::string_view> lines = vor::lines_in(comment);
    std::ranges::transform(lines, lines.begin(), trimmed);
    return lines;
}

// Separated by empty lines.
std::vector<std::string> paragraphs_of(std::string_view comment)
{
    std::vector<std::string> paragraphs(1);
    for (const std::string_view line : lines_of_comment(comment)) {
        if (line.empty() && !paragraphs.back().empty()) {
            paragraphs.emplace_back();
        }
        join(paragraphs.back(), line);
    }
    if (paragraphs.back().empty()) {
        paragraphs.pop_back();
    }
    return paragraphs;
}

void read_tag(CallContract& call, std::string_view text)
{
    static constexpr std::string_view param = "@param ";
    static constexpr std::string_view returns = "@return ";
    if (text.starts_with(param)) {
        text.remove_prefix(param.size());
        const std::size_t end = std::min(text.find(' '), text.size());
        call.arguments.emplace_back(text.substr(0, end), trimmed(text.substr(end)));
    } else if (text.starts_with(returns)) {
        call.returned = text.substr(returns.size());
    }
}

CallContract read_call(std::string_view comment, std::string_view declaration)
{
    CallContract call;
    call.returned = "the common codes";
    for (const std::string_view line : lines_of_comment(declaration)) {
        join(call.declaration, line);
    }
    const std::size_t open = call.declaration.find('(');
    const std::size_t begin = call.declaration.find_last_of(" *", open) + 1;
    call.symbol = call.declaration.substr(begin, open - begin);
    const std::size_t tags = std::min(comment.find('@'), comment.size());
    call.paragraphs = paragraphs_of(comment.substr(0, tags));
    std::string tag;
    for (const std::string_view line : lines_of_comment(comment.substr(tags))) {
        if (line.starts_with('@')) {
            read_tag(call, tag);
            tag.clear();
        }
        join(tag, line);
    }
    read_tag(call, tag);
    return call;
}

HeaderContract read_header(std::string_view text)
{
    HeaderContract header;
    header.paragraphs = paragraphs_of(text.substr(2, text.find("*/") - 2));
    for (std::size_t at = text.find("/**"); at != std::string_view::npos; at = text.find("/**")) {
        text.remove_prefix(at + 3);
        const std::size_t end = text.find("*/");
        const std::size_t semicolon = text.find(';', end);
        header.calls.push_back(read_call(text.substr(0, end), text.substr(end + 2, semicolon - end - 2)));
        text.remove_prefix(semicolon);
    }
    return header;
}

} // namespace

std::string CallContract::summary() const
{
    std::string first = paragraphs.empty() ? symbol : paragraphs.front();
    first.resize(std::min({first.find(". "), first.find_last_not_of('.') + 1, first.size()}));
    first.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(first.front())));
    return first;
}

// "the common codes; -1151 for more than 4 servers": each part begins with its code.
std::vector<std::int32_t> CallContract::codes() const
{
    static constexpr std::int32_t common[] = {VOR_CODE_DONE, VOR_CODE_REFUSED, VOR_CODE_UNDELIVERED,
                                              VOR_CODE_UNREADABLE};
    std::vector<std::int32_t> codes;
    for (std::string_view left = returned; !left.empty();) {
        const std::string_view part = left.substr(0, left.find("; "));
        left.remove_prefix(std::min(part.size() + 2, left.size()));
        if (part == "the common codes") {
            codes.assign(std::begin(common), std::end(common));
        } else if (const auto code = vor::number_in<std::int32_t>(part.substr(0, part.find_first_of(" ,")))) {
            codes.push_back(*code);
        }
    }
    return codes;
}

std::string_view CallContract::unit(const Argument& argument) const
{
    static constexpr std::string_view before = "in ";
    static constexpr std::string_view after = " unit";
    std::string_view text = about(argument);
    if (text == "seconds") {
        return text;
    }
    text = text.substr(0, std::min(text.find(after), text.size()));
    const std::size_t begin = text.rfind(before);
    const bool is_one = begin != text.npos && text.size() < about(argument).size();
    return is_one ? text.substr(begin + before.size()) : "";
}

bool CallContract::passes_unchanged(const Argument& argument) const
{
    const std::string_view text = about(argument);
    return text.ends_with("unchanged") || (text.ends_with("as the manager codes it") && !text.starts_with("its low "));
}

std::string_view CallContract::about(const Argument& argument) const
{
    const auto found = std::ranges::find(arguments, argument.is_list ? "..." : argument.name,
                                         [](const auto& each) { return std::string_view{each.first}; });
    return found != arguments.end() ? std::string_view{found->second} : std::string_view{};
}

std::string_view CallContract::meaning(const Argument& argument) const
{
    static constexpr std::string_view unchanged = "passed to the manager unchanged";
    std::string_view text = about(argument);
    if (text.ends_with(unchanged)) {
        text.remove_suffix(unchanged.size());
        text.remove_suffix(text.ends_with(", ") ? 2 : 0);
    }
    return text;
}

std::string_view CallContract::told(const Argument& argument) const
{
    std::string_view text = about(argument);
    if (!argument.is_sent && text == "accepted, never sent") { // as its kind says
        return "";
    }
    for (const std::string_view how : {", passed to the ", ", its low 16 bits ", ", its low 8 bits "}) {
        if (text.starts_with(how.substr(2))) {
            return "";
        }
        text = text.substr(0, text.find(how));
    }
    return text;
}

std::string CallContract::told_return() const
{
    static constexpr std::string_view common = "the common codes";
    std::string_view text = returned;
    if (!text.starts_with(common)) {
        return fmt::format("The library returns {}.", text);
    }
    text.remove_prefix(std::min(common.size() + 2, text.size()));
    return text.empty() ? "" : fmt::format("The library also returns {}.", text);
}

std::vector<std::string> told(const std::vector<std::string>& paragraphs)
{
    std::vector<std::string> all;
    for (std::string_view left : paragraphs) {
        std::string text;
        while (!left.empty() && !left.starts_with("Message buffers kept")) {
            const std::size_t end = std::min(left.find(". "), left.size() - 1) + 1;
            const std::string_view said = left.substr(0, end);
            left.remove_prefix(std::min(end + 1, left.size()));
            join(text, said.find("vor_errno") == std::string_view::npos ? said : "");
        }
        if (!text.empty()) {
            all.push_back(std::move(text));
        }
    }
    return all;
}

const HeaderContract& contract_of(const Family& family)
{
    static std::map<std::string_view, HeaderContract> read; // each once, on first use
    const auto known = read.find(family.header);
    if (known != read.end()) {
        return known->second;
    }
    const auto text = std::ranges::find(header_texts, family.header, &vor::BuiltIn::stem);
    return read.emplace(family.header, text != std::end(header_texts) ? read_header(text->text) : HeaderContract())
        .first->second;
}

const CallContract& contract_of(const Row& row)
{
    static const CallContract none;
    const HeaderContract& header = contract_of(*row.family);
    const auto found = std::ranges::find(header.calls, row.symbol, &CallContract::symbol);
    return found != header.calls.end() ? *found : none;
}

namespace {

std::uint16_t size_of(std::string_view type)
{
    static constexpr std::pair<std::string_view, std::size_t> sizes[] = {{"char", 1},
                                                                         {"vor_char", sizeof(vor_char)},
                                                                         {"vor_uchar", sizeof(vor_uchar)},
                                                                         {"vor_boolean", sizeof(vor_boolean)},
                                                                         {"vor_int16", sizeof(vor_int16)},
                                                                         {"vor_uint16", sizeof(vor_uint16)},
                                                                         {"vor_int32", sizeof(vor_int32)},
                                                                         {"vor_uint32", sizeof(vor_uint32)},
                                                                         {"vor_uint64", sizeof(vor_uint64)},
                                                                         {"vor_ip_address", sizeof(vor_ip_address)}};
    const auto found = std::ranges::find(sizes, type, [](const auto& each) { return each.first; });
    return found != std::end(sizes) ? static_cast<std::uint16_t>(found->second) : std::uint16_t{0};
}

// "vor_char proc_name[25]; /* text */", its offset not known yet
DeclaredField read_field(std::string_view line)
{
    DeclaredField field{};
    const std::size_t end = std::min(line.find(';'), line.size());
    const std::size_t blank = std::min(line.find(' '), end);
    std::string_view name = line.substr(blank, end - blank);
    const std::size_t open = std::min(name.find('['), name.size());
    const auto count =
        vor::number_in<std::uint16_t>(name.substr(std::min(open + 1, name.size()), name.size() - 1 - open - 1));
    field.name = trimmed(name.substr(0, open));
    field.type = line.substr(0, blank);
    field.size = static_cast<std::uint16_t>(size_of(field.type) * count.value_or(1));
    const std::size_t comment = line.find("/*", end);
    field.about = comment != line.npos ? trimmed(line.substr(comment + 2, line.rfind("*/") - comment - 2)) : "";
    return field;
}

// The number behind "== " where the line asserts it of this; it is none where a pointer's size is in it.
std::optional<std::uint16_t> asserted(std::string_view text, const std::string& what)
{
    const std::string begin = fmt::format("VOR_LAYOUT({} == ", what);
    const std::size_t at = text.find(begin);
    text.remove_prefix(std::min(at, text.size() - begin.size()) + begin.size());
    return at != text.npos ? vor::number_in<std::uint16_t>(text.substr(0, text.find(')'))) : std::nullopt;
}

// Those of a header: "typedef struct TAG {", the fields, "} NAME;", or "struct NAME {", the fields, "};"; and what is
// asserted of them.
void append_records(std::vector<DeclaredRecord>& records, std::string_view text)
{
    std::string name;
    std::vector<DeclaredField> fields;
    for (const std::string_view line : vor::lines_in(text)) {
        if (line.ends_with(" {")) {
            name = line.substr(0, line.size() - 2);
            fields.clear();
        } else if (line.starts_with("    ")) {
            fields.push_back(read_field(trimmed(line)));
        } else if (line.starts_with("}") && line.ends_with(";")) {
            const std::string_view alias = trimmed(line.substr(1, line.size() - 2));
            DeclaredRecord record{alias.empty() ? name : std::string(alias), 0, std::move(fields)};
            const auto size = asserted(text, fmt::format("sizeof({})", record.name));
            for (DeclaredField& field : record.fields) {
                const auto offset = asserted(text, fmt::format("offsetof({}, {})", record.name, field.name));
                field.offset = offset.value_or(field.offset);
            }
            if (size && !record.fields.empty()) {
                record.size = *size;
                records.push_back(std::move(record));
            }
            fields.clear();
        }
    }
}

} // namespace

std::vector<DeclaredCode> declared_codes()
{
    std::vector<DeclaredCode> codes;
    for (const vor::BuiltIn& header : header_texts) {
        for (const std::string_view line : vor::lines_in(header.text)) {
            const std::string_view text = trimmed(line);
            const std::size_t equals = text.find(" = ");
            if (text.starts_with("VOR_CODE_") && equals != text.npos) {
                const std::string_view number =
                    text.substr(equals + 3, text.find_first_of(", ", equals + 3) - equals - 3);
                codes.push_back(
                    {vor::number_in<std::int32_t>(number).value_or(0), std::string(text.substr(0, equals))});
            }
        }
    }
    return codes;
}

std::vector<DeclaredRecord> declared_records()
{
    std::vector<DeclaredRecord> records;
    for (const vor::BuiltIn& header : header_texts) {
        append_records(records, header.text);
    }
    return records;
}

// The header begins with "STEM.h: what it is about", and may continue.
std::string about(const Family& family)
{
    if (!family.about.empty()) {
        return std::string(family.about);
    }
    const HeaderContract& header = contract_of(family);
    std::string text = header.paragraphs.empty() ? "" : header.paragraphs.front();
    text.erase(0, text.find(": ") + 2);
    for (const std::string_view next_part : {".", " (", ", held by", ", read by", ", edited by"}) {
        text.resize(std::min(text.find(next_part), text.size()));
    }
    return text;
}

// --- Rows and arguments in words -------------------------------------------------------

std::string placeholder(const Argument& argument)
{
    std::string name(argument.name);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return name;
}

std::string usage_of(const Row& row)
{
    std::string text = row.full_name();
    if (!row.usage.empty()) {
        return fmt::format("{} {}", text, row.usage);
    }
    for (const Argument& argument : row.arguments()) {
        if (argument.is_given()) {
            const std::string name = placeholder(argument);
            text += argument.is_list ? fmt::format(" [{}...]", name) : " " + name;
        }
    }
    return text;
}

std::string example_call(const Row& row)
{
    return fmt::format("{}{}{}", row.full_name(), row.example.empty() ? "" : " ", row.example);
}

std::string example_of(const Row& row, const Argument& argument)
{
    const std::vector<input::Word> words = input::words_of(row.example);
    std::size_t at = 0;
    for (const Argument& each : row.arguments()) {
        if (each.is_given() && each.name == argument.name) {
            std::string text;
            const std::size_t end = each.is_list ? words.size() : std::min(at + 1, words.size());
            for (; at < end; at++) {
                join(text, vor::typed(words[at].text));
            }
            return text;
        }
        at += each.is_given() ? 1 : 0;
    }
    return "";
}

std::string exits_of_a_call()
{
    std::vector<std::string> codes;
    for (const input::ExitCode code :
         {input::exit_ok, input::exit_refused, input::exit_not_delivered, input::exit_unread, input::exit_unknown}) {
        codes.push_back(fmt::format("{} ({})", static_cast<int>(code), input::exit_texts[code]));
    }
    return fmt::format("Exits with {}; vorcfg(1) lists all codes.", vor::alternatives(codes));
}

// A call that reads its own words is several calls of the library: no header declares it.
std::string summary_of(const Row& row)
{
    return row.read != nullptr ? "edit the stored configuration with one query" : contract_of(row).summary();
}

std::string sentence(std::string text)
{
    if (!text.empty()) {
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
        text += '.';
    }
    return text;
}

std::vector<std::string_view> remarks_of(const Row& row)
{
    static constexpr std::pair<Marks, std::string_view> remarks[] = {
        {answer_unread, "The call never reads the manager's answer; vorcfg reports a refusal that it sees there."},
        {confirmed, "Requires --yes."},
        {cuts_link, "May drop the connection you are using: asks first at a terminal, unless --yes is given."},
    };
    std::vector<std::string_view> found;
    for (const auto& [mark, text] : remarks) {
        if (row.has(mark)) {
            found.push_back(text);
        }
    }
    return found;
}

std::string_view type_name(const Argument& argument)
{
    static constexpr std::string_view names[] = {
        "8-bit unsigned", "one byte",        "16-bit signed", "16-bit unsigned",
        "32-bit signed",  "32-bit unsigned", "text",          "result"};
    return argument.is_list              ? "list"
           : argument.kind == Kind::ipv4 ? "IPv4 address"
                                         : names[static_cast<std::size_t>(argument.type)];
}

namespace {

std::vector<std::string> choices_of(const Argument& argument, bool numbered)
{
    std::vector<std::string> words;
    for (const Choice& choice : argument.choices) {
        words.push_back(numbered ? fmt::format("{} ({})", choice.number, choice.name) : std::string(choice.name));
    }
    return words;
}

} // namespace

std::string accepted(const Argument& argument)
{
    std::vector<std::string> words = choices_of(argument, false);
    if (argument.is_number()) {
        words.insert(words.begin(), fmt::format("{} to {}", argument.range.least, argument.range.most));
    }
    return vor::alternatives(words);
}

std::string kind_text(const Argument& argument)
{
    std::string text;
    if (argument.is_list) {
        text =
            fmt::format("up to {} {}", argument.most_listed, argument.kind == Kind::ipv4 ? "IPv4 addresses" : "texts");
    } else if (argument.is_number()) {
        text = fmt::format("number, {} to {}", argument.range.least, argument.range.most);
    } else {
        text = argument.kind == Kind::ipv4 ? "IPv4 address" : argument.choices.empty() ? "text" : "word";
    }
    if (!argument.choices.empty()) {
        text += fmt::format(": {}", vor::joined(choices_of(argument, argument.is_number()), ", "));
    }
    if (argument.most_bytes != 0) {
        text += fmt::format(", at most {} bytes", argument.most_bytes);
    }
    text += argument.is_secret ? "; a secret: @FILE, - or ?" : "";
    text += argument.is_sent ? "" : "; never sent";
    if (!argument.decided_by.empty()) {
        text += fmt::format("; sent only where {} is {}", argument.decided_by, argument.decided_at.name);
    }
    return text;
}

// The results of calls.
void append_field(Fields& fields, std::string_view name, const vor_ip_address* address)
{
    fields.push_back({std::string(name), vor::dotted(*address), Field::Kind::word});
}

void append_field(Fields& fields, std::string_view name, const vor_uchar* mac)
{
    fields.push_back(
        {std::string(name),
         fmt::format("{:02x}:{:02x}:{:02x}:{:02x}:{:02x}:{:02x}", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]),
         Field::Kind::word});
}

} // namespace vorcfg::rows
