// What the tests of the low-level client share.
#pragma once

#include <dov/halclient.h>

#include <android-base/thread_annotations.h>
#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/test_services.h"

// Lines that the operations log.
LogLine info(const std::string& text);
LogLine error(const std::string& text);
LogLine failed(const std::string& name);

MirxRequestData pathElement(std::optional<std::string> path, std::optional<std::string> value = {});

// A request of the given kind; a `flag` that is left out is false.
MirxRequestParcel control(int32_t kind, int32_t handle, int64_t duration, int32_t arg4, bool flag,
                          int32_t pid, std::vector<MirxRequestData> data);

using OpcodesAndValues = std::vector<std::pair<int32_t, std::string>>;
OpcodesAndValues plain(const std::list<DovClient::Resource>& resources);

// Keeps what it is told: (opcode, value) for each call.
class Heard : public IClientCallback {
  public:
    void onCallback(std::list<DovClient::Resource> resources) override;
    std::vector<OpcodesAndValues> take();

    std::function<void()> then;  // called within each call, when set

  private:
    std::mutex mMutex;
    std::vector<OpcodesAndValues> mCalls GUARDED_BY(mMutex);
};

// Keeps what it is told: (values, paths) for each call.
class HeardByPath : public IClientCallbackByPath {
  public:
    using Call = std::pair<std::vector<std::string>, std::vector<std::string>>;

    void onCallback(std::vector<std::string> values, std::vector<std::string> paths) override;
    std::vector<Call> take();

  private:
    std::mutex mMutex;
    std::vector<Call> mCalls GUARDED_BY(mMutex);
};

class ClientTest : public BinderTest {
  protected:
    // What the operations have logged since the last call; other lines are forgotten.
    std::vector<LogLine> clientLines();
    // The one call that the service has received since the last look.
    RecordedCall theCall();
    // That call's parcel as text, without its callback.
    std::string theParcel();
    static size_t waitingCallbacks();
};
