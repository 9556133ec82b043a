#!/usr/bin/env bash
# Every JSON text of the conformance corpus that nox-convert accepts must come back from
# the binary form as the very JSON it gives directly; the valid texts (y_) must all be
# accepted, except those the object model cannot hold or the JSON form cannot show.
set -euo pipefail

convert=${1:?usage: corpus_test.sh path/to/nox-convert corpus-dir}
corpus=${2:?usage: corpus_test.sh path/to/nox-convert corpus-dir}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Keys a dynamic object cannot hold (empty, or with a NUL byte), and lone scalars, which
# have no JSON form (the top level is always an object or an array).
refused_valid_texts=" y_object_empty_key.json y_object_escaped_null_in_key.json "

failures=0
checked=0
fail() {
  echo "corpus test: $*" >&2
  failures=$((failures + 1))
}

for file in "$corpus"/*.json; do
  name=$(basename "$file")
  if ! "$convert" --from json --to json "$file" "$work/direct.json" 2>"$work/err"; then
    [ -s "$work/err" ] || fail "$name: refused without a message"
    case $name in
    y_*)
      # A valid lone scalar still has a binary form.
      if [[ $refused_valid_texts != *" $name "* ]] && ! "$convert" --from json --to binary "$file" "$work/scalar.bin" 2>/dev/null; then
        fail "$name: a valid text was refused: $(cat "$work/err")"
      fi
      ;;
    esac
    continue
  fi
  [[ $refused_valid_texts != *" $name "* ]] || fail "$name: expected a refusal"
  "$convert" --from json "$file" "$work/object.bin" 2>"$work/err" || {
    fail "$name: no binary form: $(cat "$work/err")"
    continue
  }
  "$convert" <"$work/object.bin" >"$work/back.json" 2>"$work/err" || {
    fail "$name: binary form not read back: $(cat "$work/err")"
    continue
  }
  cmp -s "$work/direct.json" "$work/back.json" ||
    fail "$name: $(cat "$work/direct.json") came back as $(cat "$work/back.json")"
  checked=$((checked + 1))
done

[ "$checked" -ge 80 ] || fail "only $checked texts round-tripped"
echo "corpus test: $checked texts round-tripped, $failures failures"
[ "$failures" -eq 0 ]
