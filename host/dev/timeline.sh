# shellcheck shell=bash
# ./dev timeline.

fetch_viewer() {  # fetch_viewer TARGET: catapult's trace viewer, the code behind the former chrome://tracing
    local target=$1
    open_suite bookworm:amd64
    say "fetching the trace viewer"
    rm -rf "$target.packages" "$target.new"
    fetch_packages bookworm:amd64 "$target.packages" golang-1.19-src
    mkdir "$target.new"
    mv "$target.packages"/usr/share/go-1.19/src/cmd/trace/static/{trace_viewer_full.html,webcomponents.min.js} \
        "$target.packages/versions" "$target.new/"
    rm -rf "$target.packages"
    mv "$target.new" "$target"
}

timeline() {  # timeline [FILE]
    [ $# -eq 0 ] || [ -f "$1" ] || die "timeline: there is no file '$1'"
    lock_cache
    need_part trace-viewer host/dev/timeline.sh fetch_viewer
    unlock_cache
    if [ $# -gt 0 ]; then
        host/timeline/page.sh "$part" "$1" "${1%.json}.html"
        echo "${1%.json}.html"
        return
    fi
    local viewer=$part
    need_packages chromium
    build host mirx-simulator dovctl
    host/timeline/check.sh build/host "$viewer" build/timeline || die "timeline: the check failed"
    echo "build/timeline/session.png, build/timeline/session.html"
}
