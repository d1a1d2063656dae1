// dovInit, the acquire functions and DovRelease.
#include <binder/IPCThreadState.h>

#include <dov/dov.h>

#include "api/binding.h"
#include "api/request_data.h"
#include "api/trace_name.h"
#include "common/or_none.h"

using DovClient::Resource;
using namespace dov;

namespace {

// Command ids of requests without an event.
constexpr int32_t kPlainResources = -2;
constexpr int32_t kPlatformResources = -3;

void markAcquire(const char* function, int32_t cmdid, const std::string& pkg,
                 const std::string& identity, int32_t duration) {
    // Compat: two blanks after the function's name.
    TraceName(function)
            .append("  cmd_id:")
            .append(cmdid)
            .append(" pkg:")
            .appendOrNone(pkg)
            .append(" identity:")
            .appendOrNone(identity)
            .append(" duration:")
            .append(duration)
            .mark();
}

void logAcquire(const char* function, int32_t cmdid, const std::string& pkg,
                const std::string& identity) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s, cmdid:%d, pkg:%s, identity:%s", function,
                        cmdid, dovcommon::orNone(pkg), dovcommon::orNone(identity));
}

mirx::RequestKind kindOf(int32_t cmdid) {
    if (cmdid == kPlainResources) return mirx::kResourceControl;
    if (cmdid == kPlatformResources) return mirx::kPlatformControl;
    return mirx::kEventAcquire;
}

MirxRequestParcel makeParcel(int32_t cmdid, const std::string& pkg, const std::string& identity,
                             int32_t duration, const std::vector<Resource>& resources) {
    MirxRequestParcel parcel;
    parcel.requestType = kindOf(cmdid);
    parcel.packageName = pkg;
    parcel.identity = identity;
    parcel.duration = duration;
    std::vector<MirxRequestData> data;
    data.reserve(resources.size() + 1);
    if (parcel.requestType == mirx::kEventAcquire) data.emplace_back().id = cmdid;
    for (const Resource& resource : resources) data.push_back(toElement(resource));
    parcel.requestData = std::move(data);
    return parcel;
}

void logRequestError(int32_t handle) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "mirxResCtlRequest error:%d", handle);
}

}  // namespace

int32_t dovInit() {
    // Compat: logged at error priority.
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "dovInit enter");
    switch (callDov({"mirx_init", "g_dov_hal is null"}, [](IMirx& hal) { return hal.init(); })) {
        case CallResult::kOk: return 0;
        case CallResult::kFailed: return -2;
        default: return -1;
    }
}

int32_t DovEventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                        int32_t duration, const std::vector<Resource>& resources) {
    markAcquire("DovEventAcquire", cmdid, pkg, identity, duration);
    logAcquire("DovEventAcquire", cmdid, pkg, identity);
    int32_t handle = -1;
    MirxRequestParcel parcel;
    const CallResult result = callDov(
            {"DovEventAcquire"},
            [&] { parcel = makeParcel(cmdid, pkg, identity, duration, resources); },
            [&](IMirx& hal) { return hal.request(parcel, &handle); });
    if (result == CallResult::kFailed) logRequestError(handle);
    return result == CallResult::kOk ? handle : -1;
}

int32_t DovEventAcquireOneWay(int32_t cmdid, const std::string& pkg, const std::string& identity,
                              int32_t duration, const std::vector<Resource>& resources) {
    markAcquire("DovEventAcquireOneWay", cmdid, pkg, identity, duration);
    logAcquire("DovEventAcquireOneWay", cmdid, pkg, identity);
    // Compat: without randomness the handle is -1, which is sent and returned like any other.
    const int32_t handle = dovGetRandomHandle();
    const pid_t pid = android::IPCThreadState::self()->getCallingPid();
    MirxRequestParcel parcel;
    const auto build = [&] {
        parcel = makeParcel(cmdid, pkg, identity, duration, resources);
        parcel.handle = handle;
        parcel.pid = pid;
        for (const Resource& resource : resources) {
            __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                                "DovEventAcquireOneWay res_Id:%d ,res_Value:%s, ", resource.opcode,
                                resource.value ? resource.value->c_str() : "");
        }
    };
    const CallResult result = callDov({"DovEventAcquireOneWay"}, build,
                                      [&](IMirx& hal) { return hal.oneWayRequest(parcel); });
    if (result == CallResult::kFailed) logRequestError(handle);
    // Compat: a failed call returns the handle too; the caller owns it from the start.
    return result == CallResult::kOk || result == CallResult::kFailed ? handle : -1;
}

int32_t DovResAcquire(const std::vector<Resource>& resources, const std::string& /*pkg*/,
                      const std::string& identity, int32_t duration) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "DovResAcquire");
    return DovEventAcquire(kPlainResources, "", identity, duration, resources);
}

int32_t DovPlatformResAcquire(const std::vector<Resource>& resources, const std::string& /*unused*/,
                              const std::string& identity, const std::string& pkg,
                              int32_t duration) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "DovPlatformResAcquire");
    return DovEventAcquire(kPlatformResources, pkg, identity, duration, resources);
}

void DovRelease(int32_t handle) {
    TraceName("DovRelease: ").append(handle).mark();
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "DovRelease, handle:%d", handle);
    callDov({"mirxResCtlRelease", "DovRelease g_dov_hal is null"}, [&](IMirx& hal) {
        int32_t ignored = 0;
        return hal.release(handle, &ignored);
    });
}
