#!/usr/bin/env bash
# Builds and runs the demo host application. With a display it opens the window; without one
# it renders one frame under Xvfb and writes a screenshot, whose path it prints.
set -euo pipefail

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
jobs="${JOBS:-2}"

bash "$root/scripts/setup.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j "$jobs" --target SplinorDemo

if [ -n "${DISPLAY:-}" ]; then
    exec "$root/build/demo/SplinorDemo" "$@"
fi
screenshot="${SCREENSHOT:-$root/build/demo-screenshot.png}"
xvfb-run -a -s "-screen 0 1280x1024x24" "$root/build/demo/SplinorDemo" --screenshot "$screenshot"
