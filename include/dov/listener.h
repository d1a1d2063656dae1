/// @file
/// dov::Listener: a listening registration that survives restarts of the service.
///
/// Header-only, on top of dov/halclient.h; works without exceptions and RTTI. The caller also links
/// libbinder_ndk and needs a thread pool (ABinderProcess_startThreadPool).
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>

#include <dov/halclient.h>

namespace dov {

/// Registers on construction, registers again whenever the service has died and is back, and
/// unregisters on destruction. Neither constructor nor destructor waits for the service: a thread of
/// the Listener's own registers and unregisters.
///
/// The callback runs on a binder thread, one call at a time; what dov/ClientCallback.h says of
/// callbacks applies. It may destroy its Listener. Otherwise the destructor waits for a callback that
/// runs, so do not destroy a Listener while holding a lock that its callback takes. After the
/// destructor has returned, the callback is not called again.
///
/// The library accepts the same resources in the same order only once in a process. A registration
/// that it or the service refuses is tried again every second.
class Listener {
  public:
    /// Called with the resources that have changed; see IClientCallback.
    using Callback = std::function<void(const std::list<DovClient::Resource>& resources)>;
    /// Called with the values and paths that have changed; see IClientCallbackByPath.
    using CallbackByPath = std::function<void(const std::vector<std::string>& values,
                                              const std::vector<std::string>& paths)>;

    /// Listens to resources by opcode.
    Listener(std::list<DovClient::Resource> resources, Callback callback) {
        const auto target = std::make_shared<ById>(mState, std::move(callback));
        start([resources = std::move(resources), target]() mutable {
            return mirxHalclient::mirxResListeningRegister(resources, getpid(), target);
        });
    }

    /// Listens to resources by path.
    Listener(std::vector<std::string> paths, CallbackByPath callback) {
        const auto target = std::make_shared<ByPath>(mState, std::move(callback));
        start([paths = std::move(paths), target] {
            return mirxHalclient::mirx_res_listening_register_by_path(paths, getpid(), target);
        });
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Ends the registration; its thread unregisters.
    ~Listener() {
        mState->mute();
        mState->wake([](State& state) { state.stopped = true; });
    }

    /// Whether the running service has the registration.
    bool isRegistered() const {
        std::lock_guard<std::mutex> lock(mState->mutex);
        return mState->handle != -1 && !mState->died;
    }

  private:
    struct State {
        std::mutex mutex;  // guards what follows
        std::condition_variable changed;
        bool stopped = false;
        bool died = false;
        int handle = -1;

        std::mutex calling;  // held while the callback runs; guards muted
        std::atomic<std::thread::id> caller{};  // the thread that the callback runs on
        bool muted = false;

        template <typename Change>
        void wake(Change&& change) {
            std::lock_guard<std::mutex> lock(mutex);
            change(*this);
            changed.notify_all();
        }

        // Returns true when the listener is to be stopped.
        template <typename Condition>
        bool waitFor(std::chrono::milliseconds time, Condition&& condition) {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait_for(lock, time, [&] { return stopped || condition(); });
            return stopped;
        }

        // Makes sure that no callback runs after this, unless on this very thread.
        void mute() {
            if (caller == std::this_thread::get_id()) {
                muted = true;
            } else {
                std::lock_guard<std::mutex> lock(calling);
                muted = true;
            }
        }

        template <typename Call>
        void callBack(Call&& call) {
            std::lock_guard<std::mutex> lock(calling);
            if (muted) return;
            caller = std::this_thread::get_id();
            call();
            caller = std::thread::id();
        }
    };

    struct ById : IClientCallback {
        ById(std::shared_ptr<State> state, Callback callback)
            : state(std::move(state)), callback(std::move(callback)) {}
        void onCallback(std::list<DovClient::Resource> resources) override {
            state->callBack([&] { callback(resources); });
        }
        const std::shared_ptr<State> state;
        const Callback callback;
    };

    struct ByPath : IClientCallbackByPath {
        ByPath(std::shared_ptr<State> state, CallbackByPath callback)
            : state(std::move(state)), callback(std::move(callback)) {}
        void onCallback(std::vector<std::string> values, std::vector<std::string> paths) override {
            state->callBack([&] { callback(values, paths); });
        }
        const std::shared_ptr<State> state;
        const CallbackByPath callback;
    };

    // The thread is not joined: it may be in a call that the service does not answer.
    template <typename Register>
    void start(Register registerAgain) {
        std::thread([state = mState, registerAgain = std::move(registerAgain)]() mutable {
            run(*state, state, registerAgain);
        }).detach();
    }

    template <typename Register>
    static void run(State& state, const std::shared_ptr<State>& shared, Register& registerAgain) {
        using std::chrono::milliseconds;
        AIBinder_DeathRecipient* recipient = AIBinder_DeathRecipient_new([](void* cookie) {
            (*static_cast<std::shared_ptr<State>*>(cookie))->wake([](State& s) { s.died = true; });
        });
        AIBinder_DeathRecipient_setOnUnlinked(recipient, [](void* cookie) {
            delete static_cast<std::shared_ptr<State>*>(cookie);
        });
        int handle = -1;  // of this or of an earlier service
        bool stopped = false;
        while (!stopped) {
            const ndk::SpAIBinder service(
                    AServiceManager_checkService("vendor.tavro.hardware.mirx.IMirx/default"));
            if (service.get() == nullptr) {
                stopped = state.waitFor(milliseconds(100), [] { return false; });
                continue;
            }
            state.wake([](State& s) {
                s.died = false;
                s.handle = -1;
            });
            auto* const cookie = new std::shared_ptr<State>(shared);
            // A service in this very process cannot be linked, and needs no link.
            if (AIBinder_linkToDeath(service.get(), recipient, cookie) == STATUS_DEAD_OBJECT) {
                stopped = state.waitFor(milliseconds(100), [] { return false; });
                continue;
            }
            // The library keeps the registration with the earlier service until it is unregistered.
            if (handle != -1) mirxHalclient::mirxResListeningUnRegister(handle);
            handle = registerAgain();
            state.wake([handle](State& s) { s.handle = handle; });
            const auto died = [&state] { return state.died; };
            const bool refused = handle == -1;
            stopped = state.waitFor(refused ? milliseconds(1000) : std::chrono::hours(8760), died);
            if (AIBinder_isAlive(service.get())) {
                AIBinder_unlinkToDeath(service.get(), recipient, cookie);
            }
        }
        if (handle != -1) mirxHalclient::mirxResListeningUnRegister(handle);
        AIBinder_DeathRecipient_delete(recipient);
    }

    const std::shared_ptr<State> mState = std::make_shared<State>();
};

}  // namespace dov
