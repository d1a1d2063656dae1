// By which way a program reaches services: what its tools say about it.
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

// The way of this program. Whoever links another way into a program defines this function for it;
// the definition that is there otherwise is weak and says: the driver.
Transport transport();

}  // namespace dovcommon
