// The service manager over sockets: declarations, registrations, look-ups and access.
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include <android/binder_libbinder.h>
#include <android/binder_manager.h>

#include "host/services/socket_service_manager.h"
#include "host/services/vintf_manifest.h"
#include "tests/support/holdings.h"
#include "tests/support/test_services.h"

using android::String16;
using hostbinder::SocketServiceManager;

class ServicesTest : public BinderTest {
  protected:
    void SetUp() override {
        if (overDriver()) GTEST_SKIP() << "tests the service manager over sockets";
    }
    static SocketServiceManager& services() {
        return static_cast<SocketServiceManager&>(*android::defaultServiceManager());
    }
    static void writeFragment(const std::string& text) {
        std::ofstream(folder() + "/test.xml") << text;
    }
    ~ServicesTest() override { std::filesystem::remove(folder() + "/test.xml"); }

    static std::string hal(const std::string& content, const std::string& format = "aidl") {
        return "<manifest version=\"1.0\" type=\"device\"><hal format=\"" + format + "\">" +
               content + "</hal></manifest>";
    }
};

using PlainServiceTest = BinderTest;

TEST_F(PlainServiceTest, servesUntilItsProcessEnds) {
    stopServing();
    ChildProcess program(PLAIN_SERVICE);
    program.readUntil("serving");
    const ndk::SpAIBinder binder(AServiceManager_checkService(kServiceName));
    ASSERT_NE(binder.get(), nullptr);
    EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(std::chrono::seconds(20)), -SIGTERM);
}

TEST_F(ServicesTest, fragmentsDeclareInstancesInBothForms) {
    undeclare();
    struct Case {
        std::string fragment;
        bool declared;
    };
    const std::vector<Case> cases = {
            {hal("<name>a.b</name><fqname>IFoo/x</fqname><fqname>IFoo/y</fqname>"), true},
            {hal("<name>a.b</name><interface><name>IFoo</name><instance>z</instance>"
                 "<instance>y</instance></interface>"),
             true},
            {hal("<name>a.b</name><fqname>IFoo/x</fqname>"), false},
            {hal("<name>a.b</name><fqname>IFoo/yy</fqname>"), false},
            {hal("<name>a.b</name><fqname>IFoo/y</fqname>", "hidl"), false},
            {hal("<fqname>IFoo/y</fqname>"), false},
            {"<manifest><hal format=\"aidl\"><name>a.b</name><fqname>IFoo/y</fqname>", false},
            {"<other/>", false},
            {"", false},
            {"not XML at all", false},
    };
    for (const Case& c : cases) {
        writeFragment(c.fragment);
        EXPECT_EQ(AServiceManager_isDeclared("a.b.IFoo/y"), c.declared) << c.fragment;
    }
    writeFragment(cases[0].fragment);
    const auto instances = services().getDeclaredInstances(String16("a.b.IFoo"));
    ASSERT_EQ(instances.size(), 2u);
    EXPECT_EQ(instances[0], String16("x"));
    EXPECT_EQ(instances[1], String16("y"));
}

TEST_F(ServicesTest, undeclaredServiceIsRefused) {
    EXPECT_EQ(AServiceManager_addService(service->asBinder().get(), "a.b.IFoo/default"),
              STATUS_PERMISSION_DENIED);
    EXPECT_EQ(services().listServices(0).size(), 1u);
    EXPECT_EQ(hostbinder::declareInstance(folder(), "a.b.IFoo/default"), "");
    EXPECT_EQ(AServiceManager_addService(service->asBinder().get(), "a.b.IFoo/default"), STATUS_OK);
    services().removeService(String16("a.b.IFoo/default"));
    std::filesystem::remove(folder() + "/a.b-service.xml");
}

TEST_F(ServicesTest, lookUpsReturnTheSameProxy) {
    const auto first = services().checkService(String16(kServiceName));
    EXPECT_EQ(services().checkService(String16(kServiceName)), first);
    serve();
    EXPECT_NE(services().checkService(String16(kServiceName)), first)
            << "the new service has a proxy of its own";
}

TEST_F(ServicesTest, secondRegistrationReplacesTheFirst) {
    const auto successor = ndk::SharedRefBase::make<RecordingService>();
    serve(successor->asBinder());
    using aidl::vendor::tavro::hardware::mirx::IMirx;
    const auto mirx =
            IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kServiceName)));
    ASSERT_NE(mirx, nullptr);
    EXPECT_TRUE(mirx->init().isOk());
    EXPECT_EQ(successor->take().size(), 1u);
    EXPECT_TRUE(service->take().empty());
}

TEST_F(ServicesTest, removedServiceLeavesNoThreads) {
    stopServing();
    const Holdings before;
    for (int i = 0; i < 20; ++i) {
        serve();
        stopServing();
    }
    EXPECT_TRUE(eventually([&] { return Holdings().threads <= before.threads; })) << Holdings();
}

TEST_F(ServicesTest, foldersOpenToOthersAreRefused) {
    const std::string folder = BinderTest::folder() + "/inner";
    std::string error;
    EXPECT_NE(SocketServiceManager::make(folder, &error), nullptr) << error;
    EXPECT_NE(SocketServiceManager::make(folder, &error), nullptr) << "an existing folder is used";
    ASSERT_EQ(chmod(folder.c_str(), 0750), 0);
    EXPECT_EQ(SocketServiceManager::make(folder, &error), nullptr);
    EXPECT_THAT(error, testing::HasSubstr("closed to others"));
    std::filesystem::remove(folder);
    std::filesystem::create_symlink(BinderTest::folder(), folder);
    EXPECT_EQ(SocketServiceManager::make(folder, &error), nullptr) << "a symbolic link is refused";
    std::filesystem::remove(folder);
    EXPECT_EQ(SocketServiceManager::make("/proc/none/such", &error), nullptr);
    EXPECT_THAT(error, testing::HasSubstr("No such file"));
}

TEST_F(ServicesTest, tooLongSocketPathIsAnError) {
    const std::string folder = BinderTest::folder() + "/" + std::string(90, 'd');
    std::string error;
    const auto deep = SocketServiceManager::make(folder, &error);
    ASSERT_NE(deep, nullptr) << error;
    std::filesystem::copy(MIRX_FRAGMENT, folder);
    EXPECT_EQ(deep->addService(String16(kServiceName),
                               AIBinder_toPlatformBinder(service->asBinder().get()), false, 0),
              -ENAMETOOLONG);
    std::filesystem::remove_all(folder);
}

TEST_F(ServicesTest, getServiceTimesOutWithoutPolling) {
    services().removeService(String16(kServiceName));
    timespec before = {};
    timespec after = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(services().getService(String16(kServiceName)), nullptr);
    const auto waited = std::chrono::steady_clock::now() - start;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
    EXPECT_GE(waited, std::chrono::milliseconds(4900));
    EXPECT_LT(waited, std::chrono::milliseconds(8000));
    const int64_t nanoseconds =
            (after.tv_sec - before.tv_sec) * 1'000'000'000 + after.tv_nsec - before.tv_nsec;
    EXPECT_LT(nanoseconds, 20'000'000) << "it used the processor while it waited";
}
