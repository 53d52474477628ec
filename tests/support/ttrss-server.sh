#!/bin/sh
# A Tiny Tiny RSS for tests, all in one folder: a private PostgreSQL cluster on a unix socket,
# the server's schema with the API switched on for "admin" (password "password"), and php -S.
#   ttrss-server.sh start DIR PORT | web DIR PORT | stopweb DIR | sql DIR STATEMENT | update DIR | stop DIR
# Both servers refuse to run as root: as root they run as "nobody".
set -e
cmd=$1 dir=$2
pgbin=$(ls -d /usr/lib/postgresql/*/bin | sort -V | tail -1)
as_user=""
[ "$(id -u)" = 0 ] && as_user="setpriv --reuid=nobody --regid=nogroup --clear-groups --"
sql() { $as_user "$pgbin/psql" -h "$dir/sock" -U ttrss -qtA -v ON_ERROR_STOP=1 -c "$1" ttrss; }

start() {
  port=$1
  mkdir -p "$dir/pg" "$dir/sock" "$dir/lock" "$dir/cache/images" "$dir/cache/upload" "$dir/cache/export"
  cp -a /usr/share/tt-rss/www "$dir/www"
  rm -f "$dir/www/config.php" "$dir/www/feed-icons"
  (cd /usr/share/tt-rss/www && find . -type l ! -name config.php ! -name feed-icons) | while read -r link; do
    [ -e "/usr/share/tt-rss/www/$link" ] && ln -sfn "$(readlink -f "/usr/share/tt-rss/www/$link")" "$dir/www/$link"
  done
  mkdir "$dir/www/feed-icons"
  sed -e "s|^\s*include_once('/etc/tt-rss/database.php');|\$dbtype='pgsql'; \$dbserver='$dir/sock'; \$dbport=''; \$dbuser='ttrss'; \$dbname='ttrss'; \$dbpass='';|" \
      -e "s|%SELF_URL_PATH|http://127.0.0.1:$port/|" \
      -e "s|'/var/lib/tt-rss'|'$dir/lock'|" -e "s|'/var/cache/tt-rss'|'$dir/cache'|" \
      -e "s|'syslog'|''|" /etc/tt-rss/config.php > "$dir/www/config.php"
  chmod 0755 "$dir"
  [ "$(id -u)" = 0 ] && chown -R nobody:nogroup "$dir"
  $as_user "$pgbin/initdb" -D "$dir/pg" -A trust -U ttrss >"$dir/initdb.log"
  $as_user "$pgbin/pg_ctl" -D "$dir/pg" -o "-k $dir/sock -c listen_addresses= -c fsync=off" -l "$dir/pg.log" -w start >/dev/null
  $as_user "$pgbin/createdb" -h "$dir/sock" -U ttrss ttrss
  $as_user "$pgbin/psql" -h "$dir/sock" -U ttrss -q -f /usr/share/tt-rss/schema/ttrss_schema_pgsql.sql ttrss >/dev/null 2>&1
  sql "insert into ttrss_user_prefs (owner_uid, pref_name, value) values (1, 'ENABLE_API_ACCESS', 'true')"
  web "$port"
}

web() {
  # Several workers: a client that keeps a connection open must not stall the next one.
  (cd "$dir/www" && PHP_CLI_SERVER_WORKERS=4 exec $as_user php -S "127.0.0.1:$1" -t "$dir/www" >>"$dir/php.log" 2>&1) &
  echo $! >"$dir/php.pid"
  for _ in $(seq 200); do curl -s -o /dev/null "http://127.0.0.1:$1/api/" && return; sleep 0.1; done
  echo "php -S did not listen on port $1" >&2; return 1
}

stopweb() {
  [ -f "$dir/php.pid" ] && pkill -P "$(cat "$dir/php.pid")"; [ -f "$dir/php.pid" ] && kill "$(cat "$dir/php.pid")" 2>/dev/null || true
  rm -f "$dir/php.pid"
}

case $cmd in
  start) start "$3" ;;
  web) web "$3" ;;
  stopweb) stopweb ;;
  sql) sql "$3" ;;
  update) cd "$dir/www" && $as_user php update.php --feeds --quiet ;;
  stop)
    stopweb
    $as_user "$pgbin/pg_ctl" -D "$dir/pg" -m immediate stop >/dev/null 2>&1 || true ;;
esac
