#!/usr/bin/env bash
# Builds everything with AddressSanitizer + UndefinedBehaviorSanitizer, runs
# the test suites, then builds a small consumer against the installed package.
set -euo pipefail
cd "$(dirname "$0")/.."
# clang checks that the sources also compile with the second compiler.
HTCORE_EXTRA_PACKAGES="clang ${HTCORE_EXTRA_PACKAGES:-}" HTCORE_SETUP_ONLY_PACKAGES=1 ./scripts/setup.sh
./scripts/clang_check.sh

build=build-test
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DHTCORE_SANITIZE=address,undefined -DHTCORE_BENCH=ON >/dev/null
cmake --build "$build"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build" --output-on-failure -j2

# The installed package must serve both find_package and pkg-config users.
stage="$PWD/$build/stage"
rm -rf "$stage"
cmake --install "$build" --prefix "$stage" >/dev/null
cmake -S tests/consumer -B "$build/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$build/consumer" >/dev/null
LD_LIBRARY_PATH="$stage/lib" "$build/consumer/consumer"
PKG_CONFIG_PATH="$stage/lib/pkgconfig" c++ -o "$build/consumer/consumer_pc" tests/consumer/consumer.cpp \
  $(PKG_CONFIG_PATH="$stage/lib/pkgconfig" pkg-config --cflags --libs htcore)
LD_LIBRARY_PATH="$stage/lib" "$build/consumer/consumer_pc"
echo "consumer: find_package and pkg-config builds ran"
# The example host canvas builds against the installed package too.
cmake -S examples/canvas -B "$build/canvas_example" -G Ninja -DCMAKE_PREFIX_PATH="$stage" >/dev/null
cmake --build "$build/canvas_example" >/dev/null
LD_LIBRARY_PATH="$stage/lib" "$build/canvas_example/ascii_canvas" >/dev/null
echo "canvas example: built and ran"
