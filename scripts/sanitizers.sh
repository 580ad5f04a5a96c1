#!/usr/bin/env bash
# The checks CI runs besides the test suite, each in a build of its own:
#   asan  every test label but package (e2e included) under AddressSanitizer +
#         UndefinedBehaviorSanitizer; hosts install an uninstrumented library
#   tsan  the unit and integration labels under ThreadSanitizer
#   fuzz  each libFuzzer target for a few seconds (TNL_FUZZ_SECONDS, default 10)
# With no argument all three run; name some to run only those. Installs what is missing first.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
checks=("$@")
[ ${#checks[@]} -gt 0 ] || checks=(asan tsan fuzz)

# The e2e cases need a display; without one they run under Xvfb.
withDisplay() {
  if [ -z "${DISPLAY:-}" ]; then
    xvfb-run -a -s "-screen 0 1280x1024x24" "$@"
  else
    "$@"
  fi
}

for check in "${checks[@]}"; do
  echo "== $check"
  case "$check" in
    asan | tsan)
      cmake --preset "$check"
      cmake --build --preset "$check"
      withDisplay ctest --preset "$check"
      ;;
    fuzz)
      cmake --preset fuzz -DTNL_FUZZ_SECONDS="${TNL_FUZZ_SECONDS:-10}"
      cmake --build --preset fuzz
      ctest --preset fuzz
      ;;
    *)
      echo "sanitizers.sh: unknown check $check (asan, tsan or fuzz)" >&2
      exit 2
      ;;
  esac
done
