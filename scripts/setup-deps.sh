#!/usr/bin/env bash
# Installs the Debian packages the build and tests need, only when something is missing.
set -euo pipefail
pkgs=(cmake g++ make pkg-config qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite libgl-dev python3 xvfb xauth qt6-webengine-dev
      libgmime-3.0-dev libcurl4-openssl-dev libsqlite3-dev libexpat1-dev dovecot-imapd dbus-daemon util-linux passwd
      qtkeychain-qt6-dev libsecret-1-0 gnome-keyring clang-format
      libproxy-dev squid apache2-utils fonts-wqy-microhei
      xdg-utils neomutt tmux
      tt-rss php-cli php-pgsql postgresql iproute2 curl
      libxmlrpc-c++8-dev wordpress wordpress-theme-twentytwentythree mariadb-server php-mysql php-gd
      libsystemd-dev systemd desktop-file-utils dpkg-dev file)
# The peers the benchmarks under bench/ measure against: only with --bench, since no test needs them.
[ "${1:-}" = "--bench" ] && pkgs+=(newsboat rss2email gpodder curl hyperfine valgrind linux-perf)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
# Debian's WordPress reads /etc/wordpress/config-<host>.php; the publishing tests' servers each
# name their own configuration through the environment.
wpshim=/etc/wordpress/config-127.0.0.1.php
if [ -d /etc/wordpress ] && [ ! -e "$wpshim" ]; then
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  printf '%s\n' '<?php' "// Test servers name their own configuration file in the environment." \
    "\$quillon_config = getenv('QUILLON_WORDPRESS_CONFIG');" \
    "if (\$quillon_config && is_readable(\$quillon_config)) {" "    require \$quillon_config;" "}" | $SUDO tee "$wpshim" >/dev/null
fi
