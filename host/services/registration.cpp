// Registration files: the service's process keeps its file in the services' folder locked.
#include "host/services/registration.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <sstream>

#include <android-base/file.h>

namespace hostbinder {
namespace {

struct flock wholeFile() {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

}  // namespace

std::string registrationPath(const std::string& folder, const std::string& service) {
    std::string name = service;
    for (char& c : name) {
        if (c == '/') c = '@';
    }
    return folder + "/" + name;
}

android::base::unique_fd publish(const std::string& path, const std::string& socket) {
    const std::string temporary = socket + ".new";
    android::base::unique_fd fd(
            open(temporary.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    // The lock belongs to the open file, not to the process, so the same process can query it too.
    struct flock lock = wholeFile();
    const std::string content = std::to_string(getpid()) + "\n" + socket + "\n";
    if (!fd.ok() || fcntl(fd.get(), F_OFD_SETLK, &lock) != 0 ||
        !android::base::WriteStringToFd(content, fd) ||
        rename(temporary.c_str(), path.c_str()) != 0) {
        const int error = errno;
        unlink(temporary.c_str());
        errno = error;
        return {};
    }
    return fd;
}

std::optional<Registration> readRegistration(const std::string& path) {
    const android::base::unique_fd fd(open(path.c_str(), O_RDWR | O_CLOEXEC));
    struct flock lock = wholeFile();
    if (!fd.ok() || fcntl(fd.get(), F_OFD_GETLK, &lock) != 0) return {};
    std::string content;
    Registration registration{.live = lock.l_type != F_UNLCK};
    if (!android::base::ReadFdToString(fd, &content)) return {};
    std::istringstream lines(content);
    lines >> registration.pid >> std::ws;
    std::getline(lines, registration.socket);
    if (!lines || registration.pid <= 0) return {};
    return registration;
}

}  // namespace hostbinder
