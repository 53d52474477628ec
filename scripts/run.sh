#!/usr/bin/env bash
# Builds, starts this user's engine, mail delivery and enclosure downloads as services (unless
# they run already) and then ConfigConsumer. Closing the window leaves the services running, as
# an installed system does; `bash scripts/run.sh stop` ends them.
# Without a display the program runs offscreen, saves a screenshot, prints its path and ends.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$root/build}"
bin="$build/bin"
export QUILLON_BIN_DIR="$bin"
[ "${1:-}" = stop ] || bash "$root/scripts/build.sh"

# Without a session bus the keyring and the player hand-off would autolaunch one of their own;
# this one lives as long as the services and ends with them.
bus_file="$(dirname "$("$bin/quillon-engine" --print-paths | sed -n 's/^socket //p')")/quillon-run.bus"
if [ "${1:-}" = stop ]; then
  "$bin/quillon-services" stop
  if [ -s "$bus_file" ]; then kill "$(sed -n 2p "$bus_file")" 2>/dev/null || true; fi
  rm -f "$bus_file"
  exit 0
fi
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ] && command -v dbus-daemon >/dev/null; then
  if ! { [ -s "$bus_file" ] && kill -0 "$(sed -n 2p "$bus_file")" 2>/dev/null; }; then
    dbus-daemon --session --fork --print-address=1 --print-pid=1 >"$bus_file"
  fi
  DBUS_SESSION_BUS_ADDRESS="$(sed -n 1p "$bus_file")"
  export DBUS_SESSION_BUS_ADDRESS
fi

# With a systemd user session as units, else held by systemd-socket-activate: the engine starts
# on the first connection, the delivery (articles as mail, see the README) and the downloads
# beside it.
"$bin/quillon-services" start

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  shot="${SCREENSHOT:-$build/configconsumer.png}"
  QT_QPA_PLATFORM=offscreen CONFIGCONSUMER_SCREENSHOT="$shot" CONFIGCONSUMER_EXIT_AFTER_SCREENSHOT=1 \
    "$bin/configconsumer"
else
  "$bin/configconsumer"
fi
echo "The engine and the mail delivery keep running; 'bash scripts/run.sh stop' ends them."
