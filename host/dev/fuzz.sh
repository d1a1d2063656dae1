# shellcheck shell=bash
# ./dev fuzz. Inputs that reach new code stay in the build folder for the next run.

fuzz() {  # fuzz [SECONDS] [TARGET...]
    local seconds=60 status=0 folder=build/address/fuzz target targets=() options
    if [[ ${1:-} =~ ^[0-9]+$ ]]; then seconds=$1; shift; fi
    targets=("$@")
    if [ $# -eq 0 ]; then targets=(fuzz/*_fuzz.cpp); fi
    for target in "${targets[@]}"; do
        target=$(basename "$target" _fuzz.cpp)
        [ -f "fuzz/${target}_fuzz.cpp" ] || die "fuzz: there is no target '$target'"
    done
    build address fuzz_targets
    mkdir -p build/findings
    for target in "${targets[@]}"; do
        target=$(basename "$target" _fuzz.cpp)
        say "fuzzing $target for $seconds seconds"
        options=(-max_total_time="$seconds" -max_len=2000 -entropic=0 -verbosity=0 -print_final_stats=1
            -artifact_prefix="build/findings/$target-")
        "$folder/${target}_fuzz" "${options[@]}" "$folder/found/$target" "fuzz/corpus/$target" || status=1
    done
    [ $status -eq 0 ] || die "fuzz: something broke; the inputs are in build/findings"
}
