#!/usr/bin/env bash
# Compares the UTF-8 window reader with the parser over the whole decoded text
# (items with their offsets, and trees) on every real HTML page of this
# machine, the benchmark pages and the HTML fuzz corpora.
#   scripts/html_utf8_sameness.sh [BUILD_DIR]     (default build-dev)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-dev}
list=$(mktemp)
concat=$(mktemp --suffix=.html)
trap 'rm -f "$list" "$concat"' EXIT
cat bench/data/*.html >"$concat" 2>/dev/null || true
{
  echo "$concat"
  find bench/data -maxdepth 2 -name '*.html' -type f 2>/dev/null
  find /usr/share/doc -name '*.html' -type f -size -8M 2>/dev/null
  find fuzz/corpus/html_parse_fuzz fuzz/corpus/html_roundtrip_fuzz fuzz/corpus/html_tokenizer_fuzz -type f 2>/dev/null
} | sort >"$list"
echo "$(wc -l <"$list") inputs"
HTCORE_HTML_FILES=$list "$build/tests/htcore_document_tests" --gtest_filter='HtmlUtf8.RealFilesFromList'
