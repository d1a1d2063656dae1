// dovctl top: what it shows, and how it uses the terminal.
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <sstream>

#include <gmock/gmock.h>
#include <json/json.h>

#include <dov/dov.h>

#include "dovctl/dovctl.h"
#include "simulator/mirx_service.h"
#include "tests/support/data.h"
#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using testing::ContainsRegex;
using testing::HasSubstr;

class TopTest : public BinderTest {
  protected:
    ~TopTest() override { stopServing(); }

    std::string run(const std::vector<std::string>& args, int code = 0) {
        std::ostringstream out, err;
        TestWaiter waiter;
        EXPECT_EQ(dovctl::Dovctl({out}, {err}, waiter).run(args), code) << err.str();
        return out.str() + err.str();
    }
    void simulate() {
        serve(ndk::SharedRefBase::make<simulator::MirxService>(journal)->asBinder());
    }

    std::ostringstream printed;
    simulator::Journal journal{printed};
};

TEST_F(TopTest, printsOnceWithoutATerminal) {
    simulate();
    EXPECT_EQ(run({"top"}), "nothing is held\n");
    const std::string holder =
            "handle " +
            std::to_string(DovResAcquire({{0x01010010, "900000"}}, "", "\u6f22\033[2J", 60000));
    const std::string text = run({"top"});
    EXPECT_THAT(text, ContainsRegex("for +identity +package.*\n" + holder +
                                    "  resource control  \u6f22\\\\x1b\\[2J  .* 0.. s  .* s +1\n"));
    EXPECT_THAT(text,
                HasSubstr("0x01010010  cpu0 frequency floor  900000  300000  " + holder + "\n"));
    EXPECT_THAT(text, testing::Not(HasSubstr("\033")))
            << "no control characters of a caller on the terminal";
    EXPECT_THAT(text, testing::Not(HasSubstr("gpu")));
    EXPECT_THAT(run({"top", "--all"}),
                ContainsRegex("0x01020050  gpu frequency floor +200 +200 +-\n"));
    Json::Value json;
    std::istringstream(run({"top", "--json"})) >> json;
    EXPECT_EQ(json["holds"][0]["identity"], "\u6f22\033[2J");
    EXPECT_LE(json["holds"][0]["left_ms"].asInt(), 60000);
    EXPECT_EQ(printed.str().find("holds query"), std::string::npos)
            << "the journal must not list the queries of top";
}

TEST_F(TopTest, showsOnlyTheValuesOfOtherServices) {
    service->state = {element(5, "50")};
    EXPECT_THAT(run({"top"}),
                AllOf(HasSubstr("does not tell what is held"), ContainsRegex("0x00000005 .* 50")));
    stopServing();
    EXPECT_THAT(run({"top"}, 3), HasSubstr("is declared but not running"));
    EXPECT_THAT(run({"top", "--interval", "0"}, 2), HasSubstr("--interval"));
}

TEST_F(TopTest, redrawsUntilQuitAndRestoresTheTerminal) {
    if (getenv("DOV_EMULATOR") != nullptr) {
        GTEST_SKIP() << "this test starts dovctl without the emulator";
    }
    simulate();
    DovResAcquire({{0x01010010, "900000"}}, "", "me", 0);
    const std::vector<std::function<void(int terminal, pid_t program)>> waysToQuit = {
            [](int terminal, pid_t) { EXPECT_EQ(write(terminal, "xq", 2), 2); },
            [](int terminal, pid_t) { EXPECT_EQ(write(terminal, "\003", 1), 1); },  // Ctrl-C
            [](int, pid_t program) { kill(program, SIGTERM); },
            [](int, pid_t program) { kill(program, SIGHUP); },
    };
    for (const auto& quit : waysToQuit) {
        winsize size = {.ws_row = 6, .ws_col = 60, .ws_xpixel = 0, .ws_ypixel = 0};
        termios before = {};
        before.c_iflag = ICRNL | IXON;
        before.c_oflag = OPOST | ONLCR;
        before.c_cflag = CS8 | CREAD | B38400;
        before.c_lflag = ISIG | ICANON | ECHO | IEXTEN;
        before.c_cc[VINTR] = 3;
        before.c_cc[VMIN] = 1;
        int terminal = -1;
        const pid_t program = forkpty(&terminal, nullptr, &before, &size);
        if (program == 0) {
            execl(DOVCTL, DOVCTL, "top", "--interval", "20", nullptr);
            _exit(127);
        }
        ASSERT_GT(program, 0);

        std::string shown;
        const auto readMore = [&] {
            char buffer[4096];
            const ssize_t length = read(terminal, buffer, sizeof(buffer));
            if (length > 0) shown.append(buffer, static_cast<size_t>(length));
            return length > 0;
        };
        const auto draws = [&] {
            size_t count = 0;
            for (size_t at = 0; (at = shown.find("\033[H", at)) != std::string::npos; ++at) ++count;
            return count;
        };
        while (draws() < 3 && readMore()) {
        }
        EXPECT_THAT(shown, HasSubstr("handle "));
        EXPECT_THAT(shown, HasSubstr("..."));
        EXPECT_EQ(shown.find("900000"), std::string::npos) << "the screen has six rows";
        quit(terminal, program);
        int status = -1;
        while (shown.find("\033[?1049l") == std::string::npos && readMore()) {
        }
        EXPECT_THAT(shown, testing::EndsWith("\033[?25h\033[?1049l"));
        EXPECT_EQ(waitpid(program, &status, 0), program);
        EXPECT_EQ(status, 0);
        termios after = {};
        tcgetattr(terminal, &after);
        EXPECT_EQ(after.c_lflag, before.c_lflag);
        EXPECT_NE(after.c_lflag & (ICANON | ECHO), 0u);
        close(terminal);
    }
}
