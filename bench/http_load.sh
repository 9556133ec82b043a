#!/usr/bin/env bash
# Load test of the inspection HTTP server: wrk drives GET /api/debug/entities on the
# demo host (nox-demo, four agents stepping, served by the options form with its default
# worker threads and checks) over loopback, then the same request on a bare CivetWeb
# server with as many worker threads, answering the same body. Prints requests/s and
# p99 latency of both and their throughput ratio; the target is at least 0.8 of the
# bare server's throughput.
#
#   bench/http_load.sh [BUILD_DIR] [SECONDS]     (defaults: build/bench, 20)
set -euo pipefail

build=${1:-build/bench}
seconds=${2:-20}
demo="$build/apps/demo/nox-demo"
bare="$build/bench/nox_bare_civet_server"
for program in "$demo" "$bare"; do
  [ -x "$program" ] || { echo "http_load: $program is missing (build with -DNOX_UTILS_BUILD_BENCH=ON)" >&2; exit 1; }
done
command -v wrk >/dev/null || { echo "http_load: wrk is missing (scripts/install-deps.sh)" >&2; exit 1; }

work=$(mktemp -d)
server=
trap '[ -n "$server" ] && kill "$server" 2>/dev/null; rm -rf "$work"' EXIT

# Runs "$@ PORT" with a free port; sets server and port.
start() {
  local attempt
  for attempt in $(seq 1 20); do
    port=$((20000 + RANDOM % 40000))
    "$@" "$port" >"$work/server.log" 2>&1 &
    server=$!
    if curl -sf --retry 50 --retry-connrefused --retry-delay 0 --max-time 10 \
      "http://127.0.0.1:$port/api/debug/entities" >/dev/null; then
      return 0
    fi
    kill "$server" 2>/dev/null || true
    wait "$server" 2>/dev/null || true
  done
  echo "http_load: $1 never answered" >&2
  exit 1
}

stop() {
  kill -TERM "$server"
  wait "$server" || true
  server=
}

# wrk's summary: "requests/s p99-in-ms".
measure() {
  wrk -t2 -c8 -d"${seconds}s" --latency "http://127.0.0.1:$port/api/debug/entities" >"$work/wrk.txt"
  awk '
    /Requests\/sec:/ { rps = $2 }
    $1 == "99%" {
      value = $2; unit = value; sub(/[0-9.]+/, "", unit); sub(/[a-z]+$/, "", value)
      p99 = unit == "us" ? value / 1000 : unit == "s" ? value * 1000 : value
    }
    / requests in / { total = $1 }
    /Non-2xx/ { bad = $NF }
    END { printf "%.0f %.3f %d %d\n", rps, p99, total, bad }' "$work/wrk.txt"
}

start "$demo" --tick-ms 100 --port
read -r demo_rps demo_p99 demo_total demo_bad < <(measure)
stop

# HttpOptions' default number of worker threads, which the demo serves with.
start "$bare" 32
read -r bare_rps bare_p99 bare_total bare_bad < <(measure)
stop

ratio=$(awk -v a="$demo_rps" -v b="$bare_rps" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }')
verdict=$(awk -v r="$ratio" 'BEGIN { print (r >= 0.8 ? "met" : "NOT met") }')
printf '%-28s %12s %12s %12s %10s\n' "GET /api/debug/entities" "requests/s" "p99 (ms)" "requests" "non-2xx"
printf '%-28s %12s %12s %12s %10s\n' "inspection server (demo)" "$demo_rps" "$demo_p99" "$demo_total" "$demo_bad"
printf '%-28s %12s %12s %12s %10s\n' "bare CivetWeb" "$bare_rps" "$bare_p99" "$bare_total" "$bare_bad"
echo "throughput ratio: $ratio (target >= 0.80: $verdict)"
