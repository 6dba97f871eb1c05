#!/usr/bin/env bash
# The library and the tool must also compile with clang: a syntax and warning
# pass over every source (no code generation, so it is quick).
set -euo pipefail
cd "$(dirname "$0")/.."
cxx=${CLANGXX:-clang++}
command -v "$cxx" >/dev/null || { echo "clang_check: $cxx not found" >&2; exit 1; }
# The tool also builds the example host layout and the drawing suite.
find src tools examples/render_svg examples/svg_suite -name '*.cpp' -print0 |
  xargs -0 -P "$(nproc)" -n 8 "$cxx" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -Iinclude -Isrc -Itools \
    -Iexamples/render_svg -Iexamples/svg_suite -DHTCORE_VERSION=\"check\"
echo "clang: $("$cxx" --version | head -1 | sed 's/ (.*//'), library, tool and examples compile without warnings"
