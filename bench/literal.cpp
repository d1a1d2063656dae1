// The straightforward implementation that the library is measured against.
#include "bench/literal.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <mutex>
#include <shared_mutex>

#include <android/log.h>
#include <cutils/trace.h>
#include <dov/DovWrapper.h>

#include "aidl/request_kinds.h"

using DovClient::Resource;

namespace bench::literal {
namespace {

constexpr char kTag[] = "[DOV_CLIENT]";

std::shared_timed_mutex gMutex;
std::shared_ptr<IMirx> gHal;

std::string orNone(std::string text) {
    return text.empty() ? std::string("none") : text;
}

bool isBound() {
    gMutex.lock_shared();
    const bool bound = gHal != nullptr;
    gMutex.unlock_shared();
    return bound;
}

bool call(const std::function<ndk::ScopedAStatus(IMirx&)>& operation) {
    if (!isBound()) return false;
    gMutex.lock_shared();
    if (gHal == nullptr) {
        gMutex.unlock_shared();
        return false;
    }
    const ndk::ScopedAStatus status = operation(*gHal);
    gMutex.unlock_shared();
    return status.isOk();
}

// Builds the name of the trace section in a cleared buffer, and opens and closes the section.
void mark(const std::string& function, const std::string& description) {
    char name[1024];
    std::memset(name, 0, sizeof(name));
    std::snprintf(name, 1023, "%s %s", function.c_str(), description.c_str());
    if (atrace_get_enabled_tags() & ATRACE_TAG_ALWAYS) atrace_begin_body(name);
    if (atrace_get_enabled_tags() & ATRACE_TAG_ALWAYS) atrace_end_body();
}

// Builds the data elements of a request, each as a copy.
void append(std::vector<MirxRequestData>& data, const std::vector<Resource>& resources) {
    for (const Resource& resource : resources) {
        MirxRequestData element;
        element.id = resource.opcode;
        if (resource.value) element.value = *resource.value;
        data.push_back(element);
    }
}

int32_t ruleCtl(int32_t ruleId, int32_t status, std::vector<Resource> resources) {
    __android_log_print(ANDROID_LOG_INFO, kTag, "dovRuleCtl, ruleId:%d, status:%d", ruleId, status);
    int32_t answer = -1;
    call([&](IMirx& hal) {
        std::vector<MirxRequestData> data;
        append(data, resources);
        return hal.ruleCtl(ruleId, status, data, &answer);
    });
    return answer;
}

// Builds the resources of a scene description, from lists of pieces.
std::vector<Resource> gameAdpList(std::string data) {
    std::vector<Resource> list;
    const std::vector<std::string> groups = stringUtils::split(data, ";");
    for (size_t g = 0; g < groups.size(); ++g) {
        if (!stringUtils::contains(groups[g], ",") || g > 3) continue;
        const std::vector<std::string> items = stringUtils::split(groups[g], ",");
        const int32_t* tables[] = {opCodeAdpXpuCoreBoost, opCodeAdpXpuCoreLimit,
                                   opCodeAdpXpuFreqBoost, opCodeAdpXpuFreqLimit};
        for (size_t i = 0; i < items.size(); ++i) {
            list.push_back(DovResourceInfo(tables[g][i],
                                           stringUtils::trim(items[i], stringUtils::WHITESPACE)));
        }
    }
    return list;
}

bool checkList(const std::list<Resource>& resources) {
    for (const Resource& resource : resources) {
        if (resource.opcode == 0 && resource.value && !resource.value->empty()) return false;
        if (resource.opcode != 0 && (!resource.value || resource.value->empty())) return false;
    }
    return true;
}

}  // namespace

void bind(const std::shared_ptr<IMirx>& hal) {
    gHal = hal;
}

int32_t eventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                     int32_t duration, const std::vector<Resource>& resources) {
    const std::string description = " cmd_id:" + std::to_string(cmdid) + " pkg:" + orNone(pkg) +
                                    " identity:" + orNone(identity) +
                                    " duration:" + std::to_string(duration);
    mark("DovEventAcquire", description);
    __android_log_print(ANDROID_LOG_INFO, kTag, "%s, cmdid:%d, pkg:%s, identity:%s",
                        "DovEventAcquire", cmdid, orNone(pkg).c_str(), orNone(identity).c_str());
    int32_t handle = -1;
    const bool done = call([&](IMirx& hal) {
        MirxRequestParcel parcel;
        parcel.requestType = cmdid == -2 ? 1 : cmdid == -3 ? 12 : 8;
        parcel.packageName = pkg;
        parcel.identity = identity;
        parcel.duration = duration;
        std::vector<MirxRequestData> data;
        if (parcel.requestType == mirx::kEventAcquire) {
            MirxRequestData element;
            element.id = cmdid;
            data.push_back(element);
        }
        append(data, resources);
        parcel.requestData = data;
        return hal.request(parcel, &handle);
    });
    return done ? handle : -1;
}

int32_t eventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                            int32_t timeout) {
    __android_log_print(ANDROID_LOG_INFO, "[DOV_CLIENT_WRAPPER]",
                        "[%s] eventId:%s, scene:%s, identity:%s, timeout:%d",
                        "DovEventAcquireWrapper", orNone(eventId).c_str(), orNone(scene).c_str(),
                        orNone(identity).c_str(), timeout);
    for (size_t id = 0; id < gActionList.size(); ++id) {
        if (stringUtils::contains(eventId, "VANTEL_") &&
            stringUtils::equals(eventId.substr(7), gActionList[id])) {
            return eventAcquire(static_cast<int32_t>(id), scene, identity, timeout, {});
        }
    }
    return -1;
}

int32_t notifyWrapper(std::string name, int32_t type, std::string data) {
    __android_log_print(ANDROID_LOG_INFO, "[DOV_CLIENT_WRAPPER]", "[%s] %s, src:%d, type:%d",
                        "DovNotifyWapper", orNone(name).c_str(), 9000, type);
    if (type == 0) ruleCtl(9000, 0, {});
    if (type == 1 && !data.empty()) ruleCtl(9000, 1, gameAdpList(data));
    return 0;
}

int32_t resStateRequest(std::vector<Resource>& resources) {
    __android_log_print(ANDROID_LOG_INFO, kTag, "DovMutiResStateRequest enter");
    std::vector<MirxRequestData> reply;
    const bool done = call([&](IMirx& hal) {
        MirxRequestParcel parcel;
        std::vector<MirxRequestData> data;
        append(data, resources);
        parcel.requestData = data;
        return hal.stateRequest(parcel, &reply);
    });
    if (!done || reply.empty()) return -1;
    int32_t count = 0;
    for (Resource& resource : resources) {
        for (const MirxRequestData& element : reply) {
            if (element.id != resource.opcode) continue;
            if (element.value) {
                resource.value = *element.value;
                __android_log_print(
                        ANDROID_LOG_DEBUG, kTag, "get resource value, opcode 0x%08x, value %s",
                        static_cast<uint32_t>(resource.opcode), resource.value->c_str());
                ++count;
            }
            break;
        }
    }
    return count;
}

int resCtlRequest(int duration, std::list<Resource>& resources, int pid) {
    constexpr char kClientTag[] = "MIRXFramework-lib-vendor";
    __android_log_print(ANDROID_LOG_INFO, kClientTag, "mirx client mirxResCtlRequest");
    int32_t result = -1;
    call([&](IMirx& hal) {
        MirxRequestParcel parcel;
        if (!checkList(resources)) return ndk::ScopedAStatus::fromStatus(STATUS_BAD_VALUE);
        parcel.handle = -1;
        parcel.duration = duration;
        parcel.arg4 = -1;
        parcel.pid = pid;
        parcel.requestType = 1;
        std::vector<MirxRequestData> data;
        for (const Resource& resource : resources) {
            MirxRequestData element;
            element.id = resource.opcode;
            element.value = resource.value ? *resource.value : std::string("");
            data.push_back(element);
        }
        parcel.requestData = data;
        return hal.request(parcel, &result);
    });
    return result;
}

void onCallback(const std::vector<MirxRequestData>& data,
                const std::shared_ptr<IClientCallback>& callback) {
    constexpr char kCallbackTag[] = "MirxFramework-lib-vendor";
    if (data.empty()) return;
    std::list<Resource> list;
    for (const MirxRequestData& element : data) {
        Resource resource;
        resource.opcode = element.id;
        resource.value = element.value ? *element.value : std::string("");
        list.push_back(resource);
        __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                            "MirxCallbackClient::onCallback res_Id %#x res_Value %s is_register %d",
                            static_cast<uint32_t>(element.id), resource.value->c_str(), 1);
    }
    if (callback == nullptr) return;
    __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                        "MirxCallback::onCallback call IClientCallback onCallback is_register %d",
                        1);
    callback->onCallback(list);
}

}  // namespace bench::literal
