#!/usr/bin/env bash
# Checks the AIDL contract against its frozen version, with the AIDL compiler: contract.sh AIDL_COMPILER AIDL_FOLDER
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
cd "$2"
api=aidl_api/vendor.tavro.hardware.mirx
"$1" --dumpapi --structured --stability=vintf --out="$work/now" -I . ./vendor/tavro/hardware/mirx/*.aidl
while read -r old new advice; do
    "$1" --checkapi=equal --structured --stability=vintf "$old" "$new" || complain "$new differs from $old: $advice"
done << TABLE
$api/current $work/now       dump the AIDL files again
$api/1       $api/current    version 1 is frozen, a change of the contract is a version 2
TABLE
hash=$(cd $api/1 && { find ./ -name '*.aidl' -print0 | LC_ALL=C sort -z | xargs -0 sha1sum && echo 1; } | sha1sum | cut -d ' ' -f 1)
[ "$hash" = "$(cat $api/1/.hash)" ] || complain "$api/1 was edited: its hash is $hash now"
