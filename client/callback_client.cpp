// The binder object through which the service calls a client back.
#include "client/callback_client.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <utility>

#include "client/binding.h"
#include "client/registry.h"
#include "client/request_data.h"

using aidl::vendor::tavro::hardware::mirx::BnMirxCallback;
using dovcommon::MirxRequestData;
using namespace mirxHalclient::internal;

namespace {

// Compat: not the tag of the operations; the capitals differ.
constexpr char kCallbackTag[] = "MirxFramework-lib-vendor";

void printLog(const BnMirxCallback::TransactionLog& log) {
    __android_log_print(ANDROID_LOG_INFO, nullptr,
                        "BnMirxCallback::logFunc NDK BACKEND method_name %s exception_code %d "
                        "exception_message %s transaction_error %d service_specific_error_code %d",
                        log.method_name.c_str(), log.exception_code, log.exception_message.c_str(),
                        log.transaction_error, log.service_specific_error_code);
}

// Calls printLog, and knows whether BnMirxCallback::logFunc holds it. Asking logFunc for its target
// would need RTTI, also from the code that made a hook of another party.
class LogHook {
  public:
    LogHook() = default;
    LogHook(const LogHook&) noexcept { installed += isInLogFunc(); }
    ~LogHook() { installed -= isInLogFunc(); }
    LogHook& operator=(const LogHook&) = delete;
    void operator()(const BnMirxCallback::TransactionLog& log) const { printLog(log); }

    // The number of hooks that logFunc holds: 0 or 1.
    static inline std::atomic<int> installed = 0;

  private:
    // std::function keeps an object as small as this one inside itself.
    bool isInLogFunc() const {
        const auto* const begin = reinterpret_cast<const std::byte*>(&BnMirxCallback::logFunc);
        const auto* const self = reinterpret_cast<const std::byte*>(this);
        return std::less_equal<>()(begin, self) &&
               std::less<>()(self, begin + sizeof(BnMirxCallback::logFunc));
    }
};

[[clang::no_destroy]] std::mutex gLogHookMutex;

std::shared_ptr<MirxCallbackClient> addToRequestCallbacks(
        std::shared_ptr<MirxCallbackClient> client, const char* added) {
    std::lock_guard lock(request_callback_mutex);
    logInfo(added);
    request_callbacks.push_back(client);
    return client;
}

}  // namespace

MirxCallbackClient::MirxCallbackClient(const std::shared_ptr<IClientCallback>& callback,
                                       bool is_register, bool by_path)
    : mCallback(callback), is_register(is_register), by_path(by_path) {
    installLogHook();
}

MirxCallbackClient::MirxCallbackClient(const std::shared_ptr<IClientCallbackByPath>& callback,
                                       bool is_register, bool by_path)
    : mCallbackByPath(callback), is_register(is_register), by_path(by_path) {
    installLogHook();
}

MirxCallbackClient::~MirxCallbackClient() {
    __android_log_print(ANDROID_LOG_INFO, kCallbackTag, "ndk backend ~MirxCallbackClient");
}

ndk::ScopedAStatus MirxCallbackClient::onCallback(const std::vector<MirxRequestData>& data) {
    const ExitGate::Pass pass(g_mirx_gate);
    if (!pass) return ndk::ScopedAStatus::ok();
    if (!data.empty()) {
        if (by_path) {
            callByPath(data);
        } else {
            callById(data);
        }
    }
    if (!is_register) leaveRequestCallbacks();
    return ndk::ScopedAStatus::ok();
}

void MirxCallbackClient::callById(const std::vector<MirxRequestData>& data) {
    std::list<DovClient::Resource> resources;
    for (const MirxRequestData& element : data) {
        resources.push_back(toResource(element));
        if (element.value) {
            __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                                "MirxCallbackClient::onCallback res_Id %#x res_Value %s "
                                "is_register %d",
                                static_cast<unsigned>(element.id), element.value->c_str(),
                                is_register);
        } else {
            __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                                "MirxCallbackClient::onCallback res_Id %#x is_register %d",
                                static_cast<unsigned>(element.id), is_register);
        }
    }
    if (!mCallback) return;
    __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                        "MirxCallback::onCallback call IClientCallback onCallback is_register %d",
                        is_register);
    mCallback->onCallback(std::move(resources));
}

void MirxCallbackClient::callByPath(const std::vector<MirxRequestData>& data) {
    std::vector<std::string> values;
    std::vector<std::string> paths;
    for (const MirxRequestData& element : data) {
        values.push_back(element.value.value_or(""));
        paths.push_back(element.path.value_or(""));
        if (!element.path || !element.value) continue;
        __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                            "MirxCallbackClient::onCallback res_Id %s res_Value %s is_register %d",
                            element.path->c_str(), element.value->c_str(), is_register);
    }
    if (!mCallbackByPath) return;
    // Compat: logs IClientCallback although it calls IClientCallbackByPath.
    __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                        "MirxCallback::onCallback call IClientCallback onCallback is_register %d",
                        is_register);
    mCallbackByPath->onCallback(std::move(values), std::move(paths));
}

void MirxCallbackClient::leaveRequestCallbacks() {
    std::lock_guard lock(request_callback_mutex);
    const size_t before = request_callbacks.size();
    std::erase_if(request_callbacks, [this](const std::shared_ptr<MirxCallbackClient>& entry) {
        if (entry.get() != this) return false;
        __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                            "callback is found in request_callbacks");
        return true;
    });
    const size_t after = request_callbacks.size();
    if (after == before) {
        __android_log_print(ANDROID_LOG_ERROR, kCallbackTag,
                            "callback not found in request_callbacks");
    }
    __android_log_print(ANDROID_LOG_INFO, kCallbackTag,
                        "MirxCallback::onCallback request callback called , remove from "
                        "request_callbacks , request_callbacks size before %d after %d",
                        static_cast<int>(before), static_cast<int>(after));
}

namespace mirxHalclient::internal {

std::shared_ptr<MirxCallbackClient> forRegistration(
        const std::shared_ptr<IClientCallback>& callback) {
    return ndk::SharedRefBase::make<MirxCallbackClient>(callback, true, false);
}

std::shared_ptr<MirxCallbackClient> forRegistration(
        const std::shared_ptr<IClientCallbackByPath>& callback) {
    return ndk::SharedRefBase::make<MirxCallbackClient>(callback, true, true);
}

std::shared_ptr<MirxCallbackClient> forRequest(const std::shared_ptr<IClientCallback>& callback,
                                               const char* added) {
    logInfo("new std::shared_ptr MirxCallbackClient callback");
    return addToRequestCallbacks(
            ndk::SharedRefBase::make<MirxCallbackClient>(callback, false, false), added);
}

std::shared_ptr<MirxCallbackClient> forRequest(
        const std::shared_ptr<IClientCallbackByPath>& callback, const char* added) {
    logInfo("new std::shared_ptr MirxCallbackClient callback");
    return addToRequestCallbacks(
            ndk::SharedRefBase::make<MirxCallbackClient>(callback, false, true), added);
}

// Binder threads read logFunc without a lock, so it is not assigned while it holds our hook. Of two
// parties that set a hook the last one wins: ours replaces another one when the library is loaded
// and whenever a callback object is made.
void installLogHook() {
    std::lock_guard lock(gLogHookMutex);
    if (LogHook::installed == 0) BnMirxCallback::logFunc = LogHook();
}

}  // namespace mirxHalclient::internal
