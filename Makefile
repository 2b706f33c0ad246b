# Entry points: make (build), make demo, make test, make test-asan,
# make test-tsan, make bench.  Every target installs missing Debian packages.
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps build demo test test-slow test-asan test-tsan bench clean

all: build

deps:
	@./scripts/install-deps.sh

build: deps
	cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS) >/dev/null
	cmake --build build -j $(JOBS)

demo: build
	./build/examples/$(or $(DEMO),transport)

# Models whose search takes minutes carry the CTest label "slow": make test-slow.
test: build
	cd build && ctest --output-on-failure -j $(JOBS) -LE slow

test-slow: build
	cd build && ctest --output-on-failure -L slow

test-asan: deps
	cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DKVTL_SANITIZE=ON $(CMAKE_FLAGS) >/dev/null
	cmake --build build-asan -j $(JOBS)
	cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS) -LE slow

test-tsan: deps
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DKVTL_TSAN=ON $(CMAKE_FLAGS) >/dev/null
	cmake --build build-tsan -j $(JOBS) --target tsan_tests
	cd build-tsan && TSAN_OPTIONS=halt_on_error=1 ctest --output-on-failure -j $(JOBS) -L tsan

# Benchmarks (never part of make test): build the benchmark programs, run
# every case, print the tables and keep them in bench/README.md.
# BENCH_ARGS=--quick makes a short smoke run (bench/run_bench.py --help).
bench:
	@./scripts/install-deps.sh bench
	cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS) >/dev/null
	cmake --build build -j $(JOBS) --target kvtl_micro_bench kvtl_model_bench kvtl_solve_bench kvtl_write_bench
	/usr/bin/python3 bench/run_bench.py --build-dir build --readme bench/README.md $(BENCH_ARGS)
	/usr/bin/python3 bench/write_bench.py --build-dir build $(BENCH_ARGS)

clean:
	rm -rf build build-asan build-tsan
