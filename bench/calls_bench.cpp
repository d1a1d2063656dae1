// Measures calls through the library and bare calls, with the service in another process.
//
// Reaches the service as every program here does: over the driver, or over sockets in
// DOV_SERVICE_DIR, which must hold the VINTF manifest fragment that declares the service.
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>

#include "bench/operations.h"
#include "common/transport.h"

namespace {

constexpr char kService[] = "vendor.tavro.hardware.mirx.IMirx/default";
constexpr char kServe[] = "--serve";

// The driver is measured in an emulated machine, where a call takes twenty times as long.
constexpr bench::Length kOverSockets = {.rounds = 301, .calls = 20};
constexpr bench::Length kOverTheDriver = {.rounds = 41, .calls = 10};

// Serves in a child process; dies with its parent.
int serve() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    ABinderProcess_setThreadPoolMaxThreadCount(8);
    ABinderProcess_startThreadPool();
    const auto service = ndk::SharedRefBase::make<bench::QuietService>();
    if (AServiceManager_addService(service->asBinder().get(), kService) != STATUS_OK) {
        std::fprintf(stderr, "calls_bench: %s cannot be registered\n", kService);
        return 1;
    }
    while (true) pause();
}

pid_t startService() {
    char self[] = "/proc/self/exe";
    char argument[] = "--serve";
    char* const arguments[] = {self, argument, nullptr};
    pid_t pid = 0;
    return posix_spawn(&pid, self, nullptr, nullptr, arguments, environ) == 0 ? pid : -1;
}

// Returns null if the service's process ends before it serves.
std::shared_ptr<bench::IMirx> awaitService(pid_t process) {
    while (waitpid(process, nullptr, WNOHANG) == 0) {
        const auto hal =
                bench::IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kService)));
        if (hal != nullptr) return hal;
        usleep(10000);
    }
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    // Neither the library nor the transport writes a log line.
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    if (argc == 2 && std::strcmp(argv[1], kServe) == 0) return serve();
    if (!AServiceManager_isDeclared(kService)) {
        std::fprintf(stderr, "calls_bench: %s is not declared\n", kService);
        return 1;
    }
    const pid_t service = startService();
    const auto hal = service < 0 ? nullptr : awaitService(service);
    if (hal == nullptr) {
        std::fprintf(stderr, "calls_bench: the service did not start\n");
        return 1;
    }
    ABinderProcess_startThreadPool();
    const int status = bench::run(argc, argv, bench::operations(hal),
                                  dovcommon::transport().sockets ? kOverSockets : kOverTheDriver,
                                  {1, 2, 4, 8}, {.unit = "us", .nanosecondsPerUnit = 1000});
    kill(service, SIGKILL);
    std::fflush(stdout);
    std::_Exit(status);  // binder threads may still be at work
}
