/// @file
/// What a caller implements to hear back from the service, and what the library keeps of it.
#pragma once

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <dov/Resource.h>

#pragma GCC visibility push(default)

/// @file
/// Rules for both interfaces:
///
/// Threads. onCallback runs on a binder thread, in parallel with the caller's own threads and with
/// other callbacks; the process needs a thread pool (ABinderProcess_startThreadPool). No lock of
/// the library is held, and the callback may call the library (see the rules of halclient.h). The
/// service may wait until the callback returns. No callback is made once the process exits and the
/// library's globals go.
///
/// Errors. The service hears of none: it gets an OK whatever the callback does. An exception must
/// not leave the callback.
///
/// Ownership. The library keeps a reference: for a request until the service has called back once,
/// for a registration until it is unregistered. The last reference may go on a binder thread.

/// Told about resources that are addressed by opcode, and about thermal subsystems.
class IClientCallback {
  public:
    /// `resources` holds one element for each that the service names, in its order; their values
    /// are always present, empty where the service gave none. Never called with an empty list.
    ///
    /// Stays the first virtual function: the library calls it by its place.
    virtual void onCallback(std::list<DovClient::Resource> resources) = 0;

    virtual ~IClientCallback() = default;
};

/// Told about resources that are addressed by path.
class IClientCallbackByPath {
  public:
    /// `values` and `paths` have equal length, element i of each belongs together; a text that the
    /// service left out is empty. Never called with empty lists.
    ///
    /// Stays the first virtual function: the library calls it by its place.
    virtual void onCallback(std::vector<std::string> values, std::vector<std::string> paths) = 0;

    virtual ~IClientCallbackByPath() = default;
};

/// The binder object that the service gets in place of a client's callback; internal to the
/// library.
class MirxCallbackClient;

/// @{
/// The callback objects of requests that the service has not called back yet, guarded by the mutex.
/// An object is added before its request is sent, leaves with the service's first call, and stays
/// for the life of the process when that never comes, also after a request that failed.
extern std::mutex request_callback_mutex;
extern std::vector<std::shared_ptr<MirxCallbackClient>> request_callbacks;
/// @}

#pragma GCC visibility pop
