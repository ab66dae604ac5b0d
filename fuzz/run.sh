#!/bin/sh
# Runs every fuzz target: fuzz/run.sh RUNS [TARGET...]. Findings stay in build/fuzz/findings; what finds new ways
# through the code is kept in build/fuzz/corpus, the seeds are only read. TIMEOUT: seconds that one run may take, to be
# set higher on a busy machine.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
build=$here/../build/fuzz
runs=${1:-2000000}
[ $# -gt 0 ] && shift
targets=${*:-obj ply 3ds gltf fbx scene}

export UBSAN_OPTIONS=print_stacktrace=1
status=0
for t in $targets; do
  mkdir -p "$build/corpus/$t" "$build/findings"
  # Longer than the seeds, short enough for many runs.
  most=1024
  case $t in gltf) most=4608 ;; fbx) most=4096 ;; esac
  # Assimp loses memory when it refuses a file; that is not ours to find.
  leaks=1
  case $t in 3ds | fbx) leaks=0 ;; esac
  # Short call chains and little memory kept back: a quarter faster.
  export ASAN_OPTIONS=detect_leaks=$leaks:allocator_may_return_null=1:malloc_context_size=2:quarantine_size_mb=16
  if "$build/bin/fuzz_$t" -detect_leaks=$leaks -runs="$runs" -timeout="${TIMEOUT:-10}" -rss_limit_mb=3000 -max_len=$most -print_final_stats=1 \
    -artifact_prefix="$build/findings/$t-" "$build/corpus/$t" "$here/corpus/$t" 2>"$build/$t.log"; then
    result=clean
  else
    result=FAILED
    status=1
  fi
  echo "$t: $result, $(sed -n 's/^stat::number_of_executed_units: *//p' "$build/$t.log") runs"
done
exit $status
