// Who wants to hear of changes, and the thread that tells them.
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

#include "simulator/journal.h"
#include "simulator/resources.h"

namespace simulator {

using aidl::vendor::tavro::hardware::mirx::IMirxCallback;

// The listening registrations. Any thread may use it; callbacks are made one after the other, with
// no lock held, on a thread of their own, so that a client that is slow to answer holds up no
// request.
class Listeners {
  public:
    enum class Topic { kResources, kThermal };

    explicit Listeners(Journal& journal);
    ~Listeners();

    // Registers `callback` for changes of `keys`. Dropped when its process dies. Returns the
    // handle, 1 or more.
    int32_t add(Topic topic, std::set<ResourceKey> keys,
                const std::shared_ptr<IMirxCallback>& callback);
    // Returns false when the handle is not registered for the topic.
    bool remove(Topic topic, int32_t handle);

    // Tells every listener of the topic about those of the changes that it asked for.
    void notify(Topic topic, const std::vector<MirxRequestData>& changes);
    // Tells one callback once.
    void complete(const std::shared_ptr<IMirxCallback>& callback,
                  const std::vector<MirxRequestData>& data);

    // A line for each registration, and one for each callback that is waiting to be made.
    std::vector<std::string> describe() const;
    std::vector<std::string> describeQueue() const;

  private:
    struct Cookie;
    struct Listener {
        Topic topic;
        std::set<ResourceKey> keys;
        std::shared_ptr<IMirxCallback> callback;
        Cookie* cookie;  // the death recipient deletes it when the link ends
    };
    struct Call {
        int32_t handle;  // 0: the completion of a request
        std::shared_ptr<IMirxCallback> callback;
        std::vector<MirxRequestData> data;
    };
    // What a death notice finds its way back by; outlives the listeners if the notice comes late.
    struct Registry {
        std::mutex mutex;
        std::map<int32_t, Listener> listeners GUARDED_BY(mutex);
        int32_t lastHandle GUARDED_BY(mutex) = 0;
    };
    struct Cookie {
        std::weak_ptr<Registry> registry;
        int32_t handle;
        Journal* journal;
    };

    static void onDied(void* data);
    void post(Call call);
    // Waits for the next call to make. None when the listeners go.
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
