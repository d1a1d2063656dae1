# shellcheck shell=bash
# What the scripts share. Each sources it first, and gets a work folder and a folder of services that declares the service.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
work=$(mktemp -d)
export DOV_SERVICE_DIR=$work/services
mkdir -m 700 "$DOV_SERVICE_DIR"
cp "$here"/../simulator/*-service.xml "$DOV_SERVICE_DIR/"
service='' failed=0
# The script ends what it has started, and fails if it has complained.
trap '[ $? -eq 0 ] || failed=1; stop; jobs -p | xargs -r kill; rm -rf "$work"; exit $failed' EXIT

complain() { printf '%s\n' "$*" >&2; failed=1; }

# Starts a service and waits until it serves: serve COMMAND... In a subshell, so that bash does not report its death.
serve() {
    service=$("$@" > "$work/journal" 2>&1 & echo $!)
    await "$work/journal" 1 serving
}
stop() { [ -z "$service" ] || kill -9 "$service" 2> /dev/null || true; service=''; }

# Waits until FILE has COUNT lines with PATTERN: await FILE COUNT PATTERN
await() { timeout 20 bash -c "until [ \"\$(grep -c '$3' '$1')\" -ge $2 ]; do sleep 0.02; done" || { cat "$1" >&2; exit 1; }; }

# Prints the text between ```LANGUAGE and ``` in a document: samples FILE LANGUAGE
samples() { awk -v open="\`\`\`$2" '$0 == open { inside = 1; next } $0 == "```" { inside = 0 } inside' "$1"; }
