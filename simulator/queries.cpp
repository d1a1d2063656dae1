// What the simulated service answers to each kind of query.
#include <string>
#include <utility>

#include "aidl/request_kinds.h"
#include "simulator/holds_json.h"
#include "simulator/mirx_service.h"

namespace simulator {

using namespace mirx;
namespace {

MirxRequestData element(int32_t id, std::optional<std::string> value) {
    MirxRequestData data;
    data.id = id;
    data.value = std::move(value);
    return data;
}

int32_t firstId(const MirxRequestParcel& query) {
    return query.requestData.empty() ? 0 : query.requestData.front().id;
}

// In milliwatts: what the device draws when idle, and what each hold adds.
constexpr size_t kIdlePower = 120;
constexpr size_t kPowerOfAHold = 35;

}  // namespace

std::vector<MirxRequestData> MirxService::answer(const MirxRequestParcel& query) const {
    std::vector<MirxRequestData> data;
    switch (query.requestType) {
        case kStateQuery:
            data = query.requestData;
            for (MirxRequestData& asked : data) asked.value = mHolds.effectiveValue(keyOf(asked));
            break;
        case kHistoryQuery:
            for (const std::string& line : mHistory.lines()) data.emplace_back().extra = line;
            break;
        case kPowerModeQuery: {
            const std::string mode = std::to_string(firstId(query));
            data.push_back(element(firstId(query), mProperties.get("power_mode." + mode, "0")));
            break;
        }
        case kPowerConsumptionQuery: {
            const size_t power = kIdlePower + kPowerOfAHold * mHolds.current().size();
            data.push_back(element(firstId(query), std::to_string(power)));
            break;
        }
        case kDatasetFetch:
            for (const KnownResource& known : knownResources()) {
                data.push_back(
                        element(known.opcode, mHolds.effectiveValue({.opcode = known.opcode})));
            }
            break;
        case kFeatureQuery: {
            const std::string feature = std::to_string(firstId(query));
            data.push_back(element(firstId(query), mProperties.get("feature." + feature, "0")));
            break;
        }
        case kHoldsQuery: data.push_back(element(0, holdsJson(mHolds))); break;
        default: break;
    }
    return data;
}

}  // namespace simulator
