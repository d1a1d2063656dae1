# shellcheck shell=bash
# Builds a preset of CMakePresets.json and runs its programs in a guest.

# Options for programs built with a sanitizer.
export TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp ${TSAN_OPTIONS:-}"
export ASAN_OPTIONS="detect_stack_use_after_return=1 ${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="print_stacktrace=1 ${UBSAN_OPTIONS:-}"

build() {  # build PRESET [TARGET...]
    local preset=$1 packages=() parts
    shift
    case $preset in
        arm) packages=(qemu-user-static) ;;
        address | thread | undefined) packages=(llvm-14) ;;
    esac
    need_packages clang-14 lld-14 libc++-14-dev libc++abi-14-dev libclang-rt-14-dev cmake ninja-build googletest patch xz-utils \
        ca-certificates debian-archive-keyring "${packages[@]}"
    need_stack "$preset"
    need_space build 500
    # The parts of the cache that the build uses. The file is written after a successful configuration.
    parts="$DOV_STACK $DOV_AIDL $DOV_BENCHMARK ${DOV_ARM_SYSROOT:-}"
    if [ "$parts" != "$(cat "build/$preset/configured_with" 2>/dev/null)" ]; then
        say "configuring build/$preset"
        rm -rf "build/$preset"
        cmake --preset "$preset" > build/configure.log 2>&1 || die "cmake failed: see build/configure.log"
        echo "$parts" > "build/$preset/configured_with"
    fi
    say "building $*"
    later=0 run_ninja "build/$preset" "$@" || die "the build failed"
}

need_guest() {  # need_guest PRESET: sets `part`
    local architecture=amd64 emulator=qemu-system-x86
    if [ "$1" = arm ]; then architecture=armhf emulator=qemu-system-arm; fi
    need_packages llvm-14 cpio $emulator
    lock_cache
    need_part guest-$architecture host/guest/kernel.sh fetch_guest $architecture
    unlock_cache
}

# Runs programs of a build in a guest: run_in_guest PRESET tests|vendor|bench [PATTERN]
run_in_guest() {
    local architecture=amd64 preset=$1
    if [ "$preset" = arm ]; then architecture=armhf; fi
    shift
    need_guest "$preset"
    host/guest/boot.sh $architecture "build/$preset" "$part" "$@"
}
