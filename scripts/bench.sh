#!/usr/bin/env bash
# Builds the benchmarks, starts nginx on 127.0.0.1 with the project's own configuration
# (bench/nginx.conf), runs them against it and prints the table of medians with each
# library / raw ratio. Arguments go to the benchmark program, e.g. --benchmark_filter=Load.
# TNL_BENCH_REPETITIONS (default 3) sets how many runs each median is taken over.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
cmake --preset default
cmake --build --preset default --target tarnel_bench

dir=$(mktemp -d /tmp/tnl-bench-XXXXXX)
mkdir -p "$dir/www"
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
sed -e "s|@DIR@|$dir|g" -e "s|@PORT@|$port|g" bench/nginx.conf >"$dir/nginx.conf"
/usr/sbin/nginx -p "$dir" -c "$dir/nginx.conf" -e "$dir/error.log" &
nginx=$!
trap 'kill $nginx 2>/dev/null; wait $nginx 2>/dev/null; rm -rf "$dir"' EXIT
for _ in $(seq 100); do
  if (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
    break
  fi
  sleep 0.05
done

TNL_BENCH_SERVER="http://127.0.0.1:$port" TNL_BENCH_ROOT="$dir/www" \
  TNL_BENCH_ACCESS_LOG="$dir/access.log" \
  build/default/bench/tarnel_bench --benchmark_repetitions="${TNL_BENCH_REPETITIONS:-3}" \
  --benchmark_report_aggregates_only=true "$@"
