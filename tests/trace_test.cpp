// Tests of the trace sections around calls.
#include <dov/dov.h>

#include <atomic>

#include <gmock/gmock.h>

#include "tests/support/test_services.h"

#include <cutils/trace.h>  // last: it conflicts with names of <atomic>

namespace {

std::atomic<uint64_t> gEnabledTags = 0;
std::vector<std::string> gSections;

}  // namespace

// These override the platform's functions, which do nothing on a host.
#pragma GCC visibility push(default)
extern "C" uint64_t atrace_get_enabled_tags() {
    return gEnabledTags;
}
extern "C" void atrace_begin_body(const char* name) {
    gSections.emplace_back(name);
}
extern "C" void atrace_end_body() {
#pragma GCC visibility pop
    gSections.emplace_back("end");
}

class TraceTest : public BinderTest {
  protected:
    TraceTest() {
        gEnabledTags = ATRACE_TAG_ALWAYS | ATRACE_TAG_VIEW;
        gSections.clear();
    }
    ~TraceTest() override { gEnabledTags = 0; }
};

TEST_F(TraceTest, eachCallOpensAndClosesASection) {
    DovEventAcquire(3, std::string("a\0b", 3), "me", -5, {});
    DovEventAcquireOneWay(INT32_MIN, "", "", INT32_MAX, {});
    DovResAcquire({}, "ignored", "me", 1);
    DovRelease(-7);
    EXPECT_THAT(gSections,
                testing::ElementsAre(
                        "DovEventAcquire  cmd_id:3 pkg:a", "end",
                        "DovEventAcquireOneWay  cmd_id:-2147483648 pkg:none identity:none "
                        "duration:2147483647",
                        "end", "DovEventAcquire  cmd_id:-2 pkg:none identity:me duration:1", "end",
                        "DovRelease: -7", "end"));
    gEnabledTags = ~uint64_t{ATRACE_TAG_ALWAYS};
    DovRelease(1);
    EXPECT_EQ(gSections.size(), 8u) << "a section while the always-on tag is off";
}

TEST_F(TraceTest, longNamesAreCutAt1022Characters) {
    for (const size_t length : {950u, 1022u - 30u, 1023u - 30u, 5000u}) {
        gSections.clear();
        const std::string package(length, 'p');
        DovEventAcquire(3, package, "me", 1, {});
        const std::string whole =
                "DovEventAcquire  cmd_id:3 pkg:" + package + " identity:me duration:1";
        EXPECT_THAT(gSections, testing::ElementsAre(whole.substr(0, 1022), "end"));
    }
}
