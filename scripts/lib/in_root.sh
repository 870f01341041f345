#!/usr/bin/env bash
# Runs a command in another root, with /proc and the devices that programs expect. Mounts vanish with the
# name space that the caller made:
#
#   unshare --mount --pid --fork in_root.sh FOLDER COMMAND...
set -euo pipefail
place=$1
shift
mount -t proc proc "$place/proc"
mount -t tmpfs -o mode=755 dev "$place/dev"
for device in null zero full random urandom tty; do
  touch "$place/dev/$device"
  mount --bind "/dev/$device" "$place/dev/$device"
done
mkdir "$place/dev/shm"
ln -s /proc/self/fd "$place/dev/fd"
ln -s /proc/self/fd/0 "$place/dev/stdin"
ln -s /proc/self/fd/1 "$place/dev/stdout"
ln -s /proc/self/fd/2 "$place/dev/stderr"
exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
  ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
  chroot "$place" "$@"
