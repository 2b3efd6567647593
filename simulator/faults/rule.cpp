#include "faults/rule.hpp"

#include <fnmatch.h>

namespace vorsim::faults {

bool Concern::covers(const Subject& subject) const
{
    if (subject.konfd || who == Who::konfd) {
        return subject.konfd && who == Who::konfd && subject.object.find(object) != subject.object.npos;
    }
    // A row may stand for several calls, or a rule for several rows.
    const auto fits = [](const std::string& pattern, const std::string& name) {
        return fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
    };
    const std::string sent(subject.call);
    return (who == Who::any || sap == subject.sap) && id.value_or(subject.id) == subject.id &&
           (call.empty() || fits(call, sent) || fits(sent, call)) && (object.empty() || object == subject.object) &&
           client.value_or(subject.client) == subject.client;
}

} // namespace vorsim::faults
