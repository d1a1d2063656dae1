// The contract's steps written down one by one, without a thought for their cost: texts by value
// and put together, lists grown element by element and copied, every search a scan. What the
// library is measured against; the results are the same.
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

// The proxy that all calls go through; stays bound.
void bind(const std::shared_ptr<IMirx>& hal);

// Counterparts of the functions of these names.
int32_t eventAcquire(int32_t cmdid, const std::string& pkg, const std::string& identity,
                     int32_t duration, const std::vector<DovClient::Resource>& resources);
int32_t eventAcquireWrapper(std::string eventId, std::string scene, std::string identity,
                            int32_t timeout);
// Scene 9000 only, which has the longest description.
int32_t notifyWrapper(std::string name, int32_t type, std::string data);
int32_t resStateRequest(std::vector<DovClient::Resource>& resources);
int resCtlRequest(int duration, std::list<DovClient::Resource>& resources, int pid);

// What a callback object does with data that is addressed by id.
void onCallback(const std::vector<MirxRequestData>& data,
                const std::shared_ptr<IClientCallback>& callback);

}  // namespace bench::literal
