#!/usr/bin/env bash
# Prints which share of the code are tests, and fails above 33%: share.sh PROJECT_FOLDER
set -euo pipefail
cd "$1"

# share WHAT LANGUAGES: counts lines without blanks and comments
share() {
    # cloc does not know Blueprint files, whose syntax is close to C's. Of the texts only sessions count.
    cloc --quiet --csv --by-file --force-lang=C,bp --include-lang="$2" --fullpath --not-match-d='/(build|corpus|abi)(/|$)' . |
        awk -F, -v what="$1" '
        $2 !~ /^\.\/.*(\.(cpp|h|sh|cmake|bp)|\/sessions\/.*\.txt|CMakeLists\.txt)$/ { next }
        { all += $5 }
        $2 ~ /^\.\/(tests|fuzz|vts)\// { tests += $5 }
        END {
            if (all == 0) { print "share.sh: no code found"; exit 1 }
            printf "tests are %.1f%% of %s: %d of %d lines\n", 100 * tests / all, what, tests, all
            exit tests > 0.33 * all
        }'
}

failed=0
cpp='C++,C/C++ Header'
share 'the C++ code' "$cpp" || failed=1
share 'the code with scripts and build files' "$cpp,C,Text,Bourne Shell,Bourne Again Shell,CMake" || failed=1
exit $failed
