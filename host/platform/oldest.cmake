# Compiles with the headers of a libc++ of Android 14's level, fetched by host/platform/toolchains.sh.
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem $ENV{DOV_LIBCXX_9}/include/c++/v1 -Wno-unused-command-line-argument")
