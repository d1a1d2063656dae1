// DovNotify, setRelatedSysInfo and dovRuleCtl.
#include <algorithm>

#include <dov/dov.h>

#include "api/binding.h"
#include "api/request_data.h"

using DovClient::Resource;
using namespace dov;

int32_t DovNotify(int32_t id, int32_t arg, const std::vector<int32_t>& values) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "DovNotify enter");
    MirxRequestParcel parcel;
    const auto build = [&] {
        MirxRequestData element;
        element.id = id;
        element.arg = arg;
        parcel.requestType = mirx::kNotification;
        // Compat: of the values only their number is sent, as equal elements (one when there are
        // none); stringList stays absent.
        parcel.requestData.assign(std::max<size_t>(values.size(), 1), element);
    };
    const CallResult result = callDov({"DovNotify"}, build, [&](IMirx& hal) {
        int32_t ignored = -1;
        return hal.request(parcel, &ignored);
    });
    return result == CallResult::kOk ? 0 : -1;
}

int32_t setRelatedSysInfo(int32_t first, int32_t second) {
    int32_t answer = -1;
    const CallResult result = callDov({"setRelatedSysInfo"}, [&](IMirx& hal) {
        return hal.setRelatedSysInfo(first, second, &answer);
    });
    return result == CallResult::kOk ? answer : -1;
}

int32_t dovRuleCtl(int32_t ruleId, int32_t status, const std::vector<Resource>& resources) {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "dovRuleCtl, ruleId:%d, status:%d", ruleId,
                        status);
    int32_t answer = -1;
    const CallResult result = callDov({"dovRuleCtl"}, [&](IMirx& hal) {
        return hal.ruleCtl(ruleId, status, toElements(resources), &answer);
    });
    return result == CallResult::kOk ? answer : -1;
}
