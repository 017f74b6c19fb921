#!/bin/sh
# Runs each libFuzzer target of a fuzz build for a bounded time.
#   run.sh BUILD_DIR SECONDS
# Seeds: the language tests' programs for fuzz_source, the tables under
# tests/fuzz/seeds/tables for fuzz_table_open. The growing corpus stays in
# BUILD_DIR/fuzz-corpus/<target> between runs; a finding is written to
# BUILD_DIR/fuzz-findings and fails the run.
set -e
build=$1
seconds=${2:-60}
root=$(cd "$(dirname "$0")/../.." && pwd)
seeds=$build/fuzz-seeds
mkdir -p "$seeds/source" "$build/fuzz-findings"
find "$root/tests/lang" -name '*.prg' -exec cp {} "$seeds/source/" \;
failed=0
run() { # target seed-folder
  corpus=$build/fuzz-corpus/$1
  mkdir -p "$corpus"
  echo "== $1: ${seconds}s"
  if ! "$build/$1" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
       -print_final_stats=1 -artifact_prefix="$build/fuzz-findings/$1-" "$corpus" "$2" \
       >"$build/$1.log" 2>&1; then
    tail -n 60 "$build/$1.log"
    failed=1
  fi
  grep -E '^stat::number_of_executed_units|^stat::new_units_added' "$build/$1.log" || true
  echo "corpus: $(ls "$corpus" | wc -l) inputs"
}
run fuzz_source "$seeds/source"
run fuzz_table_open "$root/tests/fuzz/seeds/tables"
exit $failed
