#!/bin/sh
# Installs the build into a fresh prefix and builds the knapsack example
# against the installed files only, once through find_package(kvtl) and once
# through pkg-config, both in C and in C++ (examples/knapsack.cpp on the
# installed kvtl.hpp); each program must run, reach its optimum and load
# the installed libraries.
# Usage: run.sh SOURCE_DIR BUILD_DIR C_COMPILER CMAKE CXX_COMPILER
set -eu
src=$(cd "$1" && pwd -P)
build=$(cd "$2" && pwd -P)
cc=$3
cmake=$4
cxx=$5

work=$(mktemp -d "${TMPDIR:-/tmp}/kvtl_install.XXXXXX")
work=$(cd "$work" && pwd -P)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "FAIL: $*" >&2; exit 1; }
case "$work/" in "$src"/*|"$build"/*) fail "temporary folder $work lies in the tree" ;; esac

# Nothing the environment points at may stand in for the installed files.
unset LD_LIBRARY_PATH CPATH C_INCLUDE_PATH LIBRARY_PATH CMAKE_PREFIX_PATH PKG_CONFIG_PATH || true

"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 ||
  { cat "$work/install.log"; fail "cmake --install"; }

# The headers, the libraries under their sonames and the development links.
for f in include/kvtl.h include/kvsl.h include/kvtl.hpp lib/libkvtl.so.4.8 lib/libkvsl.so.29.01 \
         lib/cmake/kvtl/kvtlConfig.cmake lib/cmake/kvtl/kvtlConfigVersion.cmake \
         lib/pkgconfig/kvtl.pc; do
  [ -f "$prefix/$f" ] || fail "$f not installed"
done
[ "$(readlink "$prefix/lib/libkvtl.so")" = libkvtl.so.4.8 ] || fail "libkvtl.so link"
[ "$(readlink "$prefix/lib/libkvsl.so")" = libkvsl.so.29.01 ] || fail "libkvsl.so link"

# The installed library finds the engine beside it, with no search path set.
ldd "$prefix/lib/libkvtl.so.4.8" >"$work/ldd_lib.txt"
grep -q "libkvsl.so.29.01 => $prefix/lib/libkvsl.so.29.01" "$work/ldd_lib.txt" ||
  { cat "$work/ldd_lib.txt"; fail "installed libkvtl does not load the installed libkvsl"; }

# The consumer sees a copy of the example, not the source tree.
mkdir "$work/app"
cp "$src/examples/knapsack.c" "$src/examples/knapsack.cpp" "$work/app/"

# check_program PROGRAM LOG: the program reaches its optimum, loads both
# libraries from the prefix, and nothing in the build log names the tree.
check_program() {
  if grep -q -e "$src" -e "$build" "$2"; then
    grep -e "$src" -e "$build" "$2" >&2
    fail "$1 was built with paths into the source or build tree"
  fi
  "$1" >"$work/run.txt" 2>&1 || { cat "$work/run.txt"; fail "$1 did not reach its optimum"; }
  ldd "$1" >"$work/ldd.txt"
  for lib in libkvtl.so.4.8 libkvsl.so.29.01; do
    grep -q "$lib => $prefix/lib/$lib" "$work/ldd.txt" ||
      { cat "$work/ldd.txt"; fail "$1 does not load the installed $lib"; }
  done
  if grep -q -e "$src" -e "$build" "$work/ldd.txt"; then
    cat "$work/ldd.txt"; fail "$1 loads libraries from the tree"
  fi
  echo "ok: $1: $(cat "$work/run.txt")"
}

# 1. CMake package.
cat >"$work/app/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.20)
project(knapsack_app LANGUAGES C CXX)
find_package(kvtl 4.8 REQUIRED CONFIG)
message(STATUS "kvtl package: ${kvtl_DIR} version ${kvtl_VERSION}")
add_executable(knapsack knapsack.c)
target_link_libraries(knapsack PRIVATE kvtl::kvtl m)
add_executable(knapsack_cpp knapsack.cpp)
target_compile_features(knapsack_cpp PRIVATE cxx_std_20)
target_link_libraries(knapsack_cpp PRIVATE kvtl::kvtl)
CMAKE
"$cmake" -S "$work/app" -B "$work/app/build" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
  -DCMAKE_FIND_USE_SYSTEM_PACKAGE_REGISTRY=OFF >"$work/cmake.log" 2>&1 ||
  { cat "$work/cmake.log"; fail "configuring against the CMake package"; }
grep -q "kvtl package: $prefix/lib/cmake/kvtl version 4.8" "$work/cmake.log" ||
  { cat "$work/cmake.log"; fail "find_package(kvtl) did not take the installed package"; }
"$cmake" --build "$work/app/build" -- VERBOSE=1 >"$work/cmake_build.log" 2>&1 ||
  { cat "$work/cmake_build.log"; fail "building against the CMake package"; }
grep -q -- "-I$prefix/include\|-isystem $prefix/include" "$work/cmake_build.log" ||
  { cat "$work/cmake_build.log"; fail "the CMake package gives no installed include folder"; }
cat "$work/cmake.log" >>"$work/cmake_build.log"
check_program "$work/app/build/knapsack" "$work/cmake_build.log"
check_program "$work/app/build/knapsack_cpp" "$work/cmake_build.log"

# The version file turns down a request for another major version.
mkdir "$work/v5"
cp "$work/app/knapsack.c" "$work/v5/"
cp "$work/app/knapsack.cpp" "$work/v5/"
sed 's/find_package(kvtl 4.8 /find_package(kvtl 5.0 /' "$work/app/CMakeLists.txt" \
  >"$work/v5/CMakeLists.txt"
if "$cmake" -S "$work/v5" -B "$work/v5/build" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" \
     -DCMAKE_PREFIX_PATH="$prefix" >"$work/v5.log" 2>&1; then
  cat "$work/v5.log"; fail "find_package(kvtl 5.0) accepted version 4.8"
fi
grep -q "version: 4.8.8" "$work/v5.log" ||
  { cat "$work/v5.log"; fail "find_package(kvtl 5.0) failed for another reason than the version"; }

# 2. pkg-config, seeing only the installed file.
flags=$(PKG_CONFIG_LIBDIR="$prefix/lib/pkgconfig" pkg-config --cflags --libs kvtl) ||
  fail "pkg-config does not find kvtl"
echo "pkg-config: $flags"
for want in "-I$prefix/include" "-L$prefix/lib" -lkvtl -lkvsl; do
  case " $flags " in *" $want "*) ;; *) fail "pkg-config flags lack $want" ;; esac
done
# The prefix is not a system folder, so the program records where it is.
"$cc" -o "$work/app/knapsack_pc" "$work/app/knapsack.c" $flags -lm \
  -Wl,-rpath,"$prefix/lib" >"$work/pc_build.log" 2>&1 ||
  { cat "$work/pc_build.log"; fail "building with pkg-config"; }
echo "$cc -o $work/app/knapsack_pc $work/app/knapsack.c $flags -lm" >>"$work/pc_build.log"
check_program "$work/app/knapsack_pc" "$work/pc_build.log"
# The C++ example on the installed kvtl.hpp, with the same flags.
"$cxx" -std=c++20 -o "$work/app/knapsack_cpp_pc" "$work/app/knapsack.cpp" $flags \
  -Wl,-rpath,"$prefix/lib" >"$work/pc_cxx_build.log" 2>&1 ||
  { cat "$work/pc_cxx_build.log"; fail "building the C++ example with pkg-config"; }
echo "$cxx -std=c++20 -o $work/app/knapsack_cpp_pc $work/app/knapsack.cpp $flags" >>"$work/pc_cxx_build.log"
check_program "$work/app/knapsack_cpp_pc" "$work/pc_cxx_build.log"
