#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running the demo need.
# Idempotent: packages already present are skipped, and nothing is done when all are there.
set -euo pipefail

packages=(
  # build and test tooling; dpkg-dev for the Debian packages' dependencies (dpkg-shlibdeps)
  cmake ninja-build g++ pkg-config clang-format dpkg-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  # libraries of the SDK
  libcurl4-openssl-dev nlohmann-json3-dev libxml2-dev libglib2.0-dev
  libjavascriptcoregtk-4.1-dev libssl-dev uuid-dev
  # desktop backend
  libgtk-3-dev libwebkit2gtk-4.1-dev
  # loopback servers in tests and the demo (zlib for the compressed answers of hostile ones)
  libcpp-httplib-dev zlib1g-dev
  # headless display for web tests and the demo; synthesised pointer input in the e2e tests
  xvfb xauth libxtst-dev libxrandr-dev
  # video in web views: WebKitGTK plays the demo's VP9-in-MP4 clip through GStreamer (demuxer and
  # decoder in the good plugins); gst-launch-1.0 makes the clip from a test pattern
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-tools
  # API reference (the docs target)
  doxygen
  # a real HTTP server for the load test and the benchmarks
  nginx-light
  # runtime for the sanitizer presets; clang and libFuzzer for the fuzz preset
  libclang-rt-14-dev clang
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "setup: all packages present"
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "setup: installing ${missing[*]}"
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
