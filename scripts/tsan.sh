#!/usr/bin/env bash
# Builds the template tests with ThreadSanitizer in their own build directory
# and runs the concurrent rendering test (plus the rest of the template suite).
#   scripts/tsan.sh [gtest filter]
# BUILD overrides the build directory (default build-tsan).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BUILD:-build-tsan}
filter=${1:-*}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DHTCORE_SANITIZE=thread \
  -DHTCORE_TOOLS=OFF >/dev/null
cmake --build "$build" --target htcore_templates_tests
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}
"$build/tests/htcore_templates_tests" --gtest_brief=1 --gtest_filter="$filter"
