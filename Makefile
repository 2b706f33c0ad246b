# Entry points: make (build), make demo, make test, make test-asan,
# make test-tsan, make bench.  Every target installs missing Debian packages.
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps build demo test test-slow test-asan test-tsan bench fuzz clean install docs

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

# Fuzzing (never part of make test, which only replays the seed corpus):
# the data file reader under ASan and UBSan for FUZZ_SECONDS on one core;
# new inputs go to build-fuzz/reader_corpus, crashes to build-fuzz/.
FUZZ_SECONDS ?= 60
fuzz:
	@./scripts/install-deps.sh fuzz
	CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DKVTL_SANITIZE=ON -DKVTL_FUZZ=ON $(CMAKE_FLAGS) >/dev/null
	cmake --build build-fuzz -j $(JOBS) --target reader_fuzz
	mkdir -p build-fuzz/reader_corpus
	UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ./build-fuzz/tests/reader_fuzz \
	  -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 \
	  -artifact_prefix=build-fuzz/ build-fuzz/reader_corpus tests/fuzz/reader_corpus

# Reference documentation of the public headers (docs/Doxyfile): HTML in
# build/docs/html, entry page docs/mainpage.md.  An undocumented function,
# type or constant fails the run.
docs:
	@./scripts/install-deps.sh docs
	mkdir -p build/docs
	doxygen docs/Doxyfile

clean:
	rm -rf build build-asan build-tsan build-fuzz

# Install the headers, both libraries, the CMake package and kvtl.pc under
# PREFIX (DESTDIR, if set, is put in front for staged installs).
PREFIX ?= /usr/local
install: build
	cmake --install build --prefix $(PREFIX)
