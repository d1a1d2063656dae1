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

// `values` is empty or as long as `paths`; without values the field stays absent.
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

MirxRequestParcel toPathControlParcel(int handle, long duration, const Texts& paths,
                                      const Texts& values, int arg4, int flag, int pid) {
    MirxRequestParcel parcel = toControlParcel(kResourceControl, handle, duration, arg4, flag, pid);
    mirx_add_zdbdebug_for_request_parcel(parcel);
    parcel.requestData = toPathData(paths, values);
    return parcel;
}

MirxRequestParcel toPathParcel(int pid, std::vector<MirxRequestData> data) {
    MirxRequestParcel parcel;
    mirx_add_zdbdebug_for_request_parcel(parcel);
    parcel.pid = pid;
    parcel.requestData = std::move(data);
    return parcel;
}

// What the service answers; empty when the call failed.
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
    const Operation operation = {"mirx client mirx_resctl_request", "mirx_resctl_request_by_path"};
    int32_t result = -1;
    callMirx(operation, [&](IMirx& hal) -> Attempt {
        if (paths.size() != values.size()) {
            return refuse("mirx_resctl_request ERROR: size unmatched for paths and value ");
        }
        return hal.request(toPathControlParcel(handle, duration, paths, values, arg4, flag, pid),
                           &result);
    });
    return result;
}

int mirx_resctl_request_with_callback_by_path(
        int handle, long duration, const Texts& paths, const Texts& values, int arg4, int flag,
        int pid, const std::shared_ptr<IClientCallbackByPath>& callback) {
    // The refusal speaks of ids and the failure name is the whole entry text: callers depend on it.
    const Operation operation = {"mirx client mirx_resctl_request_with_callback",
                                 "mirx client mirx_resctl_request_with_callback"};
    int32_t result = -1;
    callMirx(operation, [&](IMirx& hal) -> Attempt {
        if (paths.size() != values.size()) {
            return refuse(
                    "mirx client mirx_resctl_request ERROR: size unmatched for id and value ");
        }
        MirxRequestParcel parcel =
                toPathControlParcel(handle, duration, paths, values, arg4, flag, pid);
        parcel.callback = forRequest(
                callback, "mirx client mirx_resctl_request_with_callback add to request_callbacks");
        return hal.request(parcel, &result);
    });
    return result;
}

int mirx_res_state_request_by_path(const Texts& paths, const Texts& values, int pid, Texts& out) {
    // Values that do not belong to the paths one by one are left out without a word.
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
        // At error priority although it reports success: callers look for it there.
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
