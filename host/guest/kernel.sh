# shellcheck shell=bash
# Fetches the guest's parts: Debian's kernel, its binder driver and busybox.

fetch_guest() {  # fetch_guest TARGET amd64|armhf
    local target=$1 architecture=$2 flavour=amd64 suite=bookworm:$2 kernel packages
    if [ "$architecture" = armhf ]; then flavour=armmp; fi
    open_suite "$suite"
    kernel=$(apt_in "$suite" apt-cache depends "linux-image-$flavour" |
        awk '$1 == "Depends:" && $2 ~ /^linux-image-/ { print $2; exit }')
    [ -n "$kernel" ] || die "$suite has no kernel for $architecture"
    say "fetching $kernel"
    packages=$target.packages
    rm -rf "$target.new" "$packages"
    fetch_packages "$suite" "$packages" "$kernel" busybox-static
    mkdir "$target.new"
    mv "$packages"/boot/vmlinuz-* "$target.new/vmlinuz"
    mv "$packages"/lib/modules/*/kernel/drivers/android/binder_linux.ko "$packages/bin/busybox" "$packages/versions" \
        "$target.new/"
    rm -rf "$packages"
    mv "$target.new" "$target"
}
