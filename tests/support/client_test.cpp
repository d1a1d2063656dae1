// The fixture and the helpers for tests of the library's calls.
#include "tests/support/client_test.h"

#include <utility>

#include <android-base/strings.h>

MirxRequestData pathElement(std::optional<std::string> path, std::optional<std::string> value) {
    MirxRequestData data = element(0, std::move(value));
    data.path = std::move(path);
    return data;
}

void Heard::onCallback(std::list<DovClient::Resource> resources) {
    record(shown(resources));
}

void Heard::onCallback(std::vector<std::string> values, std::vector<std::string> paths) {
    EXPECT_EQ(values.size(), paths.size());
    for (size_t i = 0; i < values.size(); ++i) paths.at(i) += "='" + values[i] + "'";
    record(android::base::Join(paths, ','));
}

void Heard::record(std::string call) {
    if (then) then();
    std::lock_guard lock(mMutex);
    mCalls.push_back(std::move(call));
}

std::vector<std::string> Heard::take() {
    std::lock_guard lock(mMutex);
    return std::exchange(mCalls, {});
}

ClientTest::~ClientTest() {
    std::lock_guard lock(request_callback_mutex);
    request_callbacks.clear();
}

void ClientTest::answerThree() {
    service->answer = 3;
    service->property = "3";
    service->state = {pathElement("/5", "3")};
    service->state[0].id = 5;
    service->state[0].extra = "entry";
}

std::vector<LogLine> ClientTest::clientLines() {
    std::vector<LogLine> lines = log.take();
    std::erase_if(lines, [](const LogLine& line) { return line.tag != kClientTag; });
    return lines;
}

RecordedCall ClientTest::theCall() {
    std::vector<RecordedCall> calls = service->take();
    EXPECT_EQ(calls.size(), 1u);
    return calls.empty() ? RecordedCall() : std::move(calls.front());
}

size_t ClientTest::waitingCallbacks() {
    std::lock_guard lock(request_callback_mutex);
    return request_callbacks.size();
}
