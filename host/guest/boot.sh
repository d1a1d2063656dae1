#!/usr/bin/env bash
# Boots Debian's kernel with its binder driver in qemu, runs the programs of a build folder over the driver and powers off.
#
# Usage: boot.sh amd64|armhf BUILD_FOLDER CACHE_DIR tests [GTEST_FILTER]
#        boot.sh amd64|armhf BUILD_FOLDER CACHE_DIR bench [BENCHMARK_FILTER]
# Needs DOV_STACK, the binder stack of that build. Ends with 0 when all tests have passed, all calls been measured.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
architecture=$1
build=$(readlink -f "$2")
cache=$3
task=$4
kernel=$cache/guest-$architecture
sysroot=$cache/sysroot-armhf
simulator=$(readlink -f "$here/../../simulator")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

# What runs in the guest stands at the same paths as here, without what only a debugger reads.
stripped() {
    local file
    for file in "$@"; do
        mkdir -p "$root$(dirname "$file")"
        llvm-strip-14 --strip-debug -o "$root$file" "$file"
    done
}

mkdir -p "$root"/{bin,dev,etc,lib,proc,sys,tmp} "$root"/vendor/etc/vintf/manifest "$root$simulator"
cp "$here/init" "$root/init"
cp "$kernel/busybox" "$root/bin/"
cp "$kernel/binder_linux.ko" "$root/lib/"
cp "$simulator"/*.xml "$root$simulator/"
cp "$simulator/vendor.tavro.hardware.mirx-service.xml" "$root/vendor/etc/vintf/manifest/mirx.xml"
programs=("$build"/{simulator/mirx-simulator,dovctl/dovctl,host/servicemanager/servicemanager})
case $task in
    tests)
        filter=${5:-*}
        programs+=("$build"/tests/{binder_tests,exit_program,test-relay})
        ;;
    bench)
        filter=${5:-.}
        programs+=("$build/bench/calls_bench")
        ;;
    *)
        echo "boot.sh: the guest cannot do '$task'" >&2
        exit 2
        ;;
esac
stripped "${programs[@]}" "$build"/*.so "$build"/aidl/*.so "$DOV_STACK"/lib/*.so
case $architecture in
    amd64)
        ldd "${programs[@]}" | awk '$2 == "=>" { print $3 } $1 ~ /ld-linux/ { print $1 }' | sort -u |
            while read -r library; do
                [ -e "$root$library" ] || { mkdir -p "$root$(dirname "$library")"; cp -L "$library" "$root$library"; }
            done
        machine=(qemu-system-x86_64 -M q35 -cpu max)
        console=ttyS0
        ;;
    armhf)
        cp -L "$sysroot/lib/ld-linux-armhf.so.3" "$sysroot"/lib/arm-linux-gnueabihf/{libc.so.6,libm.so.6,libgcc_s.so.1} \
            "$sysroot"/usr/lib/llvm-14/lib/{libc++.so.1,libc++abi.so.1,libunwind.so.1} "$root/lib/"
        machine=(qemu-system-arm -M virt,highmem=off -cpu cortex-a15)
        console=ttyAMA0
        ;;
    *)
        echo "boot.sh: there is no guest for '$architecture'" >&2
        exit 2
        ;;
esac
cat > "$root/etc/guest" <<VARIABLES
build=$build
task=$task
filter='$filter'
VARIABLES
(cd "$root" && find . | cpio --quiet -o -H newc -R 0:0) | gzip -1 > "$work/initrd.gz"

# The driver asks for the security context of callers, so SELinux must be on. A guest that hangs is ended after 40 minutes.
start=$EPOCHREALTIME
timeout 2400 "${machine[@]}" -accel tcg -smp 2 -m 1024 -nographic -nic none -no-reboot -kernel "$kernel/vmlinuz" -initrd "$work/initrd.gz" \
    -append "console=$console quiet panic=-1 security=selinux selinux=1 enforcing=0 rdinit=/init" < /dev/null |
    stdbuf -oL tr -d '\r' | sed -un '/guest: up/,$ { s/^.*guest: up/guest: up/; p }' | tee "$work/console" |
    stdbuf -oL grep -av '^guest-verdict ' || true
end=$EPOCHREALTIME
printf 'guest %s: from start to power-off %.1f s\n' "$architecture" "$(echo "$end $start" | awk '{ print $1 - $2 }')"
# The emulator ends with 0 whatever happens inside.
verdict=$(sed -n 's/^guest-verdict //p' "$work/console" | tail -n 1)
[ -n "$verdict" ] || { echo "guest $architecture: it ended without a verdict" >&2; exit 1; }
exit "$verdict"
