// Thermal levels that a client reports, and listening to thermal subsystems.
#include <dov/halclient.h>

#include "client/binding.h"
#include "client/registry.h"
#include "client/request_data.h"

using DovClient::Resource;
using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

// Compat: takes no lock and accepts duplicates; callers serialise it themselves.
void addUnlocked(const std::shared_ptr<MirxCallbackClient>& client,
                 const std::vector<int>& subsystems, int handle) NO_THREAD_SAFETY_ANALYSIS {
    listening_callback_groups.emplace_back(client, subsystems, handle);
}

}  // namespace

int mirxThermalNotify(std::list<Resource>& levels, int pid) {
    const Operation operation = {"mirx client mirxThermalNotify", "mirxThermalNotify"};
    return toAcceptance(askMirx(operation, [&](IMirx& hal, int32_t* answer) -> Attempt {
        if (!checkResourceList(levels)) {
            return refuse("mirxThermalNotify ERROR: size unmatched for id and level ");
        }
        MirxRequestParcel parcel;
        parcel.requestType = mirx::kThermalNotification;
        parcel.pid = pid;
        parcel.requestData = toRequestData(levels);
        return hal.request(parcel, answer);
    }));
}

int mirxThermalListeningRegister(const std::vector<int>& subsystems,
                                 const std::shared_ptr<IClientCallback>& callback) {
    const Operation operation = {"mirxThermalListeningRegister", "mirxThermalListeningRegister"};
    int32_t handle = -1;
    std::shared_ptr<MirxCallbackClient> client;  // released after the lock
    const auto call = [&](IMirx& hal) {
        client = forRegistration(callback);
        return hal.thermalListeningRegister(subsystems, client, &handle);
    };
    callMirx(operation, call, [&](bool succeeded) {
        if (!succeeded) return;
        addUnlocked(client, subsystems, handle);
        logInfo("subsys's callback has been registered to Mirx HAL");
    });
    return handle;
}

int mirxThermalListeningUnregister(int handle) {
    int32_t result = -1;
    const bool unregistered = callMirx(
            {"mirx client mirxThermalListeningUnregister", "mirxThermalListeningUnregister"},
            [&](IMirx& hal) { return hal.thermalListeningUnregister(handle, &result); });
    // Compat: the registry keeps its entry until mirxResListeningUnRegister is called with the
    // handle.
    if (unregistered) logInfo("subsys's callback has been unRegistered to Mirx HAL");
    return result;
}

}  // namespace mirxHalclient
