#include "record/filter.hpp"

#include "tables/managers.hpp"

namespace vorsim::record {

bool Filter::passes(const values::Record& record) const
{
    const bool message = record.kind == values::Record::Kind::message;
    const bool konfd = record.kind == values::Record::Kind::konfd;
    const bool complaint = record.complained || !(message || konfd);
    const auto is_manager = [&](const std::string& name) {
        return konfd ? name == "konfd" : name == tables::manager_key(record.sap) || name == std::to_string(record.sap);
    };
    return (!manager || is_manager(*manager)) && (!call || *call == record.call) &&
           (!object || *object == record.object) &&
           (!source || (message && *source == std::to_string(record.source))) && (!complaints || complaint);
}

} // namespace vorsim::record
