# The two entry points of the README: `make run` and `make test`.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: deps configure build run test bench clean crashtest

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

bench: build
	$(BUILD)/bin/tarvik-bench

# 500 kills -9 spread over every multi-row write; CRASH_SEED repeats a run.
CRASH_KILLS ?= 500
CRASH_SEED ?= 20261123
crashtest: configure
	cmake --build $(BUILD) -j $(JOBS) --target tarvik-crashtest
	$(BUILD)/bin/tarvik-crashtest --kills $(CRASH_KILLS) --seed $(CRASH_SEED)
