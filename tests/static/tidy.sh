#!/usr/bin/env bash
# Has clang-tidy look at one source: tidy.sh BUILD_FOLDER SOURCE STAMP. Says nothing when there is nothing to say.
set -euo pipefail
if ! report=$(clang-tidy-14 --quiet -p "$1" "$2" 2>&1); then
    grep -vE '^[0-9]+ warnings? (generated|treated)|^Error while processing' <<< "$report" >&2
    exit 1
fi
touch "$3"
