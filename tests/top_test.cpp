// dovctl top on a terminal.
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include <dov/dov.h>

#include "tests/support/test_services.h"

using testing::HasSubstr;

// A terminal of six rows on which dovctl top runs.
class TopTest : public BinderTest {
  protected:
    void startTop() {
        winsize size = {.ws_row = 6, .ws_col = 60, .ws_xpixel = 0, .ws_ypixel = 0};
        ASSERT_EQ(openpty(&terminal, &program, nullptr, nullptr, &size), 0);
        tcgetattr(terminal, &before);  // the defaults
        close(terminal), close(program);
        program = forkpty(&terminal, nullptr, &before, &size);
        if (program == 0) {
            execl(DOVCTL, DOVCTL, "top", "--interval", "20", nullptr);
            _exit(127);
        }
        ASSERT_GT(program, 0);
    }

    // What the program shows until it has shown `text` so many times; ends after a minute.
    std::string shownUntil(const std::string& text, int times) {
        std::string shown;
        pollfd event = {.fd = terminal, .events = POLLIN, .revents = 0};
        char letter = 0;
        while (times > 0 && poll(&event, 1, 60'000) > 0 && read(terminal, &letter, 1) == 1) {
            shown += letter;
            if (shown.ends_with(text)) --times;
        }
        EXPECT_EQ(times, 0) << "it does not show " << testing::PrintToString(text);
        return shown;
    }

    termios before = {};
    int terminal = -1;
    pid_t program = -1;
};

TEST_F(TopTest, redrawsUntilQuitAndRestoresTheTerminal) {
    if (getenv("DOV_EMULATOR") != nullptr) GTEST_SKIP() << "starts dovctl without the emulator";
    const auto simulator = startSimulator();
    DovResAcquire({{0x01010010, "900000"}}, "", "me", 0);
    const std::vector<std::function<void()>> waysToQuit = {
            [this] { EXPECT_EQ(write(terminal, "xq", 2), 2); },
            [this] { EXPECT_EQ(write(terminal, "\003", 1), 1); },  // Ctrl-C
            [this] { kill(program, SIGTERM); },
            [this] { kill(program, SIGHUP); },
    };
    for (const auto& quit : waysToQuit) {
        ASSERT_NO_FATAL_FAILURE(startTop());
        const std::string shown = shownUntil("\033[H", 4);  // the first three are complete
        EXPECT_THAT(shown, testing::StartsWith("\033[?1049h\033[?25l"));
        EXPECT_THAT(shown, testing::AllOf(HasSubstr("handle "), HasSubstr("...")));
        EXPECT_THAT(shown, testing::Not(HasSubstr("900000"))) << "the screen has six rows";
        quit();
        EXPECT_THAT(shownUntil("\033[?1049l", 1), HasSubstr("\033[?25h\033[?1049l"));
        if (HasFailure()) kill(program, SIGKILL);
        int status = -1;
        EXPECT_EQ(waitpid(program, &status, 0), program);
        EXPECT_EQ(status, 0);
        termios after = {};
        tcgetattr(terminal, &after);
        EXPECT_EQ(after.c_lflag, before.c_lflag);
        close(terminal);
    }
}
