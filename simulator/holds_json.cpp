// What is held and which values show, as the answer to the holds query.
#include "simulator/holds_json.h"

#include <algorithm>
#include <chrono>

#include <json/json.h>

namespace simulator {
namespace {

Json::Value jsonOf(const Hold& hold) {
    using std::chrono::milliseconds;
    const int64_t held =
            std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - hold.since)
                    .count();
    Json::Value json;
    json["holder"] = textOf(hold.holder);
    json["for"] = subjectOf(hold);
    json["package"] = hold.package;
    json["identity"] = hold.identity;
    json["pid"] = hold.pid != 0 ? Json::Value(hold.pid) : Json::nullValue;
    json["held_ms"] = Json::Int64{held};
    json["left_ms"] = Json::nullValue;
    if (hold.duration > 0)
        json["left_ms"] = Json::Int64{std::max<int64_t>(hold.duration - held, 0)};
    json["resources"] = Json::UInt64{hold.resources.size()};
    return json;
}

Json::Value resourceJson(const ResourceKey& key) {
    const KnownResource* known = findResource(key);
    Json::Value json;
    json["resource"] = textOf(key);
    json["name"] = known != nullptr ? known->name : "";
    json["idle"] = known != nullptr ? Json::Value(known->idleValue) : Json::nullValue;
    json["value"] = json["idle"];
    json["by"] = Json::nullValue;
    return json;
}

}  // namespace

std::string holdsJson(const Holds& holds) {
    Json::Value json;
    json["holds"] = Json::arrayValue;
    for (const Hold& hold : holds.current()) json["holds"].append(jsonOf(hold));

    auto held = holds.effective();
    for (const KnownResource& known : knownResources()) {
        Json::Value resource = resourceJson({.opcode = known.opcode});
        if (auto value = held.extract({.opcode = known.opcode})) {
            resource["value"] = value.mapped().first;
            resource["by"] = textOf(value.mapped().second);
        }
        json["resources"].append(resource);
    }
    for (const auto& [key, value] : held) {
        Json::Value resource = resourceJson(key);
        resource["value"] = value.first;
        resource["by"] = textOf(value.second);
        json["resources"].append(resource);
    }
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    return Json::writeString(writer, json);
}

}  // namespace simulator
