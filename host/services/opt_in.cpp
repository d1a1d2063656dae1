// Linked into a program, makes it find services over sockets instead of through the driver.
//
// DOV_SERVICE_DIR names the folder of the services. When it is not set, a machine with a binder
// driver uses the driver, and any other the folder tavro-services in XDG_RUNTIME_DIR (or
// tavro-services-<uid> in /tmp).
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/services/socket_service_manager.h"

namespace {

std::string serviceFolder() {
    if (const char* folder = std::getenv("DOV_SERVICE_DIR")) return folder;
    if (access("/dev/binder", F_OK) == 0) return "";
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"))
        return std::string(runtime) + "/tavro-services";
    return "/tmp/tavro-services-" + std::to_string(geteuid());
}

// Runs before main: the service manager must be in place before the first look-up.
const bool gOptedIn = [] {
    const std::string folder = serviceFolder();
    if (folder.empty()) return false;
    std::string error;
    const auto services = hostbinder::SocketServiceManager::make(folder, &error);
    if (services == nullptr) {
        std::fprintf(stderr, "services: %s\n", error.c_str());
        std::_Exit(3);
    }
    android::setDefaultServiceManager(services);
    return true;
}();

}  // namespace
