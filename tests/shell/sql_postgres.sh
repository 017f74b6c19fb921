#!/bin/sh
# The SQL language tests (tests/lang/sql) once more against a real PostgreSQL
# server through its ODBC driver: a throw-away cluster in a temporary folder,
# listening only on a Unix socket there, started here and stopped on every
# way out. A program's expected output is NAME.pg.out where the two databases
# answer differently (the program says why), else NAME.out.
#   usage: sql_postgres.sh ZOSH
zosh=$(cd "$(dirname "$1")" && pwd -P)/$(basename "$1")
here=$(cd "$(dirname "$0")" && pwd -P)
tests=$here/../lang/sql

bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
if [ -z "$bin" ] || ! odbcinst -q -d -n "PostgreSQL Unicode" >/dev/null 2>&1; then
  echo "PostgreSQL or its ODBC driver is not installed (scripts/install-deps)"
  exit 1
fi

work=$(mktemp -d)
cluster=$work/cluster
# The socket lies in this run's own folder, but the port also keys the
# server's shared memory, and two servers starting at the same moment on one
# port race for the same key. So each run takes its own port, from its
# process id.
port=$((10000 + $$ % 50000))
# The server refuses to run as root: as root the cluster belongs to postgres.
as_owner() { "$@"; }
if [ "$(id -u)" -eq 0 ]; then
  chown postgres "$work"
  as_owner() { runuser -u postgres -- "$@"; }
fi
stop() {
  [ -f "$cluster/postmaster.pid" ] && as_owner "$bin/pg_ctl" -D "$cluster" -m immediate -w stop >/dev/null 2>&1
  rm -rf "$work"
}
trap stop EXIT
trap 'exit 1' INT TERM HUP

as_owner "$bin/initdb" -D "$cluster" -U postgres -A trust --no-sync -E UTF8 --locale=C.UTF-8 >"$work/initdb.log" 2>&1 ||
  { cat "$work/initdb.log"; exit 1; }
as_owner "$bin/pg_ctl" -D "$cluster" -l "$work/server.log" -w \
  -o "-k $work -p $port -c listen_addresses='' -c fsync=off" start >/dev/null ||
  { cat "$work/server.log"; exit 1; }
as_owner "$bin/createdb" -h "$work" -p "$port" -U postgres zotest || exit 1

# BoolsAsChar=0: booleans come as BIT (logical fields), not as text.
ZOBASE_SQL_CONNECT="Driver=PostgreSQL Unicode;Servername=$work;Port=$port;Database=zotest;Username=postgres;BoolsAsChar=0"
export ZOBASE_SQL_CONNECT
LC_ALL=C.UTF-8
export LC_ALL

failed=0
for prg in "$tests"/*.prg; do
  stem=${prg%.prg}
  name=$(basename "$stem")
  expected=$stem.out
  [ -f "$stem.pg.out" ] && expected=$stem.pg.out
  sandbox=$work/run-$name
  mkdir "$sandbox" && cp "$prg" "$sandbox/"
  (cd "$sandbox" && "$zosh" "$name.prg" </dev/null >"$sandbox/actual.raw" 2>&1)
  sed "s|$sandbox/||g" "$sandbox/actual.raw" >"$sandbox/actual"
  if ! diff -u "$expected" "$sandbox/actual"; then
    echo "FAILED: $name against PostgreSQL"
    failed=1
  fi
done
exit $failed
