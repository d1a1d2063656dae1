// Every operation of the library, paired with the bare call of the generated proxy.
#include "bench/operations.h"

#include <unistd.h>

#include <functional>
#include <map>
#include <utility>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
#include <dov/DovWrapper.h>
#include <dov/dov.h>
#include <dov/halclient.h>

#include "aidl/request_kinds.h"

using DovClient::Resource;
using namespace mirxHalclient;

namespace bench {
namespace {

const std::string kPackage = "com.example.launcher";
const std::string kIdentity = "launcher";

class BareCallback : public aidl::vendor::tavro::hardware::mirx::BnMirxCallback {
  public:
    ndk::ScopedAStatus onCallback(const std::vector<MirxRequestData>&) override {
        return ndk::ScopedAStatus::ok();
    }
};

class ClientCallback : public IClientCallback {
  public:
    void onCallback(std::list<Resource>) override {}
};

const auto kCallback = std::make_shared<ClientCallback>();

std::vector<MirxRequestData> data(size_t count) {
    std::vector<MirxRequestData> result;
    for (const Resource& resource : resources(count)) {
        MirxRequestData& element = result.emplace_back();
        element.id = resource.opcode;
        element.value = resource.value;
    }
    return result;
}

std::vector<MirxRequestData> dataByPath(const std::vector<std::string>& paths,
                                        const std::vector<std::string>& values) {
    std::vector<MirxRequestData> result(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
        result[i].path = paths[i];
        if (!values.empty()) result[i].value = values[i];
    }
    return result;
}

std::vector<MirxRequestData> oneId(int32_t id) {
    std::vector<MirxRequestData> result(1);
    result[0].id = id;
    return result;
}

MirxRequestParcel parcelOf(int32_t kind, std::vector<MirxRequestData> elements = {}) {
    MirxRequestParcel parcel;
    parcel.requestType = kind;
    parcel.requestData = std::move(elements);
    return parcel;
}

// A parcel as the event interface sends it.
MirxRequestParcel eventParcel(int32_t kind, std::vector<MirxRequestData> elements,
                              const std::string& package) {
    MirxRequestParcel parcel = parcelOf(kind, std::move(elements));
    parcel.duration = 2000;
    parcel.packageName = package;
    parcel.identity = kIdentity;
    return parcel;
}

// A parcel as the low-level client sends it.
MirxRequestParcel controlParcel(int32_t kind, std::vector<MirxRequestData> elements) {
    MirxRequestParcel parcel = parcelOf(kind, std::move(elements));
    parcel.handle = -1;
    parcel.duration = 1000;
    parcel.arg4 = -1;
    parcel.pid = 1234;
    return parcel;
}

using Run = std::function<void(int thread)>;

// The bare calls, with the parcels that they send.
class Bare {
  public:
    explicit Bare(std::shared_ptr<IMirx> hal) : mHal(std::move(hal)) {}

    Run init() const {
        return [hal = mHal](int) { hal->init(); };
    }
    Run request(MirxRequestParcel parcel) const {
        return [hal = mHal, parcel = std::move(parcel)](int) {
            int32_t result = 0;
            hal->request(parcel, &result);
        };
    }
    // Makes a new callback object for each call: an object of a request is called back only once.
    Run requestWithCallback(MirxRequestParcel parcel) const {
        return [hal = mHal, parcel = std::move(parcel)](int) {
            MirxRequestParcel own = parcel;
            own.callback = ndk::SharedRefBase::make<BareCallback>();
            int32_t result = 0;
            hal->request(own, &result);
        };
    }
    Run oneWay(MirxRequestParcel parcel) const {
        return [hal = mHal, parcel = std::move(parcel)](int) { hal->oneWayRequest(parcel); };
    }
    Run oneWayWithHandle(MirxRequestParcel parcel) const {
        return [hal = mHal, parcel = std::move(parcel)](int) {
            MirxRequestParcel own = parcel;
            own.handle = dovGetRandomHandle();
            hal->oneWayRequest(own);
        };
    }
    Run release(int32_t handle) const {
        return [hal = mHal, handle](int) {
            int32_t result = 0;
            hal->release(handle, &result);
        };
    }
    Run state(MirxRequestParcel parcel) const {
        return [hal = mHal, parcel = std::move(parcel)](int) {
            std::vector<MirxRequestData> result;
            hal->stateRequest(parcel, &result);
        };
    }
    Run systemInfo(int32_t first, int32_t second) const {
        return [hal = mHal, first, second](int) {
            int32_t result = 0;
            hal->setRelatedSysInfo(first, second, &result);
        };
    }
    Run rule(int32_t id, int32_t status, std::vector<MirxRequestData> elements) const {
        return [hal = mHal, id, status, elements = std::move(elements)](int) {
            int32_t result = 0;
            hal->ruleCtl(id, status, elements, &result);
        };
    }
    Run propertyGet(std::string key) const {
        return [hal = mHal, key = std::move(key)](int) {
            std::string value;
            hal->propertyGet(key, &value);
        };
    }
    Run propertySet(std::string key, std::string value) const {
        return [hal = mHal, key = std::move(key), value = std::move(value)](int) {
            int32_t result = 0;
            hal->propertySet(key, value, &result);
        };
    }
    Run listenAndEnd() const {
        return [hal = mHal](int thread) {
            MirxRequestParcel parcel;
            parcel.pid = 1234;
            parcel.requestData = oneId(1 + thread);
            parcel.requestData[0].value = "";
            int32_t handle = 0;
            int32_t result = 0;
            hal->listeningRegister(parcel, ndk::SharedRefBase::make<BareCallback>(), &handle);
            hal->listeningUnregister(handle, &result);
        };
    }

  private:
    const std::shared_ptr<IMirx> mHal;
};

MirxRequestParcel marked(MirxRequestParcel parcel) {
    mirx_add_zdbdebug_for_request_parcel(parcel);
    return parcel;
}

MirxRequestParcel withPid(MirxRequestParcel parcel) {
    parcel.pid = 1234;
    return parcel;
}

Contest contest(std::string name, Run bare, Run library) {
    return {std::move(name), {{"bare", std::move(bare)}, {"library", std::move(library)}}};
}

void addEventInterface(const Bare& bare, std::vector<Contest>& table) {
    const auto eight = std::make_shared<std::vector<Resource>>(resources(8));
    table.push_back(contest("dovInit", bare.init(), [](int) { dovInit(); }));
    table.push_back(contest("DovEventAcquire",
                            bare.request(eventParcel(mirx::kEventAcquire, oneId(3), kPackage)),
                            [](int) { DovEventAcquire(3, kPackage, kIdentity, 2000, {}); }));
    MirxRequestParcel oneWay = eventParcel(mirx::kEventAcquire, oneId(3), kPackage);
    oneWay.pid = getpid();
    oneWay.handle = 77;
    table.push_back(contest("DovEventAcquireOneWay", bare.oneWay(oneWay),
                            [](int) { DovEventAcquireOneWay(3, kPackage, kIdentity, 2000, {}); }));
    // Draws a handle as the library does: opens, reads and closes the random device each time.
    table.push_back(contest("DovEventAcquireOneWay, both draw", bare.oneWayWithHandle(oneWay),
                            [](int) { DovEventAcquireOneWay(3, kPackage, kIdentity, 2000, {}); }));
    table.push_back(contest("DovResAcquire, 8 resources",
                            bare.request(eventParcel(mirx::kResourceControl, data(8), "")),
                            [=](int) { DovResAcquire(*eight, "", kIdentity, 2000); }));
    table.push_back(contest("DovRelease", bare.release(7), [](int) { DovRelease(7); }));
    table.push_back(contest("DovNotify", bare.request(parcelOf(mirx::kNotification, oneId(4))),
                            [](int) { DovNotify(4, 0, {}); }));
    table.push_back(contest("setRelatedSysInfo", bare.systemInfo(1, 2),
                            [](int) { setRelatedSysInfo(1, 2); }));
    table.push_back(contest("dovRuleCtl, 8 resources", bare.rule(9, 1, data(8)),
                            [=](int) { dovRuleCtl(9, 1, *eight); }));
    table.push_back(contest("DovMutiResStateRequest, 8 resources",
                            bare.state(parcelOf(mirx::kStateQuery, data(8))), [](int) {
                                thread_local std::vector<Resource> asked = resources(8);
                                DovMutiResStateRequest(asked);
                            }));
    table.push_back(contest("DovGetHistory", bare.state(parcelOf(mirx::kHistoryQuery)), [](int) {
        std::string history;
        DovGetHistory(history);
    }));
    table.push_back(contest("DovGetPMStatus", bare.state(parcelOf(mirx::kPowerModeQuery, oneId(5))),
                            [](int) { DovGetPMStatus(5); }));
    table.push_back(
            contest("Dov_fetch_dataset", bare.state(parcelOf(mirx::kDatasetFetch)), [](int) {
                std::vector<Resource> dataset;
                Dov_fetch_dataset(dataset);
            }));
    table.push_back(contest("DovGetFeatureStatus",
                            bare.state(parcelOf(mirx::kFeatureQuery, oneId(6))),
                            [](int) { DovGetFeatureStatus(6); }));
}

void addWrapper(const Bare& bare, std::vector<Contest>& table) {
    table.push_back(
            contest("DovEventAcquireWrapper",
                    bare.request(eventParcel(mirx::kEventAcquire, oneId(0), kPackage)), [](int) {
                        DovEventAcquireWrapper("VANTEL_ACTION_LAUNCH", kPackage, kIdentity, 2000);
                    }));
    std::vector<MirxRequestData> limits(2);
    limits[0].id = 0x010112f0;
    limits[0].value = "enable 0";
    limits[1].id = 0x01011910;
    limits[1].value = "0";
    table.push_back(contest("DovNotifyWapper, 2 resources", bare.rule(9, 1, limits),
                            [](int) { DovNotifyWapper("scene", 9, 1, 0, 0, 0, ""); }));
}

void addLowLevelClient(const Bare& bare, std::vector<Contest>& table) {
    table.push_back(contest("mirx_init", bare.init(), [](int) { mirx_init(); }));
    for (const size_t count : kCounts) {
        const auto list = std::make_shared<std::list<Resource>>(resourceList(count));
        table.push_back(contest("mirxResCtlRequest, " + std::to_string(count),
                                bare.request(controlParcel(mirx::kResourceControl, data(count))),
                                [=](int) { mirxResCtlRequest(1000, *list, 1234); }));
    }
    const auto list = std::make_shared<std::list<Resource>>(resourceList(8));
    table.push_back(
            contest("mirxResCtlRequest, 8, called back",
                    bare.requestWithCallback(controlParcel(mirx::kResourceControl, data(8))),
                    [=](int) { mirxResCtlRequest(-1, 1000, *list, -1, -1, 1234, kCallback); }));
    table.push_back(
            contest("mirxResCtlRelease", bare.release(7), [](int) { mirxResCtlRelease(7); }));
    table.push_back(contest("mirxSACtlRequest",
                            bare.request(controlParcel(mirx::kSceneControl, oneId(7))),
                            [](int) { mirxSACtlRequest(1000, 7, 1234); }));
    table.push_back(contest("mirxResStateRequest, 8",
                            bare.state(withPid(parcelOf(mirx::kStateQuery, data(8)))), [=](int) {
                                std::list<Resource> out;
                                mirxResStateRequest(*list, 1234, out);
                            }));
    table.push_back(contest("mirxResListeningRegister, end", bare.listenAndEnd(), [](int thread) {
        std::list<Resource> watched = {{1 + thread, std::nullopt}};
        mirxResListeningUnRegister(mirxResListeningRegister(watched, 1234, kCallback));
    }));
    table.push_back(contest("mirxThermalNotify, 8",
                            bare.request(withPid(parcelOf(mirx::kThermalNotification, data(8)))),
                            [=](int) { mirxThermalNotify(*list, 1234); }));
    MirxRequestParcel dump = parcelOf(mirx::kDiagnostics, oneId(1));
    dump.arg4 = 1;
    table.push_back(contest("mirxDumpRunMap", bare.request(dump), [](int) { mirxDumpRunMap(); }));
    table.push_back(contest("mirxPropertyGet", bare.propertyGet("version"), [](int) {
        const std::unique_ptr<char[]> value(mirxPropertyGet("version"));
    }));
    table.push_back(contest("mirxPropertySet", bare.propertySet("mode", "on"),
                            [](int) { mirxPropertySet("mode", "on"); }));
}

void addByPath(const Bare& bare, std::vector<Contest>& table) {
    std::vector<std::string> paths;
    for (int i = 0; i < 8; ++i) paths.push_back("/cpufreq/policy" + std::to_string(i) + "/min");
    const std::vector<std::string> values(8, "1500000");
    table.push_back(contest(
            "mirx_resctl_request_by_path, 8",
            bare.request(marked(controlParcel(mirx::kResourceControl, dataByPath(paths, values)))),
            [=](int) { mirx_resctl_request_by_path(-1, 1000, paths, values, -1, -1, 1234); }));
    table.push_back(
            contest("mirx_res_state_request_by_path, 8",
                    bare.state(withPid(marked(parcelOf(mirx::kStateQuery, dataByPath(paths, {}))))),
                    [=](int) {
                        std::vector<std::string> out;
                        mirx_res_state_request_by_path(paths, {}, 1234, out);
                    }));
}

}  // namespace

std::vector<Resource> resources(size_t count) {
    std::vector<Resource> result;
    for (size_t i = 0; i < count; ++i) {
        result.push_back({static_cast<int32_t>(0x01010010 + 0x10 * i), "1500000"});
    }
    return result;
}

std::list<Resource> resourceList(size_t count) {
    const std::vector<Resource> all = resources(count);
    return {all.begin(), all.end()};
}

std::vector<Contest> operations(const std::shared_ptr<IMirx>& hal) {
    const Bare bare(hal);
    std::vector<Contest> table;
    addEventInterface(bare, table);
    addWrapper(bare, table);
    addLowLevelClient(bare, table);
    addByPath(bare, table);
    return table;
}

}  // namespace bench
