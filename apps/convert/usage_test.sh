#!/usr/bin/env bash
# nox-convert as a user meets it: help and version, exit status 2 for bad usage and 1
# for bad input (each with a message), files and pipes, the format guess, --pretty.
set -euo pipefail

convert=${1:?usage: usage_test.sh path/to/nox-convert version}
version=${2:?usage: usage_test.sh path/to/nox-convert version}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
  echo "usage test: $*" >&2
  failures=$((failures + 1))
}

# expect STATUS TEXT-ON-STDERR ARGUMENTS... (stdin from $work/in when it exists)
expect() {
  local want=$1 message=$2 status=0
  shift 2
  "$convert" "$@" <"${input:-/dev/null}" >"$work/out" 2>"$work/err" || status=$?
  [ "$status" -eq "$want" ] || fail "$*: exit status $status, expected $want ($(cat "$work/err"))"
  if [ -n "$message" ]; then
    grep -qF -- "$message" "$work/err" || fail "$*: stderr lacks '$message': $(cat "$work/err")"
  fi
}

# Help and version.
expect 0 "" --help
grep -q "^usage: nox-convert" "$work/out" || fail "--help prints no usage"
expect 0 "" --version
[ "$(cat "$work/out")" = "nox-convert $version" ] || fail "--version prints $(cat "$work/out")"

# Bad usage.
expect 2 "unknown option --frob" --frob
expect 2 "expected json or binary, got xml" --from xml
expect 2 "expected json or binary, got nothing" --to
expect 2 "unexpected argument c" a b c

# Bad input.
expect 1 "cannot open $work/missing.json" "$work/missing.json"
printf '{"a": [1, 2' >"$work/broken.json"
expect 1 "is not a valid JSON text" "$work/broken.json"
expect 1 "Invalid JSON" --from json "$work/broken.json"
printf 'not an object' >"$work/garbage"
expect 1 "(format guessed; --from sets it)" "$work/garbage"
# A binary object stamped with version 1.0.0 and no root.
printf '\x0a\x06\x08\x01\x10\x00\x18\x00' >"$work/future.bin"
expect 1 "that is not compatible with the current version, v0.4.0." "$work/future.bin"
printf '[1] 2' >"$work/scalar.json"
expect 1 "" "$work/scalar.json"
printf '"alone"' >"$work/scalar.json"
expect 1 "has no JSON form" --from json --to json "$work/scalar.json"

# Files and pipes, the guess both ways, and writing over the input.
printf ' \n\t{"name": "agent", "speed": 2.5, "tags": ["a", null, true], "n": -3}' >"$work/object.json"
expect 0 "" "$work/object.json" "$work/object.bin"
[ "$(head -c 1 "$work/object.bin" | od -An -tx1 | tr -d ' ')" = 0a ] || fail "binary output does not start with the version"
input=$work/object.bin expect 0 "" - -
# Children come out in key order.
compact='{"n":-3,"name":"agent","speed":2.5,"tags":["a",null,true]}'
[ "$(cat "$work/out")" = "$compact" ] || fail "binary to JSON gave $(cat "$work/out")"
cp "$work/object.bin" "$work/same"
expect 0 "" "$work/same" "$work/same"
[ "$(cat "$work/same")" = "$compact" ] || fail "converting a file onto itself gave $(cat "$work/same")"
expect 0 "" --pretty --to json "$work/object.json" -
[ "$(wc -l <"$work/out")" -gt 5 ] && grep -q '^    "name": "agent",$' "$work/out" || fail "--pretty gave $(cat "$work/out")"
cp "$work/out" "$work/pretty.json"
input=$work/pretty.json expect 0 "" --to json -
[ "$(cat "$work/out")" = "$compact" ] || fail "pretty JSON read back as $(cat "$work/out")"

echo "usage test: $failures failures"
[ "$failures" -eq 0 ]
