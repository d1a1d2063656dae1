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
    static SocketServiceManager& manager() {
        return static_cast<SocketServiceManager&>(*android::defaultServiceManager());
    }
    static void writeFragment(const std::string& text) {
        std::ofstream(folder() + "/test.xml") << text;
    }
    ~ServicesTest() override { std::filesystem::remove(folder() + "/test.xml"); }
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
    const std::string begin = "<manifest><hal format=\"aidl\">", end = "</hal></manifest>";
    const std::string xAndY = begin + "<name>a.b</name><fqname>I/x</fqname><fqname>I/y</fqname>";
    const std::vector<std::pair<std::string, bool>> fragments = {
            {xAndY + end, true},
            {begin +
                     "<name>a.b</name><interface><name>I</name><instance>z</instance>"
                     "<instance>y</instance></interface>" +
                     end,
             true},
            {begin + "<name>a.b</name><fqname>I/x</fqname><fqname>I/yy</fqname>" + end, false},
            {begin + "<fqname>I/y</fqname>" + end, false},
            {"<manifest><hal format=\"hidl\"><name>a.b</name><fqname>I/y</fqname>" + end, false},
            {"<manifest><hal><name>a.b</name><fqname>I/y</fqname>" + end, false},
            {xAndY, false},
            {"<other/>", false},
            {"", false},
    };
    for (const auto& [fragment, declared] : fragments) {
        writeFragment(fragment);
        EXPECT_EQ(AServiceManager_isDeclared("a.b.I/y"), declared) << fragment;
    }
    writeFragment(xAndY + end);
    const auto instances = manager().getDeclaredInstances(String16("a.b.I"));
    EXPECT_EQ(std::vector(instances.begin(), instances.end()),
              (std::vector{String16("x"), String16("y")}));
}

TEST_F(ServicesTest, undeclaredServiceIsRefused) {
    EXPECT_EQ(AServiceManager_addService(service->asBinder().get(), "a.b.IFoo/default"),
              STATUS_PERMISSION_DENIED);
    EXPECT_EQ(manager().listServices(0).size(), 1u);
    EXPECT_EQ(hostbinder::declareInstance(folder(), "a.b.IFoo/default"), "");
    EXPECT_EQ(AServiceManager_addService(service->asBinder().get(), "a.b.IFoo/default"), STATUS_OK);
    manager().removeService(String16("a.b.IFoo/default"));
    std::filesystem::remove(folder() + "/a.b-service.xml");
}

TEST_F(ServicesTest, secondRegistrationReplacesTheFirst) {
    const auto first = manager().checkService(String16(kServiceName));
    EXPECT_EQ(manager().checkService(String16(kServiceName)), first) << "one proxy for all";
    const auto successor = ndk::SharedRefBase::make<RecordingService>();
    serve(successor->asBinder());
    EXPECT_NE(manager().checkService(String16(kServiceName)), first);
    const ndk::SpAIBinder now(AServiceManager_checkService(kServiceName));
    EXPECT_TRUE(aidl::vendor::tavro::hardware::mirx::IMirx::fromBinder(now)->init().isOk());
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
    manager().removeService(String16(kServiceName));
    timespec used = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    const auto before = std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(manager().getService(String16(kServiceName)), nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    const auto after = std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
    EXPECT_LT(after - before, std::chrono::milliseconds(500)) << "it polled";
}
