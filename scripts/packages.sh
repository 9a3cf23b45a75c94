# Sourced by the other scripts: installs Debian packages that are missing. Asks nothing; works as root and with sudo.

# The packages whose code becomes part of orva-host.
embedded_packages=(libcli11-dev libjs-dygraphs rapidjson-dev)

# The packages to build and run, and to build and run the tests.
build_packages=(g++ cmake help2man ninja-build pkgconf python3-jsonschema qt6-base-dev "${embedded_packages[@]}")

# The packages to test pages in a browser. Large: where they are missing, the test is skipped.
browser_packages=(chromium chromium-driver python3-selenium)

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
