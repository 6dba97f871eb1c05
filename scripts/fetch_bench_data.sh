#!/usr/bin/env bash
# Collects real HTML pages for the HTML benchmarks into bench/data/ (ignored
# by git): a few documents of 100 KB to 5 MB from /usr/share/doc, and when too
# few of those exist, pages made by concatenating smaller documents.
#   scripts/fetch_bench_data.sh [MAX_PAGES]
set -euo pipefail
cd "$(dirname "$0")/.."
max=${1:-6}
out=bench/data
mkdir -p "$out"
rm -f "$out"/*.html

# One page per package directory, largest first, so that the set mixes
# generators (API docs, manuals, release notes) instead of six siblings.
n=0
declare -A seen=()
while IFS= read -r f; do
  pkg=$(echo "$f" | cut -d/ -f5)
  [ -n "${seen[$pkg]:-}" ] && continue
  seen[$pkg]=1
  cp "$f" "$out/$(printf '%02d' "$n")-$pkg-$(basename "$f")"
  n=$((n + 1))
  [ "$n" -ge "$max" ] && break
done < <(find /usr/share/doc -name '*.html' -size +100k -size -5M -printf '%s %p\n' 2>/dev/null |
           sort -rn | cut -d' ' -f2-)

# Small documents of all kinds, joined into pages of about 1 MB.
mapfile -t small < <(find /usr/share/doc -name '*.html' -size -100k 2>/dev/null | sort)
page=0
while [ "$n" -lt "$max" ] && [ "${#small[@]}" -gt 0 ]; do
  target="$out/$(printf '%02d' "$n")-concat-$page.html"
  : >"$target"
  while [ "$(stat -c %s "$target")" -lt 1000000 ]; do
    for f in "${small[@]}"; do
      cat "$f" >>"$target"
      [ "$(stat -c %s "$target")" -ge 1000000 ] && break
    done
  done
  n=$((n + 1))
  page=$((page + 1))
done

# Small pages (2-30 KB), each parsed on its own by html_bench's "small-pages".
rm -rf "$out/small"
mkdir -p "$out/small"
k=0
while IFS= read -r f; do
  cp "$f" "$out/small/$(printf '%03d' "$k")-$(basename "$f")"
  k=$((k + 1))
  [ "$k" -ge 100 ] && break
done < <(find /usr/share/doc -type f -name '*.html' -size +2k -size -30k 2>/dev/null | sort)

# Style sheets: bootstrap (npm package, full and minified) beside the sheets
# Debian ships. Without npm or a network the benchmarks use what is there.
if [ ! -s "$out/bootstrap.css" ] && command -v npm >/dev/null; then
  tmp=$(mktemp -d)
  if (cd "$tmp" && npm pack --silent bootstrap@5 >/dev/null 2>&1 && tar xzf bootstrap-*.tgz); then
    cp "$tmp/package/dist/css/bootstrap.css" "$tmp/package/dist/css/bootstrap.min.css" "$out/"
  else
    echo "bootstrap.css not fetched (npm pack failed)" >&2
  fi
  rm -rf "$tmp"
fi

if [ "$n" -eq 0 ]; then
  echo "no HTML documents found under /usr/share/doc" >&2
  exit 1
fi
ls -l "$out"

# SVG path data for path_bench: the icons of @mdi/svg (Apache-2.0) from the npm
# registry, one path a line. Skipped when npm or the registry is not there.
if command -v npm >/dev/null 2>&1; then
  tmp=$(mktemp -d)
  if (cd "$tmp" && npm pack --silent @mdi/svg@7.4.47 >/dev/null 2>&1 && tar xzf mdi-svg-7.4.47.tgz); then
    grep -ho ' d="[^"]*"' "$tmp"/package/svg/*.svg | sed 's/^ d="//; s/"$//' >"$out/icon-paths.txt"
    echo "icon-paths.txt: $(wc -l <"$out/icon-paths.txt") paths"
  else
    echo "npm pack @mdi/svg failed: path_bench uses generated paths" >&2
  fi
  rm -rf "$tmp"
fi
