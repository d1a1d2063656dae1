// Cuts the connection between a service and its client after a given number of bytes.
#include "tests/support/cut_connection.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <android-base/file.h>

#include "host/services/registration.h"

using android::base::unique_fd;

namespace {

// Opens a socket and calls `use` (bind or connect) on it with `path`.
unique_fd openSocket(const std::string& path, int (*use)(int, const sockaddr*, socklen_t)) {
    sockaddr_un address = {.sun_family = AF_UNIX};
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    unique_fd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd.ok() || use(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        return {};
    }
    return fd;
}

std::string socketOf(const std::string& registration) {
    const auto found = hostbinder::readRegistration(registration);
    if (!found) throw std::runtime_error("no service is registered at " + registration);
    return found->socket;
}

}  // namespace

CutConnection::CutConnection(const std::string& registration, size_t bytes,
                             std::function<void()> onCut)
    : mService(socketOf(registration)),
      mOwn(registration + ".cut"),
      mBytes(bytes),
      mOnCut(std::move(onCut)) {
    unlink(mOwn.c_str());
    mListening = openSocket(mOwn, bind);
    if (!mListening.ok() || listen(mListening.get(), 20) != 0) {
        throw std::runtime_error("no socket at " + mOwn);
    }
    mRegistration = hostbinder::publish(registration, mOwn);
    mStop.reset(eventfd(0, EFD_CLOEXEC));
    mThread = std::thread([this] { run(); });
}

CutConnection::~CutConnection() {
    const uint64_t one = 1;
    android::base::WriteFully(mStop, &one, sizeof(one));
    mThread.join();
}

void CutConnection::run() {
    bool going = mBytes > 0;
    while (going) {
        std::vector<pollfd> fds = {{.fd = mStop.get(), .events = POLLIN},
                                   {.fd = mListening.get(), .events = POLLIN}};
        for (const Pair& pair : mPairs) {
            fds.push_back({.fd = pair.client.get(), .events = POLLIN});
            fds.push_back({.fd = pair.service.get(), .events = POLLIN});
        }
        poll(fds.data(), fds.size(), -1);
        if (fds[0].revents != 0) break;
        std::vector<Pair> pairs = std::exchange(mPairs, {});
        for (size_t i = 0; going && i < pairs.size(); ++i) {
            const int client = pairs[i].client.get(), service = pairs[i].service.get();
            const bool open = (fds[2 + 2 * i].revents == 0 || pass(client, service)) &&
                              (fds[3 + 2 * i].revents == 0 || pass(service, client));
            if (open) mPairs.push_back(std::move(pairs[i]));
            going = mPassed < mBytes;
        }
        if (going && fds[1].revents != 0) accept();
    }
    cut();
    if (!going) mOnCut();
}

void CutConnection::accept() {
    unique_fd client(accept4(mListening.get(), nullptr, nullptr, SOCK_CLOEXEC));
    unique_fd service = openSocket(mService, connect);
    if (client.ok() && service.ok()) mPairs.push_back({std::move(client), std::move(service)});
}

// Forwards the available bytes, up to the limit. Returns false if the sender has closed.
bool CutConnection::pass(int from, int to) {
    std::array<char, 4096> buffer;
    const size_t most = std::min(buffer.size(), mBytes - mPassed);
    const ssize_t length = recv(from, buffer.data(), most, 0);
    if (length <= 0) return false;
    mPassed += static_cast<size_t>(length);
    return send(to, buffer.data(), static_cast<size_t>(length), MSG_NOSIGNAL) == length;
}

void CutConnection::cut() {
    mRegistration.reset();
    mListening.reset();
    mPairs.clear();
    unlink(mOwn.c_str());
}
