// What can be told about the service's process without asking it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

namespace dovctl {

struct Process {
    pid_t pid = 0;  // 0: the service manager does not tell
    std::string name;
    std::string state;  // the kernel's words: "sleeping", "stopped"
    bool stopped = false;  // does nothing until it is continued
};

// The process that has registered the service.
Process serviceProcess(std::chrono::milliseconds patience);

// "process 12 (name), stopped".
std::string textOf(const Process& process);

}  // namespace dovctl
