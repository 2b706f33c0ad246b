#!/bin/sh
# Runs a C example and its C++ version; both must succeed and print the
# same text (standard output and standard error together).
# Usage: same_output.sh C_PROGRAM CPP_PROGRAM
set -u
work=$(mktemp -d "${TMPDIR:-/tmp}/kvtl_same_output.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
"$1" >"$work/c.txt" 2>&1 || { cat "$work/c.txt"; echo "FAIL: $1 failed"; exit 1; }
"$2" >"$work/cpp.txt" 2>&1 || { cat "$work/cpp.txt"; echo "FAIL: $2 failed"; exit 1; }
[ -s "$work/c.txt" ] || { echo "FAIL: $1 printed nothing"; exit 1; }
if ! diff -u "$work/c.txt" "$work/cpp.txt"; then
  echo "FAIL: $2 does not print what $1 prints"
  exit 1
fi
echo "same output ($(wc -l <"$work/c.txt") lines):"
cat "$work/c.txt"
