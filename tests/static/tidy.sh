#!/usr/bin/env bash
# Runs clang-tidy on one source, and prints only its findings: tidy.sh BUILD_FOLDER SOURCE STAMP
set -euo pipefail
if ! report=$(clang-tidy-14 --quiet -p "$1" "$2" 2>&1); then
    grep -vE '^[0-9]+ warnings? (generated|treated)|^Error while processing' <<< "$report" >&2
    exit 1
fi
mkdir -p "$(dirname "$3")"
touch "$3"
