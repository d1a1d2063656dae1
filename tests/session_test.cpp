// Runs the sessions of tests/sessions: commands, and below each what it must print.
#include <wordexp.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <optional>
#include <regex>
#include <set>
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

// Whether `text` is as `pattern` says. A gap in the pattern stands for anything up to the end of the
// line, and on a line of its own for any number of lines.
bool matches(std::string_view text, std::string_view pattern) {
    const size_t gap = pattern.find("...");
    if (gap == pattern.npos) return text == pattern;
    if (!text.starts_with(pattern.substr(0, gap))) return false;
    const bool lines = (gap == 0 || pattern[gap - 1] == '\n') && pattern[gap + 3] == '\n';
    text.remove_prefix(gap);
    pattern.remove_prefix(gap + (lines ? 4 : 3));
    while (!matches(text, pattern)) {
        if (text.empty() || (!lines && text[0] == '\n')) return false;
        text.remove_prefix(lines ? text.find('\n') + 1 : 1);
    }
    return true;
}

std::string replaced(const std::string& text, const std::string& from, const std::string& to) {
    return android::base::StringReplace(text, from, to, true);
}

Lines split(const std::string& text, const std::string& separator) {
    return android::base::Split(replaced(text, separator, "\1"), "\1");
}

// Resolves "x{60000}", which is so many letters, and "\x1b".
std::string unfolded(std::string word) {
    static const std::regex kFolded(R"((\w)\{(\d+)\}|\\x(\w\w))");
    for (std::smatch found; std::regex_search(word, found, kFolded);) {
        const bool many = found[1].matched;
        const char letter = many ? found.str(1)[0] : char(std::stoi(found[3], nullptr, 16));
        word = replaced(word, found.str(), std::string(many ? std::stoul(found[2]) : 1, letter));
    }
    return word;
}

// The simulator's own threads call back and end holds: their lines may come before or after the
// line of the call, and are shown last.
Lines ordered(Lines lines) {
    std::stable_partition(lines.begin(), lines.end(), [](const std::string& line) {
        return !line.starts_with("callback ") && !line.ends_with(": time ran out");
    });
    return lines;
}

Lines linesOf(std::istream&& in, const std::string& prefix = "") {
    Lines lines;
    for (std::string line; std::getline(in, line);) lines.push_back(prefix + line);
    return lines;
}

Lines withExitCode(int code, Lines lines) {
    if (code == 0) return lines;
    if (lines.empty()) lines.emplace_back();
    lines[0] = "[" + std::to_string(code) + (lines[0].empty() ? "]" : "] ") + lines[0];
    return lines;
}

}  // namespace

// The commands:
//   dovctl ARGUMENT...        runs it in this process. Lines of its standard error begin with "! ",
//                             and Ctrl-C is pressed when it waits for it.
//   simulator ARGUMENT...     runs the program until it ends
//   NAME: dovctl|simulator ARGUMENT...   starts the program, and continues as NAME. A simulator
//                             must then serve, of which the line is not shown.
//   NAME                      what the program prints next, until all that the session has is there
//   wait NAME                 all further lines of the program, until it ends
//   kill -SIGNAL NAME
//   end -SIGNAL NAME          the same, and then as wait
//   cat FILE, remove FILE
//   undeclare                 the service
//   serve                     the test itself becomes the service
//
// "$ dovctl power | init" are two commands with the same output; after "NAME: ... |" the next start
// is written in full. <command> is the second word of each command. Before " && " is a command that
// prints nothing. "..." is anything up to the end of the line or to what follows it in the session;
// on a line of its own it is any number of lines.
// An exit code other than 0 is at the beginning of the first line, as "[3] ". <1>, <2> ... are
// handles, which the service draws, and "pid=<pid>" has any number of a process. Lines that begin
// with "#" are comments. The sessions in files named "sockets_..." show what is different over the
// driver.
class SessionTest : public BinderTest, public testing::WithParamInterface<std::string> {
  protected:
    void SetUp() override {
        if (overDriver() && GetParam().starts_with("sockets_")) GTEST_SKIP() << "about sockets";
        stopServing();
    }

    // The commands of each step, and what each of them must print.
    static std::vector<std::pair<Lines, Lines>> read(const std::string& name) {
        std::vector<std::pair<Lines, Lines>> steps;
        for (const std::string& line :
             linesOf(std::ifstream(sourceFile("tests/sessions/" + name + ".txt")))) {
            const bool command = line.starts_with("$ ");
            if (!command && !line.starts_with("#")) steps.back().second.push_back(line);
            for (const std::string& step : command ? split(line.substr(2), " && ") : Lines()) {
                Lines commands = split(step, " | ");
                const std::string first = commands[0].substr(0, commands[0].find(' ') + 1);
                for (size_t i = 1; i < commands.size() && !first.ends_with(": "); ++i)
                    commands[i].insert(0, first);
                steps.emplace_back(commands, Lines());
            }
        }
        return steps;
    }

    // Makes the command and returns what it prints, which should be `output`.
    Lines run(const std::string& command, Lines output) {
        Lines words = wordsOf(command);
        const std::string what = words.front(), last = words.back();
        if (what == "simulator") return start("it", words), end("it");
        words.erase(words.begin());
        if (what == "dovctl") return runDovctl(words);
        if (what.ends_with(":")) {
            ChildProcess& started = start(what.substr(0, what.size() - 1), words);
            if (words[0] == "dovctl") return next(started, output);
            output.push_back("serving  " + std::string(kServiceName));
            Lines lines = next(started, output);
            if (!lines.empty() && lines.back() == output.back()) lines.pop_back();
            return lines;
        }
        static const std::map<std::string, int> kSignals = {{"-INT", SIGINT},   {"-TERM", SIGTERM},
                                                            {"-HUP", SIGHUP},   {"-KILL", SIGKILL},
                                                            {"-STOP", SIGSTOP}, {"-CONT", SIGCONT}};
        if (words.size() == 2) mPrograms.at(last)->signal(kSignals.at(words[0]));
        if (what == "kill") return {};
        if (what == "wait" || what == "end") return end(last);
        if (what == "cat") return linesOf(std::ifstream(last));
        if (what == "remove") return std::filesystem::remove(last), Lines();
        if (what == "undeclare") return undeclare(), Lines();
        if (what == "serve") return serve(), Lines();
        return next(*mPrograms.at(what), output);
    }

    // The lines as sessions write them.
    std::string textOf(const Lines& lines) {
        static const std::regex kPid(R"(pid=\d{2,})"), kHandle(R"(\b[1-9]\d{8}\b)");
        std::string text = android::base::Join(lines, "\n") + (lines.empty() ? "" : "\n");
        text = std::regex_replace(text, kPid, "pid=<pid>");
        for (std::smatch found; std::regex_search(text, found, kHandle);) {
            const std::string name = "<" + std::to_string(mHandles.size() + 1) + ">";
            const auto known = mHandles.try_emplace(found.str(), name).first;
            text = replaced(text, known->first, known->second);
        }
        return text;
    }

    ChildProcess& start(const std::string& name, const Lines& words) {
        const Lines arguments(words.begin() + 1, words.end());
        mPrograms[name] =
                std::make_unique<ChildProcess>(words[0] == "dovctl" ? DOVCTL : MIRX_SIMULATOR,
                                               arguments, ChildProcess::Errors::kRead);
        return *mPrograms[name];
    }

    Lines next(ChildProcess& program, const Lines& output) {
        const bool gaps = std::find(output.begin(), output.end(), "...") != output.end();
        Lines lines = program.unread();
        while (gaps ? !matches(textOf(ordered(lines)), textOf(output))
                    : lines.size() < output.size()) {
            const Lines more = program.lines(1);
            if (more.empty()) break;
            lines.push_back(more[0]);
        }
        return ordered(lines);
    }

    Lines end(const std::string& name) {
        ChildProcess& program = *mPrograms.at(name);
        const pid_t pid = program.pid();
        const Lines lines = ordered(program.lines(SIZE_MAX));
        const int code = program.wait();
        // The next command must not meet a service that is dead and not yet known to be.
        EXPECT_TRUE(eventually(
                [pid] { return dovctl::serviceProcess(std::chrono::minutes(1)).pid != pid; }));
        if (mLife && !mLife->lasts()) {
            mDied.get_future().wait_for(std::chrono::minutes(1));
            mLife.reset();
        }
        return withExitCode(code, lines);
    }

    Lines runDovctl(const Lines& words) {
        std::ostringstream out, err;
        TestWaiter waiter;
        dovcommon::Transport transport{.sockets = true, .place = folder(), .problem = {}};
        if (overDriver()) transport = dovcommon::transport();
        const int code = dovctl::Dovctl({out}, {err}, waiter, transport).run(words);
        // Death notices come in the order of the links, so this one comes after the library's.
        if (ndk::SpAIBinder(AServiceManager_checkService(kServiceName)).get() != nullptr) {
            mLife.reset();
            mDied = {};
            mLife.emplace([this] { mDied.set_value(); });
        }
        Lines lines = linesOf(std::istringstream(out.str()));
        const Lines errors = linesOf(std::istringstream(err.str()), "! ");
        lines.insert(lines.end(), errors.begin(), errors.end());
        return withExitCode(code, lines);
    }

    // The words of a command as a shell reads them.
    Lines wordsOf(std::string command) const {
        for (const auto& [handle, name] : mHandles) command = replaced(command, name, handle);
        command = replaced(replaced(command, "<folder>", folder()), "<patience>", patience());
        command = replaced(command, "<sources>", sourceFile(""));
        wordexp_t expanded = {};
        EXPECT_EQ(wordexp(command.c_str(), &expanded, WRDE_NOCMD), 0) << command;
        Lines words(expanded.we_wordv, expanded.we_wordv + expanded.we_wordc);
        std::transform(words.begin(), words.end(), words.begin(), unfolded);
        wordfree(&expanded);
        return words;
    }

    std::map<std::string, std::string> mHandles;
    std::map<std::string, std::unique_ptr<ChildProcess>> mPrograms;
    std::promise<void> mDied;
    std::optional<dovctl::Life> mLife;
};

TEST_P(SessionTest, printsWhatTheSessionShows) {
    for (const auto& [commands, output] : read(GetParam())) {
        for (const std::string& command : commands) {
            const std::string actual = textOf(run(command, output));
            const std::string expected =
                    replaced(textOf(output), "<command>", split(command + " ", " ")[1]);
            if (matches(actual, expected)) continue;
            // Later commands might wait for what does not come.
            ASSERT_EQ(actual, expected) << "$ " << command;
        }
    }
}

static std::set<std::string> sessions() {
    std::set<std::string> names;
    const std::filesystem::directory_iterator files(sourceFile("tests/sessions"));
    for (const auto& file : files) names.insert(file.path().stem());
    return names;
}

INSTANTIATE_TEST_SUITE_P(Sessions, SessionTest, testing::ValuesIn(sessions()),
                         [](const auto& session) { return session.param; });
