# The two entry points of the README: `make run` and `make test`.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: deps configure build run test bench clean

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
