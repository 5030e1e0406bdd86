#!/usr/bin/env bash
# Proves that a fresh clone builds on a minimal Debian 12 with nothing but the README's run
# command: a debootstrap root gets only git, cmake, g++ and make, clones the committed tree and
# runs `./build.sh run`, which must install everything else itself and print the sample's
# result. Needs root and network access to a Debian mirror; installs debootstrap when missing.
#
#   tests/cleanroom/run.sh [COMMIT]     (default HEAD)
#   tests/cleanroom/run.sh --prepare    only make the cached root
#
# The bare root is cached as a tarball under LX_CLEANROOM_CACHE (default
# /var/cache/lxbasic-cleanroom) so that repeated runs skip debootstrap; every run unpacks a
# fresh copy, so nothing installed by an earlier run survives.
set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd)
commit=${1:-HEAD}
suite=${LX_CLEANROOM_SUITE:-bookworm}
mirror=${LX_CLEANROOM_MIRROR:-http://deb.debian.org/debian}
cache=${LX_CLEANROOM_CACHE:-/var/cache/lxbasic-cleanroom}
base=$cache/$suite-base.tar
expected=${LX_CLEANROOM_EXPECT:-Hello}

[ "$(id -u)" -eq 0 ] || { echo "cleanroom: needs root (debootstrap, chroot)" >&2; exit 2; }
# A fresh machine lacks debootstrap: install it as the tests' own packages are installed.
if ! command -v debootstrap >/dev/null; then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends debootstrap \
    >/dev/null
fi
command -v debootstrap >/dev/null || { echo "cleanroom: debootstrap is not installed" >&2; exit 2; }

make_base() {
  local tmp
  tmp=$(mktemp -d "$cache/debootstrap.XXXXXX")
  chmod 755 "$tmp"  # apt's download user must reach the root's cache
  echo "cleanroom: debootstrap $suite into $tmp"
  debootstrap --variant=minbase "$suite" "$tmp" "$mirror" >"$cache/debootstrap.log" 2>&1 || {
    tail -20 "$cache/debootstrap.log" >&2
    rm -rf "$tmp"
    return 1
  }
  cp /etc/resolv.conf "$tmp/etc/resolv.conf"
  chroot "$tmp" /usr/bin/env DEBIAN_FRONTEND=noninteractive sh -c \
    'apt-get update -qq && apt-get install -y -qq --no-install-recommends git cmake g++ make \
       ca-certificates >/dev/null && apt-get clean'
  tar -C "$tmp" -cf "$base.partial" .
  mv "$base.partial" "$base"
  rm -rf "$tmp"
}

mkdir -p "$cache"
[ -f "$base" ] || make_base
[ "$commit" = "--prepare" ] && exit 0

root=$(mktemp -d /var/tmp/lxbasic-cleanroom.XXXXXX)
mounted=()
cleanup() {
  local i
  for ((i = ${#mounted[@]} - 1; i >= 0; i--)); do
    umount "${mounted[$i]}" 2>/dev/null || umount -l "${mounted[$i]}" 2>/dev/null || true
  done
  # Never delete through a mount that is still there (the host's /dev, /proc).
  if grep -q " $root/" /proc/mounts; then
    echo "cleanroom: $root still has mounts; left in place" >&2
  else
    rm -rf "$root"
  fi
}
trap cleanup EXIT

tar -C "$root" -xf "$base"
chmod 755 "$root"
cp /etc/resolv.conf "$root/etc/resolv.conf"
for fs in proc dev dev/pts; do
  case $fs in
    proc) mount -t proc proc "$root/proc" ;;
    *) mount --bind "/$fs" "$root/$fs" ;;
  esac
  mounted+=("$root/$fs")
done

# The committed tree only: a bundle carries it into the root, where git itself clones it.
git -C "$repo" bundle create "$root/project.bundle" "$commit" --branches --tags 2>/dev/null ||
  git -C "$repo" bundle create "$root/project.bundle" HEAD
sha=$(git -C "$repo" rev-parse "$commit")

log=$cache/last-run.log
start=$(date +%s)
set +e
chroot "$root" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
  sh -c "git clone -q /project.bundle /root/lxbasic && cd /root/lxbasic && git checkout -q $sha &&
         ./build.sh run" >"$log" 2>&1
status=$?
set -e
elapsed=$(($(date +%s) - start))

if [ $status -ne 0 ] || ! grep -q "$expected" "$log"; then
  tail -40 "$log" >&2
  echo "cleanroom: FAILED (status $status, ${elapsed}s); full log in $log" >&2
  exit 1
fi
echo "cleanroom: ok, '$expected' after ${elapsed}s (clone, installs and build)"
