# shellcheck shell=bash
# Fetches and builds the binder stack, once for each state of its sources, recipe and compiler.

# Sets and exports the paths of all cached parts that a build of the preset uses: need_stack PRESET
need_stack() {
    local preset=$1 options parts version aidl
    case $preset in oldest | newest) preset=host ;; esac  # they only compile, against the same stack
    case $preset in
        arm) options=(-DCMAKE_TOOLCHAIN_FILE="$PWD/host/arm/arm-linux-gnueabihf.cmake") ;;
        host) options=() ;;
        *) options=(-DDOV_SANITIZE="$preset") ;;
    esac
    export DOV_ARM_SYSROOT=''
    lock_cache
    need_source benchmark
    export DOV_BENCHMARK=$part
    need_part aidl host/stack/aidl.sh fetch_aidl
    aidl=$part
    export DOV_AIDL=$aidl/run-aidl
    parts=("$aidl/versions")
    if [ "$preset" = arm ]; then
        need_part sysroot-armhf host/arm/sysroot.sh fetch_sysroot
        export DOV_ARM_SYSROOT=$part
        parts+=("$part/versions" host/arm/arm-linux-gnueabihf.cmake)
    fi
    need_source android-platform-tools
    export DOV_ANDROID=$part
    version=${part##*/android-platform-tools-}
    options+=(-DANDROID_SOURCE="$part")
    need_source tinyxml2
    options+=(-DTINYXML2_SOURCE="$part")
    need_source libjsoncpp
    options+=(-DJSONCPP_SOURCE="$part" -DAIDL="$DOV_AIDL")
    parts+=(host/stack/CMakeLists.txt host/stack/compat.h host/stack/patches/*)
    DOV_STACK=$cache/stack-${version%-*}-$preset-$({
        cat "${parts[@]}"
        echo "${options[@]##*/}"
        clang++-14 --version
    } | key)
    export DOV_STACK
    if [ ! -d "$DOV_STACK" ]; then
        build_stack "${options[@]}"
    fi
    unlock_cache
}

build_stack() {  # build_stack CMAKE_OPTION...
    local work=$cache/stack-build
    say "building the binder stack"
    need_space "$cache" 500
    rm -rf "$work" "$DOV_STACK.new"
    cmake -G Ninja -S host/stack -B "$work" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang-14 \
        -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_INSTALL_PREFIX="$DOV_STACK.new" "$@" > "$cache/stack-configure.log" 2>&1 ||
        die "the binder stack could not be configured: see $cache/stack-configure.log"
    run_ninja "$work" all || die "the binder stack could not be built"
    cmake --install "$work" > /dev/null
    rm -rf "$work"
    mv "$DOV_STACK.new" "$DOV_STACK"
}
