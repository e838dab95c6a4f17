# Thin wrapper over CMake for the two everyday jobs.
#   make demo   build everything in Release and run the demo (the main job)
#   make test   build and run all tests: default, portable (no SIMD) and sanitizer builds
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE ?= cmake
CTEST ?= ctest

.PHONY: all release demo test test-default test-portable test-sanitize bench install clean

all: demo

build/release/CMakeCache.txt:
	$(CMAKE) -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DKRO_TESTS=OFF

# Always hand the release tree to CMake's own dependency check, so the demo runs current code.
release: build/release/CMakeCache.txt
	$(CMAKE) --build build/release -j $(JOBS)

demo: release
	@if [ -x build/release/tools/kroconv ]; then \
	  scripts/demo.sh build/release; \
	else \
	  build/release/bench/krocc_bench --benchmark_min_time=0.05; \
	fi

bench: release
	build/release/bench/krocc_bench

test: test-default test-portable test-sanitize

# $(1): build folder, $(2): extra CMake options
define run_tests
	$(CMAKE) -S . -B $(1) -DCMAKE_BUILD_TYPE=Release $(2)
	$(CMAKE) --build $(1) -j $(JOBS)
	$(CTEST) --test-dir $(1) --output-on-failure -j $(JOBS)
endef

test-default:
	$(call run_tests,build/test-default,-DKRO_BENCH=ON)

test-portable:
	$(call run_tests,build/test-portable,-DKRO_SIMD=OFF -DKRO_BENCH=OFF -DKRO_TOOLS=OFF)

test-sanitize:
	$(call run_tests,build/test-sanitize,-DKRO_SANITIZE=ON -DKRO_BENCH=OFF -DKRO_TOOLS=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo)

install: release
	$(CMAKE) --install build/release

clean:
	rm -rf build demo-out
