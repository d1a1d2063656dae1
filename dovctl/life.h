// One life of the service, from its start to its death.
#pragma once

#include <functional>
#include <memory>

#include <android/binder_auto_utils.h>

namespace dovctl {

// Handles belong to the life of the service that gave them: given to a later one, they may name
// what another process holds.
class Life {
  public:
    // The life that the service lives now. `onDied` is called on a binder thread when it ends, but
    // not once this object is gone.
    explicit Life(std::function<void()> onDied);
    ~Life();
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    // Whether the service is in this life. Looks it up, so that a death counts before its notice
    // has arrived.
    bool lasts() const;
    // Whether its process has died; a life that does not last may also have been replaced by the
    // service of another process.
    bool isDead() const { return mBinder.get() == nullptr || !AIBinder_isAlive(mBinder.get()); }

  private:
    struct Notice;

    // First in, last out: the recipient refers to both.
    ndk::SpAIBinder mBinder;
    std::shared_ptr<Notice> mNotice;
    ndk::ScopedAIBinder_DeathRecipient mRecipient;
};

}  // namespace dovctl
