#!/usr/bin/env bash
# Checks the library's exported symbols against exports.txt, and the exceptions that it shares: exports.sh LIBRARY
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
diff -u "$here/exports.txt" <(nm -D --defined-only --format=posix "$1" | awk '{ print $2, $1 }' | LC_ALL=C sort) ||
    complain "The exported symbols have changed. A removed or renamed symbol breaks callers: undo it. Add an intended new symbol
to libtavro-dov-client.map and to tests/exports.txt."
# What is built without type information gets copies of the exception types that it throws. The queries' handlers would
# refer to these copies, and miss what the C++ library throws.
! nm -C "$1" | grep -E ' [^U] typeinfo for std::(out_of_range|invalid_argument|bad_optional_access)' ||
    complain "The library has exception types of its own. Use a form that does not throw, such as remove_prefix for substr."
