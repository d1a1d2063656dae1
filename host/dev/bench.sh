# shellcheck shell=bash
# ./dev bench on this machine.

bench() {  # bench [PATTERN]
    local programs=build/host/bench services
    need_packages valgrind
    build host bench/all
    say "what loading the library costs"
    bench/loading.sh $programs/load_bench build/host/libtavro-dov-client.so
    say "the library's own cost, with the service in the same process"
    $programs/cost_bench
    $programs/lookup_bench
    say "the same in instructions"
    bench/instructions.sh $programs/cost_bench
    say "calls to a service in another process, beside the bare binder call"
    services=$(mktemp -d)
    # shellcheck disable=SC2064  # the trap must use the present value
    trap "rm -rf '$services'" EXIT
    cp simulator/vendor.tavro.hardware.mirx-service.xml "$services/"
    DOV_SERVICE_DIR=$services $programs/calls_bench ${1:+--benchmark_filter="$1"} || die "calls_bench failed"
}
