// The fixture and the helpers for tests of the low-level client.
#pragma once

#include <dov/halclient.h>

#include <android-base/thread_annotations.h>
#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/test_services.h"

// Log lines of the low-level client.
LogLine info(const std::string& text);
LogLine error(const std::string& text);
LogLine failed(const std::string& name);

MirxRequestData pathElement(std::optional<std::string> path, std::optional<std::string> value = {});

// Makes a request. For an operation without a flag, `flag` is false.
MirxRequestParcel control(int32_t kind, int32_t handle, int64_t duration, int32_t arg4, bool flag,
                          int32_t pid, std::vector<MirxRequestData> data);

using OpcodesAndValues = std::vector<std::pair<int32_t, std::string>>;
OpcodesAndValues plain(const std::list<DovClient::Resource>& resources);

// Records the (opcode, value) pairs of each callback.
class Heard : public IClientCallback {
  public:
    void onCallback(std::list<DovClient::Resource> resources) override;
    std::vector<OpcodesAndValues> take();

    std::function<void()> then;  // called during each callback, if set

  private:
    std::mutex mMutex;
    std::vector<OpcodesAndValues> mCalls GUARDED_BY(mMutex);
};

// Records the (values, paths) of each callback.
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
    // Takes the log: returns the low-level client's lines and discards the others.
    std::vector<LogLine> clientLines();
    // Takes the service's calls, of which there must be exactly one.
    RecordedCall theCall();
    // The parcel of theCall() as text, without its callback.
    std::string theParcel();
    static size_t waitingCallbacks();
};
