# Sourced by scripts that work in fresh Debian trees: makes them in build/trees and runs commands in them. Needs root.

trees=$PWD/build/trees

# make_tree NAME SUITE ARCHITECTURE: a fresh tree, with this project's committed files in /orva. Each suite is bootstrapped
# once and copied from then on; remove build/trees to have newer packages.
make_tree() {
  local tree=$trees/$1 base=$trees/base-$2-$3
  if ((EUID != 0)); then
    echo "Only root can make a Debian tree" >&2
    return 1
  fi
  install_missing debootstrap
  mkdir -p "$trees"
  if [[ ! -d $base ]]; then
    local recipe=/usr/share/debootstrap/scripts/$2
    [[ -e $recipe ]] || recipe=/usr/share/debootstrap/scripts/sid # a suite younger than this machine's debootstrap
    rm -rf "$base.part"
    debootstrap --variant=minbase --arch="$3" "$2" "$base.part" "${ORVA_DEBIAN_MIRROR:-http://deb.debian.org/debian}" \
      "$recipe" >"$base.log"
    mv "$base.part" "$base"
  fi
  rm -rf "$tree"
  cp -a "$base" "$tree"
  cp /etc/resolv.conf "$tree/etc/"
  # This machine's way to the package servers: proxies, and whether a mirror may lag behind.
  apt-config dump Acquire | grep -E '^Acquire::(Check-Valid-Until|https?::)' >"$tree/etc/apt/apt.conf.d/00host" || true
  mkdir "$tree/orva"
  git archive HEAD | tar -x -C "$tree/orva"
}

# in_tree NAME COMMAND: runs the shell command in the tree, in /orva. What it mounts goes when the command ends.
in_tree() {
  # shellcheck disable=SC2016 # the inner shell expands these
  unshare --mount --pid --fork --kill-child sh -ec '
    mount -t proc proc "$1/proc"
    mount --rbind /dev "$1/dev"
    exec chroot "$1" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb LC_ALL=C.UTF-8 \
      DEBIAN_FRONTEND=noninteractive bash -ec "cd /orva; $2"' - "$trees/$1" "$2"
}

# install_in_tree NAME PACKAGE...
install_in_tree() {
  local name=$1
  shift
  in_tree "$name" "apt-get update -qq && apt-get install -qq -y --no-install-recommends $* >/tmp/apt.log 2>&1 || { tail -5 /tmp/apt.log >&2; exit 1; }"
}
