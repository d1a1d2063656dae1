// Tests of every low-level operation: what it logs and returns with and without a service.
#include "tests/support/client_test.h"

using namespace mirxHalclient;
using testing::IsEmpty;

namespace {

struct Operation {
    std::string entry;
    std::string failureName;
    std::function<int()> call;
    int result = 1;  // if the service answers 1
    std::vector<LogLine> before = {};  // logged before the call, even if it fails
    std::vector<LogLine> success = {};
    bool leavesCallback = false;
};

std::list<DovClient::Resource> resources = {{0x1010010, "7"}}, answers;
std::vector<std::string> texts;
std::map<std::string, std::string> textMap;
std::shared_ptr<IClientCallback> callback = std::make_shared<Heard>();
std::shared_ptr<IClientCallbackByPath> byPath = std::make_shared<HeardByPath>();

const LogLine kNewClient = info("new std::shared_ptr MirxCallbackClient callback");
const LogLine kRegistered = info("A callback has been registered to Mirx HAL ");

const std::vector<Operation> kOperations = {
        {"mirx client mirxResCtlRequest", "mirxResCtlRequest",
         [] { return mirxResCtlRequest(1, resources, 2); }},
        {"mirx client mirxResCtlRequest with callback",
         "mirx client MirxCallbackClient with callback",
         [] { return mirxResCtlRequest(-1, 1, resources, 0, 0, 2, callback); },
         1,
         {kNewClient, info("mirx client mirxResCtlRequest add to request_callbacks")},
         {},
         true},
        {"mirx client mirxResCtlRelease", "mirxResCtlRelease", [] { return mirxResCtlRelease(3); }},
        {"mirx client mirxSACtlRequest", "mirxSACtlRequest",
         [] { return mirxSACtlRequest(1, 2, 3); }},
        {"mirx client mirxSACtlRequest with callback",
         "mirxSACtlRequest with callback",
         [] { return mirxSACtlRequest(-1, 1, 2, 0, 0, 3, callback); },
         1,
         {kNewClient, info("mirx client mirxSACtlRequest add to request_callbacks")},
         {},
         true},
        {"mirx client mirxSACtlRelease", "mirxSACtlRelease", [] { return mirxSACtlRelease(3); }},
        {"mirxResListeningRegister",
         "mirx_res_listening_register_map",
         [] { return mirxResListeningRegister(resources, 2, callback); },
         1,
         {},
         {kRegistered}},
        {"mirx client mirxResListeningUnRegister",
         "mirxResListeningUnRegister",
         [] { return mirxResListeningUnRegister(77); },
         1,
         {error("The callback was not registered before")}},
        {"mirx client mirxResStateRequest",
         "mirxResStateRequest",
         [] { return mirxResStateRequest(resources, 2, answers); },
         1,
         {info("mirx client hal mirxResStateRequest")},
         {info("mirx client mirxResStateRequest size 1")}},
        {"mirx client mirxThermalNotify", "mirxThermalNotify",
         [] { return mirxThermalNotify(resources, 2); }, 0},
        {"mirxThermalListeningRegister",
         "mirxThermalListeningRegister",
         [] { return mirxThermalListeningRegister({4}, callback); },
         1,
         {},
         {info("subsys's callback has been registered to Mirx HAL")}},
        {"mirx client mirxThermalListeningUnregister",
         "mirxThermalListeningUnregister",
         [] { return mirxThermalListeningUnregister(77); },
         1,
         {},
         {info("subsys's callback has been unRegistered to Mirx HAL")}},
        {"mirx client mirx_resctl_request", "mirx_resctl_request_by_path",
         [] { return mirx_resctl_request_by_path(-1, 1, {"/a"}, {"1"}, 0, 0, 2); }},
        {"mirx client mirx_resctl_request_with_callback",
         "mirx client mirx_resctl_request_with_callback",
         [] {
             return mirx_resctl_request_with_callback_by_path(-1, 1, {"/a"}, {"1"}, 0, 0, 2,
                                                              byPath);
         },
         1,
         {kNewClient,
          info("mirx client mirx_resctl_request_with_callback add to request_callbacks")},
         {},
         true},
        {"mirx client mirx_res_state_request",
         "mirx_res_state_request",
         [] { return mirx_res_state_request_by_path({"/a"}, {}, 2, texts); },
         1,
         {},
         {info("mirx client mirx_res_state_request size 1")}},
        {"mirx client mirx_res_state_request_map",
         "mirx_res_state_request_map",
         [] {
             return mirx_res_state_request_map_by_path({{"/a", ""}}, 2, textMap);
         },
         1,
         {},
         {error("res_Path: /a, res_Value:7"),
          info("mirx client mirx_res_state_request_map size 1")}},
        {"mirx client mirx_res_listening_register",
         "mirx_res_listening_register",
         [] { return mirx_res_listening_register_by_path({"/a"}, 2, byPath); },
         1,
         {},
         {kRegistered}},
        {"mirx client mirx_res_listening_register_map",
         "mirx_res_listening_register_map",
         [] {
             return mirx_res_listening_register_map_by_path({{"/b", "1"}}, 2, byPath);
         },
         1,
         {},
         {kRegistered}},
        {"mirx client mirxPropertySet", "mirxPropertySet",
         [] { return mirxPropertySet("key", "value"); }},
};

}  // namespace

class ClientOperationsTest : public ClientTest {};

TEST_F(ClientOperationsTest, logAndResultMatchTheStateOfTheService) {
    service->state = {pathElement("/a", "7")};
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.entry);
        const auto logged = [&](std::initializer_list<std::vector<LogLine>> parts) {
            std::vector<LogLine> lines = {info(operation.entry)};
            for (const auto& part : parts) lines.insert(lines.end(), part.begin(), part.end());
            return lines;
        };
        const size_t waiting = waitingCallbacks();
        undeclare();
        service->failing = true;
        mirx_init();  // empties the binding
        service->take();
        log.take();
        EXPECT_EQ(operation.call(), -1);
        EXPECT_EQ(log.take(),
                  logged({{error("Mirx is not declared, AServiceManager_isDeclared:0")}}));
        EXPECT_THAT(service->take(), IsEmpty());
        EXPECT_EQ(waitingCallbacks(), waiting) << "a callback was left without a service";

        declare();
        EXPECT_EQ(operation.call(), -1);
        EXPECT_EQ(clientLines(), logged({operation.before, {failed(operation.failureName)}}));
        EXPECT_EQ(waitingCallbacks(), waiting + operation.leavesCallback);

        service->failing = false;
        services().declarationChecks = 0;
        service->take();
        EXPECT_EQ(operation.call(), operation.result) << "the failed call left an entry";
        EXPECT_EQ(services().declarationChecks, 1) << "the proxy was not dropped";
        EXPECT_EQ(clientLines(), logged({operation.before, operation.success}));
        EXPECT_EQ(service->take().size(), 1u);
    }
}
