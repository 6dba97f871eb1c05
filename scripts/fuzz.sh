#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs one of them.
#   scripts/fuzz.sh TARGET [SECONDS] [extra libFuzzer flags]
# The corpus lives in fuzz/corpus/TARGET (kept small: merge before committing).
# BUILD overrides the build directory (default build-fuzz).
set -euo pipefail
cd "$(dirname "$0")/.."
target=${1:?usage: scripts/fuzz.sh TARGET [SECONDS]}
seconds=${2:-60}
shift $(( $# >= 2 ? 2 : 1 ))
build=${BUILD:-build-fuzz}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link" -DHTCORE_SANITIZE=address,undefined \
  -DHTCORE_FUZZ=ON -DHTCORE_TESTS=OFF -DHTCORE_TOOLS=OFF >/dev/null
cmake --build "$build" --target "$target"
corpus=fuzz/corpus/$target
mkdir -p "$corpus"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/fuzz/$target" -max_total_time="$seconds" -print_final_stats=1 "$@" "$work" "$corpus"
# Keep only inputs that add coverage.
"$build/fuzz/$target" -merge=1 "$corpus" "$work" >/dev/null 2>&1 || true
