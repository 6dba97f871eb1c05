#!/usr/bin/env bash
# The library and the tool must also compile with clang: a syntax and warning
# pass over every source (no code generation, so it is quick).
set -euo pipefail
cd "$(dirname "$0")/.."
cxx=${CLANGXX:-clang++}
command -v "$cxx" >/dev/null || { echo "clang_check: $cxx not found" >&2; exit 1; }
find src tools -name '*.cpp' -print0 |
  xargs -0 -P "$(nproc)" -n 8 "$cxx" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -Iinclude -Isrc -Itools -DHTCORE_VERSION=\"check\"
echo "clang: $("$cxx" --version | head -1 | sed 's/ (.*//'), library and tool compile without warnings"
