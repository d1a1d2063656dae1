// The low-level client: one function for each operation of the resource-control service.
#pragma once

// Rules for every function of this namespace:
//
// Binding. The first call looks the service "vendor.tavro.hardware.mirx.IMirx/default" up and links
// to its death; later calls share that proxy. A call that finds the service declared but not
// running BLOCKS until it registers. When the service is not declared, the call returns at once.
// After the service has died, or after a call that failed, the next call binds again; nothing is
// retried within a call.
//
// Threads. Any thread may call any function; calls run in parallel. A call must not be made while
// holding a lock that a callback of the caller takes. Notice of the service's death arrives on a
// binder thread, so the process needs a thread pool (ABinderProcess_startThreadPool).
//
// Log. Everything goes to the tag "MIRXFramework-lib-vendor": the entry of each call at information
// priority, and at error priority what keeps a call from being made: "Mirx is not declared,
// AServiceManager_isDeclared:%d", "Mirx HAL Service not found", "Unable to link to g_mirx_hal death
// notifications!", "Mirx HAL Service died", "%s() failed: mirx HAL service not available".
//
// Errors. No function throws, except for memory exhaustion.

#pragma GCC visibility push(default)

namespace mirxHalclient {

// Asks the service to initialise. No other call needs it first. Reports nothing to the caller.
void mirx_init();

}  // namespace mirxHalclient

#pragma GCC visibility pop
