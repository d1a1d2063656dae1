// The service's process, as the service manager and the kernel describe it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

namespace dovctl {

struct Process {
    pid_t pid = 0;  // 0: the service manager does not say
    std::string name;
    std::string state;  // the kernel's words: "sleeping", "stopped"
    bool stopped = false;  // by a signal, until it is continued
};

// The process that has registered the service.
Process serviceProcess(std::chrono::milliseconds patience);

// "process 12 (name), stopped".
std::string textOf(const Process& process);

}  // namespace dovctl
