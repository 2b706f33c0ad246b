#!/bin/sh
# Reference documentation: doxygen runs on docs/Doxyfile with every warning
# an error (an undocumented function, type or constant, a broken command),
# and every function the two libraries export must have its own entry in
# the generated page of its header.
# Usage: check_docs.sh SOURCE_DIR OUTPUT_DIR LIBKVTL LIBKVSL
set -eu
src="$1" out="$2" kvtl="$3" kvsl="$4"
rm -rf "$out"
mkdir -p "$out"
cd "$src"
# The project's own configuration, only written elsewhere.
{ cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $out"; } | doxygen - \
  || { echo "doxygen failed (warnings are errors)"; exit 1; }

# Functions exported by a library and the member entries of its header's
# page (an entry is an anchor row "memItemRight" naming the function).
check() {
  lib="$1" page="$out/html/$2" prefix="$3"
  [ -f "$page" ] || { echo "missing page $page"; exit 1; }
  syms=$(nm -D --defined-only "$lib" | awk '$2 == "T" {print $3}' | grep "^$prefix" | sort -u)
  [ -n "$syms" ] || { echo "no $prefix functions exported by $lib"; exit 1; }
  missing=""
  for s in $syms; do
    grep -q "memItemRight.*>$s</a> (" "$page" || missing="$missing $s"
  done
  [ -z "$missing" ] || { echo "exported but not documented in $2:$missing"; exit 1; }
  echo "$2: $(printf '%s\n' "$syms" | wc -l) exported functions documented"
}
check "$kvtl" kvtl_8h.html mdl
check "$kvsl" kvsl_8h.html KVSL
