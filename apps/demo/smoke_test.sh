#!/usr/bin/env bash
# Runs nox-demo on a free loopback port, drives it like a client would (agents, a
# breakpoint, a look at the stopped agent, resume), stops it with SIGTERM and checks
# that it exits with status 0 and reports no live allocation. Then runs it behind an
# access token taken from the environment.
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

# Starts the demo with "$@" on a free port (it exits at once when its port is taken:
# try another); sets pid and base. Any answer, a refusal included, says it serves.
start() {
  for attempt in $(seq 1 20); do
    port=$((20000 + RANDOM % 40000))
    NOX_ALLOCATOR_TRACK=1 "$demo" --port "$port" --tick-ms 2 "$@" >"$work/out" 2>"$work/err" &
    pid=$!
    base="http://127.0.0.1:$port/api"
    if curl -s -o /dev/null --retry 50 --retry-connrefused --retry-delay 0 --max-time 10 "$base/debug"; then
      return 0
    fi
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
    pid=
  done
  fail "the demo never answered"
}

stop() {
  kill -TERM "$pid"
  status=0
  wait "$pid" || status=$?
  pid=
  [ "$status" -eq 0 ] || fail "exit status $status"
  if grep -q "live allocations" "$work/err"; then fail "leaked"; fi
}

start
grep -q "Listening on 127.0.0.1:$port, no access token required" "$work/out" || fail "welcome"

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

stop

token=demo-$RANDOM$RANDOM
NOX_INSPECT_TOKEN=$token start
grep -q "an access token is required" "$work/out" || fail "welcome with a token"
if grep -q "$token" "$work/out" "$work/err"; then fail "the token was printed"; fi
code() { curl -s -o /dev/null -w '%{http_code}' --max-time 10 "$@"; }
[ "$(code "$base/debug")" = 401 ] || fail "no token"
[ "$(code -H "Authorization: Bearer $token" "$base/debug")" = 200 ] || fail "the token"
[ "$(code -H "Host: attacker.example" -H "Authorization: Bearer $token" "$base/debug")" = 403 ] || fail "foreign host"
stop
echo "smoke test: passed"
