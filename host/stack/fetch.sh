#!/usr/bin/env bash
# Brings what the binder stack is built from into the cache: the sources and the AIDL compiler that runs from a prefix of
# its own. Everything comes through apt, which checks the archive's signatures; nothing of the machine is upgraded.
#
# Usage: fetch.sh CACHE_DIR. Fetches only what the cache does not hold yet.
set -euo pipefail

binder_version=34.0.5   # upstream version of android-platform-tools in the suite below
binder_suite=trixie
aidl_suite=forky
tinyxml2_version=9.0.0
jsoncpp_version=1.9.5
benchmark_version=1.7.1
libraries_suite=bookworm

# shellcheck source=host/apt.sh
. "$(dirname "$0")/../apt.sh"

# The compiler needs newer run-time libraries than the machine's; it runs through its own loader with its own libraries.
fetch_aidl() {
    local target=$1 work archive loader
    open_suite "$aidl_suite"
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    say "fetching the AIDL compiler"
    (cd "$work" && apt_in "$aidl_suite" apt-get download aidl libc6 libstdc++6 libgcc-s1 libatomic1 \
        android-libbase android-libcutils android-liblog) || die "the AIDL compiler could not be fetched"
    for archive in "$work"/*.deb; do
        dpkg -x "$archive" "$work/prefix"
    done
    loader=$(cd "$work/prefix" && find . -name 'ld-linux-x86-64.so.2' -not -type l | head -n 1)
    [ -n "$loader" ] || die "the C library that was fetched for the AIDL compiler has no loader"
    cat > "$work/prefix/run-aidl" <<RUN
#!/bin/sh
here=\$(dirname "\$(readlink -f "\$0")")
lib="\$here/usr/lib/x86_64-linux-gnu"
exec "\$here/$loader" --library-path "\$lib:\$lib/android" "\$here/usr/bin/aidl" "\$@"
RUN
    chmod +x "$work/prefix/run-aidl"
    "$work/prefix/run-aidl" --help 2>&1 | grep -q -- '--lang={java|cpp|ndk|rust}' ||
        die "the AIDL compiler that was fetched does not run here"
    mv "$work/prefix" "$target"
    rm -rf "$work"
}

# Not "[ -d ... ] || fetch": on the right of || a failing command would not end the script.
android="$cache/src/android-platform-tools-$binder_version"
if [ ! -d "$android" ]; then fetch_source "$binder_suite" android-platform-tools "$binder_version" "$android"; fi
if [ ! -d "$cache/src/tinyxml2" ]; then
    fetch_source "$libraries_suite" tinyxml2 "$tinyxml2_version" "$cache/src/tinyxml2"
fi
if [ ! -d "$cache/src/jsoncpp" ]; then
    fetch_source "$libraries_suite" libjsoncpp "$jsoncpp_version" "$cache/src/jsoncpp"
fi
if [ ! -d "$cache/src/benchmark" ]; then
    fetch_source "$libraries_suite" benchmark "$benchmark_version" "$cache/src/benchmark"
fi
if [ ! -d "$cache/aidl" ]; then fetch_aidl "$cache/aidl"; fi
