#!/bin/sh
# Installs the Debian packages the build and the tests need (and, with the
# argument "bench", "fuzz" or "docs", also what only the benchmarks, the
# fuzz runs or the reference documentation need), when any is missing.
# Needs root (or sudo) only when installing.
set -e
pkgs="build-essential cmake pkg-config gettext libgtest-dev libgmock-dev googletest
      libbenchmark-dev coinor-libcbc-dev coinor-libclp-dev coinor-libcgl-dev
      coinor-libosi-dev coinor-libcoinutils-dev coinor-cbc coinor-clp binutils
      zlib1g-dev coinor-libipopt-dev glpk-utils"
case "$1" in
  "") ;;
  # The peer of the model-building comparison runs under the system
  # interpreter, which is the one that sees Debian's Python packages.
  bench) pkgs="$pkgs python3 python3-pulp libglpk-dev" ;;
  # Only the timed fuzz runs need clang and libFuzzer; the tests replay the
  # corpus with the ordinary compiler.
  fuzz) pkgs="$pkgs clang-14 libclang-rt-14-dev libfuzzer-14-dev" ;;
  # The reference documentation (make docs) and its test.
  docs) pkgs="$pkgs doxygen" ;;
  *) echo "usage: $0 [bench|fuzz|docs]" >&2; exit 2 ;;
esac
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
