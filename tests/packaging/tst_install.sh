#!/usr/bin/env bash
# Installs into a temporary root: the expected files are there, every desktop entry is valid and
# the installed engine finds its documents and keeps its files in a temporary home's XDG
# folders. Then, as root with dpkg, the .deb installs and removes leaving nothing behind.
set -euo pipefail
build="$1"
tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

root="$tmp/root"
DESTDIR="$root" cmake --install "$build" --prefix /usr >/dev/null
for file in usr/bin/configconsumer usr/bin/quillon-engine usr/bin/quillon-deliver usr/bin/quillon-services \
  usr/bin/quillon-open usr/share/applications/quillon-open.desktop usr/share/man/man1/quillon-open.1.gz \
  usr/bin/quillon-publish usr/share/man/man1/quillon-publish.1.gz \
  usr/share/quillon/QuillonData/configstrings.xml usr/share/applications/configconsumer.desktop \
  usr/share/icons/hicolor/48x48/apps/configconsumer.png usr/share/man/man1/quillon-engine.1.gz \
  usr/lib/systemd/user/quillon-engine.socket usr/lib/systemd/user/quillon-deliver.service \
  etc/xdg/autostart/quillon-services.desktop; do
  [ -e "$root/$file" ] || fail "$file not installed"
done
find "$root" -name '*.desktop' -print0 | xargs -0 -n1 desktop-file-validate || fail "a desktop entry is invalid"

home="$tmp/home"
paths="$(env -i HOME="$home" XDG_RUNTIME_DIR= "$root/usr/bin/quillon-engine" --print-paths)"
[ "$(sed -n 's/^shipped //p' <<<"$paths")" = "$root/usr/share/quillon/QuillonData" ] || fail "shipped: $paths"
[ "$(sed -n 's/^data //p' <<<"$paths")" = "$home/.local/share/Corvell/quillon-engine" ] || fail "data: $paths"
[ "$(sed -n 's/^log //p' <<<"$paths")" = "$home/.local/state/quillon-engine/engine.log" ] || fail "log: $paths"
[[ "$(sed -n 's/^socket //p' <<<"$paths")" == "$home/.cache/quillon-engine/quillon-engine-"* ]] || fail "socket: $paths"

if [ "$(id -u)" != 0 ] || ! command -v dpkg-deb >/dev/null || ! command -v dpkg-shlibdeps >/dev/null; then
  echo "SKIP: the package check needs root, dpkg-deb and dpkg-shlibdeps"
  exit 77
fi
if dpkg-query -W -f='${Status}' quillon 2>/dev/null | grep -q installed; then
  echo "SKIP: the package is installed on this machine; not touching it"
  exit 77
fi
(cd "$build" && cpack -G DEB -B "$tmp/package" -D CPACK_DEBIAN_COMPRESSION_TYPE=gzip >"$tmp/cpack.log") ||
  { cat "$tmp/cpack.log"; fail "cpack"; }
deb="$(ls "$tmp"/package/quillon_*.deb)"
listing() { find /usr /etc /opt -xdev -not -name '*.cache' 2>/dev/null | sort; }
(
  # One package test at a time on this machine.
  flock 9
  trap 'dpkg -r quillon >/dev/null 2>&1 || true' EXIT # never left installed by a failure
  listing >"$tmp/before"
  dpkg -i "$deb" >"$tmp/dpkg.log" 2>&1 || { cat "$tmp/dpkg.log"; fail "dpkg -i"; }
  { [ -x /usr/bin/configconsumer ] && [ -d /usr/share/quillon/QuillonData ]; } || fail "not installed by dpkg"
  [ -L /etc/systemd/user/sockets.target.wants/quillon-engine.socket ] || fail "the socket is not enabled"
  dpkg -r quillon >>"$tmp/dpkg.log" 2>&1 || { cat "$tmp/dpkg.log"; fail "dpkg -r"; }
  listing >"$tmp/after"
  diff "$tmp/before" "$tmp/after" || fail "dpkg -r left the lines marked > behind"
) 9>/tmp/quillon-package-test.lock
dpkg-deb -f "$deb" Depends | grep -q libqt6 || fail "no library dependencies in the package"
echo "PASS"
