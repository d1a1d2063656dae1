#!/usr/bin/env bash
# Writes a page that shows a timeline in catapult's trace viewer.
# page.sh VIEWER_FOLDER TIMELINE PAGE
set -euo pipefail
viewer=$1
timeline=$2
page=$3

{
    cat <<'HEAD'
<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>timeline</title>
<style>
  html, body { height: 100%; margin: 0; overflow: hidden; font-size: 13px; }
  body { display: flex; flex-direction: column; }
  body > tr-ui-timeline-view { flex: 1 1 auto; min-height: 0; }
</style></head><body>
HEAD
    echo '<script>'
    cat "$viewer/webcomponents.min.js"
    echo '</script>'
    # Hides the banner that calls the viewer outdated.
    sed 's/this\.warnPolyfill();//' "$viewer/trace_viewer_full.html"
    echo '<script type="application/json" id="timeline">'
    sed 's|</|<\\/|g' "$timeline"
    echo '</script><script>'
    cat "$(dirname "$0")/view.js"
    echo '</script></body></html>'
} > "$page"
