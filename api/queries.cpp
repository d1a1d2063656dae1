// The queries: what they ask the service and what they make of its reply.
#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include <dov/dov.h>

#include "api/binding.h"
#include "api/reply_index.h"
#include "api/request_data.h"

using DovClient::Resource;
using namespace dov;

namespace {

// The resource whose state is the power consumption.
constexpr int32_t kPowerConsumption = 0x1011670;

using Reply = std::vector<MirxRequestData>;

void logInfo(const char* text) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "%s", text);
}

void logError(const char* text) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s", text);
}

MirxRequestParcel makeParcel(RequestKind kind, std::vector<MirxRequestData> data = {}) {
    MirxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.requestData = std::move(data);
    return parcel;
}

MirxRequestParcel makeParcel(RequestKind kind, int32_t id) {
    return makeParcel(kind, {toRequestData(Resource{id, std::nullopt})});
}

bool always() {
    return true;
}

// Sends the parcel. `ready` is asked just before, with the lock held shared; when it gives false,
// nothing is sent.
//
// Returns the reply, empty when the call failed; nothing when no call was made.
template <typename Ready>
std::optional<Reply> query(const char* function, const MirxRequestParcel& parcel, Ready ready) {
    Reply reply;
    const CallResult result =
            callDov({function}, [&](IMirx& hal) -> std::optional<ndk::ScopedAStatus> {
                if (!ready()) return std::nullopt;
                return hal.stateRequest(parcel, &reply);
            });
    switch (result) {
        case CallResult::kOk: return reply;
        case CallResult::kFailed: return Reply();
        default: return std::nullopt;
    }
}

}  // namespace

int32_t DovMutiResStateRequest(std::vector<Resource>& resources) {
    logInfo("DovMutiResStateRequest enter");
    auto reply = query("DovMutiResStateRequest", makeParcel(kStateQuery, toRequestData(resources)),
                       [&resources] {
                           if (resources.empty()) logError("input resource is empty, return");
                           return !resources.empty();
                       });
    if (!reply) return -1;
    if (reply->empty()) {
        logError("failed to get resource value");
        return -1;
    }
    int32_t count = 0;
    const ReplyIndex index(*reply);
    for (Resource& resource : resources) {
        const MirxRequestData* found = index.first(resource.opcode);
        if (found == nullptr) {
            logInfo("not match any opcode in dovcore");
        } else if (found->value) {
            resource.value = found->value;
            __android_log_print(ANDROID_LOG_DEBUG, kLogTag,
                                "get resource value, opcode 0x%08x, value %s",
                                static_cast<uint32_t>(resource.opcode), resource.value->c_str());
            ++count;
        }
    }
    return count;
}

void DovResStateRequest(int32_t opcode, std::string& value) {
    if (opcode == kPowerConsumption) {
        value = std::to_string(DovGetPowerConsis());
        return;
    }
    logInfo("DovResStateRequest enter");
    std::vector<Resource> resources = {{opcode, ""}};
    if (DovMutiResStateRequest(resources) == 1) value = resources[0].value.value_or("");
}

int32_t DovGetHistory(std::string& history) {
    logInfo("dov client DovGetHistory");
    const auto reply = query("DovGetHistory", makeParcel(kHistoryQuery), [] {
        logInfo("dov client hal DovGetHistory");
        return true;
    });
    if (!reply) return -1;
    if (reply->empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "failed to get history or return vector empty, data vector size %d", 0);
        return -1;
    }
    history = "start:";
    const char* separator = "";
    for (const MirxRequestData& element : *reply) {
        history += separator;
        history += element.extra ? std::string_view(*element.extra) : "none";
        separator = ";";
    }
    history += ";end";
    __android_log_print(ANDROID_LOG_DEBUG, kLogTag, "get history successful: %s", history.c_str());
    return 0;
}

int32_t DovGetPowerConsis() {
    logInfo("dov client DovGetPowerConsis");
    MirxRequestParcel parcel =
            makeParcel(kPowerConsumptionQuery, toRequestData({Resource{kPowerConsumption, "0 1 35"},
                                                              {kPowerConsumption, "1 1 35"},
                                                              {kPowerConsumption, "2 1 35"}}));
    parcel.packageName = "none";
    const auto reply = query("DovGetPowerConsis", parcel, always);
    if (!reply || reply->empty()) return -1;
    return std::stoi(reply->front().value.value());
}

int32_t DovGetPMStatus(int32_t mode) {
    logInfo("dov client DovGetPMStatus");
    const auto reply = query("DovGetPMStatus", makeParcel(kPowerModeQuery, mode), [] {
        logInfo("dov client hal DovGetPMStatus");
        return true;
    });
    if (!reply) return -1;
    if (reply->empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "failed to get power mode status, mode %d, data vector size %d", mode,
                            0);
        return -1;
    }
    const std::string& status = reply->front().value.value();
    // To the standard output, not to the log: callers look for the lines there.
    try {
        return std::stoi(status);
    } catch (const std::invalid_argument& exception) {
        std::cout << "Invalid argument exception: " << exception.what() << std::endl;
    } catch (const std::out_of_range& exception) {
        std::cout << "Out of range exception: " << exception.what() << std::endl;
    }
    return -1;
}

int32_t Dov_fetch_dataset(std::vector<Resource>& dataset) {
    logInfo("Dov_fetch_dataset enter");
    const auto reply = query("Dov_fetch_dataset", makeParcel(kDatasetFetch), always);
    if (!reply) return -1;
    if (reply->empty()) {
        logError("failed to get resource value");
        return -1;
    }
    for (const MirxRequestData& element : *reply) {
        dataset.push_back({element.id, element.value.value()});
    }
    return static_cast<int32_t>(dataset.size());
}

int32_t DovGetFeatureStatus(int32_t featureId) {
    logInfo("DovGetFeatureStatus enter");
    const auto reply = query("DovGetFeatureStatus", makeParcel(kFeatureQuery, featureId), always);
    if (!reply) return -1;
    if (reply->size() != 1) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "failed to get resource value, %d",
                            static_cast<int>(reply->size()));
        return -1;
    }
    return std::stoi(reply->front().value.value());
}
