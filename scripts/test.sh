#!/usr/bin/env bash
# Builds and runs the whole test suite twice: once with AddressSanitizer and
# UndefinedBehaviorSanitizer (LeakSanitizer included), then as an optimised build. Installs what
# is missing first. Widget tests need a display; without one they run under Xvfb.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
jobs="${JOBS:-2}"

bash "$root/scripts/setup.sh"

run_suite() {
    local dir="$1"
    shift
    cmake -S "$root" -B "$dir" "$@" >/dev/null
    cmake --build "$dir" -j "$jobs"
    (cd "$dir" && ctest --output-on-failure -j "$jobs")
}

# The widget tests draw for real: without a display they run on a virtual one of their own.
# Xvfb picks a free display number itself (-displayfd), so that runs side by side never meet.
if [ -z "${DISPLAY:-}" ]; then
    display_file="$(mktemp)"
    # -noreset: a server that resets when its last client leaves refuses the next one meanwhile.
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$display_file" 2>/dev/null &
    xvfb_pid=$!
    trap 'kill "$xvfb_pid" 2>/dev/null; rm -f "$display_file"' EXIT
    for _ in $(seq 100); do
        [ -s "$display_file" ] && break
        sleep 0.1
    done
    export DISPLAY=":$(head -n 1 "$display_file")"
fi

export ASAN_OPTIONS="${ASAN_OPTIONS:-strict_string_checks=1}"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"

echo "== Sanitizer build (ASan + UBSan)"
run_suite "$root/build-asan" -DCMAKE_BUILD_TYPE=Debug -DSPLINOR_SANITIZE=ON -DSPLINOR_BUILD_BENCHMARKS=OFF

echo "== Optimised build"
run_suite "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo
