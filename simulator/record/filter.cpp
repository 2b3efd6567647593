#include "record/filter.hpp"

#include <fmt/core.h>

#include "tables/names.hpp"
#include "text/parse.hpp"
#include "text/text.hpp"

namespace vorsim::record {
namespace {

constexpr std::string_view konfd_name = "konfd";

} // namespace

void Filter::check() const
{
    const char* option = "--manager";
    try {
        tables::Selection rows;
        if (manager && manager != konfd_name) {
            rows.of(tables::checked_sap(*manager, std::span(&konfd_name, 1)));
        } else if (manager && (call || object || source)) {
            throw vor::OptionError(fmt::format("konfd has no {}", call ? "calls" : object ? "objects" : "SAPs"));
        }
        option = "--call";
        if (call) {
            rows.call(*call);
        }
        option = "--object";
        if (object) {
            rows.object(*object);
        }
    } catch (const tables::NameError& error) {
        throw vor::OptionError(fmt::format("{}: {}", option, error.what()));
    }
    if (source && !vor::number_in<std::uint16_t>(*source)) {
        throw vor::OptionError(fmt::format("--source must be a SAP from 0 to 65535, not {}", vor::quoted(*source)));
    }
}

bool Filter::passes(const values::Record& record) const
{
    const bool message = record.kind == values::Record::Kind::message;
    const bool konfd = record.kind == values::Record::Kind::konfd;
    const bool complaint = record.complained || !(message || konfd);
    const auto is_manager = [&](const std::string& name) {
        return konfd ? name == konfd_name : tables::sap_named(name) == record.sap;
    };
    return (!manager || is_manager(*manager)) &&
           (!call || (!record.call.empty() && tables::same_call(*call, record.call))) &&
           (!object || *object == record.object) &&
           (!source || (message && vor::number_in<std::uint16_t>(*source) == record.source)) &&
           (!complaints || complaint);
}

} // namespace vorsim::record
