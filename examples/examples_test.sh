#!/usr/bin/env bash
# Runs the examples the way their header comments say, and checks what they print and
# serve. minimal_host uses a random free loopback port.
set -euo pipefail

host=${1:?usage: examples_test.sh path/to/minimal_host path/to/read_json}
reader=${2:?usage: examples_test.sh path/to/minimal_host path/to/read_json}
work=$(mktemp -d)
pid=
trap '[ -z "$pid" ] || kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT

fail() {
  echo "examples test: $*" >&2
  cat "$work"/* >&2 2>/dev/null || true
  exit 1
}

# read_json: the built-in scene, then a file with paths of one's own.
"$reader" >"$work/scene" || fail "read_json failed on its built-in scene"
grep -qx 'agents\[1\].energy = 12.25' "$work/scene" || fail "read_json: no agents[1].energy"
grep -qx 'agents\[2\].name = (absent)' "$work/scene" || fail "read_json: a missing path is not shown absent"
grep -qx 'size\[1\]: 25' "$work/scene" || fail "read_json: the walk misses size[1]"
grep -qx '1: bo' "$work/scene" || fail "read_json: the agents loop misses bo"
printf '{"a": {"b": [true, "x"]}}' >"$work/file.json"
"$reader" "$work/file.json" a.b a.b[0] nothing >"$work/file" || fail "read_json failed on a file"
[ "$(head -3 "$work/file")" = $'a.b = array of 2\na.b[0] = true\nnothing = (absent)' ] || fail "read_json: paths"
printf '{"a": ' >"$work/broken.json"
if "$reader" "$work/broken.json" >/dev/null 2>"$work/err"; then fail "read_json took a broken file"; fi
grep -q "^read_json: " "$work/err" || fail "read_json: no reason given for a broken file"

# minimal_host: serves its engine and the pushed context, then stops by itself.
for attempt in $(seq 1 20); do
  # Below the system's ephemeral ports (32768 and up): a client that keeps retrying a
  # port nobody listens on yet may otherwise be given that very port and connect to itself.
  port=$((20000 + RANDOM % 12000))
  "$host" "$port" 2500 >"$work/host.out" 2>"$work/host.err" &
  pid=$!
  base="http://127.0.0.1:$port/api"
  if curl -sf --retry 30 --retry-connrefused --retry-delay 0 --max-time 5 "$base/hello" >"$work/hello"; then
    break
  fi
  kill "$pid" 2>/dev/null || true
  wait "$pid" 2>/dev/null || true
  pid=
done
[ -n "$pid" ] || fail "minimal_host never answered"
[ "$(cat "$work/hello")" = '{"greeting":"hello"}' ] || fail "hello: $(cat "$work/hello")"
curl -sf --max-time 5 "$base/debug/entities/1/contexts" | grep -q '"location":"hello:greeter/greet"' ||
  fail "the pushed context is not listed"
status=0
wait "$pid" || status=$?
pid=
[ "$status" -eq 0 ] || fail "minimal_host exited with $status"
echo "examples test: passed"
