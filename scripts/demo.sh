#!/usr/bin/env bash
# Installs what is missing, builds the demo host and runs it against the bundled local ad service:
# an interstitial, a rewarded video and a banner, each shown in a real window (under Xvfb when
# there is no display), with a screenshot of each. Extra arguments go to tarnel-demo.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset default -DTNL_WERROR=ON
cmake --build --preset default --target tarnel-demo

shots="$PWD/build/demo-screenshots"
rm -rf "$shots"
status=0
build/default/demo/tarnel-demo --screenshot "$shots" "$@" || status=$?
echo "Screenshots of the ads while on screen: $shots"
ls "$shots" 2>/dev/null || true
exit "$status"
