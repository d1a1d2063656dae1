// The event interface: acquire performance for an event, a list of resources or a platform request,
// and give it back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <dov/Resource.h>

// Rules for every function of this header:
//
// Binding. The first call looks the service "vendor.tavro.hardware.mirx.IMirx/default" up and links
// to its death; later calls share that proxy, which is not the one of the low-level client. The
// look-up NEVER WAITS: a call made while the service is absent fails at once. After the service has
// died, or after a call that failed, the next call binds again; nothing is retried within a call. A
// call blocks for as long as the service takes to answer it.
//
// Threads. Any thread may call any function; calls run in parallel. Notice of the service's death
// arrives on a binder thread, so the process needs a thread pool (ABinderProcess_startThreadPool);
// without one, the first call after the death fails and the one after it binds again.
//
// Log. Everything goes to the tag "[DOV_CLIENT]". What keeps a call from being made is logged at
// error priority: "Mirx is not declared, AServiceManager_isDeclared:%d", "Mirx HAL Service not
// found" or "Unable to link to g_dov_hal death notifications!", each followed by
// "dov_get_mirx_hal_and_link_to_death error:%d"; and "%s() failed : mirx HAL service not available"
// when the call itself failed. Empty texts are logged as "none".
//
// Ownership. Arguments are read during the call only. A handle belongs to the caller, who gives it
// to DovRelease; the library keeps no list of handles.
//
// Errors. No function throws, except for memory exhaustion.
//
// The functions have plain C names but take C++ types: build the caller with the library's own C++
// standard library.

#pragma GCC visibility push(default)

extern "C" {

// Asks the service to initialise. No other call needs it first.
//
// Returns 0, -1 when the service could not be bound, or -2 when its initialisation failed. Logs
// "dovInit enter" (at error priority).
int32_t dovInit();

// Acquires what the service holds for an event.
//
// cmdid      the event; -2 and -3 stand for a plain resource list and a platform request (see the
// two functions below). pkg        package name of the caller; may be empty. identity   free text
// that says who asks; may be empty. duration   how long to hold, in the service's unit; 0 or less
// holds until DovRelease. resources  further resources to set; an absent value is sent as absent.
// May be empty.
//
// Returns the handle that the service chose, or -1 when nothing was acquired. Marks a trace section
// with the arguments. Logs the call at information priority and, when the call failed,
// "mirxResCtlRequest error:%d".
int32_t DovEventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                        int32_t duration, const std::vector<DovClient::Resource>& resources);

// DovEventAcquire without waiting for the service's work: parameters as there.
//
// Returns a handle that the library chose at random, also when the call failed, so that the caller
// releases it in any case; -1 when the service could not be bound or no random number could be had.
// Logs every resource at debug priority.
int32_t DovEventAcquireOneWay(int32_t cmdid, const std::string& pkg, const std::string& identity,
                              int32_t duration, const std::vector<DovClient::Resource>& resources);

// Acquires a plain list of resources: DovEventAcquire with cmdid -2 and an empty package; `pkg` is
// never read.
int32_t DovResAcquire(const std::vector<DovClient::Resource>& resources, const std::string& pkg,
                      const std::string& identity, int32_t duration);

// Acquires a platform request: DovEventAcquire with cmdid -3; `unused` is never read. The identity
// comes before the package.
int32_t DovPlatformResAcquire(const std::vector<DovClient::Resource>& resources,
                              const std::string& unused, const std::string& identity,
                              const std::string& pkg, int32_t duration);

// Gives back what `handle` acquired. Any value is passed on; an unknown one is the service's to
// ignore. Reports nothing to the caller. Marks a trace section.
void DovRelease(int32_t handle);

}  // extern "C"

// Returns a random number from 0 to 2147483647 for use as a handle, or -1 when /dev/urandom cannot
// be read (logged with the reason at error priority). Numbers in use are not avoided.
int32_t dovGetRandomHandle();

#pragma GCC visibility pop
