# Compiles with the newest clang and lld and a libc++ of Android 15's level, fetched by host/platform/toolchains.sh.
# The built programs cannot run here.
set(CMAKE_C_COMPILER $ENV{DOV_CLANG}/clang)
set(CMAKE_CXX_COMPILER $ENV{DOV_CLANG}/clang++)
# The path of the C++ library is given, so the compiler would report -stdlib as unused.
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem $ENV{DOV_LIBCXX_18}/include/c++/v1 -Wno-unused-command-line-argument")
set(DOV_LINKER --ld-path=$ENV{DOV_CLANG}/ld.lld -L$ENV{DOV_LIBCXX_18}/lib LINKER:--allow-shlib-undefined CACHE STRING "" FORCE)
