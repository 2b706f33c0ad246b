#!/bin/sh
# Installs the Debian packages the build, the tests and the benchmarks need,
# when any of them is missing.  Needs root (or sudo) only when installing.
set -e
pkgs="build-essential cmake pkg-config gettext libgtest-dev libgmock-dev googletest
      libbenchmark-dev coinor-libcbc-dev coinor-libclp-dev coinor-libcgl-dev
      coinor-libosi-dev coinor-libcoinutils-dev coinor-cbc coinor-clp binutils
      zlib1g-dev"
missing=""
for p in $pkgs; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "installing:$missing"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get install -y --no-install-recommends $missing || {
  $SUDO apt-get update
  $SUDO apt-get install -y --no-install-recommends $missing
}
