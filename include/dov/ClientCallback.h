/// @file
/// The interfaces through which the service calls a client back. Rules for both:
///
/// Threads. onCallback usually runs on a binder thread, in parallel with the caller's own threads
/// and with other callbacks; the process needs a thread pool (ABinderProcess_startThreadPool). A
/// callback that the service makes while any call of this process is unanswered may run on the very
/// thread that makes that call, with the locks of that call held. A callback must therefore not
/// register, unregister or make a call that can fail: leave that to another thread. Otherwise the
/// library holds no lock while onCallback runs. The service may wait until onCallback returns.
/// During exit no callback is made.
///
/// Errors. The service gets an OK status whatever the callback does. An exception must not leave
/// the callback.
///
/// Ownership. The library keeps a reference: for a request until the service has called back once,
/// for a registration until it is unregistered; the service keeps its own until it releases the
/// object. The callback is destroyed by whichever thread releases the last reference, with no lock
/// of the library held: its destructor may call any function, register and unregister included. The
/// exception is a callback that the service releases over sockets while a call of this process is
/// unanswered: its destructor may run on that call's thread and is then bound like onCallback.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <dov/Resource.h>

#pragma GCC visibility push(default)

/// Called back with resources that are addressed by opcode, and with thermal subsystems.
class IClientCallback {
  public:
    /// `resources` holds one element for each that the service sends, in the service's order. The
    /// values are always present; they are empty where the service sent none. The list is never
    /// empty.
    ///
    /// Must stay the first virtual function: existing callers are compiled against that layout.
    virtual void onCallback(std::list<DovClient::Resource> resources) = 0;

    virtual ~IClientCallback() = default;
};

/// Called back with resources that are addressed by path.
class IClientCallbackByPath {
  public:
    /// `values` and `paths` have the same length; element i of one belongs to element i of the
    /// other. A text is empty where the service sent none. The lists are never empty.
    ///
    /// Must stay the first virtual function: existing callers are compiled against that layout.
    virtual void onCallback(std::vector<std::string> values, std::vector<std::string> paths) = 0;

    virtual ~IClientCallbackByPath() = default;
};

/// The binder object that the service gets in place of a client's callback; internal to the
/// library.
class MirxCallbackClient;

/// @{
/// The callback objects of requests that the service has not called back yet. The mutex guards the
/// list. An object is added before its request is sent and removed by the service's first call. If
/// that call never comes, it stays for the life of the process, even after a request that failed.
extern std::mutex request_callback_mutex;
extern std::vector<std::shared_ptr<MirxCallbackClient>> request_callbacks;
/// @}

#pragma GCC visibility pop
