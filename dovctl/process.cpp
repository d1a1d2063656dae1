// The service's process, as the service manager and the kernel describe it.
#include "dovctl/process.h"

#include <fstream>

#include <binder/IServiceManager.h>
#include <utils/String8.h>

#include "common/service.h"
#include "dovctl/within.h"

namespace dovctl {
namespace {

pid_t registeredPid() {
    for (const auto& service : android::defaultServiceManager()->getServiceDebugInfo()) {
        if (service.name == dovcommon::kServiceName) return service.pid;
    }
    return 0;
}

}  // namespace

Process serviceProcess(std::chrono::milliseconds patience) {
    Process process{.pid = within(patience, registeredPid).value_or(0)};
    if (process.pid == 0) return process;
    const std::string folder = "/proc/" + std::to_string(process.pid);
    // Not comm: the binder library renames the main thread.
    std::ifstream commandLine(folder + "/cmdline");
    std::getline(commandLine, process.name, '\0');
    process.name.erase(0, process.name.rfind('/') + 1);
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);) {
        // "State:\tT (stopped)"
        if (!line.starts_with("State:")) continue;
        const size_t from = line.find('(');
        const size_t to = line.find(')');
        if (to == std::string::npos || from > to) continue;
        process.state = line.substr(from + 1, to - from - 1);
        process.stopped = line.find_first_of("Tt", sizeof("State:")) < from;
    }
    return process;
}

std::string textOf(const Process& process) {
    std::string text = "process " + std::to_string(process.pid);
    if (!process.name.empty()) text += " (" + process.name + ")";
    return process.state.empty() ? text : text + ", " + process.state;
}

}  // namespace dovctl
