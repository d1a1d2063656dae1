#!/usr/bin/env bash
# Checks that Soong accepts the Android.bp files: soong.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
build=$(readlink -m "$2")
checker=$build/bpcheck
sources=$build/bpcheck-sources
if [ ! "$checker" -nt "$here/bpcheck/main.go" ]; then
    mkdir -p "$sources/src"
    ln -sfn "$here/bpcheck" "$sources/src/bpcheck"
    GO111MODULE=off GOFLAGS=-p=2 GOCACHE=$build/bpcheck-cache GOPATH=$sources:/usr/share/gocode \
        /usr/lib/go-1.19/bin/go build -o "$checker" bpcheck
fi
# Soong reads every Android.bp below the folder, so it gets a copy without the build's files.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$1" && find . \( -name build -o -name .git \) -prune -o -type f -print0 | tar -c --null -T -) | tar -x -C "$work"
"$checker" "$work"
