#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors and the API reference (an undocumented
# public declaration fails it), and runs every test label (unit, integration, e2e, package). The
# e2e label needs a display; without one the tests run under Xvfb.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset default -DTNL_WERROR=ON
cmake --build --preset default
cmake --build --preset default --target docs

if [ -z "${DISPLAY:-}" ]; then
  exec xvfb-run -a -s "-screen 0 1280x1024x24" ctest --preset default "$@"
else
  exec ctest --preset default "$@"
fi
