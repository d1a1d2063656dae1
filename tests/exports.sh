#!/usr/bin/env bash
# Checks the library's exported symbols against exports.txt, and the exceptions that it shares: exports.sh LIBRARY
set -euo pipefail
list=$(dirname "$0")/exports.txt
if ! diff -u "$list" <(nm -D --defined-only --format=posix "$1" | awk '{ print $2, $1 }' | LC_ALL=C sort); then
    echo "The exported symbols have changed. A removed or renamed symbol breaks callers: undo it. Add an intended" >&2
    echo "new symbol to libtavro-dov-client.map and to $list." >&2
    exit 1
fi
# What is built without type information gets copies of the exception types that it throws. The queries' handlers would
# refer to these copies, and miss what the C++ library throws.
if nm -C "$1" | grep -E ' [^U] typeinfo for std::(out_of_range|invalid_argument|bad_optional_access)'; then
    echo "The library has exception types of its own. Find a form that does not throw, such as remove_prefix for substr." >&2
    exit 1
fi
