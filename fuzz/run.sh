#!/usr/bin/env bash
# Builds the fuzz targets with clang under AddressSanitizer and
# UndefinedBehaviorSanitizer and runs each for SECONDS (default 60), two at a
# time. New inputs go to a scratch corpus under build-fuzz/; a crash leaves its
# input there too (crash-*, timeout-*, leak-*), ready to be copied into
# fuzz/regressions/<target>/ once the fault is fixed.
#   fuzz/run.sh [SECONDS] [TARGET...]
#   fuzz/run.sh --seeds     rewrite fuzz/corpus from the project's own writers
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${FUZZ_BUILD_DIR:-build-fuzz}

if [ "${1:-}" = "--seeds" ]; then
  cmake -S . -B build -G Ninja >/dev/null
  cmake --build build -j"$(nproc)" --target trunkdesk_fuzz_seeds
  rm -rf fuzz/corpus
  build/fuzz/trunkdesk_fuzz_seeds fuzz/corpus
  exit 0
fi

SECONDS_EACH=${1:-60}
shift || true
TARGETS=("$@")
[ ${#TARGETS[@]} -eq 0 ] && TARGETS=(link udp ini settings langpack layout devicelink jetsql api)

SAN="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-sanitize=vptr"
CC=clang CXX=clang++ cmake -S . -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTRUNKDESK_FUZZ=ON -DTRUNKDESK_BUILD_TESTS=OFF -DTRUNKDESK_BUILD_BENCH=OFF \
  -DCMAKE_CXX_FLAGS="$SAN -fsanitize=fuzzer-no-link -fno-omit-frame-pointer" \
  -DCMAKE_EXE_LINKER_FLAGS="$SAN" >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target "${TARGETS[@]/#/fuzz_}"

export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
export ASAN_OPTIONS=detect_leaks=0:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
run_one() {
  local t=$1 work="$BUILD/fuzz-work/$1"
  mkdir -p "$work/corpus"
  cp -n fuzz/corpus/fuzz_$t/* "$work/corpus/" 2>/dev/null || true
  cp -n fuzz/regressions/fuzz_$t/* "$work/corpus/" 2>/dev/null || true
  local rc=0
  (cd "$work" && "../../fuzz/fuzz_$t" corpus -max_total_time="$SECONDS_EACH" -timeout=10 \
     -rss_limit_mb=4096 -max_len=12000 -print_final_stats=1 >log.txt 2>&1) || rc=$?
  local runs
  runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$work/log.txt" | grep -o '[0-9]*$' || echo "?")
  if [ $rc -eq 0 ]; then echo "fuzz_$t: clean for ${SECONDS_EACH}s, $runs inputs"
  else echo "fuzz_$t: FAILED (see $work/log.txt)"; fi
  return $rc
}
status=0
pids=()
for t in "${TARGETS[@]}"; do
  run_one "$t" & pids+=($!)
  if [ ${#pids[@]} -ge "$(nproc)" ]; then wait "${pids[0]}" || status=1; pids=("${pids[@]:1}"); fi
done
for p in "${pids[@]}"; do wait "$p" || status=1; done
exit $status
