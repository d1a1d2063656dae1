# shellcheck shell=bash
# ./dev test and ./dev soak.

results=()  # one line for each check and each run of the tests
failed=0    # 1 after the first failure

run_tests() {  # run_tests PRESET here|guest|all
    local preset=$1 machines=$2
    if [ "$preset" = host ]; then
        # For the checks of the sources, the platform build, the binary interface, the install and the documents.
        need_packages g++ clang-tidy-14 blueprint-tools abigail-tools pkgconf doxygen mandoc groff-base checkpolicy m4 \
            golang-1.19-go golang-android-soong-dev golang-github-google-blueprint-dev golang-starlark-dev \
            golang-google-protobuf-dev golang-github-golang-protobuf-1-5-dev python3-minimal spin cloc
    fi
    need_packages libxml2-utils
    lock_cache
    need_source golang-android-soong
    export DOV_SOONG=$part
    unlock_cache
    build "$preset" all fuzz_targets
    if [ "$preset" = host ]; then
        check "the sources" ninja -C build/host -k 0 static_checks
        check "the share of tests" tests/share.sh .
        run_here host "x86-64, over sockets"
    else
        run_here "$preset" "x86-64, over sockets, $preset sanitizer"
    fi
    if [ "$machines" = here ]; then
        results+=("x86-64, over the driver: not run")
    else
        run_guest host "x86-64, over the driver"
    fi
    if [ "$machines" = all ]; then
        need_toolchains
        check "the C++ library of Android 14" build oldest platform_modules
        check "the newest compiler and the C++ library of Android 15" build newest platform_modules
        run_guest host "x86-64, over the driver, as in a vendor process" vendor
        build arm
        run_here arm "32-bit Arm, over sockets"
        run_guest arm "32-bit Arm, over the driver"
    else
        results+=("32-bit Arm: not run (./dev test --all does)")
    fi
    printf '%s\n' "${results[@]}"
    return $failed
}

# Runs a check: check WHAT COMMAND... The command prints its findings, and fails if there are any.
check() {
    local what=$1
    shift
    say "checking $what"
    if "$@"; then
        results+=("$what: nothing found")
    else
        results+=("$what: see the errors above, before the tests")
        failed=1
    fi
}

# Runs the tests of a build on this machine: run_here PRESET TITLE
run_here() {
    local title=$2 report=build/test-report.xml tests failures skipped
    say "running the tests, $title"
    rm -f $report
    # Most tests wait longer than they compute.
    ctest --test-dir "build/$1" -j $((2 * $(nproc))) --output-on-failure --output-junit "$PWD/$report" || failed=1
    read -r tests failures skipped <<< "$(xmllint --xpath \
        'concat(/testsuite/@tests, " ", /testsuite/@failures, " ", /testsuite/@skipped)' $report)"
    [ -n "$skipped" ] || die "the tests left no report"
    # The measurements that tests print. ctest itself shows the output of failed tests only.
    xmllint --xpath '//system-out/text()' $report |
        grep -oE '[0-9]+ calls, .* answered.*|after a fifth: .*|at the end:    .*' || true
    results+=("$title: $((tests - failures - skipped)) passed, $failures failed, $skipped skipped")
}

# Runs the tests of a build over the driver: run_guest PRESET TITLE [TASK]; see host/guest/boot.sh
run_guest() {
    say "running the tests, $2"
    run_in_guest "$1" "${3:-tests}" 2>&1 | tee build/guest.log || failed=1
    results+=("$2: $(sed -n 's/^over the driver: //p' build/guest.log)")
}

soak() {  # soak PRESET SECONDS
    [[ $2 =~ ^[0-9]+$ ]] || die "soak: '$2' is no number of seconds"
    build "$1" binder_tests
    # Makes the figures for memory exact, as in tests/CMakeLists.txt.
    if ! GLIBC_TUNABLES=glibc.malloc.tcache_count=0:glibc.malloc.arena_max=1 DOV_LOAD_SECONDS=$2 \
        "build/$1/tests/binder_tests" --gtest_brief=1 --gtest_filter='LoadTest.*'; then
        echo "soak: FAILED"
        return 1
    fi
    echo "soak: passed"
}
