# Shared by the scripts of this folder and .ci/run; sourced, never run. Sets `root` to the top of the checkout.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Prints the message to stderr after the script's name and stops.
fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# quietly LOG COMMAND...: runs the command with its output in LOG, and shows that only when the command fails. Nothing
# reaches stdout, which belongs to whoever called the script.
quietly() {
  local log=$1
  shift
  if ! "$@" >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    fail "this failed: $*"
  fi
}

# packages_of SECTION...: the names in these sections of packages.txt.
packages_of() {
  awk -v wanted=" $* " '
    { sub(/#.*/, ""); gsub(/[ \t]/, "") }
    /^\[.*\]$/ { here = index(wanted, " " substr($0, 2, length($0) - 2) " ") > 0; next }
    here && $0 != "" { print }
  ' "$root/scripts/packages.txt"
}

is_installed() {
  [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# ensure_packages SECTION...: installs what is missing of these sections, and does nothing when nothing is. Needs root or
# a sudo that needs no password; otherwise names the packages and stops.
ensure_packages() {
  local wanted package
  local missing=() become=()
  mapfile -t wanted < <(packages_of "$@")
  [ "${#wanted[@]}" -gt 0 ] || fail "scripts/packages.txt names no packages"
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    fail "this is no Debian machine. Build with cmake as CONTRIBUTING.md says; what is needed: ${wanted[*]}"
  fi
  for package in "${wanted[@]}"; do
    is_installed "$package" || missing+=("$package")
  done
  if [ "${#missing[@]}" -eq 0 ]; then
    return
  fi
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null || ! sudo --non-interactive true 2>/dev/null; then
      fail "packages are missing: ${missing[*]}. Have root run: apt-get install ${missing[*]}"
    fi
    become=(sudo --non-interactive)
  fi
  printf '%s: installing %s\n' "$(basename "$0")" "${missing[*]}" >&2
  local log
  log=$(mktemp)
  quietly "$log" "${become[@]}" apt-get update
  quietly "$log" "${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    "${missing[@]}"
  rm -f "$log"
}
