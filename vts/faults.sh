#!/usr/bin/env bash
# Checks that the contract test passes with the simulator and that each case fails with a fault:
# faults.sh TEST SIMULATOR PLAIN_SERVICE
# shellcheck source=tests/common.sh
. "$(dirname "$0")/../tests/common.sh"
test=$1
read -ra emulator <<< "${DOV_EMULATOR:-}"

# against FILTER COMMAND...: runs the cases that match FILTER against the service that the command starts
against() {
    local code=0
    serve "${emulator[@]}" "${@:2}"
    timeout 120 "${emulator[@]}" "$test" --gtest_filter="*/MirxTest.$1/*" > "$work/output" 2>&1 || code=$?
    stop
    return $code
}
against '*' "$2" || complain "$(cat "$work/output")"
tail -n 3 "$work/output"

while read -r name fault; do
    echo "$name" >> "$work/cases"
    command=("$2" --fault "$fault")
    # The code that AIDL generates answers for version and hash, so a fault of the simulator cannot change them.
    [ "$fault" != 'no answers' ] || command=("$3" vendor.tavro.hardware.mirx.IMirx)
    ! against "$name" "${command[@]}" || complain "$name passes with $fault"
    broken=$(sed -n '/contract.md:0: / { s/.*contract.md:0: //p; q }' "$work/output")
    { [ -n "$broken" ] && grep -q '^\[  FAILED  \]' "$work/output"; } ||
        complain "$name ends without saying what is broken with $fault: $(tail "$work/output")"
    printf '%-38s %-42s %s\n' "$name" "$fault" "$broken"
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
    <(sort -u "$work/cases") || complain "a case has no fault"
