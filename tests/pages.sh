#!/usr/bin/env bash
# Checks the manual page and the bash completion: pages.sh MAN_PAGE COMPLETION DOVCTL
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
mandoc -Tlint -W warning "$1"
warnings=$(groff -man -Tutf8 -ww "$1" 2>&1 > /dev/null)
[ -z "$warnings" ] || complain "$warnings"

# shellcheck disable=SC1090  # the file is generated
. "$2"
complete -p dovctl > /dev/null
# Prints the completions of the last word of a command line: complete_line WORD...
complete_line() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _dovctl
    echo "${COMPREPLY[*]}"
}
# A command line without dovctl, in which @ is an empty word, and what it offers. A package and a second event cannot be listed.
while IFS='|' read -r line expected; do
    read -ra words <<< "dovctl $line"
    offered=$(complete_line "${words[@]/#@/}")
    [ "$offered" = "$expected" ] || complain "'$line' offers '$offered', not '$expected'"
done << 'TABLE'
ac|acquire actions
--verbose ac|acquire actions
--ver|--verbose --version
acquire --duration 5 ACTION_LAUNCH|ACTION_LAUNCH ACTION_LAUNCHER_CLOSE_APP_ANIMATION ACTION_LAUNCHER_GPU_BOOST ACTION_LAUNCHER_ICON_EDIT ACTION_LAUNCHER_ICON_FALLEN ACTION_LAUNCHER_OPEN_APP_ANIMATION
acquire ACTION_LAUNCH --pa|--package
acquire --package A|
acquire ACTION_LAUNCH A|
dump re|records requests resources
record @|off on
help rele|release
nonsense @|
TABLE
names=$(complete_line dovctl acquire ACTION_ | wc -w) reachable=$("$3" actions | grep -c ' yes$')
[ "$names" -eq "$reachable" ] || complain "$names actions are offered, $reachable can be acquired"
