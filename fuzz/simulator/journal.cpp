// A journal of any bytes, read as for a replay, and each of its lines read as a stored state.
#include <stdexcept>

#include "file.hpp"
#include "input.hpp"
#include "record/bytes.hpp"
#include "record/reader.hpp"
#include "record/stored.hpp"
#include "text/json.hpp"

using namespace vorsim;
using namespace fuzz;

namespace {

void restore(const vor::Json& document)
{
    try {
        record::Storing stored({});
        for (const std::string& line : record::stored_lines(document)) {
            stored.take(line);
        }
        require(vor::Json::read(vor::dump(record::json_of(stored.state))).has_value(), "what is stored can be shown");
        require(vor::Json::read(vor::dump(record::json_of(stored.konfd))).has_value(), "what is stored can be shown");
    } catch (const std::exception& error) {
        require(error.what()[0] != '\0', "an error says what is wrong");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = file_of(data, size);
    record::JournalReader reader(path);
    std::uint64_t number = 0;
    try {
        while (const auto line = reader.next()) {
            require(line->number > number, "lines are read in order");
            number = line->number;
            require(line->of_version >= 1 && line->of_version <= record::journal_version, "its version is known");
            const vor::Json json = vor::Json::parse(line->text);
            for (const auto& [name, part] : json.members()) {
                if (part.is_string()) {
                    const auto bytes = record::bytes_of_hex(part.string());
                    require(!bytes || record::bytes_of_hex(record::hex(*bytes)) == bytes, "bytes survive a round trip");
                }
            }
            const std::string written = record::json_line(line->record);
            require(record::json_line(record::read_line(written).record) == written, "a written line reads the same");
            restore(json);
        }
    } catch (const std::exception& error) {
        require(std::string_view(error.what()).find("journal") != std::string_view::npos, "an error names the journal");
    }
    return 0;
}
