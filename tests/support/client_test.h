// The fixture and the helpers for tests of the library's calls.
#pragma once

#include <dov/halclient.h>

#include <android-base/thread_annotations.h>
#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/shown.h"
#include "tests/support/test_services.h"

inline constexpr char kClientTag[] = "MIRXFramework-lib-vendor";
inline constexpr char kDovTag[] = "[DOV_CLIENT]";

MirxRequestData pathElement(std::optional<std::string> path, std::optional<std::string> value = {});

// Records each callback as text: by id as "{7 '1'}", by path as "/a='1',/b=''".
class Heard : public IClientCallback, public IClientCallbackByPath {
  public:
    void onCallback(std::list<DovClient::Resource> resources) override;
    void onCallback(std::vector<std::string> values, std::vector<std::string> paths) override;
    std::vector<std::string> take();

    std::function<void()> then;  // called during each callback, if set

  private:
    void record(std::string call);

    std::mutex mMutex;
    std::vector<std::string> mCalls GUARDED_BY(mMutex);
};

class ClientTest : public BinderTest {
  protected:
    // Empties request_callbacks for the next test.
    ~ClientTest() override;

    // Has the service answer 3 to everything, as Operation::result expects.
    void answerThree();
    // Takes the log: returns the low-level client's lines and discards the others.
    std::vector<LogLine> clientLines();
    // Takes the service's calls, of which there must be exactly one.
    RecordedCall theCall();
    static size_t waitingCallbacks();
};
