// The program dovctl: Dovctl on the process's streams and signals.
#include <unistd.h>

#include <csignal>
#include <iostream>

#include <android/binder_process.h>
#include <android/log.h>

#include "common/transport.h"
#include "dovctl/dovctl.h"
#include "dovctl/signals.h"
#include "dovctl/terminal.h"

int main(int argc, char** argv) {
    // Drop what the platform's libraries log before a command runs: it says nothing to the user.
    __android_log_set_logger([](const __android_log_message*) {});
    // Without SIGPIPE a hold is released even if the reader of the output has ended.
    std::signal(SIGPIPE, SIG_IGN);
    // Death notices and callbacks arrive on binder threads.
    ABinderProcess_startThreadPool();
    dovctl::Dovctl dovctl({std::cout, isatty(STDOUT_FILENO) == 1},
                          {std::cerr, isatty(STDERR_FILENO) == 1}, dovctl::signals(),
                          dovcommon::transport(), dovctl::openTerminal);
    return dovctl.run({argv + 1, argv + argc});
}
