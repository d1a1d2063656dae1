// Runs the tests of one tier.
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Death tests run the program again instead of forking one that has binder threads.
    // An emulator cannot do that.
    if (getenv("DOV_EMULATOR") == nullptr) GTEST_FLAG_SET(death_test_style, "threadsafe");
    const int result = RUN_ALL_TESTS();
#if __has_feature(thread_sanitizer)
    // Threads of the transport may still deliver notices while static destructors run.
    _exit(result);
#endif
    return result;
}
