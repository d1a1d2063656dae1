// The answers of the simulated service to each kind of query.
#include <string>

#include "aidl/request_kinds.h"
#include "simulator/mirx_service.h"
#include "simulator/holds_json.h"
#include "simulator/holds_query.h"

namespace simulator {

using namespace mirx;
namespace {

// In milliwatts: the power of the idle device, and the additional power for each hold.
constexpr size_t kIdlePower = 120;
constexpr size_t kPowerOfAHold = 35;

}  // namespace

std::vector<MirxRequestData> MirxService::answer(const MirxRequestParcel& query) const {
    const int32_t id = query.requestData.empty() ? 0 : query.requestData.front().id;
    std::vector<MirxRequestData> data;
    switch (query.requestType) {
        case kStateQuery:
            data = query.requestData;
            for (MirxRequestData& asked : data) asked.value = mHolds.effectiveValue(keyOf(asked));
            return data;
        case kHistoryQuery:
            for (const std::string& line : mHistory.lines()) data.emplace_back().extra = line;
            return data;
        case kDatasetFetch:
            for (const KnownResource& known : knownResources()) {
                data.push_back({.id = known.opcode,
                                .value = mHolds.effectiveValue({.opcode = known.opcode})});
            }
            return data;
        case kPowerModeQuery:
            return {{.id = id, .value = mProperties.get("power_mode." + std::to_string(id), "0")}};
        case kFeatureQuery:
            return {{.id = id, .value = mProperties.get("feature." + std::to_string(id), "0")}};
        case kPowerConsumptionQuery: {
            const size_t power = kIdlePower + kPowerOfAHold * mHolds.current().size();
            return {{.id = id, .value = std::to_string(power)}};
        }
        case kHoldsQuery: return {{.value = holdsJson(mHolds)}};
        default: return {};
    }
}

}  // namespace simulator
