// A table of every call that the library makes to its service.
#include "tests/support/operations.h"

#include <memory>
#include <mutex>
#include <shared_mutex>

#include <dov/DovWrapper.h>
#include <dov/dov.h>
#include <dov/halclient.h>

#include "tests/support/outcome.h"

using namespace mirxHalclient;

namespace {

using Resources = std::list<DovClient::Resource>;
using Texts = std::vector<std::string>;
using TextMap = std::map<std::string, std::string>;

struct Deaf : IClientCallback {
    void onCallback(Resources) override {}
};
struct DeafByPath : IClientCallbackByPath {
    void onCallback(Texts, Texts) override {}
};
const auto kDeaf = std::make_shared<Deaf>();
const auto kDeafByPath = std::make_shared<DeafByPath>();

std::string path(int n) {
    return "/" + std::to_string(n);
}

std::string text(int result) {
    return std::to_string(result);
}

thread_local int gRegistered = -1;

// Held exclusively by thermal registrations, which must not run in parallel with others.
std::shared_mutex gThermal;

template <typename Register>
std::string registered(Register add) {
    std::shared_lock lock(gThermal);
    gRegistered = add();
    return text(gRegistered);
}

template <int (*dump)()>
std::string dumped(int) {
    return text(dump());
}

std::string properties(int n) {
    const std::unique_ptr<char[]> value(mirxPropertyGet(std::to_string(n)));
    return value.get();
}

std::string stateOf(int32_t opcode) {
    std::string value = "kept";
    outcome([&] {
        DovResStateRequest(opcode, value);
        return 0;
    });
    return value;
}

template <typename Void>
std::string nothing(Void call) {
    call();
    return "";
}

}  // namespace

int registerListener(int opcode, const std::shared_ptr<IClientCallback>& callback) {
    Resources resources = {{opcode, {}}};
    registered([&] { return mirxResListeningRegister(resources, opcode, callback); });
    return gRegistered;
}

void endRegistration() {
    if (gRegistered == -1) return;
    std::shared_lock lock(gThermal);
    mirxResListeningUnRegister(gRegistered);
    gRegistered = -1;
}

const std::vector<Operation>& operations() {
    using enum Reply;
    using std::to_string;
    constexpr int kPower = 0x1011670;
    // clang-format off
    static const std::vector<Operation> table = {
        {"mirx_init", "init", kNone, [](int) { return nothing(mirx_init); }, ""},
        {"mirxResCtlRequest", "request", kNumber,
         [](int n) {
             Resources r = {{7, to_string(n)}};
             return text(mirxResCtlRequest(n, 0, r, n));
         }},
        {"mirxResCtlRequest with callback", "request", kNumber,
         [](int n) {
             Resources r = {{7, to_string(n)}};
             return text(mirxResCtlRequest(n, 0, r, 0, 0, n, kDeaf));
         }},
        {"mirxResCtlRelease", "release", kNumber, [](int n) { return text(mirxResCtlRelease(n)); }},
        {"mirxSACtlRequest", "request", kNumber,
         [](int n) { return text(mirxSACtlRequest(n, 0, 2, 0, 0, n)); }},
        {"mirxSACtlRequest with callback", "request", kNumber,
         [](int n) { return text(mirxSACtlRequest(n, 0, 2, 0, 0, n, kDeaf)); }},
        {"mirxSACtlRelease", "release", kNumber, [](int n) { return text(mirxSACtlRelease(n)); }},
        {"mirxResListeningRegister", "listeningRegister", kNumber,
         [](int n) { return text(registerListener(n, kDeaf)); }},
        {"mirxResListeningUnRegister", "listeningUnregister", kNumber,
         [](int n) {
             std::shared_lock lock(gThermal);
             return text(mirxResListeningUnRegister(n));
         }},
        {"mirxResStateRequest", "stateRequest", kData,
         [](int n) { Resources r = {{7, {}}}, out; return text(mirxResStateRequest(r, n, out)); }},
        {"mirxThermalNotify", "request", kNumber,
         [](int n) { Resources r = {{7, to_string(n)}}; return text(mirxThermalNotify(r, n)); }},
        {"mirxThermalListeningRegister", "thermalListeningRegister", kNumber,
         [](int n) {
             std::lock_guard lock(gThermal);
             gRegistered = mirxThermalListeningRegister({n}, kDeaf);
             return text(gRegistered);
         }},
        {"mirxThermalListeningUnregister", "thermalListeningUnregister", kNumber,
         [](int n) { return text(mirxThermalListeningUnregister(n)); }},
        {"mirx_resctl_request_by_path", "request", kNumber,
         [](int n) { return text(mirx_resctl_request_by_path(n, 0, {path(n)}, {"1"}, 0, 0, n)); }},
        {"mirx_resctl_request_with_callback_by_path", "request", kNumber,
         [](int n) {
             return text(mirx_resctl_request_with_callback_by_path(n, 0, {path(n)}, {"1"}, 0, 0, n,
                                                                   kDeafByPath));
         }},
        {"mirx_res_state_request_by_path", "stateRequest", kData,
         [](int n) {
             Texts out;
             return text(mirx_res_state_request_by_path({path(n)}, {}, n, out));
         }},
        {"mirx_res_state_request_map_by_path", "stateRequest", kData,
         [](int n) {
             TextMap out;
             return text(mirx_res_state_request_map_by_path({{path(n), ""}}, n, out));
         }},
        {"mirx_res_listening_register_by_path", "listeningRegister", kNumber,
         [](int n) {
             return registered([n] {
                 return mirx_res_listening_register_by_path({path(n)}, n, kDeafByPath);
             });
         }},
        {"mirx_res_listening_register_map_by_path", "listeningRegister", kNumber,
         [](int n) {
             return registered([n] {
                 return mirx_res_listening_register_map_by_path({{path(n), ""}}, n, kDeafByPath);
             });
         }},
        {"mirxDumpToDoQueue", "request", kNumber, dumped<mirxDumpToDoQueue>},
        {"mirxDumpRunMap", "request", kNumber, dumped<mirxDumpRunMap>},
        {"mirxDumpActiveResMap", "request", kNumber, dumped<mirxDumpActiveResMap>},
        {"mirxDumpResRequest", "request", kNumber, dumped<mirxDumpResRequest>},
        {"mirxDumpResInfo", "request", kNumber, dumped<mirxDumpResInfo>},
        {"mirxDumpSAInfo", "request", kNumber, dumped<mirxDumpSAInfo>},
        {"mirxDumpPidFdList", "request", kNumber, dumped<mirxDumpPidFdList>},
        {"mirxDumpPidfdMonitorMap", "request", kNumber, dumped<mirxDumpPidfdMonitorMap>},
        {"mirxDumpResRecordList", "request", kNumber, dumped<mirxDumpResRecordList>},
        {"mirxHistoryRequestRecordOn", "request", kNumber, dumped<mirxHistoryRequestRecordOn>},
        {"mirxHistoryRequestRecordOff", "request", kNumber, dumped<mirxHistoryRequestRecordOff>},
        {"mirxPropertyGet", "propertyGet", kText, properties, ""},
        {"mirxPropertySet", "propertySet", kNumber,
         [](int n) { return text(mirxPropertySet(to_string(n), to_string(n))); }},

        {"dovInit", "init", kNone, [](int) { return text(dovInit()); }, "-2"},
        {"DovEventAcquire", "request", kNumber,
         [](int n) { return text(DovEventAcquire(1, "p", to_string(n), 0, {})); }},
        {"DovEventAcquireOneWay", "oneWayRequest", kOneWay,
         [](int n) {
             return text(DovEventAcquireOneWay(1, "p", to_string(n), 1, {}) != -1 ? 0 : -1);
         }, "0"},
        {"DovResAcquire", "request", kNumber,
         [](int n) { return text(DovResAcquire({{7, "7"}}, "", to_string(n), 0)); }},
        {"DovPlatformResAcquire", "request", kNumber,
         [](int n) { return text(DovPlatformResAcquire({{7, "7"}}, "", to_string(n), "p", 0)); }},
        {"DovRelease", "release", kNumber,
         [](int n) { return nothing([n] { DovRelease(n); }); }, ""},
        {"DovNotify", "request", kNumber, [](int n) { return text(DovNotify(n, 1, {1, 2})); }},
        {"setRelatedSysInfo", "setRelatedSysInfo", kNumber,
         [](int n) { return text(setRelatedSysInfo(n, 2)); }},
        {"dovRuleCtl", "ruleCtl", kNumber,
         [](int n) { return text(dovRuleCtl(n, 1, {{7, "7"}})); }},
        {"DovMutiResStateRequest", "stateRequest", kData,
         [](int n) {
             std::vector<DovClient::Resource> r = {{n, ""}};
             return text(DovMutiResStateRequest(r));
         }},
        {"DovResStateRequest", "stateRequest", kData, [](int n) { return stateOf(n); }, "kept"},
        {"DovResStateRequest of the power", "stateRequest", kData,
         [](int) { return stateOf(kPower); }},
        {"DovGetHistory", "stateRequest", kData,
         [](int) { std::string history; return text(DovGetHistory(history)); }},
        {"DovGetPowerConsis", "stateRequest", kData,
         [](int) { return outcome(DovGetPowerConsis); }},
        {"DovGetPMStatus", "stateRequest", kData,
         [](int n) { return outcome([n] { return DovGetPMStatus(n); }); }},
        {"Dov_fetch_dataset", "stateRequest", kData,
         [](int) {
             std::vector<DovClient::Resource> r;
             return outcome([&r] { return Dov_fetch_dataset(r); });
         }},
        {"DovGetFeatureStatus", "stateRequest", kData,
         [](int n) { return outcome([n] { return DovGetFeatureStatus(n); }); }},
        {"DovEventAcquireWrapper", "request", kNumber,
         [](int n) {
             return text(DovEventAcquireWrapper("VANTEL_ACTION_LAUNCH", "p", to_string(n), 0));
         }},
        {"DovReleaseWapper", "release", kNumber,
         [](int n) { return nothing([n] { DovReleaseWapper(n); }); }, ""},
        {"DovNotifyWapper", "ruleCtl", kNumber,
         [](int) { return text(DovNotifyWapper("n", 1, 1, 0, 0, 0, "")); }, "0"},
        {"clrGameUpgradeMode", "ruleCtl", kNumber,
         [](int n) { return nothing([n] { clrGameUpgradeMode(n, 0); }); }, ""},
    };
    // clang-format on
    return table;
}
