// A service that records every call and gives the answers that the test sets.
#include "tests/support/recording_service.h"

#include <stdexcept>
#include <utility>

#include "tests/support/eventually.h"
#include "tests/support/shown.h"

using ndk::ScopedAStatus;

std::string shown(const RecordedCall& call) {
    const MirxRequestParcel& parcel = call.parcel;
    std::string text = call.operation;
    const auto add = [&text](const char* name, int64_t number) {
        if (number != 0) text += name + std::to_string(number);
    };
    for (const int32_t number : call.numbers) text += " " + std::to_string(number);
    for (const std::string& argument : call.texts) text += " '" + argument + "'";
    add(" type ", parcel.requestType);
    add(" handle ", parcel.handle);
    add(" duration ", parcel.duration);
    add(" arg4 ", parcel.arg4);
    if (parcel.flag) text += " flag";
    add(" pid ", parcel.pid);
    if (parcel.packageName) text += " package '" + *parcel.packageName + "'";
    if (parcel.identity) text += " identity '" + *parcel.identity + "'";
    if (parcel.stringList) text += " tags";
    for (const auto& tag : parcel.stringList.value_or(std::vector<std::optional<std::string>>())) {
        text += " " + tag.value_or("(null)");
    }
    if (parcel.numbers) text += " numbers";
    if (!call.data.empty()) text += " " + shown(call.data);
    if (!parcel.requestData.empty()) text += " " + shown(parcel.requestData);
    if (parcel.callback != nullptr || call.callback != nullptr) text += " callback";
    return text;
}

std::vector<RecordedCall> RecordingService::take() {
    std::lock_guard lock(mMutex);
    return std::exchange(mCalls, {});
}

void RecordingService::whenCalled(std::function<void(const std::string&)> hook) {
    std::lock_guard lock(mMutex);
    mHook = std::move(hook);
}

RecordedCall RecordingService::awaitCall() {
    RecordedCall call;
    const bool arrived = eventually([&] {
        std::lock_guard lock(mMutex);
        if (mCalls.empty()) return false;
        call = std::move(mCalls.front());
        mCalls.erase(mCalls.begin());
        return true;
    });
    if (!arrived) throw std::runtime_error("no call arrived within ten seconds");
    return call;
}

ScopedAStatus RecordingService::record(const RecordedCall& call, int32_t* result) {
    if (result != nullptr) *result = counting ? ++answer : answer.load();
    std::function<void(const std::string&)> hook;
    {
        std::lock_guard lock(mMutex);
        mCalls.push_back(call);
        hook = mHook;
    }
    if (hook) hook(call.operation);
    return failing ? ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE) : ScopedAStatus::ok();
}
