# Sourced by what fetches: packages and sources of other suites and architectures through apt, which checks the archive's
# signatures, without a change to the machine. `cache` is the folder that keeps what was fetched.
cache=$(mkdir -p "$1" && cd "$1" && pwd)
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

# An apt root that knows one suite and nothing of the machine: apt_in SUITE[:ARCHITECTURE] apt-get ARGS...
apt_in() {
    local root="$cache/apt/$1" program=$2 architecture=${1#*:}
    [ "$architecture" != "$1" ] || architecture=$(dpkg --print-architecture)
    shift 2
    "$program" -q -o APT::Architecture="$architecture" -o APT::Architectures="$architecture" -o Dir::Etc::sourcelist="$root/sources.list" -o Dir::Etc::sourceparts=/dev/null \
        -o Dir::State::Lists="$root/lists" -o Dir::State::status="$root/status" \
        -o Dir::Cache="$root/cache" -o APT::Sandbox::User=root "$@"
}

open_suite() {
    local suite=${1%:*} root="$cache/apt/$1" uri
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
    say "reading the package lists of $1"
    apt_in "$1" apt-get update -o APT::Update::Error-Mode=any ||
        die "no answer from the Debian mirror for $1: is there a network?"
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

# fetch_packages ROOT FOLDER PACKAGE...: the packages, unpacked into one new folder.
fetch_packages() {
    local root=$1 target=$2 work archive
    shift 2
    open_suite "$root"
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    (cd "$work" && apt_in "$root" apt-get download "$@") || die "these could not be fetched: $*"
    for archive in "$work"/*.deb; do
        dpkg -x "$archive" "$work/unpacked"
    done
    mv "$work/unpacked" "$target"
    rm -rf "$work"
}
