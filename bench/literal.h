// The straightforward implementation that the library is measured against.
//
// It gives the same results without any optimisation: it concatenates texts and passes them by
// value, grows lists element by element and copies them, and searches linearly.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include <dov/ClientCallback.h>
#include <dov/Resource.h>

#include "bench/quiet_service.h"

namespace bench::literal {

using aidl::vendor::tavro::hardware::mirx::IMirx;

// Sets the proxy for all calls. It stays bound.
void bind(const std::shared_ptr<IMirx>& hal);

// Builds what DovEventAcquire builds: the trace section's name, the log line and the parcel.
int32_t eventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                     int32_t duration, const std::vector<DovClient::Resource>& resources);
// DovEventAcquireWrapper: compares the name with every action, then calls eventAcquire.
int32_t eventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                            int32_t timeout);
// DovNotifyWapper for scene 9000, which has the longest description: builds its resources.
int32_t notifyWrapper(std::string name, int32_t type, std::string data);
// DovMutiResStateRequest: builds the query, and scans the reply for each resource.
int32_t resStateRequest(std::vector<DovClient::Resource>& resources);
// mirxResCtlRequest: checks the list and builds the parcel.
int resCtlRequest(int duration, std::list<DovClient::Resource>& resources, int pid);

// A callback for resources by opcode: builds the client's list and calls the client.
void onCallback(const std::vector<MirxRequestData>& data,
                const std::shared_ptr<IClientCallback>& callback);

}  // namespace bench::literal
