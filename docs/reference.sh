#!/usr/bin/env bash
# Builds the reference of the public headers with Doxygen; a declaration without documentation is an error:
# reference.sh OUTPUT_FOLDER
set -euo pipefail
output=$(mkdir -p "$1" && cd "$1" && pwd)
cd "$(dirname "$0")/.."
{ cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $output"; } | doxygen -
