#!/usr/bin/env bash
# Runs a session to watch: the real library, the real binder stack, a service in its own process.
# demo.sh BUILD_FOLDER
set -euo pipefail
simulator=$1/simulator/mirx-simulator
sources=$(dirname "$0")/../simulator
dovctl=$1/dovctl/dovctl
DOV_SERVICE_DIR=$(mktemp -d)
export DOV_SERVICE_DIR
log=$DOV_SERVICE_DIR/simulator.log
server=''
shown=0

finish() {
    [ -z "$server" ] || kill -9 "$server" 2>/dev/null || true
    rm -rf "$DOV_SERVICE_DIR"
}
trap finish EXIT

bold='' plain=''
if [ -t 1 ]; then bold=$'\033[1m' plain=$'\033[0m'; fi
say() { printf '\n%s%s%s\n' "$bold" "$*" "$plain"; }

# Waits until the service has printed PATTERN, then prints all its new output: service_says PATTERN
service_says() {
    local tries
    for ((tries = 0; tries < 100; tries++)); do
        if tail -n +$((shown + 1)) "$log" | grep -q "$1"; then break; fi
        sleep 0.05
    done
    tail -n +$((shown + 1)) "$log" | sed 's/^/    service | /'
    shown=$(wc -l < "$log")
}

# Runs dovctl as typed and checks its exit code: run EXIT_CODE ARGUMENTS...
run() {
    local expected=$1 code=0
    shift
    printf '$ dovctl %s\n' "$*"
    output=$("$dovctl" "$@") || code=$?
    [ -z "$output" ] || echo "$output"
    if [ $code -ne "$expected" ]; then
        echo "demo: dovctl ended with $code, not $expected" >&2
        exit 1
    fi
}

# A killed process keeps its files until its last thread has ended, and may stay as a zombie when nobody waits for it.
is_dead() {
    ! grep -qsv ') [ZX] ' "/proc/$1/task/"*/stat
}

start_service() {
    printf '$ mirx-simulator --declare --profile profile.xml &\n'
    # In a subshell, so that bash does not report the kill.
    server=$("$simulator" --declare --profile "$sources/profile.xml" >> "$log" 2>&1 & echo $!)
    service_says serving
}

say 'A service starts and registers.'
: > "$log"
start_service

say 'A client initialises it and acquires an event for two seconds; the handle is the answer.'
run 0 init
run 0 acquire 0 --package com.example.app --identity demo --duration 2000
service_says request

say 'The same by name.'
run 0 acquire ACTION_LAUNCH --package com.example.app --identity demo --duration 2000
service_says profile

say 'What that raises, as the profile of the device has it.'
run 0 top

say 'A scene: the library turns its description into a rule with resources.'
run 0 scene 130 1 --data 70,80,90
service_says rule
run 0 state 0x010108a0 0x010108b0
service_says state

say 'Resources by opcode, held until they are released.'
run 0 res-acquire --identity demo --resource 0x01010010=1500000 --resource 0x010100a0=2400000
service_says request
run 0 release "$output"
service_says ended

say 'One way: the client chooses the handle and does not wait.'
run 0 acquire 4 --one-way --identity demo --duration 1000
service_says one-way

say 'The service is killed. The next call fails cleanly.'
printf '$ kill -9 %s\n' "$server"
kill -9 "$server"
until is_dead "$server"; do sleep 0.01; done
run 3 acquire 0 --identity demo -v

say 'The service is back. The next call works.'
start_service
run 0 acquire 0 --identity demo --duration 2000
service_says request
printf '\nThis was the real library over the real binder stack. ./dev dovctl --help shows what else there is.\n'
