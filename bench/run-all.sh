#!/usr/bin/env bash
# Every benchmark of docs/PERFORMANCE.md in one run, one after the other, each with the load
# average before and after it, so that the whole document can be measured again at once.
# Usage: bench/run-all.sh [build folder] > run.log   (as root: the sync benchmark needs a
# network namespace of its own; the delivery benchmark writes below a fresh top-level folder)
set -uo pipefail
cd "$(dirname "$0")/.." # the sync benchmark reads the test servers' scripts from here
build=${1:-build}
bin="$build/bin"
export QUILLON_BIN_DIR="$bin" QT_QPA_PLATFORM=offscreen
fresh="/qrun-$(date +%s)"

step() {
  echo "=== $* ==="
  echo "load before: $(cut -d' ' -f1-3 /proc/loadavg) at $(date -u +%H:%M:%S)"
  local start=$SECONDS
  "$@" 2>&1
  echo "--- exit $?, $((SECONDS - start)) s, load after: $(cut -d' ' -f1-3 /proc/loadavg)"
}

echo "run of $(git rev-parse --short HEAD) on $(nproc) cores, $(date -u)"
step "$bin/bench_engine_itembag" 10000
step "$bin/bench_client_roundtrip" 10000
step "$bin/bench_wire_bag"
step "$bin/bench_parser" 1000 20 5
step "$bin/bench_category_tree" 40
step "$bin/bench_engine_fetch" 100
step "$bin/bench_engine_fetch" 1000 --peer
step "$bin/bench_engine_fetch" 10000
step "$bin/bench_engine_responsive" 1000
step "$bin/bench_engine_responsive" 10000
step "$bin/bench_main_window_load" 1000,10000,30000 5
step "$bin/bench_add_subscription" 5000 200 5
step "$bin/bench_opml_import" 5000 50
step "$bin/bench_options_window" 10000 5
step "$bin/tst_EngineServer" boundsWhatOneClientCosts
mkdir -p "$fresh"
step "$bin/bench_delivery" 250 500 1000 --peer --dir "$fresh"
step "$bin/bench_media"
step "$bin/bench_online_sync" 1000
rm -rf "$fresh"
