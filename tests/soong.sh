#!/usr/bin/env bash
# Checks the Android.bp files against the sources and the CMake build: soong.sh PROJECT_FOLDER COMPILE_COMMANDS
set -euo pipefail
cd "$1"
commands=$2
mapfile -t files < <(find . -name build -prune -o -name Android.bp -printf '%P\n' | sort)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0
complain() { printf '%s\n' "$*" >&2; failed=1; }

# Built on Linux only: the service manager over sockets, tests that need it, benchmarks and fuzz targets.
linux_folders='^(host|bench|fuzz)/'
linux_targets='/(binder_tests|test_support|test-relay|vendor_process|public_types|exit_program|plain_service|fuzzed|platform_samples)\.dir/'
# Modules of the platform that our modules may use.
platform=(VtsHalTargetTestDefaults libbase libbase_headers libbinder libbinder_ndk libcutils libgmock libjsoncpp liblog libtinyxml2 libutils vendor.tavro.hardware.mirx-V1-ndk)

bpfmt -l "${files[@]}" > "$work/unformatted" 2> "$work/errors" || true
[ ! -s "$work/errors" ] || complain "bpfmt cannot read them: $(cat "$work/errors")"
[ ! -s "$work/unformatted" ] || complain "not in the platform's format, run bpfmt -w on: $(cat "$work/unformatted")"

# Every string in the files as "KEY FOLDER TEXT". KEY is the innermost property.
for file in "${files[@]}"; do
    folder=$(dirname "$file")
    sed 's,^ *//.*,,' "$file" | awk -v folder="$folder" '
        match($0, /[a-z_0-9]+:/) { key = substr($0, RSTART, RLENGTH - 1) }
        { while (match($0, /"[^"]*"/)) { print key, folder, substr($0, RSTART + 1, RLENGTH - 2); $0 = substr($0, RSTART + RLENGTH) } }'
done > "$work/texts"

# texts KEYS: prints the values of these properties. File names become paths from the project's folder.
texts() { awk -v keys="^($1)$" '$1 ~ keys { sub(/^\.\//, "", $0); print ($2 == "." ? "" : $2 "/") $3 }' "$work/texts"; }

while read -r path; do
    compgen -G "$path" > /dev/null || complain "an Android.bp names $path, which does not exist"
done < <(texts 'srcs|version_script|init_rc|vintf_fragments|license_text|export_include_dirs')

awk '$1 == "name" { print $3 }' "$work/texts" > "$work/modules"
awk '$1 ~ /^(defaults|(shared|static|whole_static|header)_libs|default_applicable_licenses)$/ { print $3 }' "$work/texts" | sort -u |
    { grep -vxF -f "$work/modules" -f <(printf '%s\n' "${platform[@]}") || true; } > "$work/unknown"
[ ! -s "$work/unknown" ] || complain "named by an Android.bp, but not defined as a module: $(tr '\n' ' ' < "$work/unknown")"

texts srcs | grep '\.cpp$' | sort > "$work/in_modules"
twice=$(uniq -d "$work/in_modules")
[ -z "$twice" ] || complain "in more than one module: $twice"

# The sources of the CMake build that the platform must build too.
awk -v root="$PWD/" -v folders="$linux_folders" -v targets="$linux_targets" '
    /"command":/ { skip = $0 ~ targets }
    /"file":/ { sub(/.*"file": "/, ""); sub(/".*/, "")
        if (!skip && index($0, root) == 1) { path = substr($0, length(root) + 1); if (path !~ folders && path !~ /^build\//) print path } }
' "$commands" | sort -u > "$work/in_cmake"
[ "$(wc -l < "$work/in_cmake")" -gt 40 ] || complain "$commands does not name the sources of the build"
missing=$(comm -13 "$work/in_modules" "$work/in_cmake")
[ -z "$missing" ] || complain "in no module: ${missing//$'\n'/, }
Add each to the srcs of a module, in the Android.bp of its folder or the next one above; what only Linux builds is
listed at the top of $0."
[ $failed -eq 0 ] || exit 1
echo "$(wc -l < "$work/in_modules") sources in ${#files[@]} Android.bp files"
