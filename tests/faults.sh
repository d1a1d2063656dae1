#!/usr/bin/env bash
# Checks the table of failures in docs/simulator.md by injecting each fault: faults.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail
cd "$1"
build=$2
DOV_SERVICE_DIR=$(mktemp -d)
export DOV_SERVICE_DIR
server=''
trap '[ -z "$server" ] || kill -9 "$server"; rm -rf "$DOV_SERVICE_DIR"' EXIT
cp simulator/*-service.xml "$DOV_SERVICE_DIR/"
journal=$DOV_SERVICE_DIR/journal
failed=0 rows=0

# serve [OPTION...]: starts the simulator in a subshell, so that bash does not report its death.
serve() {
    server=$("$build/simulator/mirx-simulator" "$@" > "$journal" & echo $!)
    timeout 20 bash -c "until grep -q serving '$journal'; do sleep 0.02; done"
}

# shows FAULT WORDS TEXT: whether dovctl prints TEXT, or waits, if the service has the fault
shows() {
    local code=0 patience=10
    [ "$3" != waits ] || patience=1
    serve --fault "$1"
    # shellcheck disable=SC2086  # words
    output=$(timeout $patience "$build/dovctl/dovctl" $2 2>&1) || code=$?
    kill -9 "$server" 2> /dev/null || true
    server=''
    if [ "$3" = waits ]; then [ $code -eq 124 ]; else grep -qE -- "$3" <<< "$output"; fi
}

while IFS='|' read -r _ _ fault words text _; do
    text=$(sed 's/the handle/^[0-9]{9}$/; s/[`()]/\\&/g; s/\\`//g; s/^ *//; s/ *$//' <<< "$text")
    shows "$(tr -d '` ' <<< "$fault")" "$(tr -d '`' <<< "$words")" "$text" || {
        printf 'simulator.md: with --fault%s, dovctl%s does not show %s but:\n%s\n' "$fault" "$words" "$text" "$output" >&2
        failed=1
    }
    rows=$((rows + 1))
done < <(sed -n '/^## Each failure/,$ { /^| [a-z].*`/p }' docs/simulator.md | grep -v '^| what fails')

echo "$rows failures shown"
[ $rows -gt 10 ] && exit $failed
