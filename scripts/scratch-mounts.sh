# Sourced by the scripts that make a scratch root (scripts/fresh-machine.sh,
# tests/install/check_packages.sh): mounts that unmount_all undoes in reverse, and a
# deletion that never reaches through a mount still there.
mounts=()
mount_at() {  # mount_at DIR MOUNT-ARGUMENTS...
  mkdir -p "$1" && mount "${@:2}" "$1" && mounts+=("$1")
}
unmount_all() {
  local i
  for ((i = ${#mounts[@]} - 1; i >= 0; i--)); do
    umount "${mounts[i]}" 2>/dev/null || umount -l "${mounts[i]}"
  done
  mounts=()
}
remove_scratch() {  # remove_scratch DIR
  if findmnt -rn -o TARGET | grep -q "^$1/"; then
    echo "$1 still has mounts below it; left in place" >&2
    return 1
  fi
  rm -rf --one-file-system "$1"
}
