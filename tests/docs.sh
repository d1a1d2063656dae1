#!/usr/bin/env bash
# Checks that the documents agree with the system: docs.sh PROJECT_FOLDER BUILD_FOLDER
#
# install.sh builds and runs the programs of the documents.
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
cd "$1"
build=$2
docs/reference.sh "$build/reference"

# Every sample must be in a language for which there is a check.
! grep -hE '^```.+' README.md docs/*.md | grep -vxE '```(sh|text|picture|cpp|cmake|bp|xml|te|contexts)' ||
    complain "no test checks samples in these languages"

# integration.md: build files, manifest, policy.
samples docs/integration.md bp > "$work/sample.bp"
[ -z "$(bpfmt -l "$work/sample.bp")" ] || complain "integration.md: the sample is not in the platform's format"
samples docs/integration.md xml | diff - simulator/vendor.tavro.hardware.mirx-service.xml ||
    complain "integration.md: the manifest differs from that of the simulator"
samples docs/integration.md te > "$work/sample.te"
# Defines the platform's macros, so that the policy compiler can read the sample.
m4 - "$work/sample.te" << 'M4' > "$work/module.te"
module sample 1.0;
require {
    attribute domain, exec_type, file_type, vendor_file_type, service_manager_type, hal_service_type;
    type boostd, init, servicemanager;
    class binder { call transfer }; class service_manager { add find }; class process transition; class file execute;
}
define(`init_daemon_domain', `allow init $1:process transition; allow init $1_exec:file execute;')
define(`binder_use', `allow $1 servicemanager:binder { call transfer };')
define(`binder_call', `allow $1 $2:binder { call transfer };')
define(`hal_attribute', `attribute hal_$1; attribute hal_$1_client; attribute hal_$1_server;')
define(`hal_attribute_service', `allow $1_client $2:service_manager find; allow $1_server $2:service_manager { add find };')
define(`hal_server_domain', `typeattribute $1 $2, $2_server;')
define(`hal_client_domain', `typeattribute $1 $2_client;')
M4
checkmodule -M -m "$work/module.te" -o "$work/sample.mod" > "$work/errors" 2>&1 ||
    complain "integration.md: $(cat "$work/errors")"

# contract.md: the operations in the right order, and the kinds of request with their numbers.
diff <(sed -n 's/.* \([a-zA-Z]*\)(.*);/\1/p' aidl/vendor/tavro/hardware/mirx/IMirx.aidl) \
    <(sed -n 's/^| [0-9]* | `\([a-zA-Z]*\)` .*/\1/p' docs/contract.md) || complain "contract.md: the operations differ from the interface"
diff <(sed -n 's/^ *\(k[A-Za-z]*\) = \(0x[0-9a-f]*\),/\2 \1/p' aidl/request_kinds.h | sort) \
    <(sed -n 's/^| \(0x[0-9a-f]*\) | `\(k[A-Za-z]*\)` .*/\1 \2/p' docs/contract.md | sort -u) ||
    complain "contract.md: the kinds of request differ from aidl/request_kinds.h"

# says DOCUMENT TEXT: TEXT may be a list, one text a line; the document must contain each.
says() {
    tr -s ' \n' ' ' < "$1" > "$work/document"
    while IFS= read -r text; do
        grep -qF -- "$text" "$work/document" || complain "$1 does not contain: $text"
    done <<< "$2"
}
# The types that the contexts name, the files with a place for compatibility, and the rules that the contract test checks.
says "$work/sample.te" "$(samples docs/integration.md contexts | sed 's/.*object_r:\(.*\):s0/type \1,/')"
says docs/compat.md "$(grep -rl "// Compat:" api client common wrapper | sed 's/.*/`&`/')"
says docs/contract.md "$(tr -s ' \n' ' ' < vts/VtsHalMirxTargetTest.cpp | grep -o 'Sentence [a-z]*( *"[^"]*"' | cut -d '"' -f 2)"
# failures.md: the log lines, up to the values that the library inserts.
sed 's/%[sd]/@/g' api/* client/* > "$work/logged"
says "$work/logged" "$(cut -s -d '|' -f 4 docs/failures.md | grep -o '`[^`]* [^`]*`' | tr -d '`' |
    sed -E 's/^\.\.\. //; s/ ?\.\.\.$//; s/NAME|HANDLE/@/; s/([:(])-?[0-9]+/\1@/')"

samples docs/scenes.md text | diff - <("$build/dovctl/dovctl" scenes) || complain "scenes.md: dovctl scenes prints another table"
diff docs/commands.md <(docs/commands.sh "$build") || complain "commands.md: the help differs; ./dev docs writes this page"

# README.md: the demo prints the output that is shown. Numbers that change in each run are ignored.
paragraphs() { sed -E 's/[0-9]{4,}|(-9 )[0-9]+/\1N/g' | tr '\n' '\1' | sed 's/\x01\x01/\n/g' | sed 's/\x01$//'; }
host/demo.sh "$build" 2>&1 | paragraphs > "$work/demo"
samples README.md text | { paragraphs; echo; } > "$work/shown"
[ "$(wc -l < "$work/shown")" -gt 1 ] || complain "README.md shows nothing of the demo"
! grep -vFx -f "$work/demo" "$work/shown" | tr '\1' '\n' | grep . || complain "README.md: the demo does not print this"

# README.md: runs its commands, each for at most a second. In the foreground, or timeout would interrupt them twice.
serve "$build/simulator/mirx-simulator"
while read -r -a command; do
    timeout --foreground --preserve-status --signal=INT 1 "$build/dovctl/dovctl" "${command[@]}" > "$work/output" 2>&1 ||
        complain "README.md: dovctl ${command[*]} ends with $?: $(cat "$work/output")"
done < <(samples README.md sh | sed -n 's,^\./dev dovctl ,,p')
