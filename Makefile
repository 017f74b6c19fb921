# Entry points: `make demo` and `make check` work on a fresh Debian 12 machine.
BUILD ?= build
JOBS ?= $(shell nproc)

SANITIZE_BUILD ?= build-san
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60

.PHONY: all deps build demo check check-sanitize bench bench-compare clean

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

# The whole suite built with AddressSanitizer and UBSan, then each fuzz
# target (built with clang) for FUZZ_SECONDS.
check-sanitize: deps
	cmake -S . -B $(SANITIZE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOBASE_SANITIZE=ON
	cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	cd $(SANITIZE_BUILD) && ctest --output-on-failure -j $(JOBS)
	CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOBASE_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target fuzz_source fuzz_table_open
	sh tests/fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

# Native benchmarks print their own figures; bench-compare times the
# language benchmarks of bench/lang side by side with Python and Lua.
bench: build
	for b in $(BUILD)/bench_*; do echo "== $$b"; $$b; done
	python3 bench/compare.py $(BUILD)/zosh

bench-compare: build
	python3 bench/compare.py $(BUILD)/zosh

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(FUZZ_BUILD)
