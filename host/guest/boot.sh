#!/usr/bin/env bash
# Boots Debian's kernel with its binder driver in qemu, runs the programs of a build folder over the driver and powers off.
#
# Usage: boot.sh amd64|armhf BUILD_FOLDER GUEST_FOLDER tests [GTEST_FILTER]
#        boot.sh amd64|armhf BUILD_FOLDER GUEST_FOLDER vendor [GTEST_FILTER]   the library as in a vendor process
#        boot.sh amd64|armhf BUILD_FOLDER GUEST_FOLDER bench [BENCHMARK_FILTER]
# GUEST_FOLDER is what host/guest/kernel.sh has fetched. Needs DOV_STACK, the binder stack of that build, and for armhf
# DOV_ARM_SYSROOT. Exits with 0 if all tests passed or all calls were measured.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
architecture=$1
build=$(readlink -f "$2")
kernel=$3
task=$4
sysroot=${DOV_ARM_SYSROOT:-}
simulator=$(readlink -f "$here/../../simulator")
sessions=$(readlink -f "$here/../../tests/sessions")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

# Copies files to the same paths in the guest, without debug information.
stripped() {
    local file
    for file in "$@"; do
        mkdir -p "$root$(dirname "$file")"
        llvm-strip-14 --strip-debug -o "$root$file" "$file"
    done
}

mkdir -p "$root"/{bin,dev,etc,lib,proc,sys,tmp} "$root"/vendor/etc/vintf/manifest "$root"{"$simulator","$sessions"}
mkdir -p "$root/usr/lib/locale"
cp -r /usr/lib/locale/C.utf8 "$root/usr/lib/locale/"  # dovctl reads text as UTF-8
cp "$here/init" "$root/init"
cp "$kernel/busybox" "$root/bin/"
cp "$kernel/binder_linux.ko" "$root/lib/"
cp "$simulator"/*.xml "$root$simulator/"
cp "$sessions"/* "$root$sessions/"
cp "$simulator/vendor.tavro.hardware.mirx-service.xml" "$root/vendor/etc/vintf/manifest/mirx.xml"
programs=("$build"/{simulator/mirx-simulator,dovctl/dovctl} "$build"/host/servicemanager/{servicemanager,dumpsys,service})
case $task in
    tests | vendor)
        filter=${5:-*}
        if [ "$task" = vendor ]; then
            filter=${5:-BindingTest.*:OperationsTest.*:ListeningTest.*:LoadTest.*}
            preload=$build/tests/platform/libvendor_process.so
            stripped "$preload"
        fi
        programs+=("$build"/tests/{binder_tests,exit_program,plain_service,test-relay} "$build/vts/VtsHalMirxTargetTest")
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
preload=${preload:-}
filter='$filter'
VARIABLES
(cd "$root" && find . | cpio --quiet -o -H newc -R 0:0) | gzip -1 > "$work/initrd.gz"

# SELinux must be on because the driver asks for the callers' security context. A hanging guest is killed after 40 minutes.
start=$EPOCHREALTIME
timeout 2400 "${machine[@]}" -accel tcg -smp 2 -m 1024 -nographic -nic none -no-reboot -kernel "$kernel/vmlinuz" -initrd "$work/initrd.gz" \
    -append "console=$console quiet panic=-1 security=selinux selinux=1 enforcing=0 rdinit=/init" < /dev/null |
    stdbuf -oL tr -d '\r' | sed -un '/guest: up/,$ { s/^.*guest: up/guest: up/; p }' | tee "$work/console" |
    stdbuf -oL grep -av '^guest-verdict ' || true
end=$EPOCHREALTIME
printf 'guest %s: from start to power-off %.1f s\n' "$architecture" "$(echo "$end $start" | awk '{ print $1 - $2 }')"
# qemu exits with 0 even if the guest failed.
verdict=$(sed -n 's/^guest-verdict //p' "$work/console" | tail -n 1)
[ -n "$verdict" ] || { echo "guest $architecture: it ended without a verdict" >&2; exit 1; }
exit "$verdict"
