# shellcheck shell=bash
# Sourced by tests: the samples of a document.

# samples FILE LANGUAGE: what stands between ```LANGUAGE and ```.
samples() {
    awk -v open="\`\`\`$2" '$0 == open { inside = 1; next } $0 == "```" { inside = 0 } inside' "$1"
}
