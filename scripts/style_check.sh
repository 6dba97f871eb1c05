#!/usr/bin/env bash
# Differential check of `htcore style` against headless Chromium's
# getComputedStyle on tests/style/chromium/*.html and a few real pages of
# /usr/share/doc (picked at run time). Needs Debian `chromium` and `node`
# (HTCORE_EXTRA_PACKAGES="chromium nodejs" ./scripts/setup.sh). Outside ctest:
# each page costs a browser start.
#   scripts/style_check.sh [--pages N] [--show N] [--verbose] [--keep DIR] [FILE.html ...]
# Environment: HTCORE=path/to/htcore (default: build the tool in build-dev).
set -euo pipefail
cd "$(dirname "$0")/.."
for tool in chromium node; do
  command -v "$tool" >/dev/null || { echo "style_check: $tool not installed" >&2; exit 1; }
done
if [[ -z ${HTCORE:-} ]]; then
  [[ -f build-dev/build.ninja ]] ||
    cmake -S . -B build-dev -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER_LAUNCHER=ccache \
      -DCMAKE_C_COMPILER_LAUNCHER=ccache >/dev/null
  cmake --build build-dev --target htcore_tool >/dev/null
  HTCORE=build-dev/tools/htcore
fi
exec node scripts/style_check.js --htcore "$HTCORE" "$@"
