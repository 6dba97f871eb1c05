#!/usr/bin/env bash
# Builds a test program with ThreadSanitizer in its own build directory and
# runs it (by default the template tests: 8 threads rendering one template).
#   scripts/tsan.sh [test program] [gtest filter]
#   scripts/tsan.sh htcore_style_tests 'AnimationThread.*'
#   scripts/tsan.sh 'ThreadSafe*'          # a filter alone: the template tests
# BUILD overrides the build directory (default build-tsan). HTCORE_STRESS=1
# makes the animation thread's stress test long.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${BUILD:-build-tsan}
target=htcore_templates_tests
if [[ $# -gt 0 && $1 == htcore_*_tests ]]; then
  target=$1
  shift
fi
filter=${1:-*}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DHTCORE_SANITIZE=thread \
  -DHTCORE_TOOLS=OFF >/dev/null
cmake --build "$build" --target "$target"
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}
"$build/tests/$target" --gtest_brief=1 --gtest_filter="$filter"
