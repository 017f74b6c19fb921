# Entry points: `make demo` and `make check` work on a fresh Debian 12 machine.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: all deps build demo check bench bench-compare clean

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

# Native benchmarks print their own figures; bench-compare times the
# language benchmarks of bench/lang side by side with Python and Lua, and
# bench/tables.py the table programs beside Python's sqlite3.
bench: build
	for b in $(BUILD)/bench_*; do echo "== $$b"; $$b; done
	python3 bench/compare.py $(BUILD)/zosh
	python3 bench/tables.py $(BUILD)/zosh

bench-compare: build
	python3 bench/compare.py $(BUILD)/zosh

clean:
	rm -rf $(BUILD)
