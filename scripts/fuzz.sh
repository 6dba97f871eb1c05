#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs one of them.
#   scripts/fuzz.sh TARGET [SECONDS] [extra libFuzzer flags]
# The corpus lives in fuzz/corpus/TARGET (kept small: merge before committing).
#
# Document targets are also seeded with real files of this machine, picked at
# run time and copied into a temporary directory, never into fuzz/corpus:
# HTML pages from /usr/share/doc for the HTML targets, XML files from
# /usr/share for the XML, path, template and SAX targets, JSON files for the
# JSON targets. Each copy gets the target's mode byte (or path line) in front
# and is cut to the size the target reads.
#
# Environment:
#   BUILD=dir         build directory (default build-fuzz)
#   NO_BUILD=1        run what is built (for two runs at once over one build)
#   SEEDS=0           no real files
#   SEED_FILES=N      at most N real files (default 200)
#   SEED_BYTES=N      only files up to N bytes (default 1048576)
#   MERGE_BYTES=N     new inputs up to N bytes are merged into fuzz/corpus
#                     (default 4096; 0 merges nothing)
set -euo pipefail
cd "$(dirname "$0")/.."
target=${1:?usage: scripts/fuzz.sh TARGET [SECONDS] [libFuzzer flags]}
seconds=${2:-60}
shift $(($# >= 2 ? 2 : 1))
build=${BUILD:-build-fuzz}
if [[ ${NO_BUILD:-0} != 1 ]]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link" -DHTCORE_SANITIZE=address,undefined \
    -DHTCORE_FUZZ=ON -DHTCORE_TESTS=OFF -DHTCORE_TOOLS=OFF >/dev/null
  cmake --build "$build" --target "$target"
fi
corpus=fuzz/corpus/$target
mkdir -p "$corpus"
work=$(mktemp -d)
seeds=$(mktemp -d)
trap 'rm -rf "$work" "$seeds"' EXIT

# Real files: which kind, which mode bytes in front, how many bytes read.
kind=
modes=("")
limit=${SEED_BYTES:-1048576}
case $target in
html_tokenizer_fuzz) kind=html modes=('\x00' '\x02' '\x04' '\x08' '\x10') ;; # UTF-8; XML mode; options
html_parse_fuzz) kind=html modes=('\x00' '\x02' '\x03' '\x04') limit=199999 ;; # bytes; inner, outer, added HTML
html_roundtrip_fuzz) kind=html modes=('\x00') limit=99999 ;;
styled_node_fuzz) kind=html modes=('\x0f' '\x33' '\x52' '\xff') limit=99999 ;; # which edits run
style_driver_fuzz) kind=html modes=('\x00' '\x02' '\x04') limit=99999 ;; # page; restyled; new width
xml_node_fuzz) kind=xml ;;
xpath_fuzz) kind=xml modes=('//*[@id]\n' '//a/@href\n' '/*/*[2]/*\n' '//*[text()]\n' '//title\n') limit=65536 ;;
template_fuzz) kind=xml modes=('\x00' '\x01' '\x02' '\x03') limit=8191 ;;
sax_fuzz) kind=xml modes=('\x00' '\x00' '\x10' '\x0c') ;; # detected encoding; skips; repeated
json_tokenizer_fuzz | json_node_fuzz) kind=json ;;
image_fuzz) kind=image modes=('\x01' '\x03' '\x00') limit=65535 ;; # as a DIB, flipped; as raw rows
esac
if [[ -n $kind && ${SEEDS:-1} != 0 ]]; then
  case $kind in
  html) list=(find /usr/share/doc -type f \( -name '*.html' -o -name '*.htm' \)) ;;
  xml) list=(find /usr/share -type f \( -name '*.xml' -o -name '*.svg' -o -name '*.xsl' -o -name '*.xsd' \
    -o -name '*.rng' -o -name '*.ui' -o -name '*.docbook' \)) ;;
  json) list=(find /usr/share /usr/lib/node_modules /usr/lib/python3 -type f -name '*.json') ;;
  image) list=(find /usr/share -type f \( -name '*.bmp' -o -name '*.gif' -o -name '*.png' -o -name '*.jpg' \
    -o -name '*.ico' -o -name '*.tif' -o -name '*.tiff' \)) ;;
  esac
  # The same files each run on one machine: a fixed shuffle of the sorted list.
  n=0
  while IFS= read -r f; do
    printf -- "${modes[n % ${#modes[@]}]}" >"$seeds/real_$n"
    head -c "$limit" -- "$f" >>"$seeds/real_$n"
    n=$((n + 1))
  done < <("${list[@]}" -size -"$((${SEED_BYTES:-1048576} + 1))"c 2>/dev/null | LC_ALL=C sort |
    shuf -n "${SEED_FILES:-200}" --random-source=<(yes))
  echo "fuzz.sh: $n real $kind files as seeds" >&2
fi

"$build/fuzz/$target" -max_total_time="$seconds" -print_final_stats=1 "$@" "$work" "$corpus" "$seeds"
# Keep only small inputs that add coverage; real files and their mutations
# stay out of the repository.
merge_bytes=${MERGE_BYTES:-4096}
if ((merge_bytes > 0)); then
  small=$(mktemp -d)
  find "$work" -type f -size -"$((merge_bytes + 1))"c -exec cp -t "$small" {} +
  "$build/fuzz/$target" -merge=1 "$corpus" "$small" >/dev/null 2>&1 || true
  rm -rf "$small"
fi
