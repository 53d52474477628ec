#!/usr/bin/env bash
# The floor under the engine's fetch round, measured on the same feeds and server:
#   curl --parallel fetching every feed, 32 at once,
#   serial curl asking for every feed with If-Modified-Since (the "304" round's floor: one
#   process, one kept-alive connection), then bench_engine_floor for a bare XML pass over the
#   documents and prepared SQLite inserts of their articles.
# Usage: engine_floor.sh <urls file> <folder holding feeds/*.xml> <empty work folder> <bench_engine_floor>
# Prints key=value lines: wall and CPU (user + sys) milliseconds of each piece.
set -euo pipefail
urls=$1 feeds=$2 work=$3 floor=$4
TIMEFORMAT='%3R %3U %3S'

# "wall user sys" in seconds from bash's time keyword, as "<name>_wall_ms=... <name>_cpu_ms=...".
report() {
  read -r wall user sys <"$work/$1.time"
  awk -v n="$1" -v w="$wall" -v u="$user" -v s="$sys" \
    'BEGIN { printf "%s_wall_ms=%.0f\n%s_cpu_ms=%.0f\n", n, w * 1000, n, (u + s) * 1000 }'
}

config="$work/curl.config"
sed 's/.*/url = "&"\noutput = "\/dev\/null"/' "$urls" >"$config"
{ time curl --silent --show-error --fail --parallel --parallel-max 32 --config "$config" 2>"$work/curl.err"; } 2>"$work/curl_parallel.time"
report curl_parallel

since=$(curl --silent --head "$(head -n1 "$urls")" | tr -d '\r' | sed -n 's/^Last-Modified: //Ip')
{ time curl --silent --show-error --header "If-Modified-Since: $since" --config "$config" 2>"$work/curl.err"; } 2>"$work/curl_serial_304.time"
report curl_serial_304
echo "last_modified=$since"

"$floor" "$feeds" "$work"
