#!/usr/bin/env bash
# Records a session, loads its timeline into catapult's trace viewer in a headless browser, compares what the viewer shows
# with expected.txt, and takes a screenshot.
# check.sh BUILD_FOLDER VIEWER_FOLDER FOLDER: session.json, session.html and session.png go to FOLDER.
set -euo pipefail
here=$(dirname "$0")
folder=$(mkdir -p "$3" && cd "$3" && pwd)
session=$folder/session
rm -f "$session".*

echo '==> recording a session'
"$here/record.sh" "$1" "$session.json"
"$here/page.sh" "$2" "$session.json" "$session.html"

echo '==> loading it into the viewer'
profile=$(mktemp -d)
trap 'rm -rf "$profile"' EXIT
sandbox=()
if [ "$(id -u)" -eq 0 ]; then sandbox=(--no-sandbox); fi
# The browser runs on virtual time, so the result does not depend on the speed of the machine.
timeout 300 chromium --headless "${sandbox[@]}" --disable-gpu --disable-quic --no-first-run --disable-background-networking \
    --disable-component-update --disable-sync --user-data-dir="$profile" --window-size=1280,1590 \
    --virtual-time-budget=20000 --enable-logging=stderr --screenshot="$session.png" --dump-dom "file://$session.html#check" \
    > "$profile/page" 2> "$profile/log" || { cat "$profile/log" >&2; exit 1; }
sed -n '/<pre id="seen"/,/<\/pre>/p' "$profile/page" | sed '1d;$d; s/&gt;/>/g; s/&lt;/</g; s/&amp;/\&/g' > "$session.txt"
if [ ! -s "$session.txt" ]; then
    grep CONSOLE "$profile/log" >&2 || true
    echo 'timeline: the viewer shows nothing' >&2
    exit 1
fi
if ! diff -u --label expected --label shown "$here/expected.txt" "$session.txt"; then
    echo "timeline: the viewer does not show what was expected; see $session.html" >&2
    exit 1
fi
echo "$(grep -c '^life . |' "$session.txt") slices, $(grep -c 'values |' "$session.txt") counters, $(grep -c 'never released' \
    "$session.txt") slices of holds that were never released: all shown"
