// The holds and the resulting values as JSON: the answer to the holds query.
#include "simulator/holds_json.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "simulator/compact_json.h"
#include "simulator/message_size.h"
#include "simulator/text.h"

namespace simulator {
namespace {

// The longest text of a request that the answer repeats in full.
constexpr size_t kLongestText = 120;

// Fills arrays up to a number of bytes and counts the elements that did not fit.
class Room {
  public:
    explicit Room(size_t bytes) : mLeft(bytes) {}

    void append(Json::Value& array, const Json::Value& element) {
        const size_t bytes = compact(element).size() + 1;
        if (mLeftOut > 0 || bytes > mLeft) {
            ++mLeftOut;
            return;
        }
        mLeft -= bytes;
        array.append(element);
    }

    Json::UInt64 leftOut() const { return mLeftOut; }
    size_t left() const { return mLeft; }

  private:
    size_t mLeft;
    size_t mLeftOut = 0;
};

Json::Value jsonOf(const Hold& hold) {
    using std::chrono::milliseconds;
    const int64_t held =
            std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - hold.since)
                    .count();
    Json::Value json;
    json["holder"] = textOf(hold.holder);
    json["for"] = shortened(subjectOf(hold), kLongestText);
    json["package"] = shortened(hold.package, kLongestText);
    json["identity"] = shortened(hold.identity, kLongestText);
    json["pid"] = hold.pid != 0 ? Json::Value(hold.pid) : Json::nullValue;
    json["held_ms"] = Json::Int64{held};
    json["left_ms"] = Json::nullValue;
    if (hold.duration > 0)
        json["left_ms"] = Json::Int64{std::max<int64_t>(hold.duration - held, 0)};
    json["resources"] = Json::UInt64{hold.resources.size()};
    return json;
}

using Held = std::pair<std::string, Holder>;  // a value and the holder that set it

// `held` is null for a resource that nobody holds.
Json::Value resourceJson(const ResourceKey& key, const Held* held) {
    const KnownResource* known = findResource(key);
    Json::Value json;
    json["resource"] = shortened(textOf(key), kLongestText);
    json["name"] = known != nullptr ? known->name : "";
    json["idle"] = known != nullptr ? Json::Value(known->idleValue) : Json::nullValue;
    json["value"] = held != nullptr ? shortened(held->first, kLongestText) : json["idle"];
    json["by"] = held != nullptr ? Json::Value(textOf(held->second)) : Json::nullValue;
    return json;
}

}  // namespace

std::string holdsJson(const Holds& holds) {
    Json::Value json;
    json["holds"] = Json::arrayValue;
    json["resources"] = Json::arrayValue;

    // Two thirds of the answer at most for the resources: those that the device knows, then others.
    constexpr size_t kLongest = kLargestAnswer / 2 - 200;
    Room resources(kLongest * 2 / 3);
    auto held = holds.effective();
    for (const KnownResource& known : knownResources()) {
        const auto node = held.extract({.opcode = known.opcode});
        resources.append(json["resources"],
                         resourceJson({.opcode = known.opcode}, node ? &node.mapped() : nullptr));
    }
    for (const auto& [key, value] : held) {
        resources.append(json["resources"], resourceJson(key, &value));
    }
    json["resources_left_out"] = resources.leftOut();

    // The newest holds count most, so the oldest are left out.
    Room room(kLongest / 3 + resources.left());
    Json::Value newest = Json::arrayValue;
    const std::vector<Hold> current = holds.current();
    for (auto hold = current.rbegin(); hold != current.rend(); ++hold) {
        room.append(newest, jsonOf(*hold));
    }
    for (Json::ArrayIndex i = newest.size(); i > 0; --i) json["holds"].append(newest[i - 1]);
    json["holds_left_out"] = room.leftOut();
    return compact(json);
}

}  // namespace simulator
