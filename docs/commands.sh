#!/usr/bin/env bash
# Prints docs/commands.md from the help of the programs: commands.sh BUILD_FOLDER
set -euo pipefail
section() { printf '\n## %s\n\n```text\n%s\n```\n' "$1" "$("${@:2}")"; }

printf '# The commands\n\nThe help of `dovctl` and `mirx-simulator`. `./dev docs` writes this page.\n'
dovctl=$1/dovctl/dovctl
section dovctl "$dovctl" help
"$dovctl" help | sed -n '/^Commands:/,/^$/s/^  \([a-z-]*\) .*/\1/p' | while read -r command; do
    section "dovctl $command" "$dovctl" help "$command"
done
section mirx-simulator "$1/simulator/mirx-simulator" --help
