// The fixture for tests that call the service.
#include "tests/support/test_services.h"

#include <filesystem>
#include <latch>

#include <android/binder_manager.h>
#include <binder/IServiceManager.h>
#include <dov/dov.h>
#include <dov/halclient.h>

using android::sp;
using android::String16;

void BinderTest::declare() {
    std::filesystem::copy_file(MIRX_FRAGMENT, folder() + "/mirx.xml",
                               std::filesystem::copy_options::overwrite_existing);
}

void BinderTest::undeclare() {
    std::filesystem::remove(folder() + "/mirx.xml");
}

std::unique_ptr<ChildProcess> BinderTest::startSimulator() {
    auto simulator = std::make_unique<ChildProcess>(MIRX_SIMULATOR);
    simulator->readUntil("serving");
    return simulator;
}

BinderTest::BinderTest() {
    declare();
    serve();
    services().declarationChecks = 0;
    services().waits = 0;
}

BinderTest::~BinderTest() {
    // Empties both bindings for the next test: a failed call drops its proxy. The proxies must be
    // dropped before the service ends, or a death notice could arrive in the next test.
    services().localObject = nullptr;
    service->whenCalled(nullptr);
    service->failing = true;
    // The service manager may not know yet that the service is dead.
    const ndk::SpAIBinder known(AServiceManager_checkService(kServiceName));
    if (known.get() == nullptr || AIBinder_ping(known.get()) != STATUS_OK) {
        declare();
        serve();
    }
    dovInit();
    mirxHalclient::mirx_init();
    stopServing();
}

// Blocks later death notices: they are delivered one at a time, in the order of the links.
struct BinderTest::HeldBackDeath::Recipient : public android::IBinder::DeathRecipient {
    void binderDied(const android::wp<android::IBinder>&) override { letGo.wait(); }
    std::latch letGo{1};
};

BinderTest::HeldBackDeath::HeldBackDeath()
    : mBinder(android::defaultServiceManager()->checkService(String16(kServiceName))),
      mRecipient(sp<Recipient>::make()) {
    EXPECT_EQ(mBinder->linkToDeath(mRecipient), android::OK);
}

BinderTest::HeldBackDeath::~HeldBackDeath() {
    mRecipient->letGo.count_down();
}

void BinderTest::endService(int notices) {
    stopServing();
    EXPECT_TRUE(eventually([&] {
        for (const LogLine& line : log.take()) notices -= line.text == "Mirx HAL Service died";
        return notices <= 0;
    }));
}
