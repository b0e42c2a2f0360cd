#!/usr/bin/env bash
# Runs every built fuzz target for a fixed number of inputs.
#   fuzz/run_all.sh BUILD_DIR [RUNS]
set -euo pipefail
build=${1:?build directory}
runs=${2:-20000}
status=0
while read -r t; do
  [ -n "$t" ] || continue
  exe=$(find "$build" -type f -name "$t" -perm -u+x | head -n1)
  echo "fuzz: $t ($runs runs)"
  if ! "$exe" -runs="$runs" -max_len=4096 -seed=1 >"$build/$t.log" 2>&1; then
    echo "fuzz target $t FAILED"; tail -n 40 "$build/$t.log"; status=1
  fi
done < "$build/fuzz_targets.txt"
exit $status
