# The two entry points of the README: `make run` and `make test`.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: deps configure build run test bench clean crashtest fuzz fuzz-build fuzz-replay test-sanitize package package-check

deps:
	./scripts/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/bin/tarvik

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf $(BUILD)

# The Debian package $(BUILD)/tarvik_<version>_amd64.deb; package-check checks, installs and
# removes it as CI does (needs root or sudo).
package: build
	cd $(BUILD) && cpack -G DEB

package-check: package
	./scripts/check-package.sh $(BUILD)

bench: build
	$(BUILD)/bin/tarvik-bench

# 500 kills -9 spread over every multi-row write; CRASH_SEED repeats a run.
CRASH_KILLS ?= 500
CRASH_SEED ?= 20261123
crashtest: configure
	cmake --build $(BUILD) -j $(JOBS) --target tarvik-crashtest
	$(BUILD)/bin/tarvik-crashtest --kills $(CRASH_KILLS) --seed $(CRASH_SEED)

# libFuzzer targets in a clang build of their own; the g++ build stays as it is.
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
fuzz-build: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVIK_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target fuzz_all

fuzz: fuzz-build
	./scripts/fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

# Every checked-in input once, as CI runs them.
fuzz-replay: fuzz-build
	cd $(FUZZ_BUILD) && ctest -L fuzz --output-on-failure

# The whole suite once more under AddressSanitizer and UndefinedBehaviorSanitizer (-O1 keeps the
# build short), window tests left to the plain build; leaks are reported, those of the system's own libraries suppressed.
SAN_BUILD ?= build-asan
SAN_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1 \
  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/sanitizer/lsan.supp:print_suppressions=0 \
  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
test-sanitize: deps
	cmake -S . -B $(SAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="-O1" -DTARVIK_SANITIZE=ON -DTARVIK_UI_TESTS=OFF
	cmake --build $(SAN_BUILD) -j $(JOBS) --target test_targets
	cd $(SAN_BUILD) && $(SAN_ENV) QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)
