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
# A port nothing listens on yet.
accepts() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }
port=$((20000 + RANDOM % 20000))
while accepts "$port"; do port=$((20000 + RANDOM % 20000)); done
sed -e "s|@DIR@|$dir|g" -e "s|@PORT@|$port|g" bench/nginx.conf >"$dir/nginx.conf"
/usr/sbin/nginx -p "$dir" -c "$dir/nginx.conf" -e "$dir/error.log" &
nginx=$!
trap 'kill $nginx 2>/dev/null; wait $nginx 2>/dev/null; rm -rf "$dir"' EXIT
for _ in $(seq 100); do
  if accepts "$port"; then
    break
  fi
  sleep 0.05
done
if ! accepts "$port"; then
  echo "bench.sh: nginx did not start:" >&2
  cat "$dir/error.log" >&2
  exit 1
fi

TNL_BENCH_SERVER="http://127.0.0.1:$port" TNL_BENCH_ROOT="$dir/www" \
  TNL_BENCH_ACCESS_LOG="$dir/access.log" \
  build/default/bench/tarnel_bench --benchmark_repetitions="${TNL_BENCH_REPETITIONS:-3}" \
  --benchmark_enable_random_interleaving=true --benchmark_report_aggregates_only=true "$@"
