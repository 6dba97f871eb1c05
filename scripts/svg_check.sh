#!/usr/bin/env bash
# Real-client check of the SVG canvas, outside ctest: every document of the
# drawing suite (htcore svg demo) must
#   (a) parse as XML (xmllint),
#   (b) render with rsvg-convert and with headless Chromium without errors,
#   (c) match its reference raster in tests/graphics/svg_reference/ with both
#       renderers: at most 3% of the pixels (8% for text and image scenes,
#       where font hinting and image smoothing differ between renderers) may
#       differ by more than 64 of 255 in a channel.
#
#   scripts/svg_check.sh [--update] [HTCORE_TOOL]
#
# --update writes the rsvg rasters as the new references (look at them
# before committing). The tool defaults to build-dev/tools/htcore, then
# build/tools/htcore.
set -uo pipefail
cd "$(dirname "$0")/.."
update=0
tool=""
for a in "$@"; do
  case "$a" in
  --update) update=1 ;;
  -h | --help)
    sed -n '2,15p' "$0" | sed 's/^# \{0,1\}//'
    exit 0
    ;;
  *) tool=$a ;;
  esac
done
if [ -z "$tool" ]; then
  for t in build-dev/tools/htcore build/tools/htcore; do
    [ -x "$t" ] && tool=$t && break
  done
fi
[ -x "$tool" ] || { echo "svg_check: no htcore tool (build the htcore_tool target)" >&2; exit 1; }
for p in xmllint rsvg-convert python3; do
  command -v "$p" >/dev/null || { echo "svg_check: $p is missing (scripts/setup.sh installs it)" >&2; exit 1; }
done
chromium=${CHROMIUM:-/usr/bin/chromium}
[ -x "$chromium" ] || { echo "svg_check: $chromium is missing" >&2; exit 1; }

refs=tests/graphics/svg_reference
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/svg" "$work/rsvg" "$work/chromium" "$refs"
"$tool" svg demo "$work/svg" >/dev/null || { echo "svg_check: htcore svg demo failed" >&2; exit 1; }

fails=0
count=0
fail() {
  echo "FAIL $1"
  fails=$((fails + 1))
}
for svg in "$work"/svg/*.svg; do
  name=$(basename "$svg" .svg)
  count=$((count + 1))
  # (a) well-formed XML
  xmllint --noout "$svg" 2>"$work/err" || { fail "$name: not XML: $(head -1 "$work/err")"; continue; }
  size=$(sed -n '1s/^<svg[^>]* width="\([0-9]*\)" height="\([0-9]*\)".*/\1 \2/p' "$svg")
  read -r w h <<<"$size"
  # (b) both renderers, without errors
  if ! rsvg-convert "$svg" -o "$work/rsvg/$name.png" 2>"$work/err" || [ -s "$work/err" ]; then
    fail "$name: rsvg-convert: $(head -1 "$work/err")"
    continue
  fi
  # A busy machine can stall a browser start: one more try before it counts.
  # A window below about 400 by 300 comes out blank: the page is cut from a larger one.
  for try in 1 2; do
    profile=$(mktemp -d)
    timeout 90 "$chromium" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
      --disable-background-networking --disable-component-update --disable-sync --hide-scrollbars \
      --user-data-dir="$profile" --screenshot="$work/chromium/$name.png" --window-size="$((w > 400 ? w : 400)),$((h > 300 ? h : 300))" \
      "file://$svg" >"$work/chromium.log" 2>&1
    status=$?
    rm -rf "$profile"
    [ $status -eq 0 ] && break
  done
  if [ $status -ne 0 ] || [ ! -s "$work/chromium/$name.png" ]; then
    fail "$name: chromium exit $status: $(grep -v dbus "$work/chromium.log" | tail -1)"
    continue
  fi
  if [ $update -eq 1 ]; then
    cp "$work/rsvg/$name.png" "$refs/$name.png"
    echo "reference $refs/$name.png"
    continue
  fi
  # (c) both rasters against the reference
  share=0.03
  case "$name" in text_* | images | wavy_links | pages-* | widgets) share=0.08 ;; esac
  [ -f "$refs/$name.png" ] || { fail "$name: no reference $refs/$name.png (run with --update)"; continue; }
  for r in rsvg chromium; do
    out=$(python3 scripts/png_compare.py "$refs/$name.png" "$work/$r/$name.png" --share "$share" --crop)
    if [ $? -ne 0 ]; then
      fail "$name ($r): $out"
    else
      printf 'ok   %-22s %-9s %s\n' "$name" "$r" "$out"
    fi
  done
done
if [ $fails -ne 0 ]; then
  echo "svg_check: $fails failures in $count documents"
  exit 1
fi
echo "svg_check: $count documents parse as XML, render in rsvg-convert and Chromium, and match their references"
