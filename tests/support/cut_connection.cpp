// Cuts the connection between a service and its client after a given number of bytes.
#include "tests/support/cut_connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <vector>

#include <cutils/sockets.h>

#include "host/services/registration.h"

using android::base::unique_fd;

CutConnection::CutConnection(const std::string& registration, size_t bytes,
                             std::function<void()> onCut)
    : mService(hostbinder::readRegistration(registration).value().socket),
      mOwn(registration + ".cut"),
      mBytes(bytes),
      mOnCut(std::move(onCut)),
      mListening(
              socket_local_server(mOwn.c_str(), ANDROID_SOCKET_NAMESPACE_FILESYSTEM, SOCK_STREAM)) {
    listen(mListening.get(), 20);  // a client opens many connections without waiting
    mRegistration = hostbinder::publish(registration, mOwn);
    Pipe(&mStopped, &mStop);
    mThread = std::thread([this] { run(); });
}

CutConnection::~CutConnection() {
    mStop.reset();
    mThread.join();
}

void CutConnection::run() {
    std::vector<unique_fd> ends;  // in pairs: to a client, and behind it to the service
    while (mPassed < mBytes) {
        std::vector<pollfd> fds;
        for (const unique_fd& end : ends) fds.push_back({.fd = end.get(), .events = POLLIN});
        fds.push_back({.fd = mListening.get(), .events = POLLIN});
        fds.push_back({.fd = mStopped.get()});
        poll(fds.data(), fds.size(), -1);
        if (fds.back().revents != 0) break;
        for (size_t i = 0; i < ends.size(); ++i) {
            if (fds[i].revents == 0 || !ends[i].ok() || pass(fds[i].fd, fds[i ^ 1].fd)) continue;
            ends[i].reset();
            ends[i ^ 1].reset();
        }
        if (fds[ends.size()].revents == 0) continue;
        ends.emplace_back(accept4(mListening.get(), nullptr, nullptr, SOCK_CLOEXEC));
        ends.emplace_back(socket_local_client(mService.c_str(), ANDROID_SOCKET_NAMESPACE_FILESYSTEM,
                                              SOCK_STREAM));
    }
    mRegistration.reset();
    mListening.reset();
    ends.clear();
    unlink(mOwn.c_str());
    if (mPassed >= mBytes) mOnCut();
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
