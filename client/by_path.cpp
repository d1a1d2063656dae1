// Resource control, state and listening for resources that are addressed by path.
#include <dov/halclient.h>

#include "client/binding.h"
#include "client/callback_client.h"
#include "client/listening.h"
#include "client/request_data.h"

using namespace mirxHalclient::internal;

namespace mirxHalclient {
namespace {

using Texts = std::vector<std::string>;
using TextMap = std::map<std::string, std::string>;

// `values` is empty or as long as `paths`; when it is empty, the value field stays absent.
std::vector<MirxRequestData> toPathData(const Texts& paths, const Texts& values) {
    std::vector<MirxRequestData> data(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        data[i].path = paths[i];
        if (!values.empty()) data[i].value = values[i];
    }
    return data;
}

std::vector<MirxRequestData> toPathData(const TextMap& request) {
    std::vector<MirxRequestData> data;
    data.reserve(request.size());
    for (const auto& [path, value] : request) {
        MirxRequestData& element = data.emplace_back();
        element.path = path;
        element.value = value;
    }
    return data;
}

// Sends a control request. When paths and values differ in number, nothing is sent and `mismatch`
// is logged. `addCallback` may put a callback into the filled parcel.
template <typename AddCallback>
int32_t requestControl(const Operation& operation, const char* mismatch, int handle, long duration,
                       const Texts& paths, const Texts& values, int arg4, int flag, int pid,
                       AddCallback&& addCallback) {
    bool matching = true;
    MirxRequestParcel parcel;  // released after the lock, and with it the callback
    const int32_t result = askMirx(operation, [&](IMirx& hal, int32_t* answer) -> Attempt {
        matching = paths.size() == values.size();
        if (!matching) return std::nullopt;
        mirx_add_zdbdebug_for_request_parcel(parcel);
        fillControl(parcel, mirx::kResourceControl, handle, duration, arg4, flag, pid);
        parcel.requestData = toPathData(paths, values);
        addCallback(parcel);
        return hal.request(parcel, answer);
    });
    if (!matching) logError(mismatch);
    return result;
}

MirxRequestParcel toPathParcel(int pid, std::vector<MirxRequestData> data) {
    MirxRequestParcel parcel;
    mirx_add_zdbdebug_for_request_parcel(parcel);
    parcel.pid = pid;
    parcel.requestData = std::move(data);
    return parcel;
}

// The service's answer; empty when the call failed.
std::vector<MirxRequestData> requestState(const Operation& operation,
                                          const MirxRequestParcel& parcel) {
    std::vector<MirxRequestData> data;
    const bool answered =
            callMirx(operation, [&](IMirx& hal) { return hal.stateRequest(parcel, &data); });
    if (!answered) data.clear();
    return data;
}

}  // namespace

void mirx_add_zdbdebug_for_request_parcel(MirxRequestParcel& parcel) {
    parcel.stringList.emplace(1, "zdbdebug");
}

int mirx_resctl_request_by_path(int handle, long duration, const Texts& paths, const Texts& values,
                                int arg4, int flag, int pid) {
    return requestControl({"mirx client mirx_resctl_request", "mirx_resctl_request_by_path"},
                          "mirx_resctl_request ERROR: size unmatched for paths and value ", handle,
                          duration, paths, values, arg4, flag, pid, [](MirxRequestParcel&) {});
}

int mirx_resctl_request_with_callback_by_path(
        int handle, long duration, const Texts& paths, const Texts& values, int arg4, int flag,
        int pid, const std::shared_ptr<IClientCallbackByPath>& callback) {
    // Compat: the refusal names ids, and the failure is logged under the whole entry text.
    return requestControl(
            {"mirx client mirx_resctl_request_with_callback",
             "mirx client mirx_resctl_request_with_callback"},
            "mirx client mirx_resctl_request ERROR: size unmatched for id and value ", handle,
            duration, paths, values, arg4, flag, pid, [&callback](MirxRequestParcel& parcel) {
                parcel.callback = forRequest(
                        callback,
                        "mirx client mirx_resctl_request_with_callback add to request_callbacks");
            });
}

int mirx_res_state_request_by_path(const Texts& paths, const Texts& values, int pid, Texts& out) {
    // Compat: values that do not match the paths one to one are left out, and nothing is logged.
    const Texts matching = values.size() == paths.size() ? values : Texts();
    const std::vector<MirxRequestData> data =
            requestState({"mirx client mirx_res_state_request", "mirx_res_state_request"},
                         toPathParcel(pid, toPathData(paths, matching)));
    if (data.empty()) return -1;
    for (const MirxRequestData& element : data) out.push_back(element.value.value_or(""));
    const int size = static_cast<int>(out.size());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "mirx client mirx_res_state_request size %d",
                        size);
    return size;
}

int mirx_res_state_request_map_by_path(const TextMap& request, int pid, TextMap& out) {
    const std::vector<MirxRequestData> data =
            requestState({"mirx client mirx_res_state_request_map", "mirx_res_state_request_map"},
                         toPathParcel(pid, toPathData(request)));
    if (data.empty()) return -1;
    for (const MirxRequestData& element : data) {
        if (!element.path || !element.value) continue;
        out[*element.path] = *element.value;
        // Compat: logged at error priority although it reports success.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "res_Path: %s, res_Value:%s",
                            element.path->c_str(), element.value->c_str());
    }
    const int size = static_cast<int>(out.size());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "mirx client mirx_res_state_request_map size %d",
                        size);
    return size;
}

int mirx_res_listening_register_by_path(const Texts& paths, int pid,
                                        const std::shared_ptr<IClientCallbackByPath>& callback) {
    return registerListening(
            {"mirx client mirx_res_listening_register", "mirx_res_listening_register"},
            &MirxCallbackGroup::paths, paths, toPathParcel(pid, toPathData(paths, {})), callback);
}

int mirx_res_listening_register_map_by_path(
        const TextMap& request, int pid, const std::shared_ptr<IClientCallbackByPath>& callback) {
    Texts paths;
    for (const auto& [path, value] : request) paths.push_back(path);
    return registerListening(
            {"mirx client mirx_res_listening_register_map", "mirx_res_listening_register_map"},
            &MirxCallbackGroup::paths, paths, toPathParcel(pid, toPathData(request)), callback);
}

}  // namespace mirxHalclient
