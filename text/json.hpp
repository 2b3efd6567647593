// json.hpp: JSON as the tools write it.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace vor {

using Json = nlohmann::ordered_json;

// Always UTF-8, whatever bytes the texts hold, and no control character raw.
std::string dump(const Json& json, int indent = -1);

} // namespace vor
