// Wakes a waiting command when a signal asks the program to end.
#include "dovctl/signals.h"

#include <semaphore.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace dovctl {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Globals, because signal handlers use them.
sem_t woken;
std::atomic<bool> interrupted = false;

void onSignal(int) {
    const int error = errno;
    interrupted = true;
    sem_post(&woken);
    alarm(1);
    errno = error;
}

// The program has not ended within a second after the signal: a call of the service blocks it.
void onAlarm(int) {
    constexpr char kText[] =
            "dovctl: waiting for the service's answer; interrupt again to end at once\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kText, sizeof(kText) - 1);
}

class Signals : public Waiter {
  public:
    Signals() { sem_init(&woken, 0, 0); }

    void expectInterrupt() override {
        if (mExpecting) return;
        mExpecting = true;
        std::signal(SIGALRM, onAlarm);
        struct sigaction action {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        for (const int signal : kSignals) {
            struct sigaction before {};
            sigaction(signal, &action, &before);
            // nohup ignores SIGHUP, so that the program outlives its terminal.
            if (signal == SIGHUP && before.sa_handler == SIG_IGN)
                sigaction(signal, &before, nullptr);
        }
    }

    bool wait(std::chrono::milliseconds time) override {
        const auto end = (std::chrono::system_clock::now() + time).time_since_epoch();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(end);
        const std::chrono::nanoseconds rest = end - seconds;
        const timespec until = {.tv_sec = static_cast<time_t>(seconds.count()),
                                .tv_nsec = static_cast<long>(rest.count())};
        while (sem_timedwait(&woken, &until) != 0 && errno == EINTR) {
        }
        return interrupted;
    }

    void wake() override { sem_post(&woken); }

  private:
    bool mExpecting = false;
};

}  // namespace

Waiter& signals() {
    static Signals instance;
    return instance;
}

}  // namespace dovctl
