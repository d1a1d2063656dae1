/// @file
/// The event interface: acquire resources for an event, a resource list or a platform request and
/// release them; send notifications; query state. Rules for every function of this header:
///
/// Binding. The first call looks up the service "vendor.tavro.hardware.mirx.IMirx/default" and
/// links to its death; later calls share that proxy, which is not the low-level client's. The
/// look-up NEVER WAITS: a call made while the service is absent fails at once. After the service
/// has died, or after a call has failed, the next call binds again. No call is retried.
///
/// Blocking. A call blocks until the service answers; there is no time-out. A call that hangs in
/// the service does not stop other calls by itself. But as soon as another call fails, or the death
/// of the service is notified, that thread waits for the hanging call in order to drop the proxy,
/// and every later call of this interface waits behind it.
///
/// Threads. Any thread may call any function; calls run in parallel. The notice of the service's
/// death arrives on a binder thread, so the process needs a thread pool
/// (ABinderProcess_startThreadPool). Without one, the first call after the death fails and the next
/// one binds again.
///
/// Exit. During exit, once the library's globals are being destroyed, calls fail without calling
/// the service. dlclose leaves the library loaded until the process ends.
///
/// Log. All lines have the tag "[DOV_CLIENT]". What prevents a call is logged at error priority:
/// "Mirx is not declared, AServiceManager_isDeclared:%d", "Mirx HAL Service not found" or "Unable
/// to link to g_dov_hal death notifications!", each followed by "dov_get_mirx_hal_and_link_to_death
/// error:%d". A failed call is logged as "%s() failed : mirx HAL service not available", a death as
/// "Mirx HAL Service died". An empty package or identity is logged as "none".
///
/// Ownership. Arguments are only read during the call. A handle belongs to the caller, who releases
/// it with DovRelease; the library keeps no list of handles. A HANDLE DIES WITH ITS SERVICE: never
/// release it to a service that was started later, where the same number may belong to another
/// client.
///
/// Errors. Functions throw only when memory is exhausted, except for the queries that say
/// otherwise: they throw a standard exception for a reply that they cannot read. No lock is held
/// then, the proxy is kept and the next call works. In a caller that is built without exceptions
/// such a reply ends the process.
///
/// Names. All functions but dovGetRandomHandle have unmangled names, although they take C++ types:
/// build the caller with the library's own C++ standard library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <dov/Resource.h>

#pragma GCC visibility push(default)

extern "C" {

/// Asks the service to initialise. Other calls do not require it.
///
/// Returns 0; -1 when the service could not be bound; -2 when its initialisation failed. Logs
/// "dovInit enter" at error priority.
int32_t dovInit();

/// Acquires the resources that the service provides for an event.
///
/// @param cmdid the event's id; -2 and -3 request a plain resource list and a platform request, as
///   DovResAcquire and DovPlatformResAcquire do.
/// @param pkg package name of the caller; may be empty.
/// @param identity free text that identifies the requester; may be empty.
/// @param duration how long to hold the resources, in the service's unit and meaning.
/// @param resources more resources to set; may be empty. An absent value is sent as absent.
///
/// Returns the handle that the service chose; -1 when nothing was acquired. Marks a trace section
/// with the arguments. Logs the call at information priority and, when it failed,
/// "mirxResCtlRequest error:%d" at error priority.
int32_t DovEventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                        int32_t duration, const std::vector<DovClient::Resource>& resources);

/// DovEventAcquire without waiting for the service; the parameters are the same.
///
/// Returns a handle that the library has drawn at random. A failed call returns it too: release it
/// in any case. Returns -1 when the service could not be bound, and also when no random number is
/// to be had; the request is then sent with handle -1. Logs each resource at debug priority.
int32_t DovEventAcquireOneWay(int32_t cmdid, const std::string& pkg, const std::string& identity,
                              int32_t duration, const std::vector<DovClient::Resource>& resources);

/// Acquires a plain resource list: DovEventAcquire with cmdid -2 and an empty package. `pkg` is
/// never read.
int32_t DovResAcquire(const std::vector<DovClient::Resource>& resources, const std::string& pkg,
                      const std::string& identity, int32_t duration);

/// Acquires a platform request: DovEventAcquire with cmdid -3. `unused` is never read. The identity
/// comes before the package.
int32_t DovPlatformResAcquire(const std::vector<DovClient::Resource>& resources,
                              const std::string& unused, const std::string& identity,
                              const std::string& pkg, int32_t duration);

/// Releases `handle`. Any value is passed on; an unknown one is for the service to ignore. Reports
/// nothing to the caller. Marks a trace section.
void DovRelease(int32_t handle);

/// Sends a notification. `id` and `arg` are passed on unchanged; the service defines their meaning.
/// Only the number of `values` is sent; an empty list counts as one value.
///
/// Returns 0 when the service accepted the call, -1 otherwise. Logs "DovNotify enter" at
/// information priority.
int32_t DovNotify(int32_t id, int32_t arg, const std::vector<int32_t>& values);

/// Sends two numbers of system information unchanged; the service defines their meaning.
///
/// Returns the service's answer, which may itself be -1; -1 when the call failed. Logs failures
/// only.
int32_t setRelatedSysInfo(int32_t first, int32_t second);

/// Sets the state of one of the service's rules.
///
/// @param ruleId the rule; any value is passed on.
/// @param status the rule's new state; the service defines the numbers.
/// @param resources the resources that the rule sets; may be empty. An absent value is sent as
///   absent.
///
/// Returns the service's answer, which may itself be -1; -1 when the call failed. Logs ruleId and
/// status at information priority.
int32_t dovRuleCtl(int32_t ruleId, int32_t status,
                   const std::vector<DovClient::Resource>& resources);

/// Queries the values of several resources. This and the following queries log their entry at
/// information priority. They write their outputs without a lock, after the reply has arrived, and
/// leave them unchanged when they return -1.
///
/// @param resources the opcodes to query; values that are present are sent too. Each resource for
///   which the reply has a value gets that value; the others keep theirs.
///
/// Returns the number of resources that got a value; -1 when the list is empty (nothing is sent),
/// the call failed or the reply is empty. Logs each value at debug priority, each opcode that the
/// reply lacks at information priority ("not match any opcode in dovcore"), and at error priority
/// "input resource is empty, return" or "failed to get resource value".
int32_t DovMutiResStateRequest(std::vector<DovClient::Resource>& resources);

/// Queries the value of one resource and writes it to `value`, which is unchanged when there is no
/// answer. For opcode 0x1011670, `value` becomes the decimal text of DovGetPowerConsis(), "-1"
/// included, and that function's exceptions are thrown.
void DovResStateRequest(int32_t opcode, std::string& value);

/// Queries the history of requests. `history` becomes "start:", the entries separated by ";" (an
/// absent entry is "none"), and ";end".
///
/// Returns 0; -1 when the call failed or there is no entry, which is logged at error priority. Logs
/// the text at debug priority.
int32_t DovGetHistory(std::string& history);

/// Queries the power consumption.
///
/// Returns the figure in the service's unit; -1 when the call failed or the reply is empty. Throws
/// std::bad_optional_access when the reply has no value, std::invalid_argument when the value is no
/// decimal number and std::out_of_range when it does not fit.
int32_t DovGetPowerConsis();

/// Queries the status of a power mode; the service defines the modes.
///
/// Returns the status. Returns -1 when the call failed or the reply is empty, which is logged at
/// error priority, and when the value is no decimal number or does not fit, which is written to the
/// standard output ("Invalid argument exception: " or "Out of range exception: " and the reason).
/// Throws std::bad_optional_access when the reply has no value.
int32_t DovGetPMStatus(int32_t mode);

/// Queries the service's data set and appends its entries to `dataset`.
///
/// Returns the number of entries that `dataset` then has; -1 when the call failed or the reply is
/// empty, which is logged at error priority. Throws std::bad_optional_access at an entry without a
/// value, after appending the entries before it.
int32_t Dov_fetch_dataset(std::vector<DovClient::Resource>& dataset);

/// Queries the status of a feature; the service defines the features.
///
/// Returns the status; -1 when the call failed or the reply does not have exactly one element,
/// which is logged at error priority with the number of elements. Throws std::bad_optional_access
/// when the element has no value, std::invalid_argument when the value is no decimal number and
/// std::out_of_range when it does not fit.
int32_t DovGetFeatureStatus(int32_t featureId);

}  // extern "C"

/// Returns a random number from 0 to 2147483647 for use as a handle; -1 when /dev/urandom cannot be
/// read, which is logged at error priority. Does not avoid numbers in use.
int32_t dovGetRandomHandle();

#pragma GCC visibility pop
