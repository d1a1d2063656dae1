// The thread that delivers the socket transport's death notices.
#include "death_notices.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

namespace hostbinder {
namespace {

struct Queue {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> notices;
    bool delivering = false;
    bool stopped = false;
};

void deliver(const std::shared_ptr<Queue>& queue) {
    std::unique_lock lock(queue->mutex);
    while (!queue->stopped) {
        if (queue->notices.empty()) {
            queue->changed.wait(lock);
            continue;
        }
        std::function<void()> notice = std::move(queue->notices.front());
        queue->notices.pop_front();
        queue->delivering = true;
        lock.unlock();
        notice();
        notice = nullptr;  // drops the last reference to a binder outside of the lock
        lock.lock();
        queue->delivering = false;
        queue->changed.notify_all();
    }
}

// The thread is detached and shares the queue, because a handler may wait for a lock that is never
// released again: the exit of the process must not wait for it longer than a moment.
class Deliverer {
  public:
    Deliverer() { std::thread(deliver, mQueue).detach(); }

    ~Deliverer() {
        std::unique_lock lock(mQueue->mutex);
        mQueue->stopped = true;
        mQueue->changed.notify_all();
        mQueue->changed.wait_for(lock, std::chrono::seconds(1),
                                 [this] { return !mQueue->delivering; });
    }

    void post(std::function<void()> notice) {
        std::lock_guard lock(mQueue->mutex);
        if (mQueue->stopped) return;
        mQueue->notices.push_back(std::move(notice));
        mQueue->changed.notify_all();
    }

  private:
    std::shared_ptr<Queue> mQueue = std::make_shared<Queue>();
};

}  // namespace

void postDeathNotice(std::function<void()> notice) {
    // Made at the first notice, so that it ends before the globals that the handlers use.
    static Deliverer deliverer;
    deliverer.post(std::move(notice));
}

}  // namespace hostbinder
