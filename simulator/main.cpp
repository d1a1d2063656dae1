// mirx-simulator: serves the resource-control interface for development, on a host, in a guest or
// on a device.
#include <algorithm>
#include <array>
#include <csignal>
#include <iostream>
#include <string_view>

#include <android/binder_process.h>
#include <android/log.h>

#include "simulator/simulator.h"

namespace {

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
    simulator::Simulator simulator(std::cout, std::cerr);
    if (const auto code = simulator.start({argv + 1, argv + argc})) return *code;
    int signal = 0;
    sigwait(&endSignals, &signal);
    simulator.stop();
    // Binder threads may still be in the service; leave without taking it apart under them.
    std::_Exit(0);
}
