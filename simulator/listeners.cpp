// The listening registrations, and the thread that makes the callbacks.
#include "simulator/listeners.h"

#include <algorithm>
#include <utility>

#include <android-base/stringprintf.h>

#include "simulator/describe.h"
#include "simulator/message_size.h"

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
    // Taking the lock waits for a death notice that is being handled. Later ones find no listener
    // and so do not use the journal.
    std::unique_lock lock(mRegistry->mutex);
    const auto forgotten = std::exchange(mRegistry->listeners, {});
    lock.unlock();
}

int32_t Listeners::add(Topic topic, std::set<ResourceKey> keys,
                       const std::shared_ptr<IMirxCallback>& callback, int32_t pid) {
    if (callback == nullptr) return -1;  // forbidden by the interface, but possible in a parcel
    // Links under the lock: a death notice or remove() must not see half of a registration.
    std::lock_guard lock(mRegistry->mutex);
    const int32_t handle = mRegistry->handles.next();
    auto* const cookie = new Cookie{mRegistry, handle, &mJournal};
    if (AIBinder_linkToDeath(callback->asBinder().get(), mDeathRecipient.get(), cookie) ==
        STATUS_DEAD_OBJECT) {
        return -1;  // the client is dead; the cookie is deleted already
    }
    mRegistry->listeners[handle] = {topic, std::move(keys), callback, pid, cookie};
    return handle;
}

bool Listeners::remove(Topic topic, int32_t handle) {
    std::shared_ptr<IMirxCallback>
            callback;  // outlives the lock: destroying it may call its process
    std::lock_guard lock(mRegistry->mutex);
    const auto listener = mRegistry->listeners.find(handle);
    if (listener == mRegistry->listeners.end() || listener->second.topic != topic) return false;
    callback = std::move(listener->second.callback);
    AIBinder_unlinkToDeath(callback->asBinder().get(), mDeathRecipient.get(),
                           listener->second.cookie);
    mRegistry->listeners.erase(listener);
    return true;
}

void Listeners::onDied(void* data) {
    const auto* cookie = static_cast<Cookie*>(data);
    const auto registry = cookie->registry.lock();
    if (registry == nullptr) return;
    std::map<int32_t, Listener>::node_type died;  // outlives the lock, as in remove()
    std::lock_guard lock(registry->mutex);
    died = registry->listeners.extract(cookie->handle);
    if (died.empty()) return;
    cookie->journal->line(StringPrintf("unlisten handle %d: its process died", cookie->handle));
}

void Listeners::notify(Topic topic, const std::vector<MirxRequestData>& changes) {
    std::lock_guard lock(mRegistry->mutex);
    for (const auto& [handle, listener] : mRegistry->listeners) {
        if (listener.topic != topic) continue;
        std::vector<MirxRequestData> data;
        std::copy_if(changes.begin(), changes.end(), std::back_inserter(data),
                     [&listener = listener](const MirxRequestData& change) {
                         return listener.keys.count(keyOf(change)) != 0;
                     });
        if (!data.empty()) post({handle, listener.callback, std::move(data)});
    }
}

void Listeners::complete(const std::shared_ptr<IMirxCallback>& callback,
                         const std::vector<MirxRequestData>& data) {
    // Only the first call of a completion reaches the client, so the rest is dropped.
    post({0, callback, {data.begin(), data.begin() + static_cast<ptrdiff_t>(fitting(data))}});
}

void Listeners::post(Call call) {
    std::lock_guard lock(mQueueMutex);
    // More changes than one message can carry go out in several callbacks.
    std::vector<MirxRequestData>& data = call.data;
    for (size_t count = 0; (count = fitting(data)) > 0 && count < data.size();) {
        const auto rest = data.begin() + static_cast<ptrdiff_t>(count);
        mQueue.push_back({call.handle, call.callback, {data.begin(), rest}});
        data.erase(data.begin(), rest);
    }
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
        std::string line =
                StringPrintf("handle %d  %-9s  pid %s ", handle,
                             listener.topic == Topic::kThermal ? "thermal" : "resources",
                             listener.pid == 0 ? "unknown" : std::to_string(listener.pid).c_str());
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
