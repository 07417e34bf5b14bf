#!/usr/bin/env bash
# Runs case files of the ODBC bridge against a PostgreSQL server of their own:
# a throwaway cluster in a temporary directory, listening on a free loopback
# port, reached through psqlODBC with a private driver and data source
# registration (ODBCSYSINI, ODBCINI). The server is stopped and everything
# removed afterwards, however the cases end.
#
#   postgres_server.sh KOVO CASE_FILE...
#
# The server refuses to run as root; under root it runs as `nobody`.
set -euo pipefail

kovo=$1
shift

bin=$(ls -d /usr/lib/postgresql/*/bin 2> /dev/null | sort -V | tail -n 1)
driver=$(ls /usr/lib/*/odbc/psqlodbca.so 2> /dev/null | head -n 1)
if [ -z "$bin" ] || [ -z "$driver" ]; then
  echo "PostgreSQL or psqlODBC is missing: install postgresql and odbc-postgresql" >&2
  exit 1
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/kovo-postgres-XXXXXX")
chmod 755 "$work"
as_server() { "$@"; }
if [ "$(id -u)" -eq 0 ]; then
  chown nobody "$work"
  as_server() { runuser -u nobody -- "$@"; }
fi

cleanup() {
  as_server "$bin/pg_ctl" -D "$work/data" -m immediate stop > /dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT

port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')

as_server "$bin/initdb" -D "$work/data" -U kovo --auth=trust --no-sync -E UTF8 > "$work/initdb.log" 2>&1 ||
  { cat "$work/initdb.log" >&2; exit 1; }
as_server "$bin/pg_ctl" -D "$work/data" -l "$work/server.log" -w \
  -o "-h 127.0.0.1 -p $port -k $work -F" start > /dev/null ||
  { cat "$work/server.log" >&2; exit 1; }

# CommLog=0: psqlODBC writes no communication log files.
mkdir "$work/odbc"
cat > "$work/odbc/odbcinst.ini" << EOF
[PostgreSQL ANSI]
Driver=$driver
Debug=0
CommLog=0
EOF
cat > "$work/odbc/odbc.ini" << EOF
[kovo_pg]
Driver=PostgreSQL ANSI
Servername=127.0.0.1
Port=$port
Database=postgres
Username=kovo
EOF
export ODBCSYSINI="$work/odbc" ODBCINI="$work/odbc/odbc.ini"

status=0
for case_file in "$@"; do
  "$kovo" --check "$case_file" || status=1
  "$kovo" --check --extended-frames "$case_file" || status=1
done
exit $status
