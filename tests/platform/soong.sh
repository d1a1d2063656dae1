#!/usr/bin/env bash
# Checks that Soong accepts the Android.bp files: soong.sh PROJECT_FOLDER BUILD_FOLDER
# shellcheck source=tests/common.sh
. "$(dirname "$0")/../common.sh"
build=$(readlink -m "$2")
if [ ! "$build/bpcheck" -nt "$here/platform/bpcheck/main.go" ]; then
    mkdir -p "$build/bpcheck-sources/src"
    ln -sfn "$here/platform/bpcheck" "$build/bpcheck-sources/src/bpcheck"
    GO111MODULE=off GOFLAGS=-p=2 GOCACHE=$build/bpcheck-cache GOPATH=$build/bpcheck-sources:/usr/share/gocode \
        /usr/lib/go-1.19/bin/go build -o "$build/bpcheck" bpcheck
fi
# Soong reads every Android.bp below the folder, so it gets a copy without the build's files.
mkdir "$work/sources"
(cd "$1" && find . \( -name build -o -name .git \) -prune -o -type f -print0 | tar -c --null -T -) | tar -x -C "$work/sources"
"$build/bpcheck" "$work/sources"
