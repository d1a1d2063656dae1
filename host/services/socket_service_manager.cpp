// A service manager without a driver, over UNIX sockets in a folder that only its owner can use.
#include "host/services/socket_service_manager.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include <android/log.h>
#include <binder/RpcSession.h>

#include "host/services/registration.h"
#include "host/services/vintf_manifest.h"

namespace hostbinder {

using android::IBinder;
using android::RpcServer;
using android::RpcSession;
using android::sp;
using android::status_t;
using android::String16;
using android::base::unique_fd;

namespace {

// How many calls of one client a service handles at once, and how many callbacks of one service a
// client handles at once. With 0 callback threads, neither callbacks nor death notices arrive.
constexpr size_t kServiceThreads = 8;
constexpr size_t kCallbackThreads = 4;

std::string utf8(const String16& text) {
    return android::String8(text).c_str();
}

void logError(const std::string& what, const std::string& reason) {
    __android_log_print(ANDROID_LOG_ERROR, "hostbinder", "%s: %s", what.c_str(), reason.c_str());
}

// A socket that only its owner can use, bound to `path`.
unique_fd bindSocket(const std::string& path) {
    sockaddr_un address = {.sun_family = AF_UNIX};
    if (path.size() >= sizeof(address.sun_path)) {
        errno = ENAMETOOLONG;
        return {};
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    unlink(path.c_str());
    if (!fd.ok() || bind(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        chmod(path.c_str(), 0600) != 0) {
        return {};
    }
    return fd;
}

}  // namespace

sp<SocketServiceManager> SocketServiceManager::make(const std::string& folder, std::string* error) {
    struct stat status = {};
    if ((mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) ||
        lstat(folder.c_str(), &status) != 0) {
        *error = folder + ": " + std::strerror(errno);
    } else if (!S_ISDIR(status.st_mode)) {
        *error = folder + ": is not a folder";
    } else if (status.st_uid != geteuid() || (status.st_mode & 077) != 0) {
        *error = folder + ": must belong to you and be closed to others (chmod 700)";
    } else {
        return sp<SocketServiceManager>::make(folder);
    }
    return nullptr;
}

status_t SocketServiceManager::addService(const String16& name, const sp<IBinder>& service,
                                          bool /*allowIsolated*/, int /*dumpsysFlags*/) {
    const std::string instance = utf8(name);
    if (!isDeclared(name)) {
        logError(instance, "no VINTF manifest fragment in " + mFolder + " declares it");
        return android::PERMISSION_DENIED;
    }
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    const std::string path = registrationPath(mFolder, instance);
    Served served;
    served.socket = path + "." + std::to_string(getpid()) + "." + std::to_string(++mSockets);
    unique_fd fd = bindSocket(served.socket);
    if (!fd.ok()) {
        const int error = errno;
        logError(served.socket,
                 error == ENAMETOOLONG
                         ? "is longer than the 107 bytes that a socket's path can "
                           "have; DOV_SERVICE_DIR must name a folder with a shorter path"
                         : std::strerror(error));
        return -error;
    }
    served.server = RpcServer::make();
    served.server->setMaxThreads(kServiceThreads);
    served.server->setRootObject(service);
    // dump() brings a file descriptor.
    served.server->setSupportedFileDescriptorTransportModes(
            {RpcSession::FileDescriptorTransportMode::NONE,
             RpcSession::FileDescriptorTransportMode::UNIX});
    if (const status_t status = served.server->setupRawSocketServer(std::move(fd));
        status != android::OK) {
        logError(served.socket, "cannot be listened on: " + android::statusToString(status));
        return status;
    }
    served.server->start();
    if (const auto earlier = readRegistration(path); earlier && !earlier->live) {
        unlink(earlier->socket.c_str());  // its process was killed and could not
    }
    served.registration = publish(path, served.socket);
    if (!served.registration.ok()) {
        const int error = errno;
        logError(path, std::strerror(error));
        end(served);
        return -error;
    }
    std::swap(mServed[instance], served);
    lock.unlock();
    if (served.server != nullptr) end(served);  // what the name stood for before
    return android::OK;
}

void SocketServiceManager::removeService(const String16& name) {
    std::unique_lock lock(mMutex);
    const android::base::ScopedLockAssertion locked(mMutex);
    auto served = mServed.extract(utf8(name));
    if (served.empty()) return;
    unlink(registrationPath(mFolder, served.key()).c_str());
    lock.unlock();
    end(served.mapped());
}

void SocketServiceManager::end(Served& served) {
    served.registration.reset();
    // Before its thread runs a server cannot be shut down, and after that it would run for ever.
    while (!served.server->shutdown()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    unlink(served.socket.c_str());
}

sp<IBinder> SocketServiceManager::checkService(const String16& name) const {
    const std::string instance = utf8(name);
    const auto registration = readRegistration(registrationPath(mFolder, instance));
    if (!registration || !registration->live) return nullptr;

    std::lock_guard lock(mConnecting);
    if (const auto known = mConnected.find(instance); known != mConnected.end()) {
        const Connected& connected = known->second;
        const sp<IBinder> binder = connected.binder.promote();
        if (binder != nullptr && binder->isBinderAlive() &&
            connected.socket == registration->socket) {
            return binder;
        }
    }
    const sp<RpcSession> session = RpcSession::make();
    session->setMaxIncomingThreads(kCallbackThreads);
    session->setFileDescriptorTransportMode(RpcSession::FileDescriptorTransportMode::UNIX);
    // Fails if the process has died meanwhile; then the service is not running.
    if (session->setupUnixDomainClient(registration->socket.c_str()) != android::OK) return nullptr;
    sp<IBinder> binder = session->getRootObject();
    if (binder != nullptr) {
        mConnected[instance] = {binder, registration->socket};
    }
    return binder;
}

sp<IBinder> SocketServiceManager::waitForService(const String16& name) {
    return waitFor(name, -1);
}

sp<IBinder> SocketServiceManager::getService(const String16& name) const {
    return waitFor(name, 5000);
}

sp<IBinder> SocketServiceManager::waitFor(const String16& name, int milliseconds) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    const unique_fd watch(inotify_init1(IN_CLOEXEC));
    // A registration appears by a rename. The watch starts before the first look-up, so none is
    // missed.
    if (!watch.ok() || inotify_add_watch(watch.get(), mFolder.c_str(), IN_MOVED_TO) < 0) {
        logError(mFolder, std::strerror(errno));
        return nullptr;
    }
    while (true) {
        if (sp<IBinder> binder = checkService(name); binder != nullptr) return binder;
        int left = -1;
        if (milliseconds >= 0) {
            const auto remaining = end - std::chrono::steady_clock::now();
            left = static_cast<int>(
                    std::chrono::duration_cast<std::chrono::milliseconds>(remaining).count());
            if (left <= 0) return nullptr;
        }
        pollfd event = {.fd = watch.get(), .events = POLLIN};
        if (poll(&event, 1, left) > 0) {
            std::array<char, 4096> events;
            if (read(watch.get(), events.data(), events.size()) < 0) return nullptr;
        }
    }
}

bool SocketServiceManager::isDeclared(const String16& name) {
    return declaredInstances(mFolder).count(utf8(name)) != 0;
}

android::Vector<String16> SocketServiceManager::getDeclaredInstances(const String16& interface) {
    const std::string prefix = utf8(interface) + "/";
    android::Vector<String16> instances;
    for (const std::string& instance : declaredInstances(mFolder)) {
        if (instance.starts_with(prefix))
            instances.add(String16(instance.substr(prefix.size()).c_str()));
    }
    return instances;
}

std::vector<android::IServiceManager::ServiceDebugInfo>
SocketServiceManager::getServiceDebugInfo() {
    std::vector<ServiceDebugInfo> services;
    for (const std::string& instance : declaredInstances(mFolder)) {
        if (const auto registration = readRegistration(registrationPath(mFolder, instance));
            registration && registration->live) {
            services.push_back({instance, registration->pid});
        }
    }
    return services;
}

android::Vector<String16> SocketServiceManager::listServices(int /*dumpsysFlags*/) {
    android::Vector<String16> names;
    for (const ServiceDebugInfo& service : getServiceDebugInfo())
        names.add(String16(service.name.c_str()));
    return names;
}

}  // namespace hostbinder
