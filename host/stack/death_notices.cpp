// The thread that delivers the socket transport's death notices.
#include "death_notices.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace hostbinder {
namespace {

struct Queue {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> notices;
    bool delivering = false;
    bool stopped = false;
};

// Never destroyed: threads of the transport may still post while the process takes itself apart.
Queue& queue() {
    static Queue& queue = *new Queue;
    return queue;
}

void deliver() {
    std::unique_lock lock(queue().mutex);
    while (!queue().stopped) {
        if (queue().notices.empty()) {
            queue().changed.wait(lock);
            continue;
        }
        std::function<void()> notice = std::move(queue().notices.front());
        queue().notices.pop_front();
        queue().delivering = true;
        lock.unlock();
        notice();
        notice = nullptr;  // drops the last reference to a binder outside of the lock
        lock.lock();
        queue().delivering = false;
        queue().changed.notify_all();
    }
}

// Runs the thread and ends it with the process. The thread is detached, because a handler may wait
// for a lock that is never released again: the exit of the process must not wait for it longer than
// a moment.
struct Deliverer {
    Deliverer() { std::thread(deliver).detach(); }

    ~Deliverer() {
        std::unique_lock lock(queue().mutex);
        queue().stopped = true;
        queue().changed.notify_all();
        queue().changed.wait_for(lock, std::chrono::seconds(1), [] { return !queue().delivering; });
    }
};

}  // namespace

void postDeathNotice(std::function<void()> notice) {
    std::unique_lock lock(queue().mutex);
    if (queue().stopped) return;
    queue().notices.push_back(std::move(notice));
    queue().changed.notify_all();
    lock.unlock();
    // Made at the first notice, so that it ends before the globals that the handlers use.
    static Deliverer deliverer;
}

}  // namespace hostbinder
