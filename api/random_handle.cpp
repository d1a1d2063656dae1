// Handles that the client chooses itself.
#include <fcntl.h>
#include <unistd.h>

#include <dov/dov.h>

#include "api/binding.h"

int32_t dovGetRandomHandle() {
    const int fd = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        __android_log_print(ANDROID_LOG_ERROR, dov::kLogTag,
                            "dovClient open /dev/urandom failed: fd(%d) \n", fd);
        return -1;
    }
    uint32_t random = 0;
    const ssize_t length = read(fd, &random, sizeof(random));
    if (length != sizeof(random)) {
        __android_log_print(ANDROID_LOG_ERROR, dov::kLogTag,
                            "dovClient read /dev/urandom failed,len(%d) \n",
                            static_cast<int>(length));
        close(fd);
        return -1;
    }
    close(fd);
    return static_cast<int32_t>(random & 0x7fffffff);
}
