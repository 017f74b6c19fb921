# Entry points: `make demo` and `make check` work on a fresh Debian 12 machine.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: all deps build demo check bench clean

all: build

deps:
	sh scripts/install-deps

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

demo: build
	$(BUILD)/first_run
	@if [ -f examples/tour.prg ]; then $(BUILD)/zosh examples/tour.prg; fi

check: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

bench: build
	for b in $(BUILD)/bench_*; do echo "== $$b"; $$b; done

clean:
	rm -rf $(BUILD)
