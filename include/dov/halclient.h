/// @file
/// The low-level client: one function for each operation of the resource-control service.
#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <dov/ClientCallback.h>
#include <dov/Resource.h>

namespace aidl::vendor::tavro::hardware::mirx {
class MirxRequestParcel;
}

/// @file
/// Rules for every function of this header:
///
/// Binding. The first call looks the service "vendor.tavro.hardware.mirx.IMirx/default" up and
/// links to its death; later calls share that proxy. A call that finds the service declared but not
/// running BLOCKS until it registers. When the service is not declared, the call returns at once.
/// After the service has died, or after a call that failed, the next call binds again; nothing is
/// retried within a call. A call blocks for as long as the service takes to answer it.
///
/// Results. A function that returns a number returns what the service answered, unless said
/// otherwise, and -1 when it was not bound, when the arguments were refused or when the call
/// failed.
///
/// Threads. Any thread may call any function; calls run in parallel, except that registrations and
/// unregistrations wait for each other. A call must not be made while holding a lock that a
/// callback of the caller takes. Notice of the service's death arrives on a binder thread, so the
/// process needs a thread pool (ABinderProcess_startThreadPool).
///
/// A callback may call the library. One that the service makes before it has answered the request
/// or registration that the callback came with must leave registering and unregistering to another
/// thread, and should leave every call to one: it can wait for ever when another thread's call
/// fails at that moment.
///
/// The end. Once the process exits and the library's globals go, calls return -1 without
/// calling the service. The library stays loaded until then, also when dlclose gives it back.
///
/// Log. Everything goes to the tag "MIRXFramework-lib-vendor": the entry of each call and what
/// became of it at information priority, and at error priority what keeps a call from being made:
/// "Mirx is not declared, AServiceManager_isDeclared:%d", "Mirx HAL Service not found", "Unable to
/// link to g_mirx_hal death notifications!", "Mirx HAL Service died", "%s() failed: mirx HAL
/// service not available". Callbacks log to "MirxFramework-lib-vendor", their transactions without
/// a tag.
///
/// Ownership. Arguments are read during the call only, except for callbacks (see ClientCallback.h).
/// A handle belongs to the caller, who gives it back; the library keeps no list of requests.
///
/// Errors. No function throws, except for memory exhaustion.
///
/// Parameters that many functions have:
///
/// - handle: the request to change, or -1 for a new one.
/// - duration: how long to hold, in the service's unit; 0 or less holds until release.
/// - resources: what to set or to watch, in order.
/// - arg4: passed on; -1 when left out.
/// - flag: 1 or more sends true, anything else false; -1 when left out.
/// - pid: process that the call is made for; passed on unchecked.
/// - callback: told about completion or changes; when empty, what the service says is dropped.

#pragma GCC visibility push(default)

/// Tells whether the low-level client sends a resource list: each element with opcode 0 must have
/// no value or an empty one, each other element a value that is not empty. An empty list is valid.
/// Calls nothing, logs nothing.
bool checkResourceList(std::list<DovClient::Resource>& resources);

namespace mirxHalclient {

/// Asks the service to initialise. No other call needs it first. Reports nothing to the caller.
void mirx_init();

/// @{
/// Resource control (resource_control.cpp). Applies `resources` for `duration`.
///
/// Returns the service's handle, for mirxResCtlRelease. A list that checkResourceList rejects is
/// refused with -1 and an error "... ERROR: size unmatched for id and value ", but only once the
/// service is bound. The last form has `callback` told once when the request completes; it is kept
/// in request_callbacks, also when the call fails.
int mirxResCtlRequest(int duration, std::list<DovClient::Resource>& resources, int pid);
int mirxResCtlRequest(int duration, std::list<DovClient::Resource>& resources, int flag, int pid);
int mirxResCtlRequest(int duration, std::list<DovClient::Resource>& resources, int arg4, int flag,
                      int pid);
int mirxResCtlRequest(int handle, int duration, std::list<DovClient::Resource>& resources, int pid);
int mirxResCtlRequest(int handle, int duration, std::list<DovClient::Resource>& resources, int flag,
                      int pid);
int mirxResCtlRequest(int handle, int duration, std::list<DovClient::Resource>& resources, int arg4,
                      int flag, int pid);
int mirxResCtlRequest(int handle, int duration, std::list<DovClient::Resource>& resources, int arg4,
                      int flag, int pid, const std::shared_ptr<IClientCallback>& callback);
/// @}

/// Withdraws what `handle` acquired. Any value is passed on. A callback of the request stays in
/// request_callbacks.
int mirxResCtlRelease(int handle);

/// @{
/// Scene control (scene_control.cpp). Applies the policy of the scene or subsystem `saId` for
/// `duration`. No argument is checked.
///
/// Returns the service's handle, for mirxSACtlRelease. The callback is treated as in
/// mirxResCtlRequest.
int mirxSACtlRequest(int duration, int saId, int pid);
int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid);
int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid,
                     const std::shared_ptr<IClientCallback>& callback);
/// @}

/// Withdraws what `handle` acquired. Any value is passed on.
int mirxSACtlRelease(int handle);

/// Listening (listening.cpp). Has `callback` told whenever one of `resources` changes, until the
/// registration is given to mirxResListeningUnRegister.
///
/// Returns the service's handle. The same opcodes in the same order can be registered once only in
/// a process, by whomever: a second time is refused with -1 and an error "Same callback interface
/// registered already". A thermal registration for the same numbers counts, and any registration by
/// path counts as one of no opcodes. A failed call leaves no registration.
int mirxResListeningRegister(std::list<DovClient::Resource>& resources, int pid,
                             const std::shared_ptr<IClientCallback>& callback);

/// Ends every registration of this process with `handle`, by opcode, by path or thermal, and lets
/// go of its callback, whatever the service answers. With no service bound it returns -1 and the
/// registration stays. An unknown handle is passed on too, with an error "The callback was not
/// registered before".
int mirxResListeningUnRegister(int handle);

/// State (state.cpp). Appends to `out` the current value of each of `resources`, as the service
/// lists them; values are always present.
///
/// Returns the size of `out` with what it held before, or -1, also when the service answers with
/// nothing; `out` is untouched then.
int mirxResStateRequest(std::list<DovClient::Resource>& resources, int pid,
                        std::list<DovClient::Resource>& out);

/// Thermal (thermal.cpp). Reports `levels`: each element a thermal item and its level.
///
/// Returns 0 when the service accepts them, -1 otherwise. A list that checkResourceList rejects is
/// refused as in mirxResCtlRequest ("... for id and level ").
int mirxThermalNotify(std::list<DovClient::Resource>& levels, int pid);

/// Has `callback` told when the thermal state of one of `subsystems` changes. The same subsystems
/// can be registered more than once.
///
/// Returns the service's handle. NOT SAFE in parallel with the other registering and unregistering
/// functions, itself included: it adds to the listening registry without its lock. Callers that use
/// several threads serialise it themselves.
int mirxThermalListeningRegister(const std::vector<int>& subsystems,
                                 const std::shared_ptr<IClientCallback>& callback);

/// Asks the service to end a thermal registration. The library keeps the callback until
/// mirxResListeningUnRegister is called with the same handle.
int mirxThermalListeningUnregister(int handle);

/// @file
/// By path (by_path.cpp). Counterparts of the functions above for resources that are named by a
/// path. In the list forms element i of `values` belongs to element i of `paths`.

/// Replaces the parcel's list of markers by the one "zdbdebug", which every request by path
/// carries. Calls nothing, logs nothing.
void mirx_add_zdbdebug_for_request_parcel(
        aidl::vendor::tavro::hardware::mirx::MirxRequestParcel& parcel);

/// @{
/// As mirxResCtlRequest. Lists of different length are refused with -1 and an error
/// "... ERROR: size unmatched for ... ", once the service is bound.
int mirx_resctl_request_by_path(int handle, long duration, const std::vector<std::string>& paths,
                                const std::vector<std::string>& values, int arg4, int flag,
                                int pid);
int mirx_resctl_request_with_callback_by_path(
        int handle, long duration, const std::vector<std::string>& paths,
        const std::vector<std::string>& values, int arg4, int flag, int pid,
        const std::shared_ptr<IClientCallbackByPath>& callback);
/// @}

/// As mirxResStateRequest; `out` gets values only, an empty one where the service gave none.
/// `values` of another length than `paths` are not sent.
int mirx_res_state_request_by_path(const std::vector<std::string>& paths,
                                   const std::vector<std::string>& values, int pid,
                                   std::vector<std::string>& out);

/// As mirxResStateRequest, from and into a map from path to value. Answers replace what `out` held
/// for a path; one without path or value is skipped. Logs each answer, at error priority.
int mirx_res_state_request_map_by_path(const std::map<std::string, std::string>& request, int pid,
                                       std::map<std::string, std::string>& out);

/// @{
/// As mirxResListeningRegister, ended by mirxResListeningUnRegister. The same paths in the same
/// order can be registered once only; any registration by opcode, or thermal, counts as one of no
/// paths. The second form sends the map's values too and registers its paths in the map's order.
int mirx_res_listening_register_by_path(const std::vector<std::string>& paths, int pid,
                                        const std::shared_ptr<IClientCallbackByPath>& callback);
int mirx_res_listening_register_map_by_path(const std::map<std::string, std::string>& request,
                                            int pid,
                                            const std::shared_ptr<IClientCallbackByPath>& callback);
/// @}

/// @{
/// Diagnostics (diagnostics.cpp). Have the service write one of its tables to its own log, or
/// record the history of requests from now on, or no longer.
///
/// Each returns 0 when the service accepts, -1 otherwise.
int mirxDumpToDoQueue();
int mirxDumpRunMap();
int mirxDumpActiveResMap();
int mirxDumpResRequest();
int mirxDumpResInfo();
int mirxDumpSAInfo();
int mirxDumpPidFdList();
int mirxDumpPidfdMonitorMap();
int mirxDumpResRecordList();
int mirxHistoryRequestRecordOn();
int mirxHistoryRequestRecordOff();
/// @}

/// Properties (properties.cpp). Reads the service's property `key`.
///
/// Returns a text in a new buffer of 256 characters, never null, which the caller frees with
/// delete[]; empty when the service could not be asked. A value longer than 255 characters ENDS THE
/// PROCESS. Logs the value.
char* mirxPropertyGet(const std::string& key);

/// Writes the service's property `key`.
int mirxPropertySet(const std::string& key, const std::string& value);

}  // namespace mirxHalclient

#pragma GCC visibility pop
