// The fixture and the helpers for tests of the low-level client.
#include "tests/support/client_test.h"

#include <utility>

static const char kTag[] = "MIRXFramework-lib-vendor";

LogLine info(const std::string& text) {
    return {ANDROID_LOG_INFO, kTag, text};
}
LogLine error(const std::string& text) {
    return {ANDROID_LOG_ERROR, kTag, text};
}
LogLine failed(const std::string& name) {
    return error(name + "() failed: mirx HAL service not available");
}

MirxRequestData pathElement(std::optional<std::string> path, std::optional<std::string> value) {
    MirxRequestData data = element(0, std::move(value));
    data.path = std::move(path);
    return data;
}

MirxRequestParcel control(int32_t kind, int32_t handle, int64_t duration, int32_t arg4, bool flag,
                          int32_t pid, std::vector<MirxRequestData> data) {
    MirxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.handle = handle;
    parcel.duration = duration;
    parcel.arg4 = arg4;
    parcel.flag = flag;
    parcel.pid = pid;
    parcel.requestData = std::move(data);
    return parcel;
}

OpcodesAndValues plain(const std::list<DovClient::Resource>& resources) {
    OpcodesAndValues result;
    for (const auto& r : resources) result.emplace_back(r.opcode, r.value.value_or("(absent)"));
    return result;
}

void Heard::onCallback(std::list<DovClient::Resource> resources) {
    if (then) then();
    std::lock_guard lock(mMutex);
    mCalls.push_back(plain(resources));
}

std::vector<OpcodesAndValues> Heard::take() {
    std::lock_guard lock(mMutex);
    return std::exchange(mCalls, {});
}

void HeardByPath::onCallback(std::vector<std::string> values, std::vector<std::string> paths) {
    std::lock_guard lock(mMutex);
    mCalls.emplace_back(std::move(values), std::move(paths));
}

std::vector<HeardByPath::Call> HeardByPath::take() {
    std::lock_guard lock(mMutex);
    return std::exchange(mCalls, {});
}

std::vector<LogLine> ClientTest::clientLines() {
    std::vector<LogLine> lines = log.take();
    std::erase_if(lines, [](const LogLine& line) { return line.tag != kTag; });
    return lines;
}

RecordedCall ClientTest::theCall() {
    std::vector<RecordedCall> calls = service->take();
    EXPECT_EQ(calls.size(), 1u);
    return calls.empty() ? RecordedCall() : std::move(calls.front());
}

std::string ClientTest::theParcel() {
    MirxRequestParcel parcel = theCall().parcel;
    parcel.callback = nullptr;
    return parcel.toString();
}

size_t ClientTest::waitingCallbacks() {
    std::lock_guard lock(request_callback_mutex);
    return request_callbacks.size();
}
