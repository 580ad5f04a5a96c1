#!/usr/bin/env bash
# The package as a host gets it (ctest label "package"):
#  1. cmake --install into a temporary prefix, and the Debian packages built by CPack, listed and
#     extracted: together they hold the same files, and the libraries carry their SONAME and
#     export nothing but the public API;
#  2. the host in tests/package/host built outside the source tree twice, with find_package
#     against the extracted packages and with pkg-config against the installed prefix;
#  3. both run without a display against the bundled ad service (tarnel-demo-server), printing
#     the callbacks, and must hear an interstitial and a rewarded ad ready.
# usage: check.sh BUILD-DIR TARNEL-DEMO-SERVER   (CMAKE, CPACK and CXX may name the tools)
set -euo pipefail
build=$1
server=$2
cmake=${CMAKE:-cmake}
cpack=${CPACK:-cpack}
cxx=${CXX:-c++}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
server_pid=
cleanup() {
  if [ -n "$server_pid" ]; then kill "$server_pid" 2>/dev/null || true; fi
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "package: $*" >&2; exit 1; }

echo "== install and packages"
"$cmake" --install "$build" --prefix "$work/prefix" --strip >/dev/null
(cd "$build" && "$cpack" -G DEB -B "$work/debs") >/dev/null
for deb in "$work"/debs/*.deb; do
  echo "$(dpkg-deb -f "$deb" Package) $(dpkg-deb -f "$deb" Version): $(dpkg-deb -c "$deb" | grep -vc '/$') files"
  dpkg-deb -x "$deb" "$work/root"
done
diff <(cd "$work/prefix" && find . ! -type d | sort) <(cd "$work/root/usr" && find . ! -type d | sort) ||
  fail "the packages and cmake --install hold different files"

lib=$(pkg-config --variable=libdir "$work/prefix"/lib*/pkgconfig/tarnelad.pc)
public_names=$(grep -rhoE '(class TNL_EXPORT|TNL_EXPORT [a-z:]+) +TNL\w+' "$work/prefix/include" |
  grep -oE 'TNL\w+$')
# The core's few internals that the GTK backend library calls.
backend_names="TNLToolkitBackend TNLMainQueue TNLPlatformLog"
for name in TarnelAd TarnelAdGtk; do
  so="$lib/lib$name.so"
  readelf -d "$so" | grep -q "SONAME.*\[lib$name\.so\.4\]" || fail "lib$name.so has no SONAME .4"
  exported=$(nm -D --defined-only "$so" | c++filt | sed -E 's/^[0-9a-f]+ [A-Za-z] //;
    s/^(typeinfo name for|typeinfo for|vtable for|VTT for|non-virtual thunk to|virtual thunk to) //;
    s/(::|\(|\[).*//' | sort -u)
  echo "lib$name.so: $(nm -D --defined-only "$so" | wc -l) symbols of $(echo $exported | wc -w) names"
  for symbol in $exported; do
    grep -qxF "$symbol" <(printf '%s\n' $public_names $backend_names) ||
      fail "lib$name.so exports $symbol, which is not public"
  done
done

echo "== hosts"
"$cmake" -S "$here/host" -B "$work/cmake-host" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_PREFIX_PATH="$work/root/usr" >/dev/null
"$cmake" --build "$work/cmake-host" >/dev/null
PKG_CONFIG_PATH=$(dirname "$work"/prefix/lib*/pkgconfig/tarnelad.pc) \
  bash -c '"$0" -std=c++20 "$1" -o "$2" $(pkg-config --cflags --libs tarnelad)' \
  "$cxx" "$here/host/host.cpp" "$work/pkg-config-host"

"$server" >"$work/url" 2>"$work/events" &
server_pid=$!
for _ in $(seq 100); do
  [ -s "$work/url" ] && break
  sleep 0.1
done
url=$(head -n 1 "$work/url")
[ -n "$url" ] || fail "tarnel-demo-server did not start"
echo "ad service at $url"
echo "-- find_package host, packages extracted"
LD_LIBRARY_PATH="$work/root/usr/lib" "$work/cmake-host/host" "$url"
echo "-- pkg-config host, cmake --install"
LD_LIBRARY_PATH="$lib" "$work/pkg-config-host" "$url"
echo "package: ok"
