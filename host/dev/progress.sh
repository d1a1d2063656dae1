# shellcheck shell=bash
# Runs ninja and shows the progress and the time left.

time_left() {  # time_left SECONDS
    if [ "$1" -lt 60 ]; then echo "$1 s left"; else printf '%d min %02d s left\n' $(($1 / 60)) $(($1 % 60)); fi
}

# run_ninja FOLDER TARGET...: prints the compiler's messages, and the progress every ten seconds (on a terminal: in one
# line that is overwritten). `later` is the number of steps that a second build will take after this one.
run_ninja() {
    local line built total elapsed said=0 start='' end=$'\n' every=10 status=0
    if [ -t 1 ]; then start=$'\r' end=$'\e[K' every=1; fi
    NINJA_STATUS='@%f %t %e ' ninja -C "$@" | while IFS= read -r line; do
        if [[ $line =~ ^@([0-9]+)\ ([0-9]+)\ ([0-9]+)\.[0-9]+\  ]]; then
            built=${BASH_REMATCH[1]} total=${BASH_REMATCH[2]} elapsed=${BASH_REMATCH[3]}
            # The first steps are too few for an estimate.
            if [ $((built * 20)) -gt "$total" ] && [ "$elapsed" -ge $((said + every)) ] && [ "$built" -lt "$total" ]; then
                said=$elapsed
                printf '%s    %d of %d built, %s%s' "$start" "$built" "$total" \
                    "$(time_left $((elapsed * (total - built + ${later:-0}) / built)))" "$end"
            fi
        elif [[ $line != 'ninja: '@(Entering directory|no work to do)* ]]; then
            printf '%s%s%s\n' "$start" "$line" "${start:+$end}"
        fi
    done || status=$?
    # Clears the progress line before other output.
    printf '%s%s' "$start" "${start:+$end}"
    return $status
}
