#!/usr/bin/env bash
# Checks that the contract test passes with the simulator and that each case fails with a fault:
# faults.sh TEST SIMULATOR PLAIN_SERVICE
set -euo pipefail
test=$1
simulator=$2
plain_service=$3
read -ra emulator <<< "${DOV_EMULATOR:-}"
work=$(mktemp -d)
server=''
stop() { [ -z "$server" ] || { kill -9 "$server"; wait "$server"; server=''; } 2> "$work/killed" || true; }
trap 'stop; rm -rf "$work"' EXIT

# against FILTER COMMAND...: runs the cases that match FILTER against the service that the command starts
against() {
    local filter=$1 tries code=0
    shift
    export DOV_SERVICE_DIR=$work/services
    rm -rf "$DOV_SERVICE_DIR"
    mkdir -m 700 "$DOV_SERVICE_DIR"
    cp "$(dirname "$0")/../simulator/vendor.tavro.hardware.mirx-service.xml" "$DOV_SERVICE_DIR/"
    : > "$work/journal"
    "${emulator[@]}" "$@" > "$work/journal" 2>&1 &
    server=$!
    for ((tries = 0; tries < 200; tries++)); do
        if grep -q serving "$work/journal"; then break; fi
        sleep 0.05
    done
    timeout 120 "${emulator[@]}" "$test" --gtest_filter="*/MirxTest.$filter/*" > "$work/output" 2>&1 || code=$?
    stop
    return $code
}

failed=0
against '*' "$simulator" || { cat "$work/output"; failed=1; }
tail -n 3 "$work/output"

cases=()
while read -r name fault; do
    cases+=("$name")
    service=("$simulator" --fault "$fault")
    # The code that AIDL generates answers for version and hash, so a fault of the simulator cannot change them.
    [ "$fault" != 'no answers' ] || service=("$plain_service" vendor.tavro.hardware.mirx.IMirx)
    if against "$name" "${service[@]}"; then
        echo "$name passes with $fault" >&2
        failed=1
    elif ! grep -q '^\[  FAILED  \]' "$work/output" || ! grep -q 'contract.md:0: ' "$work/output"; then
        echo "$name ends without saying what is broken with $fault:" >&2
        tail "$work/output" >&2
        failed=1
    else
        printf '%-38s %-42s %s\n' "$name" "$fault" "$(sed -n 's/.*contract.md:0: //p' "$work/output" | head -n 1)"
    fi
done << 'TABLE'
hasVersionAndHashOfTheInterface        no answers
initSucceedsAgain                      exception=illegal-state:init,every=2
handlesAreDistinct                     answer=7:request
newestHoldDeterminesTheValue           answer=0:release
unknownHandleIsAnsweredWithMinusOne    exception=illegal-argument:release
unknownHandleIsAnsweredWithMinusOne    answer=0:thermalListeningUnregister
newestHoldDeterminesTheValue           reply=absent:stateRequest
holdEndsAfterItsDuration               answer=0:release
oneWayRequestUsesItsHandle             exception=security:oneWayRequest
listenerIsCalledWhileRegistered        callback=never:listeningRegister
listenerIsCalledWhileRegistered        answer=0:listeningUnregister
listenerOfDeadClientIsDropped          answer=0:listeningUnregister
requestCallbackIsCalledOnce            callback=twice:request
thermalListenerIsCalledOnChange        callback=never:thermalListeningRegister
propertyHasAtMost255Characters         reply=long:propertyGet
ruleSetsResourcesUntilStatusZero       answer=0:ruleCtl
emptyListsAndAbsentTextsAreValid       answer=0:event-acquire
queriesHaveTheElementsOfTheTable       reply=text:feature-query
queriesHaveTheElementsOfTheTable       reply=empty:state-query
queriesHaveTheElementsOfTheTable       reply=absent:dataset-fetch
diagnosticsAreAccepted                 answer=0:diagnostics
manyClientsAreServedAtOnce             status=FAILED_TRANSACTION:request,every=50
senselessParcelsAreAnswered            die:reservedOperation
TABLE

diff <("${emulator[@]}" "$test" --gtest_list_tests | sed -n 's/^  \([a-zA-Z0-9]*\)\/.*/\1/p' | sort) \
    <(printf '%s\n' "${cases[@]}" | sort -u) || { echo "a case has no fault" >&2; failed=1; }
exit $failed
