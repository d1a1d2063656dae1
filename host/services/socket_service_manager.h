// A service manager without a driver, over UNIX sockets in a folder that only its owner can use.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include <android-base/thread_annotations.h>
#include <android-base/unique_fd.h>
#include <binder/IServiceManager.h>
#include <binder/RpcServer.h>
#include <utils/String16.h>

namespace hostbinder {

// Distinguishes the same states of a service as the driver's service manager:
//   not declared               no VINTF manifest fragment (*.xml) in the folder names the instance
//   declared but not running   no live process has registered it
//   running                    a live process has; the look-up gives a proxy over its socket
//
// Any thread may call any function. Processes share nothing but the folder.
class SocketServiceManager : public android::IServiceManager {
  public:
    // Uses `folder`, which is made if it is not there. Returns null, with the reason in `error`,
    // when the folder cannot be made, belongs to another user or is open to others.
    static android::sp<SocketServiceManager> make(const std::string& folder, std::string* error);

    // Registers a service of this process under `name`, in place of an earlier one. Returns
    // PERMISSION_DENIED when the instance is not declared and another error when the socket cannot
    // be set up; the reason is logged.
    android::status_t addService(const android::String16& name,
                                 const android::sp<android::IBinder>& service, bool allowIsolated,
                                 int dumpsysFlags) override;

    // Ends the registration and the connections of a service of this process, as the death of the
    // process would.
    void removeService(const android::String16& name);

    // Returns the proxy of a running service, else null. Does not wait. The
    // proxy of a service that this process already talks to is the same object.
    android::sp<android::IBinder> checkService(const android::String16& name) const override;

    // Blocks until the service runs; woken by its registration, not by polling.
    android::sp<android::IBinder> waitForService(const android::String16& name) override;
    // Blocks for five seconds at the most.
    android::sp<android::IBinder> getService(const android::String16& name) const override;

    bool isDeclared(const android::String16& name) override;
    android::Vector<android::String16> getDeclaredInstances(
            const android::String16& interface) override;
    android::Vector<android::String16> listServices(int dumpsysFlags) override;
    std::vector<ServiceDebugInfo> getServiceDebugInfo() override;

    // Only devices have these: no value, no entry, INVALID_OPERATION.
    std::optional<android::String16> updatableViaApex(const android::String16&) override {
        return {};
    }
    android::Vector<android::String16> getUpdatableNames(const android::String16&) override {
        return {};
    }
    std::optional<ConnectionInfo> getConnectionInfo(const android::String16&) override {
        return {};
    }
    android::status_t registerForNotifications(
            const android::String16&, const android::sp<LocalRegistrationCallback>&) override {
        return android::INVALID_OPERATION;
    }
    android::status_t unregisterForNotifications(
            const android::String16&, const android::sp<LocalRegistrationCallback>&) override {
        return android::INVALID_OPERATION;
    }

  protected:
    android::IBinder* onAsBinder() override { return nullptr; }
    explicit SocketServiceManager(std::string folder) : mFolder(std::move(folder)) {}

  private:
    friend class android::sp<SocketServiceManager>;

    // A service of this process.
    struct Served {
        android::sp<android::RpcServer> server;
        std::string socket;
        android::base::unique_fd registration;
    };
    // A proxy that somebody in this process still owns.
    struct Connected {
        android::wp<android::IBinder> binder;
        std::string socket;
    };

    // Waits for running calls. They may use this service manager, so mMutex must not be held once
    // the service can be found.
    static void end(Served& served);
    android::sp<android::IBinder> waitFor(const android::String16& name, int milliseconds) const;

    const std::string mFolder;
    mutable std::mutex mMutex;
    std::map<std::string, Served> mServed GUARDED_BY(mMutex);
    int mSockets GUARDED_BY(mMutex) = 0;
    // Held while a look-up connects, which a stopped service blocks.
    mutable std::mutex mConnecting;
    mutable std::map<std::string, Connected> mConnected GUARDED_BY(mConnecting);
};

}  // namespace hostbinder
