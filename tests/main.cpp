// The main function of the test programs.
#include <stdlib.h>
#include <unistd.h>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // Death tests start the program again: forking it would be unsafe with binder threads. An
    // emulator cannot start it again.
    if (getenv("DOV_EMULATOR") == nullptr) GTEST_FLAG_SET(death_test_style, "threadsafe");
    const int result = RUN_ALL_TESTS();
#if __has_feature(thread_sanitizer)
    // Skips the static destructors: the transport's threads may still deliver death notices.
    _exit(result);
#endif
    return result;
}
