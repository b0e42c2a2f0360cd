#!/usr/bin/env bash
# One-stop set-up, build and check on a fresh Debian machine.
#   ./build.sh speed   build, then print the speed table of every kernel
#   ./build.sh test    build and run the whole test suite, normal and under
#                      ASan+UBSan, then every fuzz target for a fixed number of runs
# Missing tools and libraries are installed with apt-get first.
set -euo pipefail
cd "$(dirname "$0")"

jobs=${KIVVC_JOBS:-$(nproc)}
fuzz_runs=${KIVVC_FUZZ_RUNS:-20000}

install_missing() {
  local need=()
  command -v cmake >/dev/null || need+=(cmake)
  command -v ninja >/dev/null || need+=(ninja-build)
  command -v g++ >/dev/null || need+=(g++)
  command -v pkg-config >/dev/null || need+=(pkg-config)
  command -v nm >/dev/null || need+=(binutils)
  [ -f /usr/include/gtest/gtest.h ] || need+=(libgtest-dev)
  [ -f /usr/include/benchmark/benchmark.h ] || need+=(libbenchmark-dev)
  if [ "${1:-}" = fuzz ]; then
    command -v clang++ >/dev/null || need+=(clang)
    ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1 || need+=(libclang-rt-dev)
  fi
  if [ ${#need[@]} -gt 0 ]; then
    echo "installing: ${need[*]}"
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${need[@]}"
  fi
}

passed=0
failed=0
# Runs ctest in a build directory and adds its counts to the totals.
run_ctest() {  # dir, env assignments...
  local dir=$1; shift
  local log="$dir/ctest.log"
  local rc=0
  (cd "$dir" && env "$@" ctest -j "$jobs" --output-on-failure) 2>&1 | tee "$log" || rc=$?
  local line
  line=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -n1)
  if [ -z "$line" ]; then
    echo "ctest in $dir gave no summary" >&2
    exit 1
  fi
  local f t
  f=$(echo "$line" | sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\1/')
  t=$(echo "$line" | sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\2/')
  passed=$((passed + t - f))
  failed=$((failed + f))
  if [ "$rc" -ne 0 ] || [ "$f" -ne 0 ]; then
    echo "kivvc: $passed passed, $failed failed"
    exit 1
  fi
}

configure_build() {  # dir, extra cmake args...
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release "$@" >/dev/null
  ninja -C "$dir" -j "$jobs"
}

case "${1:-}" in
  speed)
    install_missing
    configure_build build
    ./build/tools/kivvc-speed "${@:2}"
    ;;
  test)
    install_missing fuzz
    echo "== normal build"
    configure_build build
    run_ctest build
    echo "== scalar build (KIVVC_PORTABLE)"
    configure_build build-portable -DKIVVC_PORTABLE=ON -DKIVVC_BENCH=OFF
    run_ctest build-portable
    echo "== ASan+UBSan build"
    configure_build build-asan -DKIVVC_SANITIZE=ON -DKIVVC_BENCH=OFF
    run_ctest build-asan ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1
    echo "== fuzz targets ($fuzz_runs runs each)"
    CC=clang CXX=clang++ configure_build build-fuzz -DKIVVC_FUZZ=ON -DKIVVC_TESTS=OFF -DKIVVC_BENCH=OFF
    if fuzz/run_all.sh build-fuzz "$fuzz_runs"; then
      passed=$((passed + $(grep -c . build-fuzz/fuzz_targets.txt)))
    else
      echo "kivvc: $passed passed, $((failed + 1)) failed"
      exit 1
    fi
    echo "== all checks passed"
    echo "kivvc: $passed passed, $failed failed"
    ;;
  *)
    echo "usage: $0 speed [FILTER] | test" >&2
    exit 2
    ;;
esac
