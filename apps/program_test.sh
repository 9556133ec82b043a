#!/usr/bin/env bash
# What every installed program owes its users: --help prints a usage text, --version
# prints "<program> <version>", both exit 0, and the man page renders without a warning.
set -euo pipefail

program=${1:?usage: program_test.sh path/to/program version path/to/page.1}
version=${2:?usage: program_test.sh path/to/program version path/to/page.1}
page=${3:?usage: program_test.sh path/to/program version path/to/page.1}
name=$(basename "$program")

help=$("$program" --help </dev/null) || { echo "$name --help failed" >&2; exit 1; }
grep -q "^usage: $name" <<<"$help" || { echo "$name --help: no usage line in: $help" >&2; exit 1; }
shown=$("$program" --version </dev/null) || { echo "$name --version failed" >&2; exit 1; }
[ "$shown" = "$name $version" ] || { echo "$name --version printed '$shown'" >&2; exit 1; }

grep -q "^\.TH ${name^^} 1 .*$version" "$page" || { echo "$page: no .TH line for $name $version" >&2; exit 1; }
warnings=$(groff -man -Tutf8 -ww -z "$page" 2>&1)
[ -z "$warnings" ] || { echo "$page: groff warns: $warnings" >&2; exit 1; }
rendered=$(groff -man -Tutf8 -P-cbou "$page" 2>/dev/null)
grep -q "SYNOPSIS" <<<"$rendered" || { echo "$page: no SYNOPSIS section" >&2; exit 1; }
echo "$name: help, version and man page look right"
