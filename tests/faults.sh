#!/usr/bin/env bash
# Checks the table of failures in docs/simulator.md by injecting each fault: faults.sh PROJECT_FOLDER BUILD_FOLDER
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
rows=0
while IFS='|' read -r _ _ fault words text _; do
    rows=$((rows + 1)) patience=10 code=0
    [[ $text != *waits* ]] || patience=1
    serve "$2/simulator/mirx-simulator" --fault "$(tr -d '` ' <<< "$fault")"
    # shellcheck disable=SC2046  # words
    output=$(timeout $patience "$2/dovctl/dovctl" $(tr -d '`' <<< "$words") 2>&1) || code=$?
    stop
    [ $code -ne 124 ] || output=waits
    pattern=$(sed 's/the handle/^[0-9]{9}$/; s/[`()]/\\&/g; s/\\`//g; s/^ *//; s/ *$//' <<< "$text")
    grep -qE -- "$pattern" <<< "$output" ||
        complain "simulator.md: with --fault$fault, dovctl$words does not show$text but: $output"
done < <(sed -n '/^## Each failure/,$ { /^| [a-z].*`/p }' "$1/docs/simulator.md" | grep -v '^| what fails')
[ $rows -gt 10 ] || complain "simulator.md has no table of failures"
