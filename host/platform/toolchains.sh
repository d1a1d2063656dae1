# shellcheck shell=bash
# Fetches compilers and C++ libraries that Debian 12 does not have, for the checks against the platform's toolchains.

newest_clang=22  # of all of Debian's suites

# Debian 12's run-time libraries are too old for this compiler, so its programs run with their own loader and libraries.
fetch_clang() {  # fetch_clang TARGET
    local new=$1.new suite=trixie:amd64 loader program options
    open_suite $suite
    say "fetching clang $newest_clang"
    rm -rf "$new"
    fetch_packages $suite "$new" {clang,lld}-$newest_clang {libclang-cpp,libllvm}$newest_clang libclang-common-$newest_clang-dev \
        libc6 libgcc-s1 libstdc++6 libedit2 libffi8 libxml2 libz3-4 libzstd1 zlib1g libbsd0 libmd0 libtinfo6 liblzma5 libicu76
    loader=$(cd "$new" && find . -name 'ld-linux-x86-64.so.2' -not -type l | head -n 1)
    for program in clang clang++ ld.lld; do
        options="-no-canonical-prefixes -resource-dir \"\$llvm/lib/clang/$newest_clang\""
        if [ $program = ld.lld ]; then options=''; fi
        cat > "$new/$program" <<RUN
#!/bin/sh
here=\$(dirname "\$(readlink -f "\$0")")
llvm="\$here/usr/lib/llvm-$newest_clang"
exec "\$here/$loader" --argv0 "\$here/$program" --library-path "\$llvm/lib:\$here/usr/lib/x86_64-linux-gnu" \\
    "\$llvm/bin/$program" $options "\$@"
RUN
        chmod +x "$new/$program"
        "$new/$program" --version > /dev/null || die "the $program that was fetched does not run here"
    done
    mv "$new" "$1"
}

# Android 15's libc++ is at the level of LLVM 18.
fetch_libcxx_18() {  # fetch_libcxx_18 TARGET
    open_suite trixie:amd64
    fetch_packages trixie:amd64 "$1" libc++-18-dev libc++1-18 libc++abi-18-dev libc++abi1-18 libunwind-18
}

# Android 14's libc++ is at the level of LLVM 8, which differs from 9 in that sets and maps have no contains().
fetch_libcxx_9() {  # fetch_libcxx_9 TARGET
    open_suite bullseye:amd64
    rm -rf "$1.new"
    fetch_packages bullseye:amd64 "$1.new" libc++-9-dev
    sed -i '/ contains(const key_type/d' "$1.new"/usr/lib/llvm-9/include/c++/v1/{,unordered_}{map,set}
    mv "$1.new" "$1"
}

# Sets and exports the paths of the toolchains for the presets `oldest` and `newest`.
need_toolchains() {
    lock_cache
    need_part clang-$newest_clang host/platform/toolchains.sh fetch_clang
    export DOV_CLANG=$part
    need_part libc++-18 host/platform/toolchains.sh fetch_libcxx_18
    export DOV_LIBCXX_18=$part/usr/lib/llvm-18
    need_part libc++-9 host/platform/toolchains.sh fetch_libcxx_9
    export DOV_LIBCXX_9=$part/usr/lib/llvm-9
    unlock_cache
}
