/// @file
/// The low-level client: one function for each operation of the service. Rules for every function
/// of this header:
///
/// Binding. The first call looks up the service "vendor.tavro.hardware.mirx.IMirx/default" and
/// links to its death; later calls share that proxy. A call that finds the service declared but not
/// running BLOCKS until the service registers. If the service is not declared, the call returns at
/// once. After the service has died, or after a call has failed, the next call binds again. No call
/// is retried.
///
/// Blocking. A call blocks until the service answers; there is no time-out. A call that hangs in
/// the service does not stop other calls by itself. But as soon as another call fails, or the death
/// of the service is notified, that thread waits for the hanging call in order to drop the proxy,
/// and every later call of this interface waits behind it.
///
/// Results. A function that returns a number returns the service's answer unless it says otherwise,
/// and -1 when the client was not bound, the arguments were refused or the call failed.
///
/// Threads. Any thread may call any function; calls run in parallel, except that registrations wait
/// for each other. Do not make a call while holding a lock that one of your callbacks takes. The
/// notice of the service's death arrives on a binder thread, so the process needs a thread pool
/// (ABinderProcess_startThreadPool). ClientCallback.h says which calls a callback may make.
///
/// Exit. During exit, once the library's globals are being destroyed, calls return -1 without
/// calling the service. dlclose leaves the library loaded until the process ends.
///
/// Log. All lines have the tag "MIRXFramework-lib-vendor". Each call logs its entry at information
/// priority. Errors have error priority: "Mirx is not declared, AServiceManager_isDeclared:%d",
/// "Mirx HAL Service not found", "Unable to link to g_mirx_hal death notifications!", "Mirx HAL
/// Service died", "%s() failed: mirx HAL service not available". Callback objects log under
/// "MirxFramework-lib-vendor", and their transactions without a tag.
///
/// Ownership. Arguments are only read during the call, except for callbacks (see ClientCallback.h).
/// A handle belongs to the caller, who releases it; the library keeps no list of requests. A HANDLE
/// DIES WITH ITS SERVICE: never release it to a service that was started later,
/// where the same number may belong to another client.
///
/// Errors. Functions throw only when memory is exhausted.
///
/// Parameters that many functions have:
///
/// - handle: the request to change, or -1 for a new one.
/// - duration: how long to hold the resources, in the service's unit and meaning.
/// - resources: the resources to set or to watch, in order.
/// - arg4: passed on; -1 when left out.
/// - flag: 1 or more sends true, anything else false; -1 when left out.
/// - pid: the process that the call is made for; passed on unchecked.
/// - callback: called on completion or changes; if it is empty, the service's data is dropped.
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

#pragma GCC visibility push(default)

/// Returns whether a resource list is valid: each element with opcode 0 has no value or an empty
/// one, and each other element has a value that is not empty. An empty list is valid. Does not call
/// the service and logs nothing.
bool checkResourceList(std::list<DovClient::Resource>& resources);

namespace mirxHalclient {

/// Asks the service to initialise. Other calls do not require it. Reports nothing to the caller.
void mirx_init();

/// @{
/// Resource control (resource_control.cpp). Applies `resources` for `duration`.
///
/// Returns the service's handle, for mirxResCtlRelease. A list that checkResourceList rejects is
/// refused with -1 and an error "... ERROR: size unmatched for id and value ", but only if the
/// service could be bound. The last form has `callback` called once when the request completes; its
/// callback object stays in request_callbacks until then, even if the call fails.
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

/// Releases `handle`. Any value is passed on. A callback object of the request stays in
/// request_callbacks.
int mirxResCtlRelease(int handle);

/// @{
/// Scene control (scene_control.cpp). Applies the policy of the scene or subsystem `saId` for
/// `duration`. No argument is checked.
///
/// Returns the service's handle, for mirxSACtlRelease. `callback` is treated as by
/// mirxResCtlRequest.
int mirxSACtlRequest(int duration, int saId, int pid);
int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid);
int mirxSACtlRequest(int handle, int duration, int saId, int arg4, int flag, int pid,
                     const std::shared_ptr<IClientCallback>& callback);
/// @}

/// Releases `handle`. Any value is passed on.
int mirxSACtlRelease(int handle);

/// Listening (listening.cpp). Has `callback` called whenever one of `resources` changes, until the
/// registration's handle is passed to mirxResListeningUnRegister.
///
/// Returns the service's handle. A process can register the same opcodes in the same order only
/// once, whichever caller does it: a second registration is refused with -1 and an error "Same
/// callback interface registered already". A thermal registration of the same numbers counts as the
/// same, and every registration by path counts as one without opcodes. A failed call leaves no
/// registration. A call that succeeds with handle -1 leaves one; mirxResListeningUnRegister(-1)
/// removes it.
int mirxResListeningRegister(std::list<DovClient::Resource>& resources, int pid,
                             const std::shared_ptr<IClientCallback>& callback);

/// Ends every registration of this process that has `handle`, whether by opcode, by path or
/// thermal, and releases its callback, whatever the service answers. If no service could be bound,
/// it returns -1 and the registration stays. An unknown handle is passed on too and logged as an
/// error: "The callback was not registered before". A registration whose service has died can be
/// removed in no other way; its handle is then sent to the new service.
int mirxResListeningUnRegister(int handle);

/// State (state.cpp). Queries the current values of `resources` and appends the service's answers
/// to `out`, in the service's order. Values are always present.
///
/// Returns the size of `out` after that, earlier elements included; -1 when the call failed or the
/// answer is empty, and `out` is unchanged then.
int mirxResStateRequest(std::list<DovClient::Resource>& resources, int pid,
                        std::list<DovClient::Resource>& out);

/// Thermal (thermal.cpp). Reports `levels`; each element is a thermal item with its level.
///
/// Returns 0 when the service accepts them, -1 otherwise. A list that checkResourceList rejects is
/// refused as in mirxResCtlRequest ("... for id and level ").
int mirxThermalNotify(std::list<DovClient::Resource>& levels, int pid);

/// Has `callback` called when the thermal state of one of `subsystems` changes. The same subsystems
/// can be registered more than once.
///
/// Returns the service's handle. NOT SAFE in parallel with itself or any other function that
/// registers or unregisters: it adds to the listening registry without taking its lock. Callers
/// must serialise these calls.
int mirxThermalListeningRegister(const std::vector<int>& subsystems,
                                 const std::shared_ptr<IClientCallback>& callback);

/// Asks the service to end a thermal registration. The library keeps the callback until
/// mirxResListeningUnRegister is called with the same handle.
int mirxThermalListeningUnregister(int handle);

/// By path (by_path.cpp). This and the functions up to the diagnostics are the counterparts of
/// those above for resources that are named by a path. In the list forms element i of `values`
/// belongs to element i of `paths`.
///
/// Replaces the parcel's tag list with the one tag "zdbdebug", which every request by path has.
/// Does not call the service and logs nothing.
void mirx_add_zdbdebug_for_request_parcel(
        aidl::vendor::tavro::hardware::mirx::MirxRequestParcel& parcel);

/// @{
/// Like mirxResCtlRequest. Lists of different length are refused with -1 and an error
/// "... ERROR: size unmatched for ... ", but only if the service could be bound.
int mirx_resctl_request_by_path(int handle, long duration, const std::vector<std::string>& paths,
                                const std::vector<std::string>& values, int arg4, int flag,
                                int pid);
int mirx_resctl_request_with_callback_by_path(
        int handle, long duration, const std::vector<std::string>& paths,
        const std::vector<std::string>& values, int arg4, int flag, int pid,
        const std::shared_ptr<IClientCallbackByPath>& callback);
/// @}

/// Like mirxResStateRequest; `out` gets values only, an empty one where the service sent none. If
/// `values` is not as long as `paths`, it is not sent.
int mirx_res_state_request_by_path(const std::vector<std::string>& paths,
                                   const std::vector<std::string>& values, int pid,
                                   std::vector<std::string>& out);

/// Like mirxResStateRequest, with maps from path to value. An answer replaces the value that `out`
/// had for its path; an answer without path or value is skipped. Logs each answer at error
/// priority.
int mirx_res_state_request_map_by_path(const std::map<std::string, std::string>& request, int pid,
                                       std::map<std::string, std::string>& out);

/// @{
/// Like mirxResListeningRegister; mirxResListeningUnRegister ends the registration. A process can
/// register the same paths in the same order only once; every registration by opcode and every
/// thermal one counts as one without paths. The second form also sends the map's values, and
/// registers its paths in the map's order.
int mirx_res_listening_register_by_path(const std::vector<std::string>& paths, int pid,
                                        const std::shared_ptr<IClientCallbackByPath>& callback);
int mirx_res_listening_register_map_by_path(const std::map<std::string, std::string>& request,
                                            int pid,
                                            const std::shared_ptr<IClientCallbackByPath>& callback);
/// @}

/// @{
/// Diagnostics (diagnostics.cpp). Ask the service to write one of its tables to its own log, or to
/// start or stop recording the history of requests.
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
/// Returns the value in a new buffer of 256 characters, never null, which the caller frees with
/// delete[]; an empty text when the call failed. A value longer than 255 characters ABORTS THE
/// PROCESS. Logs the value.
char* mirxPropertyGet(const std::string& key);

/// Writes the service's property `key`.
int mirxPropertySet(const std::string& key, const std::string& value);

}  // namespace mirxHalclient

#pragma GCC visibility pop
