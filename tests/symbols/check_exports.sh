#!/bin/sh
# (Instrumentation symbols of sanitizer builds are not counted.)
# Fails when the library exports a symbol other than mdl* functions and the
# allocator hooks mdlsl_malloc / mdlsl_free, or exports none of them.
lib="$1"
syms=$(nm -D --defined-only "$lib" | awk '$2 ~ /^[TDBVWRG]$/ {print $3}' | grep -v '^__odr_asan')
[ -n "$syms" ] || { echo "no exported symbols in $lib"; exit 1; }
bad=$(printf '%s\n' "$syms" | grep -v '^mdl' )
if [ -n "$bad" ]; then
  echo "unexpected exports:"; printf '%s\n' "$bad"; exit 1
fi
for s in mdlsl_malloc mdlsl_free mdlslinit mdlerror; do
  printf '%s\n' "$syms" | grep -qx "$s" || { echo "missing export $s"; exit 1; }
done
printf '%s\n' "$syms" | grep -qx mdlsl_malloc && nm -D --defined-only "$lib" | grep -q ' [DB] mdlsl_malloc$' \
  || { echo "mdlsl_malloc is not an exported variable"; exit 1; }
echo "exports ok: $(printf '%s\n' "$syms" | wc -l) symbols"
