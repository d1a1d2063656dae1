// Tests of the acquire functions: what they send, return and log.
#include <dov/dov.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "tests/support/data.h"
#include "tests/support/test_services.h"

using DovClient::Resource;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

LogLine line(int priority, const std::string& text) {
    return {priority, "[DOV_CLIENT]", text};
}

MirxRequestParcel parcel(int32_t requestType, const std::string& pkg, const std::string& identity,
                         int64_t duration, std::vector<MirxRequestData> data) {
    MirxRequestParcel parcel;
    parcel.requestType = requestType;
    parcel.packageName = pkg;
    parcel.identity = identity;
    parcel.duration = duration;
    parcel.requestData = std::move(data);
    return parcel;
}

const std::vector<Resource> kResources = {
        {0x1010010, "7"}, {0x1010020, std::nullopt}, {static_cast<int32_t>(0xf0000001), ""}};
const std::vector<MirxRequestData> kResourceData = {element(0x1010010, "7"), element(0x1010020),
                                                    element(static_cast<int32_t>(0xf0000001), "")};

}  // namespace

class AcquireTest : public BinderTest {};

TEST_F(AcquireTest, commandDeterminesTheParcel) {
    struct Case {
        int32_t cmdid;
        std::string pkg, identity;
        int32_t duration;
        std::vector<Resource> resources;
        int32_t requestType;
        std::vector<MirxRequestData> data;
    };
    std::vector<MirxRequestData> eventWithResources = kResourceData;
    eventWithResources.insert(eventWithResources.begin(), element(4));
    const std::vector<Case> cases = {
            {0, "com.example", "me", 2000, {}, 8, {element(0)}},
            {4, "com.example", "me", 0, kResources, 8, eventWithResources},
            {-1, "com.example", "me", -1, {}, 8, {element(-1)}},
            {-4, "", "me", 1, {}, 8, {element(-4)}},
            {INT32_MAX, "p", "", INT32_MAX, {}, 8, {element(INT32_MAX)}},
            {INT32_MIN, "", "", INT32_MIN, {}, 8, {element(INT32_MIN)}},
            {-2, "com.example", "me", 5, kResources, 1, kResourceData},
            {-2, "", "", 5, {}, 1, {}},
            {-3, "com.example", "me", 5, kResources, 12, kResourceData},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cmdid);
        const auto shown = [](const std::string& text) { return text.empty() ? "none" : text; };
        const std::string arguments = "cmdid:" + std::to_string(c.cmdid) + ", pkg:" + shown(c.pkg) +
                                      ", identity:" + shown(c.identity);
        const MirxRequestParcel expected =
                parcel(c.requestType, c.pkg, c.identity, c.duration, c.data);
        service->answer = 17;
        EXPECT_EQ(DovEventAcquire(c.cmdid, c.pkg, c.identity, c.duration, c.resources), 17);
        EXPECT_THAT(log.take(),
                    ElementsAre(line(ANDROID_LOG_INFO, "DovEventAcquire, " + arguments)));
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "request");
        EXPECT_EQ(calls[0].parcel.toString(), expected.toString());

        const int32_t handle =
                DovEventAcquireOneWay(c.cmdid, c.pkg, c.identity, c.duration, c.resources);
        EXPECT_GE(handle, 0);
        std::vector<LogLine> lines = {
                line(ANDROID_LOG_INFO, "DovEventAcquireOneWay, " + arguments)};
        for (const Resource& resource : c.resources) {
            lines.push_back(line(ANDROID_LOG_DEBUG,
                                 "DovEventAcquireOneWay res_Id:" + std::to_string(resource.opcode) +
                                         " ,res_Value:" + resource.value.value_or("") + ", "));
        }
        EXPECT_EQ(log.take(), lines);
        const RecordedCall oneWay = service->awaitCall();
        MirxRequestParcel withHandle = expected;
        withHandle.handle = handle;
        withHandle.pid = getpid();
        EXPECT_EQ(oneWay.operation, "oneWayRequest");
        EXPECT_EQ(oneWay.parcel.toString(), withHandle.toString());
    }
}

TEST_F(AcquireTest, resourceAndPlatformCallsUseDovEventAcquire) {
    EXPECT_EQ(DovResAcquire(kResources, "ignored", "me", -1), 1);
    EXPECT_THAT(log.take(), ElementsAre(line(ANDROID_LOG_INFO, "DovResAcquire"),
                                        line(ANDROID_LOG_INFO,
                                             "DovEventAcquire, cmdid:-2, pkg:none, identity:me")));
    EXPECT_EQ(DovPlatformResAcquire(kResources, "ignored", "me", "com.example", 9), 1);
    EXPECT_THAT(log.take(),
                ElementsAre(line(ANDROID_LOG_INFO, "DovPlatformResAcquire"),
                            line(ANDROID_LOG_INFO,
                                 "DovEventAcquire, cmdid:-3, pkg:com.example, identity:me")));
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].parcel.toString(), parcel(1, "", "me", -1, kResourceData).toString());
    EXPECT_EQ(calls[1].parcel.toString(),
              parcel(12, "com.example", "me", 9, kResourceData).toString());
}

TEST_F(AcquireTest, returnsAnyHandleOfTheService) {
    for (const int32_t handle : {0, -1, -7, INT32_MAX, INT32_MIN}) {
        service->answer = handle;
        EXPECT_EQ(DovEventAcquire(1, "p", "i", 0, {}), handle);
    }
    const auto lines = log.take();
    EXPECT_TRUE(std::none_of(lines.begin(), lines.end(), [](const LogLine& line) {
        return line.priority == ANDROID_LOG_ERROR;
    })) << "the answer -1 was logged as a failure";
}

TEST_F(AcquireTest, releaseSendsAnyHandle) {
    for (const int32_t handle : {1, 0, -1, INT32_MAX, INT32_MIN}) {
        service->answer = -1;
        DovRelease(handle);
        EXPECT_THAT(log.take(), ElementsAre(line(ANDROID_LOG_INFO,
                                                 "DovRelease, handle:" + std::to_string(handle))));
        const auto calls = service->take();
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_EQ(calls[0].operation, "release");
        EXPECT_THAT(calls[0].numbers, ElementsAre(handle));
    }
}

TEST_F(AcquireTest, failedCallIsLoggedAndDropsTheProxy) {
    const auto failed = [](const std::string& name) {
        return line(ANDROID_LOG_ERROR, name + "() failed : mirx HAL service not available");
    };
    ASSERT_EQ(DovEventAcquire(1, "p", "i", 0, {}), 1);
    log.take();
    const int bound = services().declarationChecks;

    service->failing = true;
    EXPECT_EQ(DovEventAcquire(1, "p", "i", 0, {}), -1);
    EXPECT_THAT(log.take(),
                ElementsAre(line(ANDROID_LOG_INFO, "DovEventAcquire, cmdid:1, pkg:p, identity:i"),
                            failed("DovEventAcquire"),
                            line(ANDROID_LOG_ERROR, "mirxResCtlRequest error:-1")));
    DovRelease(3);
    EXPECT_THAT(log.take(), ElementsAre(line(ANDROID_LOG_INFO, "DovRelease, handle:3"),
                                        failed("mirxResCtlRelease")));
    EXPECT_EQ(services().declarationChecks, bound + 1) << "the failed call did not drop the proxy";
}

TEST_F(AcquireTest, oneWayReturnsItsHandleEvenIfTheCallFails) {
    HeldBackDeath death;
    ASSERT_GE(DovEventAcquireOneWay(1, "p", "i", 0, {}), 0);
    stopServing();
    log.take();
    const int32_t handle = DovEventAcquireOneWay(1, "p", "i", 0, {});
    EXPECT_GE(handle, 0);
    EXPECT_THAT(
            log.take(),
            ElementsAre(
                    line(ANDROID_LOG_INFO, "DovEventAcquireOneWay, cmdid:1, pkg:p, identity:i"),
                    line(ANDROID_LOG_ERROR,
                         "DovEventAcquireOneWay() failed : mirx HAL service not available"),
                    line(ANDROID_LOG_ERROR, "mirxResCtlRequest error:" + std::to_string(handle))));
}

TEST_F(AcquireTest, undeclaredServiceReturnsMinusOneAndSendsNothing) {
    undeclare();
    const LogLine undeclared =
            line(ANDROID_LOG_ERROR, "Mirx is not declared, AServiceManager_isDeclared:0");
    const LogLine error = line(ANDROID_LOG_ERROR, "dov_get_mirx_hal_and_link_to_death error:-1");
    EXPECT_EQ(DovEventAcquire(1, "", "", 0, {}), -1);
    EXPECT_THAT(log.take(), ElementsAre(line(ANDROID_LOG_INFO,
                                             "DovEventAcquire, cmdid:1, pkg:none, identity:none"),
                                        undeclared, error));
    EXPECT_EQ(DovEventAcquireOneWay(1, "", "", 0, kResources), -1);
    EXPECT_THAT(log.take(),
                ElementsAre(line(ANDROID_LOG_INFO,
                                 "DovEventAcquireOneWay, cmdid:1, pkg:none, identity:none"),
                            undeclared, error));
    DovRelease(1);
    EXPECT_THAT(log.take(),
                ElementsAre(line(ANDROID_LOG_INFO, "DovRelease, handle:1"), undeclared, error));
    EXPECT_THAT(service->take(), IsEmpty());
}

TEST_F(AcquireTest, randomHandlesArePositiveAndDiffer) {
    std::set<int32_t> handles;
    for (int i = 0; i < 1000; ++i) {
        const int32_t handle = dovGetRandomHandle();
        ASSERT_GE(handle, 0);
        handles.insert(handle);
    }
    EXPECT_GT(handles.size(), 990u);
    EXPECT_GT(*handles.rbegin(), 0x40000000) << "the upper bits are never set";
}

TEST_F(AcquireTest, requestIsSentWithoutARandomDevice) {
    ASSERT_EQ(DovEventAcquire(1, "p", "i", 0, {}), 1);
    log.take();
    service->take();
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit few = {.rlim_cur = 256, .rlim_max = limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<int> filling;
    for (int fd = open("/dev/null", O_RDONLY); fd >= 0; fd = open("/dev/null", O_RDONLY)) {
        filling.push_back(fd);
    }
    const int32_t number = dovGetRandomHandle();
    const int32_t handle = DovEventAcquireOneWay(1, "p", "i", 0, {});
    for (const int fd : filling) close(fd);
    setrlimit(RLIMIT_NOFILE, &limit);

    const LogLine failed = line(ANDROID_LOG_ERROR, "dovClient open /dev/urandom failed: fd(-1) \n");
    EXPECT_EQ(number, -1);
    EXPECT_EQ(handle, -1);
    EXPECT_THAT(log.take(), ElementsAre(failed,
                                        line(ANDROID_LOG_INFO,
                                             "DovEventAcquireOneWay, cmdid:1, pkg:p, identity:i"),
                                        failed));
    EXPECT_EQ(service->awaitCall().parcel.handle, -1);
}
