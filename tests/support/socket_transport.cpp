// The socket transport of the tests: each test process makes and removes its own services folder.
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include <android/binder_manager.h>
#include <gtest/gtest.h>

#include "host/services/socket_service_manager.h"
#include "tests/support/transport.h"

namespace {

// Removes the folder after the last test.
struct FolderRemoval : public testing::Environment {
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove_all(Transport::chosen().folder(), ignored);
    }
};

class SocketTransport : public Transport {
  public:
    SocketTransport() : Transport(false) {
        if (mkdtemp(mFolder.data()) == nullptr) throw std::runtime_error("no folder for services");
        testing::AddGlobalTestEnvironment(new FolderRemoval);
        setenv("DOV_SERVICE_DIR", mFolder.c_str(), 1);  // for child processes
        std::string error;
        mManager = hostbinder::SocketServiceManager::make(mFolder, &error);
        if (mManager == nullptr) throw std::runtime_error(error);
        android::setDefaultServiceManager(mManager);
    }

    const std::string& folder() const override { return mFolder; }

    // Even an object of this process is reached through a socket.
    void serve(const ndk::SpAIBinder& object) override {
        ASSERT_EQ(AServiceManager_addService(object.get(), kServiceName), STATUS_OK);
    }

    void stopServing() override { mManager->removeService(android::String16(kServiceName)); }

  private:
    std::string mFolder = std::filesystem::temp_directory_path() / "dov-test-XXXXXX";
    android::sp<hostbinder::SocketServiceManager> mManager;
};

}  // namespace

std::unique_ptr<Transport> makeSocketTransport() {
    return std::make_unique<SocketTransport>();
}
