#include "records.hpp"

#include <fstream>
#include <map>
#include <mutex>
#include <set>

#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

namespace processes {

namespace {

using nlohmann::json;

// An object has only the fields that are named.
void forbid_others(json& schema)
{
    if (schema.is_object() && schema.contains("properties") && !schema.contains("additionalProperties")) {
        schema["additionalProperties"] = false;
    }
    for (json& each : schema) {
        if (each.is_structured()) {
            forbid_others(each);
        }
    }
}

class Description {
public:
    Description()
        : published_(json::parse(std::ifstream(VOR_SOURCE_DIR "/docs/vorcfg.schema.json"))), strict_(published_)
    {
        parse(published_, all_);
        forbid_others(strict_["definitions"]);
    }

    std::string mismatch(const json& record)
    {
        const std::string name = name_of(record);
        if (name.empty()) {
            return "no record of this type is described\n";
        }
        const auto [known, is_new] = by_name_.try_emplace(name);
        if (is_new) { // parsed alone, it tells what is wrong with it
            json alone = strict_;
            alone["oneOf"] = {{{"$ref", "#/definitions/" + name}}};
            parse(alone, known->second);
        }
        std::string why = refusal(known->second, record);
        if (why.empty() && checked_.insert(name).second) { // slow, and so only once
            why = refusal(all_, record);
        }
        for (const json& each : name == "answer" ? record["output"] : json::array()) {
            why += mismatch(each);
        }
        return why;
    }

private:
    static void parse(const json& document, valijson::Schema& schema)
    {
        valijson::SchemaParser().populateSchema(valijson::adapters::NlohmannJsonAdapter(document), schema);
    }

    // The definition for the type, or for the first field that is required, as in a journal.
    std::string name_of(const json& record) const
    {
        for (const json& each : published_["oneOf"]) {
            const std::string reference = each["$ref"];
            std::string name = reference.substr(reference.rfind('/') + 1);
            const json& definition = published_["definitions"][name];
            const json& properties = definition["properties"];
            if (properties.contains("type") ? properties["type"]["const"] == record.value("type", json())
                                            : record.contains(definition["required"][0])) {
                return name;
            }
        }
        return "";
    }

    std::string refusal(const valijson::Schema& schema, const json& record)
    {
        valijson::ValidationResults results;
        validator_.validate(schema, valijson::adapters::NlohmannJsonAdapter(record), &results);
        std::string text;
        for (const auto& error : results) {
            for (const std::string& part : error.context) {
                text += part;
            }
            text += ": " + error.description + '\n';
        }
        return text;
    }

    json published_;
    json strict_;
    valijson::Schema all_;
    std::map<std::string, valijson::Schema> by_name_;
    std::set<std::string> checked_; // against all of it
    valijson::Validator validator_;
};

} // namespace

std::string mismatch(const std::string& line)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    static Description description;
    const json record = json::parse(line, nullptr, false);
    return record.is_object() ? description.mismatch(record) : "not an object of JSON\n";
}

} // namespace processes
