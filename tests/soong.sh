#!/usr/bin/env bash
# Checks the Android.bp files against the sources and the CMake build: soong.sh PROJECT_FOLDER COMPILE_COMMANDS
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
cd "$1"
mapfile -t files < <(find . -name build -prune -o -name Android.bp -printf '%P\n' | sort)
# Built on Linux only: the service manager over sockets, tests that need it, benchmarks and fuzz targets.
linux_folders='^(host|bench|fuzz)/'
linux_targets='/(binder_tests|test_support|test-relay|vendor_process|public_types|exit_program|plain_service|fuzzed|platform_samples)\.dir/'

unformatted=$(bpfmt -l "${files[@]}" 2>&1)
[ -z "$unformatted" ] || complain "not in the platform's format, run bpfmt -w on: $unformatted"
! grep -L 'default_applicable_licenses: \["tavro_dov_client_license"\],' "${files[@]}" | grep . ||
    complain "these files do not name the licence"

# Prints the texts in the lines that match PATTERN, as paths from the project's folder: paths PATTERN
paths() { grep -HE "$1" "${files[@]}" | sed -nE 's,^((.*/)?)Android.bp:[^"]*"([^"]*)".*,\1\3,p'; }
paths '\.cpp"' | sort > "$work/in_modules"
while read -r path; do
    [ -e "$path" ] || complain "an Android.bp names $path, which does not exist"
done < <(cat "$work/in_modules"; paths '^ *(version_script|init_rc|vintf_fragments|license_text|export_include_dirs):')

# The sources of the CMake build that the platform must build too.
missing=$(awk -v root="$PWD/" -v folders="$linux_folders" -v targets="$linux_targets" '
    /"command":/ { skip = $0 ~ targets }
    /"file":/ { sub(/.*"file": "/, ""); sub(/".*/, "")
        if (!skip && index($0, root) == 1) { path = substr($0, length(root) + 1); if (path !~ folders && path !~ /^build\//) print path } }
' "$2" | sort -u | comm -13 "$work/in_modules" -)
[ -z "$missing" ] || complain "in no module: ${missing//$'\n'/, }
Add each to the srcs of a module, in the Android.bp of its folder or the next one above; what only Linux builds is
listed at the top of $0."
