// The listening registrations, and the thread that makes the callbacks.
#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/IMirxCallback.h>
#include <android-base/thread_annotations.h>

#include "simulator/handles.h"
#include "simulator/journal.h"
#include "simulator/resources.h"

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::IMirxCallback;

// The listening registrations. Any thread may use it. One thread makes all
// callbacks, one after the other and with no lock held, so a slow client does not block requests.
class Listeners {
  public:
    enum class Topic { kResources, kThermal };

    explicit Listeners(Journal& journal);
    ~Listeners();

    // Registers `callback` for changes of `keys` and returns the handle. The registration ends when
    // the callback's process dies. `pid` is that process, or 0 if it is unknown.
    int32_t add(Topic topic, std::set<ResourceKey> keys,
                const std::shared_ptr<IMirxCallback>& callback, int32_t pid);
    // Returns false when the handle is not registered for the topic.
    bool remove(Topic topic, int32_t handle);

    // Queues a callback for every listener of the topic, with the changes of its keys.
    void notify(Topic topic, const std::vector<MirxRequestData>& changes);
    // Queues the one callback that completes a request.
    void complete(const std::shared_ptr<IMirxCallback>& callback,
                  const std::vector<MirxRequestData>& data);

    // A line for each registration, and a line for each queued callback.
    std::vector<std::string> describe() const;
    std::vector<std::string> describeQueue() const;

  private:
    struct Cookie;
    struct Listener {
        Topic topic;
        std::set<ResourceKey> keys;
        std::shared_ptr<IMirxCallback> callback;
        int32_t pid;
        Cookie* cookie;  // the death recipient deletes it when the link ends
    };
    struct Call {
        int32_t handle;  // 0: the completion of a request
        std::shared_ptr<IMirxCallback> callback;
        std::vector<MirxRequestData> data;
    };
    // Target of death notices; may outlive the listeners.
    struct Registry {
        std::mutex mutex;
        std::map<int32_t, Listener> listeners GUARDED_BY(mutex);
        HandleSource handles GUARDED_BY(mutex);
    };
    struct Cookie {
        std::weak_ptr<Registry> registry;
        int32_t handle;
        Journal* journal;
    };

    static void onDied(void* data);
    void post(Call call);
    // Waits for the next call to make. None once the listeners are being destroyed.
    std::optional<Call> nextCall();
    void runCalls();

    Journal& mJournal;
    std::shared_ptr<Registry> mRegistry = std::make_shared<Registry>();
    ndk::ScopedAIBinder_DeathRecipient mDeathRecipient;
    mutable std::mutex mQueueMutex;
    std::condition_variable mQueueChanged;
    std::deque<Call> mQueue GUARDED_BY(mQueueMutex);
    bool mStopped GUARDED_BY(mQueueMutex) = false;
    std::thread mCaller;
};

}  // namespace simulator
