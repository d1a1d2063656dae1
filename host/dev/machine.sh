# shellcheck shell=bash
# Checks and installs what a run needs: Debian 12, packages, disk space.

say() { printf '==> %s\n' "$*"; }
die() { printf 'dev: %s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

need_debian() {
    local id='' version=''
    if [ -r /etc/os-release ]; then
        # shellcheck disable=SC1091  # the file is the machine's
        id=$(. /etc/os-release && echo "${ID:-}") version=$(. /etc/os-release && echo "${VERSION_ID:-}")
    fi
    [ "$id $version" = "debian 12" ] || die "this needs Debian 12; this machine is ${id:-unknown} $version"
    [ "$(uname -m)" = x86_64 ] || die "this needs an x86-64 machine; this one is $(uname -m)"
}

need_space() {  # need_space FOLDER MEGABYTES
    local free
    mkdir -p "$1" || die "$1 cannot be made"
    free=$(df -Pm "$1" | awk 'NR == 2 { print $4 }')
    [ "$free" -ge "$2" ] || die "the disk is full: $1 has $free MB free, $2 MB are needed"
}

package_lists_read=''

need_packages() {  # need_packages PACKAGE...
    local package missing=()
    need_debian
    for package; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        die "these packages are missing and neither root nor sudo is there to install them: ${missing[*]}"
    fi
    say "installing ${missing[*]}"
    if [ -z "$package_lists_read" ]; then
        as_root apt-get update -q -o APT::Update::Error-Mode=any || die "apt-get update failed: is there a network?"
        package_lists_read=yes
    fi
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}" ||
        die "the packages could not be installed"
}
