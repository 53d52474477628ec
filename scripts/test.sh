#!/usr/bin/env bash
# Builds everything and runs every test (offscreen; no display or network needed).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$root/build}"
bash "$root/scripts/build.sh"
bash "$root/scripts/check-format.sh"
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j"$(nproc)" --timeout 300
