// Linked into a program, makes it find services over sockets instead of through the driver.
//
// DOV_SERVICE_DIR names the folder of the services. When it is not set, a machine with a binder
// driver uses the driver, and any other the folder tavro-services in XDG_RUNTIME_DIR (or
// tavro-services-<uid> in /tmp).
#include <unistd.h>

#include <cstdlib>
#include <string>

#include <android/log.h>

#include "common/transport.h"
#include "host/services/socket_service_manager.h"

namespace {

// The service manager of a program whose folder cannot be used: it has no services, and says why
// whenever it is asked about one.
class NoServices : public hostbinder::SocketServiceManager {
  public:
    // Nothing can be in a device, so nothing is declared and nothing runs.
    explicit NoServices(std::string problem)
        : SocketServiceManager("/dev/null"), mProblem(std::move(problem)) {}

    bool isDeclared(const android::String16&) override {
        __android_log_print(ANDROID_LOG_ERROR, "hostbinder", "%s", mProblem.c_str());
        return false;
    }

    android::status_t addService(const android::String16& name,
                                 const android::sp<android::IBinder>&, bool, int) override {
        isDeclared(name);
        return android::NO_INIT;
    }

  private:
    const std::string mProblem;
};

std::string serviceFolder() {
    if (const char* folder = std::getenv("DOV_SERVICE_DIR")) return folder;
    if (access("/dev/binder", F_OK) == 0) return "";
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"))
        return std::string(runtime) + "/tavro-services";
    return "/tmp/tavro-services-" + std::to_string(geteuid());
}

dovcommon::Transport optIn() {
    const std::string folder = serviceFolder();
    if (folder.empty()) return dovcommon::driverTransport();
    dovcommon::Transport sockets{.sockets = true, .place = folder, .problem = {}};
    android::sp<android::IServiceManager> services =
            hostbinder::SocketServiceManager::make(folder, &sockets.problem);
    if (services == nullptr) services = android::sp<NoServices>::make(sockets.problem);
    android::setDefaultServiceManager(services);
    return sockets;
}

// Runs before main: the service manager must be in place before the first look-up.
const dovcommon::Transport gTransport = optIn();

}  // namespace

dovcommon::Transport dovcommon::transport() {
    return gTransport;
}
