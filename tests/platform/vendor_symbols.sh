#!/usr/bin/env bash
# Checks that the modules link only symbols and libraries that a vendor module may link:
#   vendor_symbols.sh LIBBINDER_NDK LIBLOG FILE...
# Needs DOV_SOONG and DOV_ANDROID, the sources of Soong and of the platform; ./dev test sets them.
set -euo pipefail
soong=${DOV_SOONG:?./dev test fetches it} android=${DOV_ANDROID:?./dev test fetches it} libbinder_ndk=$1 liblog=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
echo '{"UpsideDownCake": 34}' > "$work/levels"
complain() { printf '%s\n' "$*" >&2; failed=1; }

# The symbols of the stub library that a vendor module of Android 14 links: stub LIBRARY MAP
stub() {
    PYTHONPATH=$soong/cc PYTHONDONTWRITEBYTECODE=1 python3 "$soong/cc/ndkstubgen/__init__.py" --arch arm64 --api 34 --llndk \
        --api-map "$work/levels" "$2" "$work/stub.c" "$work/stub.map"
    sed -n 's/^ *\([A-Za-z_0-9]*\);$/\1/p' "$work/stub.map" | sort > "$work/open"
    # The C++ symbols are libbase's, which is linked in here and a library of its own on a device.
    nm -D --defined-only --format=posix "$1" | cut -d ' ' -f 1 | grep -vE '^_ZNK?(7android4base|3fmt)' | sort | comm -13 "$work/open" -
}
{
    stub "$libbinder_ndk" "$android/frameworks/native/libs/binder/ndk/libbinder_ndk.map.txt"
    stub "$liblog" "$android/system/logging/liblog/liblog.map.txt"
} | sort > "$work/closed"

# The LLNDK and VNDK libraries that the Android.bp files name, our own libraries, and the language run times.
allowed='libbinder_ndk|liblog|libbinder|libutils|libcutils|libbase|libtinyxml2|vendor\.tavro\.hardware\.mirx-V1-ndk|libtavro-dov-client|libc\+\+|libc\+\+abi|libunwind|libgcc_s|libc|libm|ld-linux-x86-64'
for file; do
    # A program has host/services linked in, which no device has; its own code is checked in its archive and objects.
    if [[ $file =~ \.(so|a|o)$ ]]; then
        used=$(nm --undefined-only --format=posix "$file" | cut -d ' ' -f 1 | sed 's/@.*//' | sort -u | comm -12 - "$work/closed")
        [ -z "$used" ] || complain "$file uses what vendor modules may not: ${used//$'\n'/ }"
    fi
    needed=$(readelf -dW "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -vE "^($allowed)\.so" || true)
    [ -z "$needed" ] || complain "$file needs ${needed//$'\n'/ }"
done
exit $failed
