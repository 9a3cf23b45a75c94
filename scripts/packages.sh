# Sourced by the other scripts: installs Debian packages that are missing. Asks nothing; works as root and with sudo.

# The packages to build and run, and to build and run the tests.
build_packages=(g++ cmake ninja-build pkgconf qt6-base-dev rapidjson-dev libcli11-dev python3-jsonschema)

# install_missing PACKAGE...: installs those that are not there yet, and says so.
install_missing() {
  local missing=() package
  for package in "$@"; do
    [[ $(dpkg-query -W -f='${Status}' "$package" 2>/dev/null) == *' installed' ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  local as_root=()
  if ((EUID != 0)); then
    if ! type -P sudo >/dev/null; then
      echo "Missing packages: ${missing[*]}; only root or sudo can install them" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing packages: ${missing[*]}"
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
