// A registered service as other processes see it: a file in the services' folder that its process
// keeps locked.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include <android-base/unique_fd.h>

namespace hostbinder {

// What a registration file says, and which file it was.
struct Registration {
    std::string socket;  // path of the socket that the service answers on
    pid_t pid = 0;
    bool live = false;  // its process still serves it
    dev_t device = 0;  // with the inode: tells one registration from the next under the same name
    ino_t inode = 0;
};

// The path of the registration file of `service` in `folder`.
std::string registrationPath(const std::string& folder, const std::string& service);

// Publishes `socket` as the place of a service, in one step and in place of an earlier registration
// at `path`.
//
// Returns the descriptor that keeps the registration valid: it ends when the descriptor is closed,
// so also when the process is killed. An invalid descriptor means failure; errno says why.
android::base::unique_fd publish(const std::string& path, const std::string& socket);

// Reads the registration at `path`. Returns nothing when there is none or its process no longer
// lives. Never blocks.
std::optional<Registration> readRegistration(const std::string& path);

}  // namespace hostbinder
