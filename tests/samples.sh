# shellcheck shell=bash
# Extracts samples from documents. Sourced by other tests.

# samples FILE LANGUAGE: prints the text between ```LANGUAGE and ```.
samples() {
    awk -v open="\`\`\`$2" '$0 == open { inside = 1; next } $0 == "```" { inside = 0 } inside' "$1"
}
