#!/usr/bin/env bash
# Checks the manual page and the bash completion: pages.sh MAN_PAGE COMPLETION DOVCTL
set -euo pipefail
DOV_SERVICE_DIR=$(mktemp -d)
export DOV_SERVICE_DIR
trap 'rm -rf "$DOV_SERVICE_DIR"' EXIT

mandoc -Tlint -W warning "$1"
warnings=$(groff -man -Tutf8 -ww "$1" 2>&1 > /dev/null)
[ -z "$warnings" ] || { echo "$warnings" >&2; exit 1; }

# shellcheck disable=SC1090  # the file is generated
. "$2"
complete -p dovctl > /dev/null

# Prints the completions of the last word of a command line: complete_line WORD...
complete_line() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _dovctl
    echo "${COMPREPLY[*]}"
}

failed=0
expect() {  # expect OFFERED WORD...
    local offered
    offered=$(complete_line "${@:2}")
    [ "$offered" = "$1" ] || { echo "'${*:2}' offers '$offered', not '$1'" >&2; failed=1; }
}
expect 'acquire actions' dovctl ac
expect 'acquire actions' dovctl --verbose ac
expect '--verbose --version' dovctl --ver
expect 'ACTION_LAUNCH ACTION_LAUNCHER_CLOSE_APP_ANIMATION ACTION_LAUNCHER_GPU_BOOST ACTION_LAUNCHER_ICON_EDIT ACTION_LAUNCHER_ICON_FALLEN ACTION_LAUNCHER_OPEN_APP_ANIMATION' dovctl acquire --duration 5 ACTION_LAUNCH
expect '--package' dovctl acquire ACTION_LAUNCH --pa
expect '' dovctl acquire --package A        # a value that cannot be listed
expect '' dovctl acquire ACTION_LAUNCH A    # there is no second event
expect 'records requests resources' dovctl dump re
expect 'off on' dovctl record ''
expect 'release' dovctl help rele
expect '' dovctl nonsense ''
names=$(complete_line dovctl acquire ACTION_ | wc -w)
reachable=$("$3" actions | grep -c ' yes$')
[ "$names" -eq "$reachable" ] || { echo "$names actions are offered, $reachable can be acquired" >&2; failed=1; }
exit $failed
