// The transport over which a program reaches services.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace dovcommon {

struct Transport {
    bool sockets = false;  // else the kernel's driver
    std::string place;  // the folder of the sockets, or the driver's device
    std::string problem;  // why it cannot be used; empty when it can
};

inline Transport driverTransport() {
    Transport driver{.place = "/dev/binder"};
    if (access(driver.place.c_str(), R_OK | W_OK) != 0) {
        driver.problem = driver.place + ": " + std::strerror(errno);
    }
    return driver;
}

// The transport of this program. The weak default is the kernel driver; a program linked with
// another transport overrides it.
Transport transport();

// Declares "package.IInterface/instance" where this program registers services, as a VINTF manifest
// does on a device; does nothing over the driver. Returns what went wrong, or an empty text. Null in
// a program for devices.
[[gnu::weak]] std::string declareService(const std::string& instance);

}  // namespace dovcommon
