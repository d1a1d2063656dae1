# Compiles for 32-bit Arm with hard float, against the sysroot that host/arm/fetch.sh has made. Programs run under qemu's
# user emulation.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(DOV_ARM_SYSROOT "$ENV{DOV_ARM_SYSROOT}" CACHE PATH "libraries and headers for 32-bit Arm")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DOV_ARM_SYSROOT)
set(CMAKE_SYSROOT "${DOV_ARM_SYSROOT}")
set(LLVM_LIB "${CMAKE_SYSROOT}/usr/lib/llvm-14/lib")
foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET arm-linux-gnueabihf)
endforeach()
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
# The C++ library is named by path, so -stdlib has nothing left to say.
set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfpu=vfpv3-d16 -Wno-unused-command-line-argument")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT} -stdlib++-isystem ${CMAKE_SYSROOT}/usr/lib/llvm-14/include/c++/v1")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld-14 -stdlib=libc++ -L${LLVM_LIB}")
endforeach()
# -L alone is not enough: the loader would look at the machine's cache of libraries first.
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-arm-static;-L;${CMAKE_SYSROOT};-E;LD_LIBRARY_PATH=${CMAKE_SYSROOT}/lib/arm-linux-gnueabihf:${LLVM_LIB}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# The binder stack's package stands outside of the sysroot.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
