// The simulator's parts: the line it prints for a parcel and the table of holds.
#include <chrono>
#include <future>
#include <limits>

#include <gmock/gmock.h>

#include "simulator/describe.h"
#include "simulator/holds.h"

using simulator::End;
using simulator::Hold;
using simulator::Holds;
using simulator::MirxRequestData;
using simulator::MirxRequestParcel;

TEST(DescribeTest, aParcelIsOneReadableLine) {
    MirxRequestParcel parcel;
    EXPECT_EQ(simulator::describe(parcel), "state (0) data=[]");

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
    int32_t handle;
    End end;
    bool operator==(const Ended&) const = default;
};

class HoldsTest : public testing::Test {
  protected:
    std::vector<Ended> ended() {
        std::lock_guard lock(mMutex);
        return mEnded;
    }
    bool eventuallyEnded(size_t count) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (ended().size() < count && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return ended().size() == count;
    }

    std::mutex mMutex;
    std::vector<Ended> mEnded;
    Holds holds{[this](int32_t handle, const Hold&, End end) {
        std::lock_guard lock(mMutex);
        mEnded.push_back({handle, end});
    }};
};

}  // namespace

TEST_F(HoldsTest, holdsEndOnceAndOnlyWhenReleasedOrTimedOut) {
    const int32_t forGood = holds.add({.duration = 0});
    const int32_t negative = holds.add({.duration = -1});
    const int32_t forAges = holds.add({.duration = std::numeric_limits<int64_t>::max()});
    const int32_t late = holds.add({.duration = 60});
    const int32_t soon = holds.add({.duration = 20});
    EXPECT_TRUE(eventuallyEnded(2));
    EXPECT_THAT(ended(),
                testing::ElementsAre(Ended{soon, End::kTimedOut}, Ended{late, End::kTimedOut}));
    EXPECT_FALSE(holds.release(soon));
    EXPECT_TRUE(holds.release(forGood));
    EXPECT_FALSE(holds.release(forGood));
    EXPECT_EQ(holds.current().size(), 2u);
    EXPECT_TRUE(holds.current().contains(negative));
    EXPECT_TRUE(holds.current().contains(forAges));
}

TEST_F(HoldsTest, aHandleOfTheCallersOwnReplacesWhatItHeldAndIsNotGivenOut) {
    holds.addAs(1, {.owner = "first"});
    EXPECT_EQ(holds.add({}), 2);
    holds.addAs(1, {.owner = "second", .duration = 20});
    EXPECT_THAT(ended(), testing::ElementsAre(Ended{1, End::kReplaced}));
    EXPECT_EQ(holds.current().at(1).owner, "second");
    EXPECT_TRUE(eventuallyEnded(2));
    holds.addAs(-1, {});
    EXPECT_TRUE(holds.release(-1));
}
