#!/usr/bin/env bash
# Checks the binary interface (symbols, their types, the layout of public types) against the descriptions in abi/:
#   abi.sh check LIBRARY TYPES     compares; TYPES is the library built from abi/public_types.cpp
#   abi.sh update LIBRARY TYPES    rewrites the descriptions
# Each architecture has its own folder of descriptions. The script reads the architecture from the library.
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
for built in "library $2" "types $3"; do  # omits everything that depends on where or when the library was built
    abidw --no-corpus-path --no-show-locs --no-comp-dir-path --no-write-default-sizes --no-elf-needed --drop-private-types \
        --headers-dir "$here/../include/dov" --suppressions "$here/abi/public.ini" "${built#* }" |
        sed "/^ *$/d; s,\(<abi-instr .*path='\)[^']*/,\1," > "$work/${built%% *}.abi"
done
committed=$here/abi/$(sed -n "1s/.* architecture='\([^']*\)'.*/\1/p" "$work/library.abi")
if [ "$1" = update ]; then
    mkdir -p "$committed"
    cp "$work"/*.abi "$committed/"
    echo "written: $committed"
    exit
fi
for name in library types; do
    abidiff --no-default-suppression "$committed/$name.abi" "$work/$name.abi" ||
        complain "The binary interface differs from $committed/$name.abi, as listed above. A removed or changed symbol or
type breaks programs that are already built: undo it. Record an intended addition, or a new architecture,
with ./dev abi (for this machine) or $0 update $2 $3."
done
