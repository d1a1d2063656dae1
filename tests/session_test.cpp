// Runs the sessions of tests/sessions: commands, and below each what it must print.
#include <wordexp.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

#include <android-base/strings.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>

#include "common/transport.h"
#include "dovctl/dovctl.h"
#include "dovctl/life.h"
#include "dovctl/process.h"
#include "tests/support/data.h"
#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using Lines = std::vector<std::string>;

namespace {

constexpr std::chrono::minutes kPatience(1);

// What differs between machines, transports and runs, and how sessions write it.
const std::pair<std::regex, const char*> kMasks[] = {
        {std::regex(R"(process \d+( \((mirx-simulator|qemu-.*)\))?)"), "process <pid>"},
        {std::regex(R"(<pid>, (running|sleeping))"), "<pid>, sleeping"},
        {std::regex(R"(kill -CONT \d+)"), "kill -CONT <pid>"},
        {std::regex(R"(-b \d+, or gdb -p \d+)"), "-b <pid>, or gdb -p <pid>"},
        {std::regex(R"(pid=\d{2,})"), "pid=<pid>"},
        {std::regex(", or the message was too large for the driver, which .*"), ""},
        {std::regex(R"(^\d\d-\d\d [0-9:. ]* )"), ""},
        {std::regex(R"(pid +(\d{2,}|unknown) +)"), "pid <pid>  "},
        {std::regex(R"re("pid":("\d+"|"unknown"|\d+|null))re"), "\"pid\":<pid>"},
        {std::regex(R"re("boot":"[^"]*")re"), "\"boot\":<boot>"},
        {std::regex(R"re("(dur|ts)":\d+)re"), "\"$1\":<us>"},
        {std::regex(R"(by pid \d+)"), "by pid <pid>"},
        {std::regex(R"("(held|left)_ms":\d+)"), "\"$1_ms\":<ms>"},
        {std::regex(R"(\d+\.\d s)"), "<s>"},
        {std::regex(R"((-|\d+) +<s> +(-|<s>) +)"), "<pid>  <s>  $2  "},
        {std::regex("pid +held +left +"), "pid  held  left  "},
};

// Many equal letters are written as "x{60000}".
std::string folded(const std::string& text) {
    std::string result;
    for (size_t at = 0, end = 0; at < text.size(); at = end) {
        end = std::min(text.find_first_not_of(text[at], at), text.size());
        result += end - at < 100 || text[at] == ' '
                          ? text.substr(at, end - at)
                          : text.substr(at, 1) + "{" + std::to_string(end - at) + "}";
    }
    return result;
}

// The opposite, also for "\x1b".
std::string unfolded(std::string word) {
    static const std::regex kMany(R"((\w)\{(\d+)\})"), kByte(R"(\\x(\w\w))");
    std::smatch found;
    while (std::regex_search(word, found, kMany)) {
        word = found.prefix().str() + std::string(std::stoul(found[2]), found.str(1)[0]) +
               found.suffix().str();
    }
    while (std::regex_search(word, found, kByte)) {
        word = found.prefix().str() + static_cast<char>(std::stoi(found[1], nullptr, 16)) +
               found.suffix().str();
    }
    return word;
}

// The simulator's own threads call back and end holds: their lines may come before or after the
// line of the call, and are shown last.
bool isOrdered(const std::string& line) {
    return !line.starts_with("callback ") && !line.ends_with(": time ran out");
}

// An exit code other than 0 is written before the last line.
void addExitCode(int code, Lines& lines) {
    if (code == 0) return;
    const std::string mark = "[" + std::to_string(code) + "]";
    if (lines.empty()) {
        lines.push_back(mark);
    } else {
        lines.back() = mark + " " + lines.back();
    }
}

}  // namespace

// The commands:
//   dovctl ARGUMENT...        runs it in this process. Lines of its standard error begin with "! ",
//                             and Ctrl-C is pressed when it waits for it.
//   simulator ARGUMENT...     runs the program until it ends
//   NAME: dovctl|simulator ARGUMENT...   starts the program
//   NAME                      the next lines that the program prints, as many as the session has
//   wait NAME                 all further lines of the program, until it ends
//   end NAME                  kills it
//   kill -SIGNAL NAME
//   cat FILE                  the content of the file
//   declare, undeclare        the service
//   serve                     the test itself becomes the service
//
// An exit code other than 0 is at the beginning of the last line, as "[3] ". <1>, <2> ... are handles, which the service
// draws; the others are in kMasks and in textOf(). Lines that begin with "#" are comments. The
// sessions in files named "sockets_..." show what is different over the driver.
class SessionTest : public BinderTest, public testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override {
        if (overDriver() && GetParam().starts_with("sockets_")) GTEST_SKIP() << "about sockets";
        stopServing();
    }

    struct Step {
        std::string command;
        Lines output;
    };

    static std::vector<Step> read(const std::string& name) {
        std::ifstream file(sourceFile("tests/sessions/" + name + ".txt"));
        std::vector<Step> steps;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("$ ")) {
                steps.push_back({line.substr(2), {}});
            } else if (!line.starts_with("#") && !steps.empty()) {
                steps.back().output.push_back(line);
            }
        }
        return steps;
    }

    // Makes the command, and returns what it prints. `count` lines are expected.
    Lines run(const std::string& command, size_t count) {
        Lines words = wordsOf(command);
        const std::string what = words.front();
        words.erase(words.begin());
        if (what == "dovctl") return runDovctl(words);
        if (what == "simulator") {
            mPrograms["it"] = start(what, words);
            return end("it");
        }
        if (what.ends_with(":")) {
            const std::string program = words.front();
            words.erase(words.begin());
            auto& started = mPrograms[what.substr(0, what.size() - 1)];
            started = start(program, words);
            return started->lines(count);
        }
        if (what == "wait") return end(words.at(0));
        if (what == "cat") return linesOf(std::ifstream(words.at(0)));
        if (what == "end") {
            mPrograms.at(words.at(0))->signal(SIGKILL);
            end(words[0]);
            return {};
        }
        if (what == "kill") {
            static const std::map<std::string, int> kSignals = {
                    {"-INT", SIGINT},   {"-TERM", SIGTERM}, {"-HUP", SIGHUP},
                    {"-KILL", SIGKILL}, {"-STOP", SIGSTOP}, {"-CONT", SIGCONT}};
            mPrograms.at(words.at(1))->signal(kSignals.at(words[0]));
        } else if (what == "declare") {
            declare();
        } else if (what == "undeclare") {
            undeclare();
            std::filesystem::remove(folder() + "/vendor.tavro.hardware.mirx-service.xml");
        } else if (what == "serve") {
            serve();
        } else {
            return next(*mPrograms.at(what), count);
        }
        return {};
    }

    // The lines as sessions write them.
    std::string textOf(const std::string& command, Lines lines) {
        std::string text = "$ " + command + "\n";
        const auto isBlank = [](const std::string& line) {
            return line.find_first_not_of(' ') == std::string::npos;
        };
        while (!lines.empty() && isBlank(lines.back())) lines.pop_back();
        for (const std::string& line : lines) text += named(folded(line)) + "\n";
        return text;
    }

  private:
    static std::unique_ptr<ChildProcess> start(const std::string& program, const Lines& words) {
        return std::make_unique<ChildProcess>(program == "dovctl" ? DOVCTL : MIRX_SIMULATOR, words,
                                              ChildProcess::Errors::kRead);
    }

    static Lines next(ChildProcess& program, size_t count) {
        Lines lines;
        if (count > 0) lines = program.lines(count);
        for (std::string& line : program.unread()) lines.push_back(std::move(line));
        std::stable_partition(lines.begin(), lines.end(), isOrdered);
        return lines;
    }

    Lines end(const std::string& name) {
        constexpr size_t kAll = SIZE_MAX;
        ChildProcess& program = *mPrograms.at(name);
        const pid_t pid = program.pid();
        Lines lines = next(program, kAll);
        addExitCode(program.wait(), lines);
        // The next command must not meet a service that is dead and not yet known to be.
        EXPECT_TRUE(eventually([pid] { return dovctl::serviceProcess(kPatience).pid != pid; }));
        if (mLife && !mLife->lasts()) {
            mDied.get_future().wait_for(kPatience);
            mLife.reset();
        }
        return lines;
    }

    Lines runDovctl(const Lines& words) {
        std::ostringstream out, err;
        TestWaiter waiter;
        const int code = dovctl::Dovctl({out}, {err}, waiter, transport()).run(words);
        // Death notices come in the order of the links, so this one comes after the library's.
        if (ndk::SpAIBinder(AServiceManager_checkService(kServiceName)).get() != nullptr) {
            mLife.reset();
            mDied = {};
            mLife.emplace([this] { mDied.set_value(); });
        }
        Lines lines = linesOf(std::istringstream(out.str()));
        for (const std::string& line : linesOf(std::istringstream(err.str())))
            lines.push_back("! " + line);
        addExitCode(code, lines);
        return lines;
    }

    static dovcommon::Transport transport() {
        if (overDriver()) return dovcommon::transport();
        return {.sockets = true, .place = folder(), .problem = {}};
    }

    static Lines linesOf(std::istream&& in) {
        Lines lines;
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }

    static std::string replaced(const std::string& text, const std::string& from,
                                const std::string& to) {
        return android::base::StringReplace(text, from, to, true);
    }

    // The words of a command as a shell reads them.
    Lines wordsOf(std::string command) const {
        for (const auto& [handle, name] : mHandles) command = replaced(command, name, handle);
        for (const auto& [name, value] : kPlaces) command = replaced(command, name, value);
        wordexp_t expanded = {};
        if (wordexp(command.c_str(), &expanded, WRDE_NOCMD) != 0) {
            throw std::runtime_error("cannot be read: " + command);
        }
        Lines words;
        for (size_t i = 0; i < expanded.we_wordc; ++i) {
            words.push_back(unfolded(expanded.we_wordv[i]));
        }
        wordfree(&expanded);
        return words;
    }

    std::string named(std::string line) {
        for (const auto& [pattern, mask] : kMasks) line = std::regex_replace(line, pattern, mask);
        static const std::regex kHandle(R"(\b[1-9]\d{8}\b)");
        for (std::smatch found; std::regex_search(line, found, kHandle);) {
            const auto next = "<" + std::to_string(mHandles.size() + 1) + ">";
            const auto& name = mHandles.try_emplace(found.str(), next).first->second;
            line = found.prefix().str() + name + found.suffix().str();
        }
        for (const auto& [name, value] : kPlaces) line = replaced(line, value, name);
        return line;
    }

    const std::vector<std::pair<std::string, std::string>> kPlaces = {
            {"<folder>", folder()},
            {"<sources>", sourceFile("")},
            {"<patience>", patience()},
    };
    std::map<std::string, std::string> mHandles;
    std::map<std::string, std::unique_ptr<ChildProcess>> mPrograms;
    std::promise<void> mDied;
    std::optional<dovctl::Life> mLife;
};

TEST_P(SessionTest, printsWhatTheSessionShows) {
    const std::vector<Step> steps = read(GetParam());
    ASSERT_FALSE(steps.empty());
    for (const auto& [command, output] : steps) {
        const std::string expected = textOf(command, output);
        // Later commands might wait for what does not come.
        ASSERT_EQ(textOf(command, run(command, output.size())), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Sessions, SessionTest, testing::ValuesIn([] {
                             Lines names;
                             for (const auto& file : std::filesystem::directory_iterator(
                                          sourceFile("tests/sessions"))) {
                                 names.push_back(file.path().stem());
                             }
                             std::sort(names.begin(), names.end());
                             return names;
                         }()),
                         [](const auto& session) { return session.param; });
