#!/usr/bin/env bash
# Holds the documents to the system; install.sh builds and runs their programs: docs.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail
# shellcheck source=tests/samples.sh
. "$(dirname "$0")/samples.sh"
cd "$1"
build=$2
work=$(mktemp -d)
server=''
trap '[ -z "$server" ] || kill $server && wait $server; rm -rf "$work"' EXIT
failed=0
complain() { printf '%s\n' "$*" >&2; failed=1; }

docs/reference.sh "$build/reference"

# A sample in a language that no test knows would be one that nobody checks.
unknown=$(grep -hE '^```.+' README.md docs/*.md | sort -u | grep -vxE '```(sh|text|picture|cpp|cmake|bp|xml|te|contexts)' || true)
[ -z "$unknown" ] || complain "no test knows samples in: $unknown"

# integration.md: build files, manifest, policy.
samples docs/integration.md bp > "$work/sample.bp"
[ -z "$(bpfmt -l "$work/sample.bp")" ] || complain "integration.md: the sample is not in the platform's format"
samples docs/integration.md xml | diff - simulator/vendor.tavro.hardware.mirx-service.xml ||
    complain "integration.md: the manifest is not that of the simulator"
samples docs/integration.md te > "$work/sample.te"
# The platform's macros as the rules they come to, so that the policy compiler can read the sample.
{
    cat << 'M4'
module sample 1.0;
require {
    attribute domain, exec_type, file_type, vendor_file_type, service_manager_type, hal_service_type;
    type boostd, init, servicemanager;
    class binder { call transfer };
    class service_manager { add find };
    class process transition;
    class file execute;
}
define(`init_daemon_domain', `allow init $1:process transition; allow init $1_exec:file execute;')
define(`binder_use', `allow $1 servicemanager:binder { call transfer };')
define(`binder_call', `allow $1 $2:binder { call transfer };')
define(`add_service', `allow $1 $2:service_manager { add find };')
M4
    cat "$work/sample.te"
} | m4 > "$work/module.te"
checkmodule -M -m "$work/module.te" -o "$work/sample.mod" > "$work/errors" 2>&1 ||
    complain "integration.md: $(cat "$work/errors")"
while read -r type; do
    grep -q "^type $type," "$work/sample.te" || complain "integration.md: the contexts name $type, the policy does not"
done < <(samples docs/integration.md contexts | sed 's/.*object_r:\(.*\):s0/\1/')

# contract.md: the operations in their order, and the kinds of request with their numbers.
diff <(sed -n 's/.* \([a-zA-Z]*\)(.*);/\1/p' aidl/vendor/tavro/hardware/mirx/IMirx.aidl) \
    <(sed -n 's/^| [0-9]* | `\([a-zA-Z]*\)` .*/\1/p' docs/contract.md) || complain "contract.md: the operations are others"
diff <(sed -n 's/^ *\(k[A-Za-z]*\) = \(0x[0-9a-f]*\),/\2 \1/p' aidl/request_kinds.h | sort) \
    <(sed -n 's/^| \(0x[0-9a-f]*\) | `\(k[A-Za-z]*\)` .*/\1 \2/p' docs/contract.md | sort -u) ||
    complain "contract.md: the kinds of request are others"

# failures.md: the lines of the log, up to what the library puts into them.
sed 's/%[sd]/@/g' api/* client/* > "$work/logged"
while IFS= read -r line; do
    grep -qF -- "$line" "$work/logged" || complain "failures.md: nothing logs '$line'"
done < <(cut -s -d '|' -f 4 docs/failures.md | grep -o '`[^`]* [^`]*`' | tr -d '`' |
    sed -E 's/^\.\.\. //; s/ ?\.\.\.$//; s/NAME|HANDLE/@/; s/([:(])-?[0-9]+/\1@/')

# README.md: what it shows of the demo is what the demo prints; numbers that differ each time count as equal.
paragraphs() { sed -E 's/[0-9]{4,}/N/g' | tr '\n' '\1' | sed 's/\x01\x01/\n/g' | sed 's/\x01$//'; }
host/demo.sh "$build" 2>&1 | paragraphs > "$work/demo"
shown=0
while IFS= read -r paragraph; do
    grep -qFx -- "$paragraph" "$work/demo" || complain "README.md: the demo does not print:"$'\n'"$(tr '\1' '\n' <<< "$paragraph")"
    shown=$((shown + 1))
done < <(samples README.md text | paragraphs; echo)
[ $shown -gt 1 ] || complain "README.md shows nothing of the demo"

# README.md: its commands, each for a second at the most. In the foreground, or timeout would interrupt them twice.
export DOV_SERVICE_DIR=$work/services
mkdir -m 700 "$DOV_SERVICE_DIR"
cp simulator/*.xml "$DOV_SERVICE_DIR/"
"$build/simulator/mirx-simulator" > "$work/journal" &
server=$!
timeout 20 bash -c "until grep -q serving '$work/journal'; do sleep 0.05; done"
while read -r -a command; do
    timeout --foreground --preserve-status --signal=INT 1 "$build/dovctl/dovctl" "${command[@]}" > "$work/output" 2>&1 ||
        complain "README.md: dovctl ${command[*]} ends with $?: $(cat "$work/output")"
done < <(samples README.md sh | sed -n 's,^\./dev dovctl ,,p')
exit $failed
