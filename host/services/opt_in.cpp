// A program that links this finds services over sockets instead of through the driver, and its
// stderr gets no expected messages of libbinder.
//
// DOV_SERVICE_DIR names the folder of the services. When it is not set or empty, a machine with a
// binder driver uses the driver, and any other machine the folder tavro-services in XDG_RUNTIME_DIR
// (or tavro-services-<uid> in /tmp).
//
// ANDROID_LOG_TAGS chooses the log lines that go to stderr, as it does for logcat. The default is
// kQuiet.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <android/log.h>
#include <log/logprint.h>

#include "common/transport.h"
#include "host/services/socket_service_manager.h"
#include "host/services/vintf_manifest.h"

namespace {

// Warnings and errors, without the parts of libbinder that report a missing driver and the end of
// services and clients as errors.
constexpr char kQuiet[] =
        "BpBinder:F FdTrigger:F IPCThreadState:F ProcessState:F RpcServer:F RpcSession:F "
        "RpcState:F ServiceManagerCppClient:F libbinder_ndk:F *:W";

AndroidLogFormat* chooseLines() {
    AndroidLogFormat* lines = android_log_format_new();
    const char* tags = std::getenv("ANDROID_LOG_TAGS");
    if (tags != nullptr && android_log_addFilterString(lines, tags) != 0) {
        std::fprintf(stderr, "ANDROID_LOG_TAGS: cannot be read: %s\n", tags);
        tags = nullptr;
    }
    if (tags == nullptr) android_log_addFilterString(lines, kQuiet);
    return lines;
}

void log(const __android_log_message* message) {
    static AndroidLogFormat* const lines = chooseLines();
    const auto priority = static_cast<android_LogPriority>(message->priority);
    if (android_log_shouldPrintLine(lines, message->tag, priority) != 0)
        __android_log_stderr_logger(message);
}

// The service manager of a program whose folder cannot be used: it has no services, and each query
// logs the reason.
class NoServices : public hostbinder::SocketServiceManager {
  public:
    // /dev/null can contain no files, so nothing is declared and nothing runs.
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

std::string fromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

// Empty for the driver.
std::string serviceFolder() {
    if (std::string folder = fromEnvironment("DOV_SERVICE_DIR"); !folder.empty()) return folder;
    if (access("/dev/binder", F_OK) == 0) return "";
    if (const std::string runtime = fromEnvironment("XDG_RUNTIME_DIR"); !runtime.empty())
        return runtime + "/tavro-services";
    return "/tmp/tavro-services-" + std::to_string(geteuid());
}

dovcommon::Transport optIn() {
    __android_log_set_logger(log);
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

std::string dovcommon::declareService(const std::string& instance) {
    if (!gTransport.sockets) return "";  // only the device's manifests can declare it
    if (!gTransport.problem.empty()) return gTransport.problem;
    return hostbinder::declareInstance(gTransport.place, instance);
}
