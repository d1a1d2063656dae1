// The simulator's description of parcels and its table of holds.
#include <future>
#include <limits>

#include <gtest/gtest.h>

#include "simulator/describe.h"
#include "simulator/holds.h"
#include "tests/support/data.h"

using simulator::Holder;
using simulator::Holds;

TEST(DescribeTest, parcelIsOneReadableLine) {
    simulator::MirxRequestParcel parcel;
    parcel.requestType = 99;
    parcel.requestData = {element(-5)};
    parcel.stringList = {{"a", std::nullopt}};
    parcel.numbers = {1, 2};
    EXPECT_EQ(simulator::describe(parcel),
              R"(unknown (99) texts=["a" absent] numbers=2 data=[{id=-5}])");
}

TEST(HoldsTest, onlyAHoldWithADurationTimesOut) {
    std::promise<Holder> ended;
    Holds holds{[&](const simulator::Step& step) {
        if (step.ended != nullptr) ended.set_value(step.ended->holder);
    }};
    const int64_t longest = std::numeric_limits<int64_t>::max();
    for (const int64_t duration : {int64_t{0}, int64_t{-1}, longest, int64_t{3'600'000}}) {
        holds.add({.duration = duration});
    }
    const Holder soon = {Holder::kRequest, holds.add({.duration = 1})};
    EXPECT_EQ(ended.get_future().get(), soon);
    EXPECT_FALSE(holds.end(soon));
    EXPECT_EQ(holds.current().size(), 4u);
}

TEST(HoldsTest, handleThatAClientHasChosenIsNotDrawn) {
    Holds holds{[](const simulator::Step&) {}};
    const int32_t chosen = holds.add({}) + 1;  // the next handle
    holds.put({.holder = {Holder::kRequest, chosen}});
    EXPECT_EQ(holds.add({}), chosen + 1);
}
