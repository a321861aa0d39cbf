#!/usr/bin/env bash
# Runs a command inside the i386 Debian root that holds Wine's 32-bit side
# (made by scripts/lib.sh when i386 multiarch cannot be installed):
#
#   bash scripts/x86-root.sh ROOT [--bind PATH]... [--] COMMAND [ARG]...
#
# The mounts (/proc, /dev, /sys, /tmp and each PATH at the same absolute
# path inside the root) are made in a private mount namespace of the
# command, so they are never seen outside it and vanish with its last
# process (including a wineserver that lingers a few seconds): nothing is
# left mounted, whatever way the command ends. Paths in the build tree and in
# CTest therefore mean the same inside and out; the command starts in the
# current directory. Sharing /tmp lets the programs inside use an X server
# (Xvfb) started outside, and the other way round. Needs root.
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: x86-root.sh ROOT [--bind PATH]... [--] COMMAND [ARG]..." >&2
    exit 2
fi
root=$1
shift
binds=()
while [ $# -gt 0 ]; do
    case $1 in
    --bind)
        binds+=("$2")
        shift 2
        ;;
    --)
        shift
        break
        ;;
    *) break ;;
    esac
done
if [ ! -x "$root/bin/sh" ]; then
    echo "x86-root.sh: no Debian root at $root" >&2
    exit 2
fi

# Inside the new namespace: $1 the root, $2 the working directory, then the
# number of bind paths, the paths, and the command.
# shellcheck disable=SC2016
exec unshare --mount --propagation private -- bash -euc '
root=$1 wd=$2 n=$3
shift 3
mount -t proc proc "$root/proc"
mount --rbind /dev "$root/dev"
mount --rbind /sys "$root/sys"
mount --bind /tmp "$root/tmp"
for ((i = 0; i < n; i++)); do
    mkdir -p "$root$1"
    mount --bind "$1" "$root$1"
    shift
done
exec chroot "$root" /bin/sh -c "cd \"\$0\" 2>/dev/null || cd /; exec \"\$@\"" "$wd" "$@"
' x86-root "$root" "$PWD" "${#binds[@]}" "${binds[@]}" "$@"
