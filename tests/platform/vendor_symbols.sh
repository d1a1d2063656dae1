#!/usr/bin/env bash
# Checks that the modules link only symbols and libraries that a vendor module may link:
#   vendor_symbols.sh LIBBINDER_NDK LIBLOG FILE...
# Needs DOV_SOONG and DOV_ANDROID, the sources of Soong and of the platform; ./dev test sets them.
# shellcheck source=tests/common.sh
. "$(dirname "$0")/../common.sh"
generator=${DOV_SOONG:?./dev test fetches it}/cc libraries=("$1" "$2")
maps=("${DOV_ANDROID:?./dev test fetches it}"/{frameworks/native/libs/binder/ndk/libbinder_ndk,system/logging/liblog/liblog}.map.txt)
shift 2
echo '{"UpsideDownCake": 34}' > "$work/levels"
# The symbols of both libraries that are not in the stub library that a vendor module of Android 14 links.
for i in 0 1; do
    PYTHONPATH=$generator PYTHONDONTWRITEBYTECODE=1 python3 "$generator/ndkstubgen/__init__.py" --arch arm64 --api 34 --llndk \
        --api-map "$work/levels" "${maps[i]}" "$work/stub.c" "$work/stub.map"
    sed -n 's/^ *\([A-Za-z_0-9]*\);$/\1/p' "$work/stub.map" | sort > "$work/open"
    # The C++ symbols are libbase's, which is linked in here and a library of its own on a device.
    nm -D --defined-only --format=posix "${libraries[i]}" | cut -d ' ' -f 1 | grep -vE '^_ZNK?(7android4base|3fmt)' | sort |
        comm -13 "$work/open" -
done | sort > "$work/closed"

# The LLNDK and VNDK libraries that the Android.bp files name, our own libraries, and the language run times.
allowed='libbinder_ndk|liblog|libbinder|libutils|libcutils|libbase|libtinyxml2|vendor\.tavro\.hardware\.mirx-V1-ndk|libtavro-dov-client|libc\+\+|libc\+\+abi|libunwind|libgcc_s|libc|libm|ld-linux-x86-64'
for file; do
    # A program has host/services linked in, which no device has; its own code is checked in its archive and objects.
    if [[ $file =~ \.(so|a|o)$ ]]; then
        used=$(nm --undefined-only --format=posix "$file" | cut -d ' ' -f 1 | sed 's/@.*//' | sort -u | comm -12 - "$work/closed")
        [ -z "$used" ] || complain "$file uses what vendor modules may not: ${used//$'\n'/ }"
    fi
    ! readelf -dW "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -vE "^($allowed)\.so" ||
        complain "$file needs these libraries, which vendor modules may not"
done
