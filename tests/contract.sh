#!/usr/bin/env bash
# Checks the AIDL contract against its frozen version, with the AIDL compiler: contract.sh AIDL_COMPILER AIDL_FOLDER
set -euo pipefail
aidl=$1
cd "$2"
api=aidl_api/vendor.tavro.hardware.mirx
types=(vendor/tavro/hardware/mirx/*.aidl)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { printf '%s\n' "$*" >&2; exit 1; }
dump() { "$aidl" --dumpapi --structured --stability=vintf --out="$2" -I "$1" "${types[@]/#/$1/}"; }
same() { "$aidl" --checkapi=equal --structured --stability=vintf "$1" "$2"; }

dump . "$work/now"
same $api/current "$work/now" || fail "the AIDL files differ from $api/current: dump them again"
same $api/1 $api/current || fail "version 1 is frozen: a change of the contract is a version 2"

hash=$(cd $api/1 && { find ./ -name '*.aidl' -print0 | LC_ALL=C sort -z | xargs -0 sha1sum && echo 1; } | sha1sum | cut -d ' ' -f 1)
[ "$hash" = "$(cat $api/1/.hash)" ] || fail "$api/1 was edited: its hash is $hash now"

# The comparison must detect changes that would break a service: a moved operation, a changed type or nullability of a field.
changes=(
    's/int release(int handle);/@@/; s/int propertySet(String key, String value);/int release(int handle);/; s/@@/int propertySet(String key, String value);/'
    's/long duration;/int duration;/'
    's/@nullable String path;/String path;/'
    's/oneway void oneWayRequest/void oneWayRequest/'
)
for change in "${changes[@]}"; do
    rm -rf "$work/changed" "$work/changed-dump"
    mkdir "$work/changed"
    cp -r vendor "$work/changed/"
    sed -i "$change" "$work/changed/"vendor/tavro/hardware/mirx/*.aidl
    dump "$work/changed" "$work/changed-dump"
    ! same $api/1 "$work/changed-dump" 2>/dev/null || fail "this change was not detected: $change"
done
echo "the contract is version 1, $hash"
