# shellcheck shell=bash
# Fetches the sysroot for 32-bit Arm: headers and libraries from Debian packages.

fetch_sysroot() {  # fetch_sysroot TARGET
    local target=$1 link suite=bookworm:armhf
    open_suite $suite
    say "fetching the 32-bit Arm libraries"
    rm -rf "$target.new"
    fetch_packages $suite "$target.new" libc6 libc6-dev linux-libc-dev libgcc-12-dev libgcc-s1 libc++-14-dev libc++1-14 \
        libc++abi-14-dev libc++abi1-14 libunwind-14 libunwind-14-dev
    # Makes absolute links relative: the packages expect to be unpacked at /.
    find "$target.new" -type l -lname '/*' | while read -r link; do
        ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$target.new$(readlink "$link")")" "$link"
    done
    mv "$target.new" "$target"
}
