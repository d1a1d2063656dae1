// The service manager of a test process, and the fixture of every test that calls the service.
#include "tests/support/test_services.h"

#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <latch>
#include <stdexcept>
#include <thread>

#include <android/binder_manager.h>
#include <dov/dov.h>
#include <dov/halclient.h>

using android::sp;
using android::String16;

bool TestServices::isDeclared(const String16& name) {
    ++declarationChecks;
    return SocketServiceManager::isDeclared(name);
}

sp<android::IBinder> TestServices::checkService(const String16& name) const {
    return localObject != nullptr ? localObject : SocketServiceManager::checkService(name);
}

sp<android::IBinder> TestServices::waitForService(const String16& name) {
    ++waits;
    return localObject != nullptr ? localObject : SocketServiceManager::waitForService(name);
}

namespace {

// Takes the folder away after the last test.
struct FolderRemoval : public testing::Environment {
    explicit FolderRemoval(std::string folder) : folder(std::move(folder)) {}
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    const std::string folder;
};

struct Installed {
    Installed() {
        std::string pattern = std::filesystem::temp_directory_path() / "dov-test-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for services");
        folder = pattern;
        testing::AddGlobalTestEnvironment(new FolderRemoval(folder));
        setenv("DOV_SERVICE_DIR", folder.c_str(), 1);  // for child processes
        manager = sp<TestServices>::make(folder);
        android::setDefaultServiceManager(manager);
    }
    std::string folder;
    sp<TestServices> manager;
};

Installed& installed() {
    static Installed installed;
    return installed;
}

std::string fragment() {
    return installed().folder + "/mirx.xml";
}

}  // namespace

TestServices& BinderTest::services() {
    return *installed().manager;
}
const std::string& BinderTest::folder() {
    return installed().folder;
}

void BinderTest::declare() {
    std::filesystem::copy_file(MIRX_FRAGMENT, fragment(),
                               std::filesystem::copy_options::overwrite_existing);
}

void BinderTest::undeclare() {
    std::filesystem::remove(fragment());
}

void BinderTest::serve(const ndk::SpAIBinder& object) {
    ASSERT_EQ(AServiceManager_addService(object.get(), kServiceName), STATUS_OK);
}

void BinderTest::serve() {
    serve(service->asBinder());
}

BinderTest::BinderTest() {
    declare();
    serve();
    services().declarationChecks = 0;
    services().waits = 0;
}

BinderTest::~BinderTest() {
    // Leaves both bindings empty for the next test: a call that fails drops its proxy. The proxies
    // go before the service does, so that no notice of its death comes late.
    services().localObject = nullptr;
    service->whenCalled(nullptr);
    service->failing = true;
    if (services().checkService(String16(kServiceName)) == nullptr) {
        declare();
        serve();
    }
    dovInit();
    mirxHalclient::mirx_init();
    services().removeService(String16(kServiceName));
}

// Notices are delivered one after the other, in the order in which the recipients were linked.
struct BinderTest::HeldBackDeath::Recipient : public android::IBinder::DeathRecipient {
    void binderDied(const android::wp<android::IBinder>&) override { letGo.wait(); }
    std::latch letGo{1};
};

BinderTest::HeldBackDeath::HeldBackDeath()
    : mBinder(services().checkService(String16(kServiceName))), mRecipient(sp<Recipient>::make()) {
    EXPECT_EQ(mBinder->linkToDeath(mRecipient), android::OK);
}

BinderTest::HeldBackDeath::~HeldBackDeath() {
    mRecipient->letGo.count_down();
}

bool BinderTest::eventually(const std::function<bool()>& condition, std::chrono::seconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void BinderTest::endService(int notices) {
    services().removeService(String16(kServiceName));
    std::vector<LogLine> lines;
    EXPECT_TRUE(eventually([&] {
        for (LogLine& line : log.take()) lines.push_back(std::move(line));
        return std::count_if(lines.begin(), lines.end(), [](const LogLine& line) {
                   return line.text == "Mirx HAL Service died";
               }) >= notices;
    }));
}
