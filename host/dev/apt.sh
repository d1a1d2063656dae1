# shellcheck shell=bash
# Fetches Debian sources, and packages of other suites and architectures, through apt without changing the machine.
# `cache` is the folder for everything that is fetched.

# Prints the mirror that this machine's apt configuration names for Debian's main archive.
mirror() {
    local codename uri
    # shellcheck disable=SC1091  # the file is the machine's
    codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    # shellcheck disable=SC2016  # apt's own variables
    uri=$(apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Identifier: Packages' |
        awk -v c="$codename" '$1 == "Debian" && $2 == c { print $3; exit }')
    [ -n "$uri" ] || die "apt on this machine has read no list of Debian's archive (is it in /etc/apt? run apt-get update)"
    echo "$uri"
}

# Unpacks the upstream source of a package as TARGET: fetch_source TARGET PACKAGE VERSION TYPE SHA256
fetch_source() {
    local target=$1 package=$2 version=$3 file=$2_$3.orig.tar.$4 sha256=$5 uri folder=${2:0:1} work
    if [[ $package = lib* ]]; then folder=${package:0:4}; fi
    uri=$(mirror)
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    say "fetching the source of $package $version"
    /usr/lib/apt/apt-helper -qq -o APT::Sandbox::User=root download-file "${uri}pool/main/$folder/$package/$file" \
        "$work/$file" "SHA256:$sha256" || die "$file could not be fetched: is there a network, and host/sources right?"
    mkdir -p "$work/unpacked" "$(dirname "$target")"
    tar -xf "$work/$file" -C "$work/unpacked" --strip-components=1
    mv "$work/unpacked" "$target"
    rm -rf "$work"
}

# Runs apt in a root of its own that has the packages of one suite and architecture only:
# apt_in SUITE:ARCHITECTURE apt-get ARGS...
apt_in() {
    local root="$cache/apt/$1" program=$2 architecture=${1#*:}
    shift 2
    "$program" -qq -o APT::Architecture="$architecture" -o APT::Architectures="$architecture" \
        -o Dir::Etc::sourcelist="$root/sources.list" -o Dir::Etc::sourceparts=/dev/null \
        -o Dir::State::Lists="$root/lists" -o Dir::State::status="$root/status" -o Dir::Cache="$root/cache" \
        -o Acquire::Languages=none -o APT::Sandbox::User=root "$@"
}

open_suite() {  # open_suite SUITE:ARCHITECTURE
    local root="$cache/apt/$1" uri
    uri=$(mirror)
    mkdir -p "$root/lists/partial" "$root/cache/archives/partial"
    : > "$root/status"
    echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $uri ${1%:*} main" > "$root/sources.list"
    say "reading the package lists of $1"
    apt_in "$1" apt-get update -o APT::Update::Error-Mode=any ||
        die "no answer from the Debian mirror for $1: is there a network?"
}

# Unpacks packages of an open suite into one new folder: fetch_packages SUITE:ARCHITECTURE FOLDER PACKAGE...
# FOLDER/versions lists them with their versions.
fetch_packages() {
    local root=$1 target=$2 work archive
    shift 2
    work=$(mktemp -d "$cache/fetch.XXXXXX")
    (cd "$work" && apt_in "$root" apt-get download "$@") || die "these could not be fetched: $*"
    for archive in "$work"/*.deb; do
        dpkg -x "$archive" "$work/unpacked"
    done
    (cd "$work" && ls -- *.deb) > "$work/unpacked/versions"
    mv "$work/unpacked" "$target"
    rm -rf "$work"
}
