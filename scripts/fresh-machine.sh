#!/usr/bin/env bash
# Tries the README's two commands as a newcomer would, on a fresh Debian 12 root file
# system: mmdebstrap's minbase plus apt, git and sudo; this repository cloned into it (its
# committed HEAD) with ../shared beside it. Runs scripts/demo.sh, then scripts/test.sh,
# inside it as root and prints each one's wall time. Run by hand before a release (as
# root, or through sudo), with Debian's archive reachable; it takes hours on two cores.
#   scripts/fresh-machine.sh [--only demo|test] [WORKDIR]   (default: a new folder under /var/tmp)
# The root is deleted at the end; the two logs stay in WORKDIR.
{ # read whole before it runs, so that editing the checkout meanwhile cannot derail it
set -euo pipefail
checkout=$(cd "$(dirname "$0")/.." && pwd)
[ "$(id -u)" -eq 0 ] || exec sudo bash "$0" "$@"   # it mounts and chroots
command -v mmdebstrap >/dev/null || DEBIAN_FRONTEND=noninteractive apt-get install -y mmdebstrap

only=
if [ "${1:-}" = --only ]; then only=$2; shift 2; fi
case "$only" in ""|demo|test) ;; *) echo "fresh-machine: --only takes demo or test" >&2; exit 2 ;; esac
work=${1:-$(mktemp -d /var/tmp/fresh-machine.XXXXXX)}
mkdir -p "$work"
work=$(realpath "$work")
root=$work/root
source "$checkout/scripts/scratch-mounts.sh"

cleanup() {
  set +e
  # Whatever the tests left running in the root (an X server, a child) holds its mounts.
  for p in /proc/[0-9]*; do
    [ "$(readlink "$p/root" 2>/dev/null)" = "$root" ] && kill -9 "${p#/proc/}" 2>/dev/null
  done
  sleep 1
  unmount_all
  remove_scratch "$root"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

[ -n "$(git -C "$checkout" status --porcelain)" ] &&
  echo "fresh-machine: the checkout has uncommitted changes; the root gets HEAD only" >&2

echo "fresh-machine: load before: $(cut -d' ' -f1-3 /proc/loadavg), $(nproc) cores"
start=$SECONDS
# With no mirror named, mmdebstrap takes Debian's own, updates and security included.
mmdebstrap --variant=minbase --include=apt,git,sudo bookworm "$root" >"$work/mmdebstrap.log" 2>&1 ||
  { tail -20 "$work/mmdebstrap.log"; exit 1; }
echo "fresh-machine: root made in $((SECONDS - start)) s"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mkdir -p "$root/work"
git clone -q "$checkout" "$root/work/tsruntime"
cp -a "$checkout/../shared" "$root/work/shared"

# mmdebstrap made the device nodes; the host's /dev itself stays out.
mount_at "$root/proc" -t proc proc
mount_at "$root/sys" -t sysfs sysfs
mount_at "$root/dev/pts" -t devpts -o newinstance,ptmxmode=0666 devpts
mount_at "$root/dev/shm" -t tmpfs tmpfs
mount_at "$root/tmp" -t tmpfs tmpfs

cpu_seconds() {  # CPU time used so far by this script's finished children, into $cpu_now
  times >"$work/times"   # not in a subshell: a subshell's children are not these
  cpu_now=$(tail -1 "$work/times" | tr ms '  ' | awk '{printf "%d", $1 * 60 + $2 + $3 * 60 + $4}')
}
run() {  # run NAME COMMAND: one README command in the root, as a newcomer's shell has it
  local t=$SECONDS cpu rc=0
  cpu_seconds; cpu=$cpu_now
  chroot "$root" /usr/bin/env -i HOME=/root LANG=C.UTF-8 TERM=dumb \
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
    bash -c "cd /work/tsruntime && $2" >"$work/$1.log" 2>&1 || rc=$?
  local s=$((SECONDS - t))
  cpu_seconds; cpu=$((cpu_now - cpu))
  # On a busy machine the wall time says little; the CPU time, spread over the cores,
  # is what an idle one would need besides the downloads.
  results+=("$1: $((s / 60)) min $((s % 60)) s wall, $((cpu / 60)) min $((cpu % 60)) s CPU, load $(cut -d' ' -f1 /proc/loadavg), exit $rc (log: $work/$1.log)")
  echo "fresh-machine: ${results[-1]}"
  [ "$rc" -eq 0 ] || { tail -30 "$work/$1.log"; failed=1; }
}
results=()
failed=0
[ "$only" = test ] || run demo scripts/demo.sh
[ "$only" = demo ] || run test scripts/test.sh

echo "fresh-machine: load after: $(cut -d' ' -f1-3 /proc/loadavg)"
printf 'fresh-machine: %s\n' "${results[@]}"
exit "$failed"
}
