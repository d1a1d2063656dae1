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
    ~ServicesTest() override { std::filesystem::remove(folder() + "/test.xml"); }
};

using PlainServiceTest = BinderTest;

TEST_F(PlainServiceTest, servesUntilItsProcessEnds) {
    stopServing();
    ChildProcess program(PLAIN_SERVICE);
    program.readUntil("serving");
    const ndk::SpAIBinder binder(AServiceManager_checkService(kServiceName));
    EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(std::chrono::seconds(20)), -SIGTERM);
}

TEST_F(ServicesTest, fragmentsDeclareInstancesInBothForms) {
    undeclare();
    const auto hal = [](const std::string& format, const std::string& content) {
        return "<manifest><hal" + format + "><name>a.b</name>" + content + "</hal></manifest>";
    };
    const std::string aidl = " format=\"aidl\"", y = "<fqname>I/y</fqname>";
    const std::string other = "<name>I</name><instance>z</instance><instance>y</instance>";
    const std::string xAndY = hal(aidl, "<fqname>I/x</fqname>" + y);
    const std::vector<std::pair<std::string, bool>> fragments = {
            {hal(aidl, "<interface>" + other + "</interface>"), true},
            {hal(aidl, "<fqname>I/x</fqname><fqname>I/yy</fqname>"), false},
            {"<manifest><hal" + aidl + ">" + y + "</hal></manifest>", false},
            {hal(" format=\"hidl\"", y), false},
            {hal("", y), false},
            {xAndY.substr(0, xAndY.size() - 1), false},
            {"<other/>", false},
            {xAndY, true},
    };
    for (const auto& [fragment, declared] : fragments) {
        std::ofstream(folder() + "/test.xml") << fragment;
        EXPECT_EQ(AServiceManager_isDeclared("a.b.I/y"), declared) << fragment;
    }
    const auto instances = manager().getDeclaredInstances(String16("a.b.I"));
    EXPECT_EQ(std::vector(instances.begin(), instances.end()),
              (std::vector{String16("x"), String16("y")}));
}

TEST_F(ServicesTest, undeclaredServiceIsRefused) {
    const auto add = [&] {
        return AServiceManager_addService(service->asBinder().get(), "a.b.I/c");
    };
    EXPECT_EQ(add(), STATUS_PERMISSION_DENIED);
    EXPECT_EQ(manager().listServices(0).size(), 1u);
    EXPECT_EQ(hostbinder::declareInstance(folder(), "a.b.I/c"), "");
    EXPECT_EQ(add(), STATUS_OK);
    manager().removeService(String16("a.b.I/c"));
    std::filesystem::remove(folder() + "/a.b-service.xml");
}

TEST_F(ServicesTest, removedServiceLeavesNoThreads) {
    stopServing();
    const Holdings before;
    for (int i = 0; i < 20; ++i) serve(), stopServing();
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
}

TEST_F(ServicesTest, tooLongSocketPathIsAnError) {
    const std::string folder = BinderTest::folder() + "/" + std::string(90, 'd');
    std::string error;
    const auto deep = SocketServiceManager::make(folder, &error);
    std::filesystem::copy(MIRX_FRAGMENT, folder);
    const auto binder = AIBinder_toPlatformBinder(service->asBinder().get());
    EXPECT_EQ(deep->addService(String16(kServiceName), binder, false, 0), -ENAMETOOLONG);
    std::filesystem::remove_all(folder);
}

TEST_F(ServicesTest, getServiceTimesOutWithoutPolling) {
    manager().removeService(String16(kServiceName));
    const auto start = std::chrono::steady_clock::now();
    const clock_t before = clock();  // of all threads
    EXPECT_EQ(manager().getService(String16(kServiceName)), nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4900));
    EXPECT_LT(clock() - before, CLOCKS_PER_SEC / 2) << "it polled";
}

TEST_F(ServicesTest, onlyTheOwnersLiveSocketRemains) {
    stopServing();
    for (int i = 0; i < 3; ++i) {
        const auto simulator = startSimulator();
        simulator->signal(SIGKILL);
        simulator->wait();
    }
    const auto simulator = startSimulator();
    int files = 0, sockets = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
        ++files;
        if (!entry.is_socket()) continue;
        ++sockets;
        EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600)) << entry.path();
    }
    EXPECT_EQ(sockets, 1);
    EXPECT_EQ(files, 3) << "fragment, registration and socket";
}
