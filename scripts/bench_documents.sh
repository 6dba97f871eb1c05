#!/usr/bin/env bash
# Times the document readers against their peers on a quiet machine: XML,
# JSON, HTML, SAX and path queries, three repetitions each, and prints the
# median of each run with its peer ratios (x_PEER = peer time / htcore time).
#   scripts/bench_documents.sh [BUILD_DIR] [MIN_TIME]
# The build needs -DCMAKE_BUILD_TYPE=Release -DHTCORE_BENCH=ON -DHTCORE_PEERS=ON;
# scripts/fetch_bench_data.sh fills bench/data with the real HTML pages.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-rel}
min_time=${2:-0.5}
cmake --build "$build" --target xml_bench json_bench html_bench sax_bench xpath_bench >/dev/null
for b in xml_bench json_bench html_bench sax_bench xpath_bench; do
  echo "== $b"
  "$build/bench/$b" --benchmark_min_time="$min_time" --benchmark_repetitions=3 \
    --benchmark_report_aggregates_only=true 2>/dev/null | grep -E '_median|time / htcore|^  [^ ]' || true
done
