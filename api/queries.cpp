// The queries: what each asks the service, and how it reads the reply.
#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string_view>

#include <dov/dov.h>

#include "api/binding.h"
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

MirxRequestParcel makeParcel(mirx::RequestKind kind, std::vector<MirxRequestData> data = {}) {
    MirxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.requestData = std::move(data);
    return parcel;
}

MirxRequestParcel makeParcel(mirx::RequestKind kind, int32_t id) {
    return makeParcel(kind, {toElement(Resource{id, std::nullopt})});
}

struct Answer {
    bool sent = false;
    bool ok = false;
    Reply reply;  // of a failed call: as many elements as the service announced, maybe empty ones

    int size() const { return static_cast<int>(reply.size()); }
    // Compat: throws when the first element has no value. The reply must not be empty.
    const std::string& firstValue() const { return reply.front().value.value(); }
};

// Sends the parcel. `beforeCall`, when given, is logged just before the call.
Answer query(const char* function, const MirxRequestParcel& parcel,
             const char* beforeCall = nullptr) {
    Answer answer;
    const CallResult result = callDov({function}, [&](IMirx& hal) {
        if (beforeCall != nullptr) logInfo(beforeCall);
        return hal.stateRequest(parcel, &answer.reply);
    });
    answer.ok = result == CallResult::kOk;
    answer.sent = answer.ok || result == CallResult::kFailed;
    return answer;
}

// The first element with this id; null when there is none.
const MirxRequestData* find(const Reply& reply, int32_t id) {
    const auto found =
            std::find_if(reply.begin(), reply.end(),
                         [id](const MirxRequestData& element) { return element.id == id; });
    return found == reply.end() ? nullptr : &*found;
}

}  // namespace

int32_t DovMutiResStateRequest(std::vector<Resource>& resources) {
    logInfo("DovMutiResStateRequest enter");
    if (resources.empty()) {
        callDov({"DovMutiResStateRequest"}, [](IMirx&) -> Attempt {
            logError("input resource is empty, return");
            return std::nullopt;
        });
        return -1;
    }
    const Answer answer =
            query("DovMutiResStateRequest", makeParcel(mirx::kStateQuery, toElements(resources)));
    if (answer.sent && answer.reply.empty()) logError("failed to get resource value");
    if (!answer.ok || answer.reply.empty()) return -1;
    int32_t count = 0;
    for (Resource& resource : resources) {
        const MirxRequestData* found = find(answer.reply, resource.opcode);
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
    const Answer answer =
            query("DovGetHistory", makeParcel(mirx::kHistoryQuery), "dov client hal DovGetHistory");
    if (!answer.sent) return -1;
    if (!answer.ok || answer.reply.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "failed to get history or return vector empty, data vector size %d",
                            answer.size());
        return -1;
    }
    history = "start:";
    const char* separator = "";
    for (const MirxRequestData& element : answer.reply) {
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
    MirxRequestParcel parcel = makeParcel(mirx::kPowerConsumptionQuery,
                                          toElements({Resource{kPowerConsumption, "0 1 35"},
                                                      {kPowerConsumption, "1 1 35"},
                                                      {kPowerConsumption, "2 1 35"}}));
    parcel.packageName = "none";
    const Answer answer = query("DovGetPowerConsis", parcel);
    if (!answer.ok || answer.reply.empty()) return -1;
    return std::stoi(answer.firstValue());
}

int32_t DovGetPMStatus(int32_t mode) {
    logInfo("dov client DovGetPMStatus");
    const Answer answer = query("DovGetPMStatus", makeParcel(mirx::kPowerModeQuery, mode),
                                "dov client hal DovGetPMStatus");
    if (!answer.sent) return -1;
    if (!answer.ok || answer.reply.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "failed to get power mode status, mode %d, data vector size %d", mode,
                            answer.size());
        return -1;
    }
    const std::string& status = answer.firstValue();
    // Compat: these lines go to the standard output, not to the log.
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
    const Answer answer = query("Dov_fetch_dataset", makeParcel(mirx::kDatasetFetch));
    if (!answer.sent) return -1;
    if (!answer.ok || answer.reply.empty()) {
        logError("failed to get resource value");
        return -1;
    }
    for (const MirxRequestData& element : answer.reply) {
        dataset.push_back({element.id, element.value.value()});
    }
    return static_cast<int32_t>(dataset.size());
}

int32_t DovGetFeatureStatus(int32_t featureId) {
    logInfo("DovGetFeatureStatus enter");
    const Answer answer = query("DovGetFeatureStatus", makeParcel(mirx::kFeatureQuery, featureId));
    if (!answer.sent) return -1;
    if (answer.reply.size() != 1) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "failed to get resource value, %d",
                            answer.size());
        return -1;
    }
    return answer.ok ? std::stoi(answer.firstValue()) : -1;
}
