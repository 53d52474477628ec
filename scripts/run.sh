#!/usr/bin/env bash
# Builds, starts this user's engine (unless one already runs), the mail delivery, the enclosure
# downloads and then ConfigConsumer.
# Without a display the program runs offscreen, saves a screenshot, prints its path and ends.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$root/build}"
bash "$root/scripts/build.sh"
bin="$build/bin"

engine_pid=""
deliver_pid=""
media_pid=""
bus_pid=""
stop_engine() {
  [ -n "$media_pid" ] && kill "$media_pid" 2>/dev/null && wait "$media_pid" 2>/dev/null || true
  [ -n "$deliver_pid" ] && kill "$deliver_pid" 2>/dev/null && wait "$deliver_pid" 2>/dev/null || true
  [ -n "$engine_pid" ] && kill "$engine_pid" 2>/dev/null && wait "$engine_pid" 2>/dev/null || true
  [ -n "$bus_pid" ] && kill "$bus_pid" 2>/dev/null || true
}
trap stop_engine EXIT
trap "exit 130" INT
trap "exit 143" TERM

# Without a session bus the keyring and the player hand-off would autolaunch one that outlives
# every program here; a bus of our own ends with them.
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ] && command -v dbus-daemon >/dev/null; then
  bus="$(dbus-daemon --session --fork --print-address=1 --print-pid=1)"
  export DBUS_SESSION_BUS_ADDRESS="${bus%%$'\n'*}"
  bus_pid="${bus##*$'\n'}"
fi

log="$(mktemp -t quillon-engine.XXXXXX.log)"
"$bin/quillon-engine" >"$log" 2>&1 &
engine_pid=$!
for _ in $(seq 1 50); do
  grep -q "listening" "$log" && break
  if ! kill -0 "$engine_pid" 2>/dev/null; then
    # Exit code 3: this user's engine already runs; use that one.
    cat "$log"; engine_pid=""; break
  fi
  sleep 0.1
done
grep -h "listening" "$log" || true

# Articles of the checked subscriptions go to the Maildir (see the README).
"$bin/quillon-deliver" &
deliver_pid=$!
# Enclosures of subscriptions set to download them go to the Music, Videos and Pictures folders.
"$bin/quillon-media" &
media_pid=$!

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  shot="${SCREENSHOT:-$build/configconsumer.png}"
  QT_QPA_PLATFORM=offscreen CONFIGCONSUMER_SCREENSHOT="$shot" CONFIGCONSUMER_EXIT_AFTER_SCREENSHOT=1 \
    "$bin/configconsumer"
else
  "$bin/configconsumer"
fi
