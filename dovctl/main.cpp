// The program dovctl: Dovctl on the process's streams and signals.
#include <csignal>
#include <iostream>

#include <semaphore.h>

#include <android/binder_process.h>
#include <android/log.h>

#include "common/transport.h"
#include "dovctl/dovctl.h"
#include "dovctl/terminal.h"

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM};
sem_t interrupted;

// Only now does Ctrl-C stop ending the program: a call that hangs can be broken off until then, and
// again once the wait is over.
void expectInterrupt() {
    sem_init(&interrupted, 0, 0);
    struct sigaction action {};
    action.sa_handler = [](int) { sem_post(&interrupted); };
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : kSignals) sigaction(signal, &action, nullptr);
}

void waitForInterrupt() {
    while (sem_wait(&interrupted) != 0) {
    }
    for (const int signal : kSignals) std::signal(signal, SIG_DFL);
}

}  // namespace

int main(int argc, char** argv) {
    // What the platform's libraries say before a command runs is of no use to its user.
    __android_log_set_logger([](const __android_log_message*) {});
    // Notice of the service's death arrives on a binder thread.
    ABinderProcess_startThreadPool();
    dovctl::Dovctl dovctl(std::cout, std::cerr, waitForInterrupt, expectInterrupt,
                          dovcommon::transport(), dovctl::openTerminal);
    return dovctl.run({argv + 1, argv + argc});
}
