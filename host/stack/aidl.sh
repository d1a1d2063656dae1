# shellcheck shell=bash
# Fetches the AIDL compiler. Only a newer suite has it, and it needs newer run-time libraries than Debian 12's, so it runs
# with its own loader and libraries.

fetch_aidl() {  # fetch_aidl TARGET
    local target=$1 loader suite=forky:amd64
    open_suite $suite
    say "fetching the AIDL compiler"
    rm -rf "$target.new"
    fetch_packages $suite "$target.new" aidl libc6 libstdc++6 libgcc-s1 libatomic1 android-libbase android-libcutils \
        android-liblog
    loader=$(cd "$target.new" && find . -name 'ld-linux-x86-64.so.2' -not -type l | head -n 1)
    [ -n "$loader" ] || die "the C library that was fetched for the AIDL compiler has no loader"
    cat > "$target.new/run-aidl" <<RUN
#!/bin/sh
here=\$(dirname "\$(readlink -f "\$0")")
lib="\$here/usr/lib/x86_64-linux-gnu"
exec "\$here/$loader" --library-path "\$lib:\$lib/android" "\$here/usr/bin/aidl" "\$@"
RUN
    chmod +x "$target.new/run-aidl"
    "$target.new/run-aidl" --help 2>&1 | grep -q -- '--lang={java|cpp|ndk|rust}' ||
        die "the AIDL compiler that was fetched does not run here"
    mv "$target.new" "$target"
}
