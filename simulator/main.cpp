// mirx-simulator: serves the resource-control interface for development, on a host, in a guest or
// on a device.
#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>

#include "simulator/mirx_service.h"

namespace {

constexpr char kUsage[] =
        "usage: mirx-simulator\n"
        "Serves vendor.tavro.hardware.mirx.IMirx/default until it is interrupted and prints every "
        "request that it\n"
        "receives. Without a binder driver it serves over a socket in the folder that "
        "DOV_SERVICE_DIR names.\n";

// What the transport says about a missing driver and about clients that leave early is no error of
// the service.
constexpr std::array<std::string_view, 3> kChatter = {"ProcessState", "RpcServer", "RpcSession"};

void logToStderr(const __android_log_message* message) {
    const std::string_view tag = message->tag != nullptr ? message->tag : "";
    if (message->priority < ANDROID_LOG_ERROR) return;
    if (std::find(kChatter.begin(), kChatter.end(), tag) != kChatter.end()) return;
    std::cerr << tag << ": " << message->message << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        const bool help = std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0;
        (help ? std::cout : std::cerr) << kUsage;
        return help ? 0 : 2;
    }
    __android_log_set_logger(logToStderr);

    // Before the first thread, so that every thread inherits it and the signals are left for
    // sigwait.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    ABinderProcess_setThreadPoolMaxThreadCount(8);
    ABinderProcess_startThreadPool();
    simulator::Journal journal(std::cout);
    const auto service = ndk::SharedRefBase::make<simulator::MirxService>(journal);
    const std::string instance = std::string(simulator::MirxService::descriptor) + "/default";
    const binder_status_t status =
            AServiceManager_addService(service->asBinder().get(), instance.c_str());
    if (status != STATUS_OK) {
        std::cerr << "mirx-simulator: cannot register " << instance
                  << (status == STATUS_PERMISSION_DENIED ? ": not declared in a VINTF manifest"
                                                         : "")
                  << std::endl;
        return 1;
    }
    journal.line("serving  " + instance);
    int signal = 0;
    sigwait(&endSignals, &signal);
    journal.line("stopped");
    // Binder threads may still be in the service; leave without taking it apart under them.
    std::_Exit(0);
}
