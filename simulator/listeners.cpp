// Who wants to hear of changes, and the thread that tells them.
#include "simulator/listeners.h"

#include <algorithm>
#include <utility>

#include <android-base/stringprintf.h>

#include "simulator/describe.h"

namespace simulator {

using android::base::StringPrintf;

Listeners::Listeners(Journal& journal)
    : mJournal(journal),
      mDeathRecipient(AIBinder_DeathRecipient_new(onDied)),
      mCaller([this] { runCalls(); }) {
    AIBinder_DeathRecipient_setOnUnlinked(
            mDeathRecipient.get(), [](void* cookie) { delete static_cast<Cookie*>(cookie); });
}

Listeners::~Listeners() {
    {
        std::lock_guard lock(mQueueMutex);
        mStopped = true;
    }
    mQueueChanged.notify_all();
    mCaller.join();
    // A notice of death that is under way ends first, and later ones find nobody: the journal may
    // go.
    std::unique_lock lock(mRegistry->mutex);
    const auto forgotten = std::exchange(mRegistry->listeners, {});
    lock.unlock();
}

int32_t Listeners::add(Topic topic, std::set<ResourceKey> keys,
                       const std::shared_ptr<IMirxCallback>& callback) {
    auto* const cookie = new Cookie{mRegistry, 0, &mJournal};
    int32_t handle = 0;
    {
        std::lock_guard lock(mRegistry->mutex);
        handle = cookie->handle = ++mRegistry->lastHandle;
        mRegistry->listeners[handle] = {topic, std::move(keys), callback, cookie};
    }
    // A process that has died already hears of nothing; the next callback fails.
    AIBinder_linkToDeath(callback->asBinder().get(), mDeathRecipient.get(), cookie);
    return handle;
}

bool Listeners::remove(Topic topic, int32_t handle) {
    Listener removed;
    {
        std::lock_guard lock(mRegistry->mutex);
        const auto listener = mRegistry->listeners.find(handle);
        if (listener == mRegistry->listeners.end() || listener->second.topic != topic) return false;
        removed = std::move(listener->second);
        mRegistry->listeners.erase(listener);
    }
    AIBinder_unlinkToDeath(removed.callback->asBinder().get(), mDeathRecipient.get(),
                           removed.cookie);
    return true;
}

void Listeners::onDied(void* data) {
    const auto* cookie = static_cast<Cookie*>(data);
    const auto registry = cookie->registry.lock();
    if (registry == nullptr) return;
    std::lock_guard lock(registry->mutex);
    if (registry->listeners.erase(cookie->handle) != 0) {
        cookie->journal->line(StringPrintf("unlisten handle %d: its process died", cookie->handle));
    }
}

void Listeners::notify(Topic topic, const std::vector<MirxRequestData>& changes) {
    std::lock_guard lock(mRegistry->mutex);
    for (const auto& [handle, listener] : mRegistry->listeners) {
        if (listener.topic != topic) continue;
        std::vector<MirxRequestData> data;
        std::copy_if(changes.begin(), changes.end(), std::back_inserter(data),
                     [&listener = listener](const MirxRequestData& change) {
                         return listener.keys.contains(keyOf(change));
                     });
        if (!data.empty()) post({handle, listener.callback, std::move(data)});
    }
}

void Listeners::complete(const std::shared_ptr<IMirxCallback>& callback,
                         const std::vector<MirxRequestData>& data) {
    post({0, callback, data});
}

void Listeners::post(Call call) {
    std::lock_guard lock(mQueueMutex);
    mQueue.push_back(std::move(call));
    mQueueChanged.notify_all();
}

std::optional<Listeners::Call> Listeners::nextCall() {
    std::unique_lock lock(mQueueMutex);
    const android::base::ScopedLockAssertion locked(mQueueMutex);
    mQueueChanged.wait(lock,
                       [this]() REQUIRES(mQueueMutex) { return mStopped || !mQueue.empty(); });
    if (mStopped) return std::nullopt;
    Call call = std::move(mQueue.front());
    mQueue.pop_front();
    return call;
}

void Listeners::runCalls() {
    while (const auto call = nextCall()) {
        const bool told = call->callback->onCallback(call->data).isOk();
        mJournal.line((call->handle == 0 ? "callback completion "
                                         : StringPrintf("callback handle %d ", call->handle)) +
                      simulator::describe(call->data) + (told ? "" : " (no answer)"));
    }
}

std::vector<std::string> Listeners::describe() const {
    std::lock_guard lock(mRegistry->mutex);
    std::vector<std::string> lines;
    for (const auto& [handle, listener] : mRegistry->listeners) {
        std::string line = StringPrintf(
                "%6d  %-9s", handle, listener.topic == Topic::kThermal ? "thermal" : "resources");
        for (const ResourceKey& key : listener.keys) {
            line += " " +
                    (listener.topic == Topic::kThermal ? std::to_string(key.opcode) : textOf(key));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::string> Listeners::describeQueue() const {
    std::lock_guard lock(mQueueMutex);
    std::vector<std::string> lines;
    for (const Call& call : mQueue) lines.push_back(simulator::describe(call.data));
    return lines;
}

}  // namespace simulator
