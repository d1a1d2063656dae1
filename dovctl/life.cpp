// One life of the service, from its start to its death.
#include "dovctl/life.h"

#include <mutex>
#include <utility>

#include <android-base/thread_annotations.h>
#include <android/binder_manager.h>

#include "common/service.h"

namespace dovctl {

// Shared with a notice that may be on its way.
struct Life::Notice {
    std::mutex mutex;
    std::function<void()> onDied GUARDED_BY(mutex);

    static void deliver(void* cookie) {
        Notice& notice = **static_cast<std::shared_ptr<Notice>*>(cookie);
        std::lock_guard lock(notice.mutex);
        if (notice.onDied) notice.onDied();
    }
    static void unlink(void* cookie) { delete static_cast<std::shared_ptr<Notice>*>(cookie); }
};

Life::Life(std::function<void()> onDied)
    : mBinder(AServiceManager_checkService(dovcommon::kServiceName)),
      mNotice(std::make_shared<Notice>()),
      mRecipient(AIBinder_DeathRecipient_new(Notice::deliver)) {
    if (mBinder.get() == nullptr) return;
    {
        std::lock_guard lock(mNotice->mutex);
        mNotice->onDied = std::move(onDied);
    }
    AIBinder_DeathRecipient_setOnUnlinked(mRecipient.get(), Notice::unlink);
    AIBinder_linkToDeath(mBinder.get(), mRecipient.get(), new std::shared_ptr<Notice>(mNotice));
}

Life::~Life() {
    std::lock_guard lock(mNotice->mutex);
    mNotice->onDied = nullptr;
}

bool Life::lasts() const {
    if (isDead()) return false;
    // The proxy is the same object as long as it is held and its service lives.
    const ndk::SpAIBinder now(AServiceManager_checkService(dovcommon::kServiceName));
    return now.get() == mBinder.get();
}

}  // namespace dovctl
