// dovctl whose output is a terminal or cannot be written.
#include "dovctl/dovctl.h"

#include <sstream>

#include <gmock/gmock.h>

#include "tests/support/test_services.h"
#include "tests/support/test_waiter.h"

using DovctlTest = BinderTest;

TEST_F(DovctlTest, terminalGetsNoControlCharacters) {
    std::ostringstream out, err;
    TestWaiter waiter;
    dovctl::Dovctl dovctl({out, true}, {err, true}, waiter);
    EXPECT_EQ(dovctl.run({"\x1b[2J"}), 2);
    EXPECT_EQ(err.str(), "dovctl: unknown command '\\x1b[2J'; try 'dovctl --help'\n");
    dovctl.run({"help"});
    EXPECT_THAT(out.str(), testing::HasSubstr("...\n"));
}

TEST_F(DovctlTest, handleThatCannotBePrintedIsReleased) {
    std::ostringstream err;
    std::ostream closed(nullptr);
    TestWaiter waiter;
    EXPECT_EQ(dovctl::Dovctl({closed}, {err}, waiter).run({"acquire", "1"}), 7);
    EXPECT_EQ(err.str(),
              "released, because the handle cannot be written\n"
              "dovctl: cannot write the output: the stream is closed\n");
    EXPECT_EQ(service->take().at(1).operation, "release");
}
