// The timeline that the simulator writes.
#include <signal.h>

#include <fstream>
#include <map>

#include <gmock/gmock.h>
#include <json/json.h>

#include "tests/support/test_services.h"

class TimelineTest : public BinderTest {
  protected:
    TimelineTest() { stopServing(); }

    // Runs the program, and returns the handle or the answer that it prints.
    static std::string dovctl(const std::vector<std::string>& words) {
        const auto lines = ChildProcess(DOVCTL, words).lines(SIZE_MAX);
        return lines.empty() ? "" : lines[0];
    }

    const std::string profile = folder() + "/profile";
    const std::string timeline = folder() + "/timeline";
};

namespace {

constexpr char kFloor[] = "cpu0 frequency floor 0x01010010";  // idles at 300000

// The content of a timeline: of each slice "track | name | holder -> why it ended", in the order of
// the file, and the values of each counter.
struct Read {
    std::vector<std::string> slices;
    std::vector<int64_t> microseconds;  // of each slice
    std::map<std::string, std::vector<int64_t>> counters;

    explicit Read(const std::string& file) {
        std::ifstream text(file);
        Json::Value entries;
        std::string error;
        Json::CharReaderBuilder strict;
        Json::CharReaderBuilder::strictMode(&strict.settings_);
        EXPECT_TRUE(Json::parseFromStream(strict, text, &entries, &error)) << error;
        std::map<int, std::string> tracks;
        std::map<int, int64_t> ends;
        for (const Json::Value& entry : entries) {
            const std::string phase = entry["ph"].asString();
            const std::string name = entry["name"].asString();
            const int track = entry["tid"].asInt();
            const Json::Value& args = entry["args"];
            if (name == "thread_name") tracks[track] = args["name"].asString();
            if (phase == "C") counters[name].push_back(args["value"].asInt64());
            if (phase != "X") continue;
            slices.push_back(tracks[track] + " | " + name + " | " + args["holder"].asString() +
                             " -> " + args["ended"].asString());
            microseconds.push_back(entry["dur"].asInt64());
            EXPECT_GE(entry["ts"].asInt64(), ends[track]) << "slices of a track must nest";
            ends[track] = entry["ts"].asInt64() + entry["dur"].asInt64();
        }
    }
};

}  // namespace

TEST_F(TimelineTest, showsHoldersAndReasonsForTheirEnd) {
    std::ofstream(profile)
            << "<profile><event id=\"0\" name=\"LAUNCH\">"
               "<resource opcode=\"0x01010010\" value=\"900000\"/>"
               "<resource path=\"/p\" value=\"text\"/></event>"
               "<rule id=\"7\"><resource opcode=\"5\" value=\"1\"/></rule></profile>";
    ChildProcess program(MIRX_SIMULATOR, {"--profile", profile, "--timeline", timeline});
    program.readUntil("serving");
    const auto timed =
            dovctl({"acquire", "0", "--duration", "2000", "--resource", "0x01010010=1000000"});
    const auto released =
            dovctl({"res-acquire", "--resource", "0x01010010=2", "--resource", "0x01010010=3"});
    const auto kept = dovctl({"acquire", "99"});
    dovctl({"rule", "7", "1"});
    dovctl({"rule", "7", "2", "--resource", "5=2"});
    program.readUntil("ended    handle " + timed);
    dovctl({"release", released});
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);

    const Read read(timeline);
    const auto floor = std::string(kFloor);
    EXPECT_THAT(read.slices,
                testing::ElementsAre(
                        "rules | status 1 by rule 7 | rule 7 -> replaced",
                        "0x00000005 | 1 by rule 7 for status 1 | rule 7 -> replaced",
                        "events | LAUNCH by dovctl | handle " + timed + " -> time ran out",
                        "/p | text by dovctl for LAUNCH | handle " + timed + " -> time ran out",
                        floor + " | 1000000 by dovctl for LAUNCH | handle " + timed +
                                " -> time ran out",
                        "resource control | resource control by dovctl | handle " + released +
                                " -> released",
                        floor + " (2) | 3 by dovctl | handle " + released + " -> released",
                        "events (2) | never released: event acquire 99 by dovctl | handle " + kept +
                                " -> never released",
                        "rules | never released: status 2 by rule 7 | rule 7 -> never released",
                        "0x00000005 | never released: 2 by rule 7 for status 2 | rule 7 -> never "
                        "released"));
    ASSERT_GT(read.microseconds.size(), 2u);
    EXPECT_GE(read.microseconds[2], 1'000'000) << "the hold began before its entry";
    EXPECT_THAT(read.counters.at(floor), testing::ElementsAre(300000, 1000000, 3, 300000, 300000))
            << "the idle value, the value after each change, and the value at the end";
}

TEST_F(TimelineTest, continuesAfterAKill) {
    std::vector<std::string> expected;
    for (const int signal : {SIGKILL, SIGTERM, SIGINT}) {
        ChildProcess program(MIRX_SIMULATOR, {"--timeline", timeline});
        program.readUntil("serving");
        const auto handle = dovctl({"res", "0x01010010=9", "--duration", "600000", "--pid", "7"});
        program.signal(signal);
        EXPECT_EQ(program.wait(), signal == SIGKILL ? -SIGKILL : 0);
        if (signal == SIGINT) expected.clear();  // SIGTERM finished the file, so it is replaced
        const std::string caller = overDriver() ? "by pid .*" : "by pid 7";
        const std::string end = caller + " \\| handle " + handle + " -> the service " +
                                (signal == SIGKILL ? "died" : "stopped");
        expected.push_back("resource control \\| resource control " + end);
        expected.push_back(std::string(kFloor) + " \\| 9 " + end);
        const Read read(timeline);
        ASSERT_EQ(read.slices.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i) {
            EXPECT_THAT(read.slices[i], testing::MatchesRegex(expected[i]));
        }
    }
}
