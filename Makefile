# Entry points: `make demo` and `make check` work on a fresh Debian 12 machine.
#   JOBS=N     parallel compile jobs (default: the number of cores)
#   PREFIX=DIR where `make install` puts bin/zosh and lib/libzobase.so (default /usr/local)
BUILD ?= build
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
# What the demo runs: the shell, the library and the example host.
DEMO_TARGETS = zobase zosh first_run

.PHONY: all deps build demo install check bench bench-compare clean

all: build

deps:
	sh scripts/install-deps

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

demo: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS) --target $(DEMO_TARGETS)
	$(BUILD)/first_run
	$(BUILD)/zosh examples/tour.prg

install: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS) --target zobase zosh
	cmake --install $(BUILD) --prefix $(PREFIX)

check: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# Native benchmarks print their own figures; bench-compare times the
# language benchmarks of bench/lang side by side with Python and Lua, and
# bench/tables.py the table programs beside Python's sqlite3, bench/sql.py
# SQL pass-through beside the same.
bench: build
	for b in $(BUILD)/bench_*; do echo "== $$b"; $$b; done
	python3 bench/compare.py $(BUILD)/zosh
	python3 bench/tables.py $(BUILD)/zosh
	/usr/bin/python3 bench/sql.py $(BUILD)/zosh

bench-compare: build
	python3 bench/compare.py $(BUILD)/zosh

clean:
	rm -rf $(BUILD)
