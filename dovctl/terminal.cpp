// The screen on the program's own terminal.
#include "dovctl/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>

#include "dovctl/text.h"

namespace dovctl {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGWINCH};

// Signals arrive on any thread; each is passed on as a byte.
std::array<int, 2> signalPipe = {-1, -1};

void passOn(int signal) {
    const int error = errno;
    const char byte = static_cast<char>(signal);
    // A full pipe holds signals enough to end or to draw again.
    [[maybe_unused]] const ssize_t written = write(signalPipe[1], &byte, 1);
    errno = error;
}

void writeAll(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // the terminal is closed; SIGHUP ends the program
        text.remove_prefix(static_cast<size_t>(written));
    }
}

class Terminal : public Screen {
  public:
    Terminal() {
        if (pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
        struct sigaction action {};
        action.sa_handler = passOn;
        action.sa_flags = SA_RESTART;
        for (size_t i = 0; i < mBefore.size(); ++i) {
            sigaction(kSignals[i], &action, &mBefore[i]);
        }
        enter();
    }

    ~Terminal() override {
        leave();
        for (size_t i = 0; i < mBefore.size(); ++i) sigaction(kSignals[i], &mBefore[i], nullptr);
        for (int& end : signalPipe) {
            close(end);
            end = -1;
        }
    }

    void draw(const std::vector<std::string>& lines) override {
        winsize size = {};
        if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) {
            size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
        }
        const size_t rows = std::min<size_t>(lines.size(), size.ws_row);
        std::string text = "\033[H";
        for (size_t row = 0; row < rows; ++row) {
            if (row > 0) text += "\r\n";
            const bool more = row + 1 == size.ws_row && rows < lines.size();
            text.append(more ? "..." : cut(lines[row], size.ws_col)).append("\033[K");
        }
        writeAll(text + "\033[J");
    }

    Event wait(std::chrono::milliseconds time) override {
        std::array<pollfd, 2> sources = {{{.fd = signalPipe[0], .events = POLLIN, .revents = 0},
                                          {.fd = mKeyboard, .events = POLLIN, .revents = 0}}};
        const auto end = std::chrono::steady_clock::now() + time;
        while (true) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                    end - std::chrono::steady_clock::now());
            if (left.count() <= 0) return Event::kTime;
            const int ready = poll(sources.data(), sources.size(), static_cast<int>(left.count()));
            if (ready < 0 && errno != EINTR) return Event::kQuit;
            if (ready <= 0) continue;
            char byte = 0;
            if (sources[0].revents != 0 && read(signalPipe[0], &byte, 1) == 1) {
                return takeSignal(byte);
            }
            if (sources[1].revents != 0 &&
                (read(mKeyboard, &byte, 1) <= 0 || byte == 'q' || byte == 'Q')) {
                return Event::kQuit;
            }
        }
    }

  private:
    void enter() {
        // poll ignores the descriptor -1: without a keyboard, signals still end the program.
        mKeyboard = tcgetattr(STDIN_FILENO, &mLine) == 0 ? STDIN_FILENO : -1;
        if (mKeyboard >= 0) {
            termios line = mLine;
            line.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
            tcsetattr(mKeyboard, TCSADRAIN, &line);
        }
        writeAll("\033[?1049h\033[?25l");  // the alternate screen, without a cursor
    }

    void leave() {
        writeAll("\033[?25h\033[?1049l");
        if (mKeyboard >= 0) tcsetattr(mKeyboard, TCSADRAIN, &mLine);
    }

    Event takeSignal(int signal) {
        if (signal == SIGWINCH) return Event::kTime;
        if (signal != SIGTSTP) return Event::kQuit;
        leave();
        raise(SIGSTOP);
        enter();
        return Event::kTime;
    }

    int mKeyboard = -1;
    termios mLine = {};  // the keyboard's settings before
    std::array<struct sigaction, std::size(kSignals)> mBefore = {};
};

}  // namespace

std::unique_ptr<Screen> openTerminal() {
    return isatty(STDOUT_FILENO) == 1 ? std::make_unique<Terminal>() : nullptr;
}

}  // namespace dovctl
