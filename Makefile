# Entry points: `make demo` and `make check` work on a fresh Debian 12 machine.
#   JOBS=N     parallel compile jobs (default: the number of cores)
#   PREFIX=DIR where `make install` puts bin/zosh and lib/libzobase.so (default /usr/local)
BUILD ?= build
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
# What the demo runs: the shell, the library and the example host.
DEMO_TARGETS = zobase zosh first_run

SANITIZE_BUILD ?= build-san
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
THREAD_BUILD ?= build-tsan
# The unit tests that start threads of their own; the language tests that do
# carry the ctest label "threads".
THREAD_UNIT_TESTS = Thread|Concurrent|LocksBlockUntil|RecordLocksExclude
# A report fails the run (exit status 66) but doesn't stop it.
THREAD_SANITIZER = TSAN_OPTIONS="halt_on_error=0 second_deadlock_stack=1 exitcode=66 suppressions=$(CURDIR)/tests/tsan.supp"

.PHONY: all deps build demo install check check-sanitize check-thread bench bench-compare clean

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

# The whole suite built with AddressSanitizer and UBSan, then each fuzz
# target (built with clang) for FUZZ_SECONDS. The instrumented build runs
# several times slower, which the terminal tests' timing feels: a failed
# test runs once more, and a real fault fails both runs.
check-sanitize: deps
	cmake -S . -B $(SANITIZE_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOBASE_SANITIZE=ON
	cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	cd $(SANITIZE_BUILD) && ctest --output-on-failure --repeat until-pass:2 -j $(JOBS)
	CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOBASE_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target fuzz_source fuzz_table_open
	sh tests/fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

# The tests that start threads, built with ThreadSanitizer: any report of
# a race fails its test. tests/tsan.supp names what is left out, and why.
check-thread: deps
	cmake -S . -B $(THREAD_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOBASE_SANITIZE_THREAD=ON
	cmake --build $(THREAD_BUILD) -j $(JOBS) --target zosh unit_tests zo_example_extension
	cd $(THREAD_BUILD) && $(THREAD_SANITIZER) ctest --output-on-failure -j $(JOBS) -L threads
	cd $(THREAD_BUILD) && $(THREAD_SANITIZER) ctest --output-on-failure -j $(JOBS) -R '$(THREAD_UNIT_TESTS)'

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
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(FUZZ_BUILD) $(THREAD_BUILD)
