#!/usr/bin/env bash
# Compiles the code example of the README as a caller would: readme.sh COMPILER README INCLUDE_FOLDER
set -euo pipefail
awk '/^```cpp$/ { code = 1; next } /^```$/ { code = 0 } code' "$2" |
    "$1" -x c++ -std=c++20 -stdlib=libc++ -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I"$3" -
