/// @file
/// The event interface: acquire performance for an event, a list of resources or a platform
/// request, and give it back; tell the service about the system; ask it for state.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <dov/Resource.h>

/// @file
/// Rules for every function of this header:
///
/// Binding. The first call looks the service "vendor.tavro.hardware.mirx.IMirx/default" up and
/// links to its death; later calls share that proxy, which is not the one of the low-level client.
/// The look-up NEVER WAITS: a call made while the service is absent fails at once. After the
/// service has died, or after a call that failed, the next call binds again; nothing is retried
/// within a call. A call blocks for as long as the service takes to answer it.
///
/// Threads. Any thread may call any function; calls run in parallel. Notice of the service's death
/// arrives on a binder thread, so the process needs a thread pool (ABinderProcess_startThreadPool);
/// without one, the first call after the death fails and the one after it binds again.
///
/// The end. Once the process exits and the library's globals go, calls fail without calling the
/// service. The library stays loaded until then, also when dlclose gives it back.
///
/// Log. Everything goes to the tag "[DOV_CLIENT]". What keeps a call from being made is logged at
/// error priority: "Mirx is not declared, AServiceManager_isDeclared:%d", "Mirx HAL Service not
/// found" or "Unable to link to g_dov_hal death notifications!", each followed by
/// "dov_get_mirx_hal_and_link_to_death error:%d"; and "%s() failed : mirx HAL service not
/// available" when the call itself failed. Empty texts are logged as "none".
///
/// Ownership. Arguments are read during the call only. A handle belongs to the caller, who gives it
/// to DovRelease; the library keeps no list of handles.
///
/// Errors. Only memory exhaustion makes a function throw, except for the queries that say
/// otherwise: a reply that they cannot read leaves them as an exception of the standard library. No
/// lock is held then, the binding stays, and the next call works.
///
/// The functions have plain C names but take C++ types: build the caller with the library's own C++
/// standard library.

#pragma GCC visibility push(default)

extern "C" {

/// Asks the service to initialise. No other call needs it first.
///
/// Returns 0, -1 when the service could not be bound, or -2 when its initialisation failed. Logs
/// "dovInit enter" (at error priority).
int32_t dovInit();

/// Acquires what the service holds for an event.
///
/// @param cmdid the event; -2 and -3 stand for a plain resource list and a platform request (see
/// the two
///   functions below).
/// @param pkg package name of the caller; may be empty.
/// @param identity free text that says who asks; may be empty.
/// @param duration how long to hold, in the service's unit; 0 or less holds until DovRelease.
/// @param resources further resources to set; an absent value is sent as absent. May be empty.
///
/// Returns the handle that the service chose, or -1 when nothing was acquired. Marks a trace
/// section with the arguments. Logs the call at information priority and, when the call failed,
/// "mirxResCtlRequest error:%d".
int32_t DovEventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                        int32_t duration, const std::vector<DovClient::Resource>& resources);

/// DovEventAcquire without waiting for the service's work: parameters as there.
///
/// Returns a handle that the library chose at random, also when the call failed, so that the caller
/// releases it in any case; -1 when the service could not be bound or no random number could be
/// had. Logs every resource at debug priority.
int32_t DovEventAcquireOneWay(int32_t cmdid, const std::string& pkg, const std::string& identity,
                              int32_t duration, const std::vector<DovClient::Resource>& resources);

/// Acquires a plain list of resources: DovEventAcquire with cmdid -2 and an empty package; `pkg` is
/// never read.
int32_t DovResAcquire(const std::vector<DovClient::Resource>& resources, const std::string& pkg,
                      const std::string& identity, int32_t duration);

/// Acquires a platform request: DovEventAcquire with cmdid -3; `unused` is never read. The identity
/// comes before the package.
int32_t DovPlatformResAcquire(const std::vector<DovClient::Resource>& resources,
                              const std::string& unused, const std::string& identity,
                              const std::string& pkg, int32_t duration);

/// Gives back what `handle` acquired. Any value is passed on; an unknown one is the service's to
/// ignore. Reports nothing to the caller. Marks a trace section.
void DovRelease(int32_t handle);

/// Tells the service that something has happened. `id` and `arg` are passed on unchanged, their
/// meaning is the service's. Of `values` the service learns only how many there are; none counts as
/// one.
///
/// Returns 0 when the service took the notification, -1 otherwise. Logs "DovNotify enter" at
/// information priority.
int32_t DovNotify(int32_t id, int32_t arg, const std::vector<int32_t>& values);

/// Passes two integers of related system information on unchanged; their meaning is the service's.
///
/// Returns the service's answer, which may itself be -1, or -1 when the call failed. Logs failures
/// only.
int32_t setRelatedSysInfo(int32_t first, int32_t second);

/// Switches a rule of the service.
///
/// @param ruleId which rule; any value is passed on.
/// @param status the rule's new state, 0 for off.
/// @param resources what the rule sets; an absent value is sent as absent. May be empty.
///
/// Returns the service's answer, which may itself be -1, or -1 when the call failed. Logs ruleId
/// and status at information priority.
int32_t dovRuleCtl(int32_t ruleId, int32_t status,
                   const std::vector<DovClient::Resource>& resources);

/// @file
/// The queries below log their entry at information priority. Their outputs are written after the
/// reply has come, without a lock, and keep what they held when -1 is returned.

/// Asks for the values of several resources.
///
/// @param resources the opcodes to ask for, with values that are sent along where present. The
/// value of
///   each resource that the reply gives a value for is replaced; the others keep theirs.
///
/// Returns how many resources received a value, from 0; -1 when the list is empty (nothing is
/// sent), the call failed or the reply is empty. Logs each value at debug priority, each opcode
/// that the reply lacks at information priority ("not match any opcode in dovcore"), and at error
/// priority "input resource is empty, return" or "failed to get resource value".
int32_t DovMutiResStateRequest(std::vector<DovClient::Resource>& resources);

/// Asks for the value of one resource and writes it to `value`; without an answer for it, `value`
/// keeps what it held. For opcode 0x1011670 `value` becomes the decimal text of
/// DovGetPowerConsis(),
/// "-1" included, with the exceptions of that function.
void DovResStateRequest(int32_t opcode, std::string& value);

/// Asks for the history of requests. `history` becomes "start:", the entries separated by ";" (an
/// absent one is "none"), and ";end".
///
/// Returns 0, or -1 when the call failed or there is no entry; logs that at error priority, and the
/// text at debug priority.
int32_t DovGetHistory(std::string& history);

/// Asks for the power consumption.
///
/// Returns the figure in the service's unit, or -1 when the call failed or the reply is empty.
/// Throws std::bad_optional_access when the reply has no value, std::invalid_argument when it is no
/// decimal number and std::out_of_range when it does not fit.
int32_t DovGetPowerConsis();

/// Asks for the status of a power mode; which modes there are is the service's.
///
/// Returns the status; -1 when the call failed, the reply is empty (both logged at error priority)
/// or its value is no decimal number or does not fit (both said on the standard output, "Invalid
/// argument exception: " or "Out of range exception: " and the reason). Throws
/// std::bad_optional_access when the reply has no value.
int32_t DovGetPMStatus(int32_t mode);

/// Asks for the service's data set and appends its entries to `dataset`.
///
/// Returns how many entries `dataset` then has, or -1 when the call failed or the reply is empty
/// (logged at error priority). Throws std::bad_optional_access at an entry without a value; the
/// entries before it have then been appended.
int32_t Dov_fetch_dataset(std::vector<DovClient::Resource>& dataset);

/// Asks for the status of a feature; which features there are is the service's.
///
/// Returns the status, or -1 when the call failed or the reply has any other number of values than
/// one (logged at error priority with that number). Throws std::bad_optional_access when the reply
/// has no value, std::invalid_argument when it is no decimal number and std::out_of_range when it
/// does not fit.
int32_t DovGetFeatureStatus(int32_t featureId);

}  // extern "C"

/// Returns a random number from 0 to 2147483647 for use as a handle, or -1 when /dev/urandom cannot
/// be read (logged with the reason at error priority). Numbers in use are not avoided.
int32_t dovGetRandomHandle();

#pragma GCC visibility pop
