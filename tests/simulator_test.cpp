// The simulator's description of parcels and its table of holds.
#include <chrono>
#include <limits>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>

#include "simulator/describe.h"
#include "simulator/holds.h"
#include "tests/support/data.h"

using simulator::End;
using simulator::Hold;
using simulator::Holder;
using simulator::Holds;
using simulator::MirxRequestData;
using simulator::MirxRequestParcel;
using simulator::ResourceKey;

TEST(DescribeTest, parcelIsOneReadableLine) {
    MirxRequestParcel parcel;
    EXPECT_EQ(simulator::describe(parcel), "state query (0) data=[]");

    parcel.requestType = 8;
    parcel.requestData.resize(2);
    parcel.requestData[0].id = -5;
    parcel.requestData[1].id = static_cast<int32_t>(0xf1010010);
    parcel.requestData[1].arg = 3;
    parcel.requestData[1].value = "two\nlines \"and\" \\";
    parcel.requestData[1].path = "";
    parcel.flag = true;
    parcel.duration = std::numeric_limits<int64_t>::min();
    parcel.packageName = "com.example";
    parcel.stringList = {{"a", std::nullopt}};
    parcel.numbers = {1, 2};
    EXPECT_EQ(simulator::describe(parcel),
              "event acquire (8) duration=-9223372036854775808 flag package=\"com.example\" "
              "texts=[\"a\" absent] numbers=2 "
              "data=[{id=-5} {id=0xf1010010 arg=3 value=\"two\\x0alines \\\"and\\\" \\\\\" "
              "path=\"\"}]");

    parcel = {};
    parcel.requestType = 99;
    EXPECT_EQ(simulator::describe(parcel), "unknown (99) data=[]");
}

namespace {

struct Ended {
    Holder holder;
    End end;
    bool operator==(const Ended&) const = default;
};

MirxRequestData pathSetting(const std::string& path, const std::string& value) {
    MirxRequestData data = element(0, value);
    data.path = path;
    return data;
}

constexpr int32_t kFloor = 0x01010010;  // idles at 300000
const Holder kRule14 = {Holder::kRule, 14};

class HoldsTest : public testing::Test {
  protected:
    std::vector<Ended> ended() {
        std::lock_guard lock(mMutex);
        return mEnded;
    }
    std::string takeChanges() {
        std::lock_guard lock(mMutex);
        return simulator::describe(std::exchange(mChanges, {}));
    }
    bool eventuallyEnded(size_t count) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (ended().size() < count && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return ended().size() == count;
    }
    static Holder request(int32_t handle) { return {Holder::kRequest, handle}; }

    std::mutex mMutex;
    std::vector<Ended> mEnded GUARDED_BY(mMutex);
    std::vector<MirxRequestData> mChanges GUARDED_BY(mMutex);
    Holds holds{[this](const simulator::Step& step) {
        std::lock_guard lock(mMutex);
        if (step.ended != nullptr) mEnded.push_back({step.ended->holder, step.why});
        mChanges.insert(mChanges.end(), step.changed.begin(), step.changed.end());
    }};
};

}  // namespace

TEST_F(HoldsTest, holdEndsOnceByReleaseOrTimeout) {
    const int32_t forGood = holds.add({.duration = 0});
    const int32_t negative = holds.add({.duration = -1});
    const int32_t forAges = holds.add({.duration = std::numeric_limits<int64_t>::max()});
    const int32_t late = holds.add({.duration = 60});
    const int32_t soon = holds.add({.duration = 20});
    EXPECT_TRUE(eventuallyEnded(2));
    EXPECT_THAT(ended(), testing::ElementsAre(Ended{request(soon), End::kTimedOut},
                                              Ended{request(late), End::kTimedOut}));
    EXPECT_FALSE(holds.end(request(soon)));
    EXPECT_TRUE(holds.end(request(forGood)));
    EXPECT_FALSE(holds.end(request(forGood)));
    const auto left = holds.current();
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].holder, request(negative));
    EXPECT_EQ(left[1].holder, request(forAges));
}

TEST_F(HoldsTest, handleChosenByTheCallerIsReplacedAndReserved) {
    const int32_t own = holds.add({}) + 1;  // the next handle
    holds.put({.holder = request(own), .identity = "first"});
    EXPECT_EQ(holds.add({}), own + 1);
    holds.put({.holder = request(own), .identity = "second", .duration = 20});
    EXPECT_THAT(ended(), testing::ElementsAre(Ended{request(own), End::kReplaced}));
    EXPECT_EQ(holds.current().back().identity, "second");
    EXPECT_TRUE(eventuallyEnded(2));
    holds.put({.holder = request(-1)});
    EXPECT_TRUE(holds.end(request(-1)));
}

TEST_F(HoldsTest, newestHoldDeterminesTheValueUntilItEnds) {
    const ResourceKey floor = {.opcode = kFloor};
    EXPECT_EQ(holds.effectiveValue(floor), "300000");
    const int32_t older = holds.add({.resources = {element(kFloor, "1"), element(77, "x")}});
    EXPECT_EQ(takeChanges(), "[{id=77 value=\"x\"} {id=0x01010010 value=\"1\"}]");
    const int32_t newer = holds.add({.resources = {element(kFloor, "5"), element(kFloor, "2")}});
    EXPECT_EQ(takeChanges(), "[{id=0x01010010 value=\"2\"}]") << "the later of two settings counts";
    holds.put({.holder = kRule14, .resources = {element(kFloor, "2")}});
    EXPECT_EQ(takeChanges(), "[]") << "the value does not change";
    holds.end(request(newer));
    EXPECT_EQ(takeChanges(), "[]");
    holds.end(kRule14);
    EXPECT_EQ(takeChanges(), "[{id=0x01010010 value=\"1\"}]");
    EXPECT_EQ(holds.effective().at(floor), (std::pair<std::string, Holder>("1", request(older))));
    holds.end(request(older));
    EXPECT_EQ(takeChanges(), "[{id=77} {id=0x01010010 value=\"300000\"}]")
            << "an unknown resource has no value once nobody holds it";
}

TEST_F(HoldsTest, pathsOpcodesRulesAndHandlesAreDistinct) {
    holds.put({.holder = request(14), .resources = {pathSetting("/a", "1")}});
    holds.put({.holder = kRule14, .resources = {element(0, "2")}});
    EXPECT_TRUE(ended().empty())
            << "a rule and a request with the same number are different holders";
    EXPECT_EQ(holds.effectiveValue({.path = "/a"}), "1");
    EXPECT_EQ(holds.effectiveValue({.opcode = 0}), "2");
    EXPECT_EQ(holds.effectiveValue({.path = "/b"}), std::nullopt);
}
