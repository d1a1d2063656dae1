// The binder object through which the service calls a client back.
#pragma once

#include <memory>
#include <vector>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <dov/ClientCallback.h>

#include "common/service.h"

// Made with ndk::SharedRefBase::make only. Its fields never change, so it needs no lock.
class MirxCallbackClient : public aidl::vendor::tavro::hardware::mirx::BnMirxCallback {
  public:
    // `is_register`: it serves a registration and stays after each call; otherwise it serves one
    // request and leaves request_callbacks at its first call. `by_path`: the data is addressed by
    // path and passed to an IClientCallbackByPath; otherwise by id, to an IClientCallback. Without
    // a callback of that kind the data is dropped.
    MirxCallbackClient(const std::shared_ptr<IClientCallback>& callback, bool is_register,
                       bool by_path);
    MirxCallbackClient(const std::shared_ptr<IClientCallbackByPath>& callback, bool is_register,
                       bool by_path);
    ~MirxCallbackClient() override;

    // Always returns OK. Calls the client's callback with no lock held; takes
    // request_callback_mutex afterwards. During exit nobody is called.
    ndk::ScopedAStatus onCallback(const std::vector<dovcommon::MirxRequestData>& data) override;

  private:
    void callById(const std::vector<dovcommon::MirxRequestData>& data);
    void callByPath(const std::vector<dovcommon::MirxRequestData>& data);
    void leaveRequestCallbacks();

    const std::shared_ptr<IClientCallback> mCallback;
    const std::shared_ptr<IClientCallbackByPath> mCallbackByPath;
    const bool is_register;
    const bool by_path;
};

namespace mirxHalclient::internal {

// Makes the object that serves a registration.
std::shared_ptr<MirxCallbackClient> forRegistration(const std::shared_ptr<IClientCallback>&);
std::shared_ptr<MirxCallbackClient> forRegistration(const std::shared_ptr<IClientCallbackByPath>&);

// Makes the object that serves one request and adds it to request_callbacks, logging `added`. Takes
// request_callback_mutex.
std::shared_ptr<MirxCallbackClient> forRequest(const std::shared_ptr<IClientCallback>& callback,
                                               const char* added);
std::shared_ptr<MirxCallbackClient> forRequest(
        const std::shared_ptr<IClientCallbackByPath>& callback, const char* added);

// Has every transaction of this process's callback objects logged. Does nothing when they are.
void installLogHook();

}  // namespace mirxHalclient::internal
