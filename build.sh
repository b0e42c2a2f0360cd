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
    (cd build && ctest -j "$jobs" --output-on-failure)
    echo "== scalar build (KIVVC_PORTABLE)"
    configure_build build-portable -DKIVVC_PORTABLE=ON -DKIVVC_BENCH=OFF
    (cd build-portable && ctest -j "$jobs" --output-on-failure)
    echo "== ASan+UBSan build"
    configure_build build-asan -DKIVVC_SANITIZE=ON -DKIVVC_BENCH=OFF
    (cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1 ctest -j "$jobs" --output-on-failure)
    echo "== fuzz targets ($fuzz_runs runs each)"
    CC=clang CXX=clang++ configure_build build-fuzz -DKIVVC_FUZZ=ON -DKIVVC_TESTS=OFF -DKIVVC_BENCH=OFF
    fuzz/run_all.sh build-fuzz "$fuzz_runs"
    echo "== all checks passed"
    ;;
  *)
    echo "usage: $0 speed [FILTER] | test" >&2
    exit 2
    ;;
esac
