#!/usr/bin/env bash
# Installs the Debian packages the build needs (idempotent, quiet), then
# configures and builds a release tree in build/.
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(cmake ninja-build g++ pkg-config zlib1g-dev libgtest-dev libbenchmark-dev)
# Benchmarks against peer libraries (-DHTCORE_PEERS=ON) need, for example:
#   HTCORE_EXTRA_PACKAGES="libxml2-dev libpugixml-dev rapidjson-dev nlohmann-json3-dev libexpat1-dev iso-codes
#                          libgumbo-dev liblitehtml-dev npm"
# (iso-codes ships the real XML and JSON inputs of the XML and JSON benchmarks.)
# The style check against a browser (scripts/style_check.sh) needs: chromium nodejs
# The SVG check in real renderers (scripts/svg_check.sh) needs: librsvg2-bin libxml2-utils chromium
if [ "${HTCORE_EXTRA_PACKAGES:-}" ]; then
  read -r -a extra <<<"$HTCORE_EXTRA_PACKAGES"
  packages+=("${extra[@]}")
fi
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo_cmd=""
  [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update -qq
  $sudo_cmd env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

if [ "${HTCORE_SETUP_ONLY_PACKAGES:-}" = 1 ]; then
  exit 0
fi
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DHTCORE_TESTS=OFF >/dev/null
cmake --build build --target htcore_tool
