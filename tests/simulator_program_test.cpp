// The simulator as a program: its command line, what a profile changes, and the timeline it leaves.
#include "simulator/simulator.h"

#include <signal.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <json/json.h>

#include <aidl/vendor/tavro/hardware/mirx/IMirx.h>
#include <android/binder_manager.h>

#include "tests/support/child_process.h"
#include "tests/support/data.h"
#include "tests/support/test_services.h"

using aidl::vendor::tavro::hardware::mirx::IMirx;
using testing::HasSubstr;

class SimulatorProgramTest : public BinderTest {
  protected:
    SimulatorProgramTest() { endServices(); }
    ~SimulatorProgramTest() override { endServices(); }

    static void endServices() { stopServing(); }

    static std::shared_ptr<IMirx> mirx() {
        return IMirx::fromBinder(ndk::SpAIBinder(AServiceManager_checkService(kServiceName)));
    }
    static int32_t acquire(int32_t kind, std::vector<MirxRequestData> data, int64_t duration = 0) {
        MirxRequestParcel parcel;
        parcel.requestType = kind;
        parcel.requestData = std::move(data);
        parcel.duration = duration;
        parcel.identity = "me";
        int32_t handle = -1;
        EXPECT_TRUE(mirx()->request(parcel, &handle).isOk());
        return handle;
    }
    static bool isHeld(const std::string& path) {
        MirxRequestParcel query;
        query.requestData.emplace_back().path = path;
        std::vector<MirxRequestData> state;
        EXPECT_TRUE(mirx()->stateRequest(query, &state).isOk());
        return state.at(0).value.has_value();
    }
    static void rule(int32_t id, int32_t status, const std::vector<MirxRequestData>& data) {
        int32_t result = -1;
        EXPECT_TRUE(mirx()->ruleCtl(id, status, data, &result).isOk());
    }

    const std::string profile = folder() + "/profile";
    const std::string timeline = folder() + "/timeline";
    std::ostringstream out, err;
    simulator::Simulator simulator{out, err};
};

namespace {

constexpr int32_t kEvent = 8;
constexpr int32_t kResources = 1;
constexpr int32_t kFloor = 0x01010010;  // idles at 300000

// The entries of a timeline. One that was cut off lacks its end, and nothing else.
Json::Value entriesOf(const std::string& file, bool cutOff = false) {
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    if (cutOff) text << "]";
    Json::Value entries;
    std::string error;
    Json::CharReaderBuilder strict;
    Json::CharReaderBuilder::strictMode(&strict.settings_);
    EXPECT_TRUE(Json::parseFromStream(strict, text, &entries, &error)) << error;
    return entries;
}

struct Slice {
    std::string what;  // "track | name | holder -> why it ended"
    int64_t microseconds;
};

// The slices in the order of their ends, then those that have none; then the instants, and the
// values of each counter.
struct Read {
    std::vector<Slice> slices;
    std::vector<std::string> instants;
    std::map<std::string, std::vector<int64_t>> counters;

    explicit Read(const Json::Value& entries) {
        std::map<int, std::string> tracks;
        std::map<int, Json::Value> open;
        const auto close = [&](int track, const std::string& why, int64_t at) {
            const Json::Value begin = open[track];
            slices.push_back({tracks[track] + " | " + begin["name"].asString() + " | " +
                                      begin["args"]["holder"].asString() + " -> " + why,
                              at - begin["ts"].asInt64()});
            open.erase(track);
        };
        for (const Json::Value& entry : entries) {
            const std::string phase = entry["ph"].asString();
            const int track = entry["tid"].asInt();
            if (entry["name"] == "thread_name") tracks[track] = entry["args"]["name"].asString();
            if (phase == "i") {
                instants.push_back(tracks[track] + " | " + entry["name"].asString());
            }
            if (phase == "C") {
                counters[entry["name"].asString()].push_back(entry["args"]["value"].asInt64());
            }
            if (phase == "B") {
                EXPECT_TRUE(open.emplace(track, entry).second) << "slices of a track must nest";
            }
            if (phase == "E")
                close(track, entry["args"]["ended"].asString(), entry["ts"].asInt64());
        }
        while (!open.empty()) close(open.begin()->first, "never", 0);
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> texts;
        for (const Slice& slice : slices) texts.push_back(slice.what);
        return texts;
    }
};

}  // namespace

TEST_F(SimulatorProgramTest, whatCannotBeServedIsOneLineAndAnExitCode) {
    std::ofstream(profile) << "<profile>\n<rule/></profile>";
    undeclare();
    struct Case {
        std::vector<std::string> args;
        int code;
        std::string message;
    };
    const std::vector<Case> cases = {
            {{"--frobnicate"}, 2, "unknown option '--frobnicate'; try --help"},
            {{"-x"}, 2, "unknown option '-x'; try --help"},
            {{"serve"}, 2, "unexpected argument 'serve'; try --help"},
            {{"--profile"}, 2, "--profile needs a value; try --help"},
            {{"--timeline", timeline, "--help=yes"}, 2, "unknown option '--help=yes'; try --help"},
            {{"--profile", profile}, 1, profile + ":2: <rule> sets nothing"},
            {{"--timeline", "/proc/none/x"}, 1, "/proc/none/x: No such file or directory"},
            {{},
             1,
             "cannot register " + std::string(kServiceName) + ": not declared in a VINTF manifest"},
    };
    for (const Case& c : cases) {
        err.str("");
        EXPECT_EQ(simulator.start(c.args), c.code);
        EXPECT_EQ(err.str(), "mirx-simulator: " + c.message + "\n");
    }
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(simulator.start({"--help"}), 0);
    EXPECT_THAT(out.str(), HasSubstr("--timeline FILE"));
}

TEST_F(SimulatorProgramTest, theTimelineSaysWhatWasHeldByWhomAndWhyItEnded) {
    std::ofstream(profile)
            << "<profile><event id=\"0\" name=\"LAUNCH\">"
               "<resource opcode=\"0x01010010\" value=\"900000\"/>"
               "<resource path=\"/p\" value=\"text\"/></event>"
               "<rule id=\"7\"><resource opcode=\"5\" value=\"1\"/></rule></profile>";
    ASSERT_EQ(simulator.start({"--profile", profile, "--timeline", timeline}), std::nullopt);
    acquire(kEvent, {element(0), element(kFloor, "1000000")}, 2000);
    const int32_t released = acquire(kResources, {element(kFloor, "2"), element(kFloor, "3")});
    acquire(kEvent, {element(99)});
    rule(7, 1, {});
    rule(7, 2, {element(5, "2")});
    EXPECT_TRUE(eventually([] { return !isHeld("/p"); }));
    int32_t result = -1;
    mirx()->release(released, &result);
    simulator.stop();
    acquire(kResources, {element(kFloor, "4")});  // too late to be told

    const Read read(entriesOf(timeline));
    const std::string floor = "0x01010010 cpu0 frequency floor";
    EXPECT_THAT(read.texts(),
                testing::ElementsAre(
                        "0x00000005 | 1 (status 1) | rule 7 -> replaced",
                        "/p | text (event acquire 0 LAUNCH) | handle 1 -> time ran out",
                        floor + " | 1000000 (event acquire 0 LAUNCH) | handle 1 -> time ran out",
                        floor + " (2) | 3 (resource control) | handle 2 -> released",
                        "0x00000005 | 2 (status 2) | rule 7 -> the service stopped",
                        "without resources | event acquire 99 | handle 3 -> the service stopped"));
    ASSERT_EQ(read.slices.size(), 6u);
    // Its two seconds count from a moment before the entry.
    EXPECT_GE(read.slices[2].microseconds, 1'900'000);
    EXPECT_THAT(read.instants,
                testing::ElementsAre("events | event acquire 0 LAUNCH", "events | event acquire 99",
                                     "rules | rule 7 status 1", "rules | rule 7 status 2"));
    EXPECT_THAT(read.counters.at(floor), testing::ElementsAre(300000, 1000000, 3, 300000))
            << "the idle value, and what shows after each change";
}

TEST_F(SimulatorProgramTest, theTimelineOfAKilledSimulatorIsValid) {
    for (const int signal : {SIGKILL, SIGTERM, SIGINT}) {
        ChildProcess program(MIRX_SIMULATOR, {"--timeline", timeline});
        program.readUntil("serving");
        acquire(kResources, {element(kFloor, "900000")});
        program.signal(signal);
        EXPECT_EQ(program.wait(), signal == SIGKILL ? -SIGKILL : 0);
        const bool cutOff = signal == SIGKILL;
        EXPECT_THAT(Read(entriesOf(timeline, cutOff)).texts(),
                    testing::ElementsAre("0x01010010 cpu0 frequency floor | 900000 (resource "
                                         "control) | handle 1 -> " +
                                         std::string(cutOff ? "never" : "the service stopped")));
    }
}
