#!/usr/bin/env bash
# Brings what the binder stack is built from into the cache: the sources and the AIDL compiler that runs from a prefix of
# its own. Everything comes through apt, which checks the archive's signatures; nothing of the machine is upgraded.
#
# Usage: fetch.sh CACHE_DIR. Fetches only what the cache does not hold yet.
set -euo pipefail

cache=$(mkdir -p "$1" && cd "$1" && pwd)
binder_version=34.0.5   # upstream version of android-platform-tools in the suite below
binder_suite=trixie
aidl_suite=forky
tinyxml2_version=9.0.0
jsoncpp_version=1.9.5
benchmark_version=1.7.1
libraries_suite=bookworm

rm -rf "$cache"/fetch.*  # what an interrupted run has left

say() { printf '==> %s\n' "$*"; }
die() { printf 'dev: %s\n' "$*" >&2; exit 1; }

# The mirror is the one that this machine's own sources name for Debian's main archive.
mirror() {
    local codename
    # shellcheck disable=SC1091  # the file is the machine's
    codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    # shellcheck disable=SC2016  # apt's own variables
    apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Identifier: Packages' |
        awk -v c="$codename" '$1 == "Debian" && $2 == c { print $3; exit }'
}

# An apt root that knows one other suite and nothing of the machine: apt_in SUITE apt-get ARGS...
apt_in() {
    local root="$cache/apt/$1" program=$2
    shift 2
    "$program" -q -o Dir::Etc::sourcelist="$root/sources.list" -o Dir::Etc::sourceparts=/dev/null \
        -o Dir::State::Lists="$root/lists" -o Dir::State::status="$root/status" \
        -o Dir::Cache="$root/cache" -o APT::Sandbox::User=root "$@"
}

open_suite() {
    local suite=$1 root="$cache/apt/$1" uri
    uri=$(mirror)
    if [ -z "$uri" ]; then  # a machine that has never read its package lists
        if [ "$(id -u)" -eq 0 ]; then apt-get update -q; else sudo apt-get update -q; fi
        uri=$(mirror)
    fi
    if [ -z "$uri" ]; then
        die "apt on this machine has no Debian archive among its sources (look at /etc/apt)"
    fi
    mkdir -p "$root/lists/partial" "$root/cache/archives/partial"
    : > "$root/status"
    local signed='[signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]'
    printf '%s\n' "deb $signed $uri $suite main" "deb-src $signed $uri $suite main" > "$root/sources.list"
    say "reading the package lists of $suite"
    apt_in "$suite" apt-get update -o APT::Update::Error-Mode=any ||
        die "no answer from the Debian mirror for $suite: is there a network?"
}

# fetch_source SUITE PACKAGE VERSION DIR: the upstream source of PACKAGE, which must be VERSION, unpacked as DIR.
fetch_source() {
    local suite=$1 package=$2 version=$3 target=$4 work
    open_suite "$suite"
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    say "fetching the source of $package"
    (cd "$work" && apt_in "$suite" apt-get source --download-only "$package") ||
        die "the source of $package could not be fetched"
    if ! ls "$work"/*_"$version"*.orig.tar.* >/dev/null 2>&1; then
        die "$suite no longer carries version $version of $package: this recipe has to be looked at"
    fi
    mkdir "$work/unpacked"
    tar -xf "$work"/*.orig.tar.* -C "$work/unpacked" --strip-components=1
    mkdir -p "$(dirname "$target")"
    mv "$work/unpacked" "$target"
    rm -rf "$work"
}

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
