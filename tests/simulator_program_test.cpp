// The simulator as a program: command line, profile, timeline, replacement and faults.
#include "simulator/simulator.h"

#include <signal.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <json/json.h>

#include <aidl/vendor/tavro/hardware/mirx/BnMirxCallback.h>
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

TEST_F(SimulatorProgramTest, startFailsWithOneLineAndAnExitCode) {
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
            {{"--fault", "reply=x"},
             2,
             "--fault reply=x: 'x' is none of empty, many, absent, text, long, huge; try --help"},
            {{"--fault", "never:x"},
             2,
             "--fault never:x: 'x' is no operation, no request kind and not 'once'; try --help"},
            {{"--fault", "refuse:init"},
             2,
             "--fault refuse:init: refuse cannot happen to init; try --help"},
            {{"--timeline", timeline, "--help=yes"}, 2, "unknown option '--help=yes'; try --help"},
            {{"--profile", profile}, 1, profile + ":2: <rule> sets nothing"},
            {{"--timeline", "/proc/none/x"}, 1, "/proc/none/x: No such file or directory"},
            {{},
             1,
             "cannot register " + std::string(kServiceName) +
                     ": not declared in a VINTF manifest (--declare does that)"},
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

TEST_F(SimulatorProgramTest, timelineShowsHoldersAndReasonsForTheirEnd) {
    std::ofstream(profile)
            << "<profile><event id=\"0\" name=\"LAUNCH\">"
               "<resource opcode=\"0x01010010\" value=\"900000\"/>"
               "<resource path=\"/p\" value=\"text\"/></event>"
               "<rule id=\"7\"><resource opcode=\"5\" value=\"1\"/></rule></profile>";
    ASSERT_EQ(simulator.start({"--profile", profile, "--timeline", timeline}), std::nullopt);
    const int32_t timed = acquire(kEvent, {element(0), element(kFloor, "1000000")}, 2000);
    const int32_t released = acquire(kResources, {element(kFloor, "2"), element(kFloor, "3")});
    const int32_t kept = acquire(kEvent, {element(99)});
    rule(7, 1, {});
    rule(7, 2, {element(5, "2")});
    EXPECT_TRUE(eventually([] { return !isHeld("/p"); }));
    int32_t result = -1;
    mirx()->release(released, &result);
    simulator.stop();
    acquire(kResources, {element(kFloor, "4")});  // after the end of the timeline

    const Read read(timeline);
    const std::string floor = "cpu0 frequency floor 0x01010010";
    const auto handle = [](int32_t number) { return " | handle " + std::to_string(number); };
    EXPECT_THAT(
            read.slices,
            testing::ElementsAre(
                    "rules | status 1 by rule 7 | rule 7 -> replaced",
                    "0x00000005 | 1 by rule 7 for status 1 | rule 7 -> replaced",
                    "events | LAUNCH by me" + handle(timed) + " -> time ran out",
                    "/p | text by me for LAUNCH" + handle(timed) + " -> time ran out",
                    floor + " | 1000000 by me for LAUNCH" + handle(timed) + " -> time ran out",
                    "resource control | resource control by me" + handle(released) + " -> released",
                    floor + " (2) | 3 by me" + handle(released) + " -> released",
                    "events (2) | never released: event acquire 99 by me" + handle(kept) +
                            " -> never released",
                    "rules | never released: status 2 by rule 7 | rule 7 -> never released",
                    "0x00000005 | never released: 2 by rule 7 for status 2 | rule 7 -> never "
                    "released"));
    ASSERT_GT(read.microseconds.size(), 2u);
    // The hold began shortly before its entry.
    EXPECT_GE(read.microseconds[2], 1'900'000);
    EXPECT_THAT(read.counters.at(floor), testing::ElementsAre(300000, 1000000, 3, 300000, 300000))
            << "the idle value, the value after each change, and the value at the end";
}

TEST_F(SimulatorProgramTest, timelineContinuesAfterAKill) {
    std::vector<std::string> expected;
    for (const int signal : {SIGKILL, SIGTERM, SIGINT}) {
        ChildProcess program(MIRX_SIMULATOR, {"--timeline", timeline});
        program.readUntil("serving");
        const auto handle = std::to_string(acquire(kResources, {element(kFloor, "9")}, 60'000));
        program.signal(signal);
        EXPECT_EQ(program.wait(), signal == SIGKILL ? -SIGKILL : 0);
        if (signal == SIGINT) expected.clear();  // SIGTERM finished the file, so it is replaced
        const std::string end = " | handle " + handle + " -> the service " +
                                (signal == SIGKILL ? "died" : "stopped");
        expected.push_back("resource control | resource control by me" + end);
        expected.push_back("cpu0 frequency floor 0x01010010 | 9 by me" + end);
        EXPECT_EQ(Read(timeline).slices, expected);
    }
    std::ofstream(timeline) << "my diary\n";
    EXPECT_EQ(simulator.start({"--timeline", timeline}), 1);
    EXPECT_EQ(err.str(), "mirx-simulator: " + timeline + ": it is no timeline; move it away\n");
}

TEST_F(SimulatorProgramTest, secondSimulatorReplacesTheFirst) {
    ChildProcess first(MIRX_SIMULATOR, {});
    first.readUntil("serving");
    ChildProcess second(MIRX_SIMULATOR, {});
    EXPECT_EQ(second.readUntil("replaces"), "replaces process " + std::to_string(first.pid()));
    EXPECT_EQ(first.readUntil("replaced"), "replaced by process " + std::to_string(second.pid()));
    EXPECT_EQ(first.wait(), 0);
}

TEST_F(SimulatorProgramTest, callbackFaultsCallEarlyAndTwice) {
    struct Counter : aidl::vendor::tavro::hardware::mirx::BnMirxCallback {
        ndk::ScopedAStatus onCallback(const std::vector<MirxRequestData>&) override {
            ++calls;
            return ndk::ScopedAStatus::ok();
        }
        std::atomic<int> calls = 0;
    };
    ASSERT_EQ(simulator.start({"--fault", "callback=early:once", "--fault", "callback=twice"}),
              std::nullopt);
    MirxRequestParcel parcel;
    parcel.requestType = kResources;
    for (const int calls : {1, 2}) {
        const auto counter = ndk::SharedRefBase::make<Counter>();
        parcel.callback = counter;
        int32_t handle = -1;
        EXPECT_TRUE(mirx()->request(parcel, &handle).isOk());
        if (calls == 1) EXPECT_EQ(counter->calls, 1) << "before the answer";
        EXPECT_TRUE(eventually([&] { return counter->calls == calls; }));
    }
}
