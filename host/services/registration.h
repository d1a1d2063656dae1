// Registration files: the service's process keeps its file in the services' folder locked.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include <android-base/unique_fd.h>

namespace hostbinder {

// The content of a registration file.
struct Registration {
    std::string socket;  // path of the socket that the service answers on; never used again
    pid_t pid = 0;
    bool live = false;  // its process still serves it
};

// The path of the registration file of `service` in `folder`.
std::string registrationPath(const std::string& folder, const std::string& service);

// Writes a registration with `socket` to `path`. Atomically replaces an earlier registration.
//
// Returns a descriptor. The registration ends when the descriptor is closed, also when the process
// is killed. An invalid descriptor means failure; errno says why.
android::base::unique_fd publish(const std::string& path, const std::string& socket);

// Reads the registration at `path`. Returns nothing when there is none or its process no longer
// lives. Never blocks.
std::optional<Registration> readRegistration(const std::string& path);

}  // namespace hostbinder
