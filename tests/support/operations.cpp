// A table of every call that the library makes to its service.
#include "tests/support/operations.h"

#include <mutex>
#include <shared_mutex>
#include <utility>

#include <dov/DovWrapper.h>
#include <dov/dov.h>
#include <dov/halclient.h>

#include "tests/support/outcome.h"

using namespace mirxHalclient;

namespace {

using Resources = std::list<DovClient::Resource>;
using Texts = std::vector<std::string>;
using TextMap = std::map<std::string, std::string>;
using Vector = std::vector<DovClient::Resource>;

struct Deaf : IClientCallback, IClientCallbackByPath {
    void onCallback(Resources) override {}
    void onCallback(Texts, Texts) override {}
};
const auto kDeaf = std::make_shared<Deaf>();

std::string path(int n) {
    return "/" + std::to_string(n);
}

std::string text(int result) {
    return std::to_string(result);
}

Resources sevenIs(int n) {
    return {{7, std::to_string(n)}};
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

// A list for a call that takes a reference, with these contents each time.
template <typename List>
List& fresh(List contents = {}) {
    thread_local List list;
    return list = std::move(contents);
}

// The call of a function without further arguments.
template <auto function>
std::string called([[maybe_unused]] int n) {
    return outcome([&] {
        if constexpr (std::is_invocable_v<decltype(function), int>) {
            return function(n);
        } else {
            return function();
        }
    });
}

template <auto function>
Operation diagnostic(const char* name, const char* sent) {
    return {name, "request", Reply::kNumber, sent, called<function>, "0"};
}

std::string properties(int n) {
    const std::unique_ptr<char[]> value(mirxPropertyGet(std::to_string(n)));
    return value.get();
}

std::string stateOf(int32_t opcode) {
    auto& value = fresh<std::string>("kept");
    outcome([&] { DovResStateRequest(opcode, value); });
    return value;
}

}  // namespace

int registerListener(Resources resources, const std::shared_ptr<IClientCallback>& callback) {
    const int pid = resources.front().opcode;
    registered([&] { return mirxResListeningRegister(resources, pid, callback); });
    return gRegistered;
}

int endRegistration() {
    const int handle = std::exchange(gRegistered, -1);
    if (handle == -1) return -1;
    std::shared_lock lock(gThermal);
    // The registration remains if another thread has just dropped the proxy.
    for (int i = 0; i < 3; ++i) {
        if (mirxResListeningUnRegister(handle) != -1) return -1;
    }
    return handle;
}

const std::vector<Operation>& operations() {
    using enum Reply;
    using std::to_string;
    constexpr int kPower = 0x1011670;
    // clang-format off
    static const std::vector<Operation> table = {
        {"mirx_init", "init", kNone, "", called<mirx_init>, "", ""},
        {"mirxResCtlRequest", "request", kNumber, "type 1 handle 5 arg4 -1 pid 5 {7 '5'}",
         [](int n) { return text(mirxResCtlRequest(n, 0, fresh(sevenIs(n)), n)); }},
        {"mirxResCtlRequest with callback", "request", kNumber,
         "type 1 handle 5 arg4 8 flag pid 5 {7 '5'} callback",
         [](int n) { return text(mirxResCtlRequest(n, 0, fresh(sevenIs(n)), 8, 1, n, kDeaf)); },
         "3", "-1", "I mirx client mirxResCtlRequest with callback\n"
         "bI new std::shared_ptr MirxCallbackClient callback\n"
         "bI mirx client mirxResCtlRequest add to request_callbacks\n"
         "f mirx client MirxCallbackClient with callback"},
        {"mirxResCtlRelease", "release", kNumber, "5", called<mirxResCtlRelease>},
        {"mirxSACtlRequest", "request", kNumber, "type 2 handle 5 arg4 4 flag pid 5 {2}",
         [](int n) { return text(mirxSACtlRequest(n, 0, 2, 4, 1, n)); }},
        {"mirxSACtlRequest with callback", "request", kNumber,
         "type 2 handle 5 arg4 -1 pid 5 {2} callback",
         [](int n) { return text(mirxSACtlRequest(n, 0, 2, -1, -1, n, kDeaf)); }, "3", "-1",
         "I mirx client mirxSACtlRequest with callback\n"
         "bI new std::shared_ptr MirxCallbackClient callback\n"
         "bI mirx client mirxSACtlRequest add to request_callbacks"},
        {"mirxSACtlRelease", "release", kNumber, "5", called<mirxSACtlRelease>},
        {"mirxResListeningRegister", "listeningRegister", kNumber, "pid 5 {5 ''} callback",
         [](int n) { return text(registerListener({{n, {}}}, kDeaf)); }, "3", "-1",
         "I mirxResListeningRegister\nf mirx_res_listening_register_map\n"
         "sI A callback has been registered to Mirx HAL "},
        {"mirxResListeningUnRegister", "listeningUnregister", kNumber, "5",
         [](int n) {
             std::shared_lock lock(gThermal);
             return text(mirxResListeningUnRegister(n));
         }, "3", "-1", "I mirx client mirxResListeningUnRegister\n"
         "bE The callback was not registered before"},
        {"mirxResStateRequest", "stateRequest", kData, "pid 5 {7 ''}",
         [](int n) {
             Resources asked = {{7, {}}};
             return text(mirxResStateRequest(asked, n, fresh<Resources>()));
         }, "1", "-1", "I mirx client mirxResStateRequest\nbI mirx client hal mirxResStateRequest\n"
         "sI mirx client mirxResStateRequest size 1"},
        {"mirxThermalNotify", "request", kNumber, "type 7 pid 5 {7 '5'}",
         [](int n) { return text(mirxThermalNotify(fresh(sevenIs(n)), n)); }, "0"},
        {"mirxThermalListeningRegister", "thermalListeningRegister", kNumber, "5 callback",
         [](int n) {
             std::lock_guard lock(gThermal);
             gRegistered = mirxThermalListeningRegister({n}, kDeaf);
             return text(gRegistered);
         }, "3", "-1", "I mirxThermalListeningRegister\n"
         "sI subsys's callback has been registered to Mirx HAL"},
        {"mirxThermalListeningUnregister", "thermalListeningUnregister", kNumber, "5",
         called<mirxThermalListeningUnregister>, "3", "-1",
         "I mirx client mirxThermalListeningUnregister\n"
         "sI subsys's callback has been unRegistered to Mirx HAL"},
        {"mirx_resctl_request_by_path", "request", kNumber,
         "type 1 handle 5 pid 5 tags zdbdebug {0 '1' path '/5'}",
         [](int n) { return text(mirx_resctl_request_by_path(n, 0, {path(n)}, {"1"}, 0, 0, n)); },
         "3", "-1", "I mirx client mirx_resctl_request"},
        {"mirx_resctl_request_with_callback_by_path", "request", kNumber,
         "type 1 handle 5 arg4 3 flag pid 5 tags zdbdebug {0 '1' path '/5'} callback",
         [](int n) {
             return text(mirx_resctl_request_with_callback_by_path(n, 0, {path(n)}, {"1"}, 3, 7, n,
                                                                   kDeaf));
         }, "3", "-1", "I mirx client mirx_resctl_request_with_callback\n"
         "bI new std::shared_ptr MirxCallbackClient callback\n"
         "bI mirx client mirx_resctl_request_with_callback add to request_callbacks\n"
         "f mirx client mirx_resctl_request_with_callback"},
        {"mirx_res_state_request_by_path", "stateRequest", kData,
         "pid 5 tags zdbdebug {0 path '/5'}",
         [](int n) {
             return text(mirx_res_state_request_by_path({path(n)}, {}, n, fresh<Texts>()));
         }, "1", "-1", "I mirx client mirx_res_state_request\nf mirx_res_state_request\n"
         "sI mirx client mirx_res_state_request size 1"},
        {"mirx_res_state_request_map_by_path", "stateRequest", kData,
         "pid 5 tags zdbdebug {0 '' path '/5'}",
         [](int n) {
             return text(mirx_res_state_request_map_by_path({{path(n), ""}}, n, fresh<TextMap>()));
         }, "1", "-1", "I mirx client mirx_res_state_request_map\nf mirx_res_state_request_map\n"
         "sE res_Path: /5, res_Value:3\nsI mirx client mirx_res_state_request_map size 1"},
        {"mirx_res_listening_register_by_path", "listeningRegister", kNumber,
         "pid 5 tags zdbdebug {0 path '/5'} callback",
         [](int n) {
             return registered([n] {
                 return mirx_res_listening_register_by_path({path(n)}, n, kDeaf);
             });
         }, "3", "-1", "I mirx client mirx_res_listening_register\nf mirx_res_listening_register\n"
         "sI A callback has been registered to Mirx HAL "},
        {"mirx_res_listening_register_map_by_path", "listeningRegister", kNumber,
         "pid 5 tags zdbdebug {0 '' path '/5'} callback",
         [](int n) {
             return registered([n] {
                 return mirx_res_listening_register_map_by_path({{path(n), ""}}, n, kDeaf);
             });
         }, "3", "-1",
         "I mirx client mirx_res_listening_register_map\nf mirx_res_listening_register_map\n"
         "sI A callback has been registered to Mirx HAL "},
        diagnostic<mirxDumpToDoQueue>("mirxDumpToDoQueue", "type 5 arg4 1 {0}"),
        diagnostic<mirxDumpRunMap>("mirxDumpRunMap", "type 5 arg4 1 {1}"),
        diagnostic<mirxDumpActiveResMap>("mirxDumpActiveResMap", "type 5 arg4 1 {2}"),
        diagnostic<mirxDumpResRequest>("mirxDumpResRequest", "type 5 arg4 1 {3}"),
        diagnostic<mirxDumpResInfo>("mirxDumpResInfo", "type 5 arg4 1 {4}"),
        diagnostic<mirxDumpSAInfo>("mirxDumpSAInfo", "type 5 arg4 1 {5}"),
        diagnostic<mirxDumpPidFdList>("mirxDumpPidFdList", "type 5 arg4 1 {6}"),
        diagnostic<mirxDumpPidfdMonitorMap>("mirxDumpPidfdMonitorMap", "type 5 arg4 1 {7}"),
        diagnostic<mirxDumpResRecordList>("mirxDumpResRecordList", "type 5 arg4 1 {8}"),
        diagnostic<mirxHistoryRequestRecordOn>("mirxHistoryRequestRecordOn", "type 5 arg4 1 {a}"),
        diagnostic<mirxHistoryRequestRecordOff>("mirxHistoryRequestRecordOff", "type 5 arg4 1 {b}"),
        {"mirxPropertyGet", "propertyGet", kText, "'5'", properties, "3", "",
         "I mirx client mirxPropertyGet\nuI mirxPropertyGet  \n"
         "fI mirxPropertyGet  \nsI mirxPropertyGet 3 "},
        {"mirxPropertySet", "propertySet", kNumber, "'5' '5'",
         [](int n) { return text(mirxPropertySet(to_string(n), to_string(n))); }},

        {"dovInit", "init", kNone, "", called<dovInit>, "0", "-2",
         "E dovInit enter\nf mirx_init", "-1"},
        {"DovEventAcquire", "request", kNumber, "type 8 package 'p' identity '5' {1}",
         [](int n) { return text(DovEventAcquire(1, "p", to_string(n), 0, {})); }, "3", "-1",
         "I DovEventAcquire, cmdid:1, pkg:p, identity:5\nfE mirxResCtlRequest error:-1"},
        {"DovEventAcquireOneWay", "oneWayRequest", kOneWay,
         "type 8 duration 1 package 'p' identity '5' {1}",
         [](int n) {
             return text(DovEventAcquireOneWay(1, "p", to_string(n), 1, {}) != -1 ? 0 : -1);
         }, "0", "0", "I DovEventAcquireOneWay, cmdid:1, pkg:p, identity:5", "-1"},
        {"DovResAcquire", "request", kNumber, "type 1 package '' identity '5' {7 '7'}",
         [](int n) { return text(DovResAcquire({{7, "7"}}, "ignored", to_string(n), 0)); },
         "3", "-1", "I DovResAcquire\nI DovEventAcquire, cmdid:-2, pkg:none, identity:5\n"
         "f DovEventAcquire\nfE mirxResCtlRequest error:-1"},
        {"DovPlatformResAcquire", "request", kNumber, "type 12 package 'p' identity '5' {7 '7'}",
         [](int n) { return text(DovPlatformResAcquire({{7, "7"}}, "", to_string(n), "p", 0)); },
         "3", "-1", "I DovPlatformResAcquire\nI DovEventAcquire, cmdid:-3, pkg:p, identity:5\n"
         "f DovEventAcquire\nfE mirxResCtlRequest error:-1"},
        {"DovRelease", "release", kNumber, "5", called<DovRelease>, "", "",
         "I DovRelease, handle:5\nf mirxResCtlRelease"},
        {"DovNotify", "request", kNumber, "type 10 {5 arg 1}{5 arg 1}",
         [](int n) { return text(DovNotify(n, 1, {1, 2})); }, "0", "-1", "I DovNotify enter"},
        {"setRelatedSysInfo", "setRelatedSysInfo", kNumber, "5 2",
         [](int n) { return text(setRelatedSysInfo(n, 2)); }, "3", "-1", ""},
        {"dovRuleCtl", "ruleCtl", kNumber, "5 1 {7 '7'}",
         [](int n) { return text(dovRuleCtl(n, 1, {{7, "7"}})); }, "3", "-1",
         "I dovRuleCtl, ruleId:5, status:1"},
        {"DovMutiResStateRequest", "stateRequest", kData, "{5 ''}",
         [](int n) { return text(DovMutiResStateRequest(fresh<Vector>({{n, ""}}))); }, "1", "-1",
         "I DovMutiResStateRequest enter\nfE failed to get resource value\n"
         "sD get resource value, opcode 0x00000005, value 3"},
        {"DovResStateRequest", "stateRequest", kData, "{5 ''}", [](int n) { return stateOf(n); },
         "3", "kept",
         "I DovResStateRequest enter\nI DovMutiResStateRequest enter\nf DovMutiResStateRequest\n"
         "fE failed to get resource value\nsD get resource value, opcode 0x00000005, value 3"},
        {"DovResStateRequest of the power", "stateRequest", kData,
         "type 15 package 'none' {1011670 '0 1 35'}{1011670 '1 1 35'}{1011670 '2 1 35'}",
         [](int) { return stateOf(kPower); }, "3", "-1",
         "I dov client DovGetPowerConsis\nf DovGetPowerConsis"},
        {"DovGetHistory", "stateRequest", kData, "type 11",
         [](int) { return text(DovGetHistory(fresh<std::string>())); }, "0", "-1",
         "I dov client DovGetHistory\nbI dov client hal DovGetHistory\n"
         "fE failed to get history or return vector empty, data vector size 0\n"
         "sD get history successful: start:entry;end"},
        {"DovGetPowerConsis", "stateRequest", kData,
         "type 15 package 'none' {1011670 '0 1 35'}{1011670 '1 1 35'}{1011670 '2 1 35'}",
         called<DovGetPowerConsis>, "3", "-1", "I dov client DovGetPowerConsis"},
        {"DovGetPMStatus", "stateRequest", kData, "type 13 {5}", called<DovGetPMStatus>, "3", "-1",
         "I dov client DovGetPMStatus\nbI dov client hal DovGetPMStatus\n"
         "fE failed to get power mode status, mode 5, data vector size 0"},
        {"Dov_fetch_dataset", "stateRequest", kData, "type 16",
         [](int) { return outcome([] { return Dov_fetch_dataset(fresh<Vector>()); }); }, "1", "-1",
         "I Dov_fetch_dataset enter\nfE failed to get resource value"},
        {"DovGetFeatureStatus", "stateRequest", kData, "type 17 {5}",
         called<DovGetFeatureStatus>, "3", "-1",
         "I DovGetFeatureStatus enter\nfE failed to get resource value, 0"},
        {"DovEventAcquireWrapper", "request", kNumber, "type 8 package 'p' identity '5' {0}",
         [](int n) {
             return text(DovEventAcquireWrapper("VANTEL_ACTION_LAUNCH", "p", to_string(n), 0));
         }, "3", "-1",
         "I [DOV_CLIENT_WRAPPER]: [DovEventAcquireWrapper] eventId:VANTEL_ACTION_LAUNCH, scene:p, "
         "identity:5, timeout:0\nI DovEventAcquire, cmdid:0, pkg:p, identity:5\n"
         "f DovEventAcquire\nfE mirxResCtlRequest error:-1"},
        {"DovReleaseWapper", "release", kNumber, "5", called<DovReleaseWapper>, "", "",
         "I [DOV_CLIENT_WRAPPER]: [DovReleaseWapper] 5\nI DovRelease, handle:5\n"
         "f mirxResCtlRelease"},
        {"DovNotifyWapper", "ruleCtl", kNumber, "1 1",
         [](int) { return text(DovNotifyWapper("n", 1, 1, 0, 0, 0, "")); }, "0", "0",
         "I [DOV_CLIENT_WRAPPER]: [DovNotifyWapper] n, src:1, type:1\n"
         "I dovRuleCtl, ruleId:1, status:1\nf dovRuleCtl"},
        {"clrGameUpgradeMode", "ruleCtl", kNumber, "5 0 {1011040 '-1'}{1011040 ''}",
         [](int n) { return outcome([n] { clrGameUpgradeMode(n, 0); }); }, "", "",
         "I dovRuleCtl, ruleId:5, status:0\nf dovRuleCtl"},
    };
    // clang-format on
    return table;
}
