// A journal of any bytes, read as it is for a replay; and each of its lines as a stored state.
#include <stdexcept>

#include "file.hpp"
#include "input.hpp"
#include "record/bytes.hpp"
#include "record/reader.hpp"
#include "record/stored.hpp"

using namespace vorsim;
using namespace fuzz;

namespace {

void restore(const Json& state)
{
    try {
        require(vor::Json::read(vor::dump(stored_state(state).json())).has_value(), "what is stored can be shown");
        konfd::Konfd konfd;
        store_konfd(konfd, state);
        require(vor::Json::read(vor::dump(konfd.json())).has_value(), "what is stored can be shown");
    } catch (const std::exception& error) {
        require(error.what()[0] != '\0', "it is said what is wrong");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = file_of(data, size);
    JournalReader reader(path);
    std::uint64_t line = 0;
    try {
        while (const auto record = reader.next()) {
            require(record->line > line, "every line has its turn");
            line = record->line;
            require(record->version >= 1 && record->version <= journal_version, "its version is known");
            for (const auto& part : record->data) {
                if (part.is_string()) {
                    const auto bytes = bytes_of_hex(part.string());
                    require(!bytes || bytes_of_hex(hex(*bytes)) == bytes, "bytes are themselves");
                }
            }
            restore(record->data);
        }
    } catch (const std::exception& error) {
        require(std::string_view(error.what()).find("journal") != std::string_view::npos, "the place is said");
    }
    return 0;
}
