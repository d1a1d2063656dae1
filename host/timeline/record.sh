#!/usr/bin/env bash
# Records a session with every kind of hold and every way a hold can end. The service is killed and restarted once.
# record.sh BUILD_FOLDER TIMELINE
set -euo pipefail
build=$1
timeline=$2
sources=$(dirname "$0")/../../simulator
DOV_SERVICE_DIR=$(mktemp -d)
export DOV_SERVICE_DIR
cp "$sources/vendor.tavro.hardware.mirx-service.xml" "$DOV_SERVICE_DIR/"
server=''

finish() {
    [ -z "$server" ] || kill -9 "$server" 2>/dev/null || true
    rm -rf "$DOV_SERVICE_DIR"
}
trap finish EXIT

dovctl() { "$build/dovctl/dovctl" "$@" 2> "$DOV_SERVICE_DIR/errors"; }

start_service() {
    : > "$DOV_SERVICE_DIR/log"
    # In a subshell, so that bash does not report the kill.
    server=$("$build/simulator/mirx-simulator" --profile "$sources/profile.xml" --timeline "$timeline" \
        > "$DOV_SERVICE_DIR/log" 2>&1 & echo $!)
    local tries
    for ((tries = 0; tries < 100; tries++)); do
        if grep -q serving "$DOV_SERVICE_DIR/log"; then return; fi
        sleep 0.05
    done
    cat "$DOV_SERVICE_DIR/log" >&2
    exit 1
}

# The output of the commands is not needed.
exec > "$DOV_SERVICE_DIR/printed"

start_service
sleep 0.2
dovctl acquire ACTION_LAUNCH --package com.example.shop --identity launcher --duration 900
sleep 0.3
dovctl scene 130 1 --data 70,80,90
dovctl rule 10 1
decoder=$(dovctl res-acquire --identity decoder --resource 0x01010010=1200000 --resource 0x010100a0=1700000)
sleep 0.3
dovctl path /sys/block/sda/queue/read_ahead_kb=1024 --duration 700
"$build/dovctl/dovctl" acquire ACTION_SWIPE_V --one-way --hold --package com.example.shop --identity scroller 2> "$DOV_SERVICE_DIR/errors" &
scroller=$!
dovctl sa 1 --duration 900
sleep 0.5
kill -INT $scroller
wait $scroller
dovctl rule 10 2
dovctl platform-acquire --package com.example.shop --identity vendor --resource 0x01020050=700 --duration 400
sleep 0.5
dovctl release "$decoder"
dovctl rule 10 0
# Never released.
dovctl acquire ACTION_CAMERA_OPEN --package com.example.cam --identity camera
sleep 0.8
kill -9 "$server"
sleep 0.5
start_service
dovctl acquire ACTION_LAUNCH --package com.example.chat --identity launcher --duration 700
sleep 0.3
dovctl res 0x01020050=650 --pid 4321
dovctl res-acquire --identity recorder --resource 0x010108a0=60 --duration 60000
sleep 0.8
kill "$server"
while kill -0 "$server" 2> "$DOV_SERVICE_DIR/printed"; do sleep 0.05; done
server=''
