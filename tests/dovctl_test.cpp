// dovctl where its output cannot be written.
#include "dovctl/dovctl.h"

#include <sstream>

#include <gmock/gmock.h>

#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using DovctlTest = BinderTest;

TEST_F(DovctlTest, handleThatCannotBePrintedIsReleased) {
    std::ostringstream err;
    std::ostream closed(nullptr);
    TestWaiter waiter;
    EXPECT_EQ(dovctl::Dovctl({closed}, {err}, waiter).run({"acquire", "1"}), 7);
    EXPECT_EQ(err.str(),
              "released, because the handle cannot be written\n"
              "dovctl: cannot write the output: the stream is closed\n");
    const auto calls = service->take();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[1].operation, "release");
}
