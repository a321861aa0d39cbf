#!/usr/bin/env bash
# A private PostgreSQL server for the tests of the server record store.
#
#   scripts/pg-cluster.sh start DIR   a fresh cluster listening only on
#                                     127.0.0.1 on a free port, with the
#                                     database "hourbook" and the login "hb"
#                                     (trust); writes DIR/port and
#                                     DIR/connection.txt (the ODBC text)
#   scripts/pg-cluster.sh stop DIR    stops it (fast shutdown) and removes
#                                     the cluster's files
#
# The cluster's files live in a folder of their own under /tmp (named in
# DIR/cluster), which the server's user can reach wherever DIR is.
#
# It installs nothing: it uses Debian's postgresql (HB_PACKAGES in
# scripts/lib.sh) and the psqlODBC driver "PostgreSQL Unicode". The server
# refuses to run as root, so as root it runs as the system user "postgres"
# (made by Debian's package) or, failing that, "hbpg", made here.
set -euo pipefail

die() {
    echo "pg-cluster.sh: $*" >&2
    exit 1
}

cmd=${1:-}
dir=${2:-}
[ -n "$cmd" ] && [ -n "$dir" ] || die "usage: pg-cluster.sh start|stop DIR"
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
data=""
[ -f "$dir/cluster" ] && data=$(cat "$dir/cluster")

bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -x "$bin/pg_ctl" ] || die "no PostgreSQL server programs in /usr/lib/postgresql (Debian package postgresql)"

# The user the server runs as, and how to run a command as that user.
as_user=()
owner=$(id -un)
if [ "$(id -u)" = 0 ]; then
    if id postgres >/dev/null 2>&1; then
        owner=postgres
    else
        id hbpg >/dev/null 2>&1 || useradd --system --no-create-home --shell /usr/sbin/nologin hbpg ||
            die "cannot create the system user hbpg"
        owner=hbpg
    fi
    as_user=(runuser -u "$owner" --)
fi

stop_cluster() {
    if [ -n "$data" ] && [ -f "$data/data/postmaster.pid" ]; then
        "${as_user[@]}" "$bin/pg_ctl" -D "$data/data" -m fast -w -t 30 stop >/dev/null 2>&1 ||
            "${as_user[@]}" "$bin/pg_ctl" -D "$data/data" -m immediate -w -t 30 stop >/dev/null 2>&1 ||
            true
    fi
    case $data in
    /tmp/hb-pg.*) rm -rf "$data" ;;
    esac
    rm -f "$dir/cluster" "$dir/port" "$dir/connection.txt"
}

port_free() { ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

case $cmd in
start)
    stop_cluster
    data=$(mktemp -d /tmp/hb-pg.XXXXXX)
    printf '%s\n' "$data" >"$dir/cluster"
    chown "$owner" "$data"
    chmod 700 "$data"
    "${as_user[@]}" "$bin/initdb" -D "$data/data" -A trust -U hb -E UTF8 --locale=C.UTF-8 \
        >"$dir/initdb.log" 2>&1 || { cat "$dir/initdb.log" >&2; stop_cluster; die "initdb failed"; }
    # Another server (another build tree's, another user's) may hold a port:
    # try the next one when the server cannot bind.
    started=""
    for port in $(shuf -i 54329-54999 -n 40); do
        port_free "$port" || continue
        if "${as_user[@]}" "$bin/pg_ctl" -D "$data/data" -w -t 60 -l "$data/server.log" \
            -o "-c listen_addresses=127.0.0.1 -p $port -c unix_socket_directories=''" \
            start >/dev/null 2>&1; then
            started=$port
            break
        fi
    done
    if [ -z "$started" ]; then
        tail -n 20 "$data/server.log" >&2 || true
        stop_cluster
        die "the server did not start"
    fi
    "${as_user[@]}" "$bin/createdb" -h 127.0.0.1 -p "$started" -U hb hourbook ||
        { stop_cluster; die "createdb hourbook failed"; }
    printf '%s\n' "$started" >"$dir/port"
    printf 'Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=%s;Database=hourbook;Uid=hb;\n' \
        "$started" >"$dir/connection.txt"
    echo "PostgreSQL on 127.0.0.1:$started, cluster $data"
    ;;
stop)
    [ -n "$data" ] && [ -f "$data/server.log" ] && cp "$data/server.log" "$dir/server.log"
    stop_cluster
    echo "PostgreSQL in $dir stopped"
    ;;
*) die "usage: pg-cluster.sh start|stop DIR" ;;
esac
