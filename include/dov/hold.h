/// @file
/// dov::Hold: resources that are acquired on construction and released on destruction.
///
/// Header-only, on top of dov/dov.h and dov/DovWrapper.h; works without exceptions and RTTI. The
/// caller also links libbinder_ndk.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>

#include <dov/DovWrapper.h>
#include <dov/dov.h>

namespace dov {

/// Holds what one acquire function has acquired. Movable; not to be used by several threads at once.
///
/// A handle dies with its service, so a Hold never releases to a service that was started after the
/// one that gave the handle. A hold whose duration has ended still counts as held: the service does
/// not report the end, and ignores the release of an unknown handle.
class Hold {
  public:
    /// Holds nothing.
    Hold() = default;

    /// Acquires an action by name: DovEventAcquireWrapper. Blocks and logs as it does.
    Hold(std::string eventId, std::string scene, std::string identity, int32_t timeout) {
        acquire([&] {
            return DovEventAcquireWrapper(std::move(eventId), std::move(scene), std::move(identity),
                                          timeout);
        });
    }

    /// Acquires an event by number: DovEventAcquire. Blocks and logs as it does.
    Hold(int32_t cmdid, const std::string& pkg, const std::string& identity, int32_t duration,
         const std::vector<DovClient::Resource>& resources = {}) {
        acquire([&] { return DovEventAcquire(cmdid, pkg, identity, duration, resources); });
    }

    /// Acquires a plain resource list: DovResAcquire. Blocks and logs as it does.
    Hold(const std::vector<DovClient::Resource>& resources, const std::string& identity,
         int32_t duration) {
        acquire([&] { return DovResAcquire(resources, "", identity, duration); });
    }

    /// Takes over what `other` holds.
    Hold(Hold&& other) noexcept { swap(other); }
    /// Releases what this holds and takes over what `other` holds.
    Hold& operator=(Hold&& other) noexcept {
        Hold(std::move(other)).swap(*this);
        return *this;
    }
    /// Releases: see release().
    ~Hold() { release(); }

    /// Whether something was acquired and has not been released. Does not ask the service.
    explicit operator bool() const { return mHandle != -1; }

    /// Whether the service that gave the handle still lives. Blocks until it answers.
    bool holds() const {
        return mHandle != -1 && mService.get() != nullptr &&
               AIBinder_ping(mService.get()) == STATUS_OK;
    }

    /// The service's handle; -1 when nothing is held.
    int32_t handle() const { return mHandle; }

    /// Releases the handle if its service still lives. Blocks until the service answers. Does
    /// nothing when nothing is held.
    void release() {
        if (holds()) DovRelease(mHandle);
        mHandle = -1;
        mService = ndk::SpAIBinder();
    }

  private:
    static ndk::SpAIBinder runningService() {
        return ndk::SpAIBinder(
                AServiceManager_checkService("vendor.tavro.hardware.mirx.IMirx/default"));
    }

    // The service before and after the call is the same, so the handle is that service's. If it is
    // not, the service was restarted during the call: nobody knows whose handle it is, and a handle
    // of the earlier service has died with it. It may hold until its duration ends.
    template <typename Call>
    void acquire(Call&& call) {
        ndk::SpAIBinder before = runningService();
        mHandle = call();
        if (mHandle != -1 && before.get() != nullptr && before.get() == runningService().get()) {
            mService = std::move(before);
        }
    }

    void swap(Hold& other) {
        std::swap(mHandle, other.mHandle);
        std::swap(mService, other.mService);
    }

    int32_t mHandle = -1;
    ndk::SpAIBinder mService;  // the one that gave the handle
};

}  // namespace dov
