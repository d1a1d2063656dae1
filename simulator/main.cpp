// mirx-simulator: the resource-control service for development, on a host, in a guest or on a
// device.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <sstream>

#include <android/binder_process.h>
#include <android/log.h>

#include "simulator/simulator.h"

namespace {

// A stream buffer that writes each flushed line to the log.
class LogLines : public std::stringbuf {
    int sync() override {
        std::string line = str();
        str("");
        if (!line.empty() && line.back() == '\n') line.pop_back();
        __android_log_write(ANDROID_LOG_INFO, "mirx-simulator", line.c_str());
        return 0;
    }
};

// Whether the standard output is /dev/null, as for services that init starts.
bool outputIsDiscarded() {
    struct stat output = {};
    struct stat null = {};
    return fstat(STDOUT_FILENO, &output) == 0 && stat("/dev/null", &null) == 0 &&
           S_ISCHR(output.st_mode) && output.st_rdev == null.st_rdev;
}

}  // namespace

int main(int argc, char** argv) {
    // Done before the first thread starts: every thread inherits the mask, so only sigwait gets the
    // signals.
    sigset_t endSignals;
    sigemptyset(&endSignals);
    sigaddset(&endSignals, SIGINT);
    sigaddset(&endSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &endSignals, nullptr);

    ABinderProcess_setThreadPoolMaxThreadCount(8);
    ABinderProcess_startThreadPool();
    [[clang::no_destroy]] static LogLines lines;
    if (outputIsDiscarded()) {
        std::cout.rdbuf(&lines);
        std::cerr.rdbuf(&lines);
    }
    simulator::Simulator simulator(std::cout, std::cerr, [] { kill(getpid(), SIGTERM); });
    if (const auto code = simulator.start({argv + 1, argv + argc})) return *code;
    int signal = 0;
    sigwait(&endSignals, &signal);
    simulator.stop();
    // Binder threads may still run in the service, so nothing is destroyed.
    std::_Exit(0);
}
