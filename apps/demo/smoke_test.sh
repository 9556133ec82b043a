#!/usr/bin/env bash
# Runs nox-demo on a free loopback port, drives it like a client would (agents, a
# breakpoint, a look at the stopped agent, resume), stops it with SIGTERM and checks
# that it exits with status 0 and reports no live allocation.
set -euo pipefail

demo=${1:?usage: smoke_test.sh path/to/nox-demo}
work=$(mktemp -d)
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT

fail() {
  echo "smoke test: $*" >&2
  echo "--- demo output" >&2
  cat "$work/out" "$work/err" >&2 || true
  exit 1
}

# The demo exits at once when its port is taken: try another.
for attempt in $(seq 1 20); do
  port=$((20000 + RANDOM % 40000))
  NOX_ALLOCATOR_TRACK=1 "$demo" --port "$port" --tick-ms 2 >"$work/out" 2>"$work/err" &
  pid=$!
  base="http://127.0.0.1:$port/api"
  if curl -sf --retry 50 --retry-connrefused --retry-delay 0 --max-time 10 "$base/debug" >/dev/null; then
    break
  fi
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  pid=
done
[ -n "${pid:-}" ] || fail "the demo never answered"

get() { curl -sf --max-time 10 "$base/$1"; }
post() { curl -sf --max-time 10 -X POST "$base/$1" -d "$2"; }

get debug/entities | grep -qx '\[{"index":1},{"index":2},{"index":3},{"index":4}\]' || fail "entities"
get sim/agents | grep -q '"name":"agent-4"' || fail "agents"
get sim/agents/2 | grep -q '"id":2' || fail "agent 2"
post engines '{"events":true}' | grep -qx '{}' || fail "switch board"
post events/subscriptions '{"type":"breakpoint","filters":{"location":"sim:agents/2/move"}}' | grep -q requestId ||
  fail "breakpoint subscription"

for i in $(seq 1 200); do
  get debug/suspend | grep -q '"suspended":true,"entity":2' && break
  [ "$i" -lt 200 ] || fail "the breakpoint never stopped agent 2"
  sleep 0.05
done
get debug/entities/2/contexts/1 | grep -q '"location":"sim:agents/2/move"' || fail "stopped context"
curl -sf --max-time 10 -X DELETE "$base/events/subscriptions/" >/dev/null || fail "unsubscribe"
post debug/resume '' >/dev/null || fail "resume"

kill -TERM "$pid"
status=0
wait "$pid" || status=$?
pid=
[ "$status" -eq 0 ] || fail "exit status $status"
if grep -q "live allocations" "$work/err"; then fail "leaked"; fi
echo "smoke test: passed"
