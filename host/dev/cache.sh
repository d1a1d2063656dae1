# shellcheck shell=bash
# The cache of fetched and built parts. The name of a part contains its version and a hash of its recipe, so a changed
# recipe makes a new part, and checkouts with different recipes share one cache.

key() { sha256sum | cut -c 1-12; }

lock_cache() {
    mkdir -p "$cache" || die "$cache cannot be made"
    exec 9> "$cache/lock"
    flock -n 9 || { say "waiting for another run that uses $cache"; flock 9; }
    rm -rf "$cache"/fetch.*  # left behind by an interrupted run
}

unlock_cache() { exec 9>&-; }

# Sets `part` to the folder of a part, which FUNCTION FOLDER ARGUMENTS... fetches if the cache does not hold it:
# need_part NAME RECIPE FUNCTION ARGUMENTS... RECIPE is the file that has the function.
need_part() {
    local name=$1 recipe=$2 fetch=$3
    shift 3
    part=$cache/$name-$(cat host/dev/apt.sh "$recipe" | key)
    # Not "[ -d ... ] || fetch": bash ignores failures inside a function that is called on the right of ||.
    if [ ! -d "$part" ]; then
        need_space "$cache" 1500
        mkdir -p "$(dirname "$part")"
        $fetch "$part" "$@"
    fi
}

need_source() {  # need_source PACKAGE: sets `part` to its unpacked source
    local row
    read -r -a row <<< "$(grep "^$1 " host/sources)"
    need_part "src/$1-${row[1]}" <(echo "${row[@]}") fetch_source "${row[@]}"
}
