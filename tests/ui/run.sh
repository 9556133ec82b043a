#!/usr/bin/env bash
# Runs the browser tests of the inspector page (headless Chromium, driven by
# playwright-core) against the nox-demo of a build, and leaves their screenshots in
# <build dir>/ui-artifacts.
#   bash tests/ui/run.sh <build dir>
set -euo pipefail

build=$(cd "${1:?usage: run.sh <build dir>}" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
demo=$build/apps/demo/nox-demo

if [ ! -x "$demo" ]; then
  echo "ui tests: no nox-demo in $build (build it first)" >&2
  exit 1
fi
if [ ! -x /usr/bin/chromium ] || ! command -v node >/dev/null; then
  echo "ui tests: Chromium or Node.js is missing (make deps installs them)" >&2
  exit 1
fi

cd "$here"
# The pinned packages, installed again only when the lock file changed.
if [ ! -f node_modules/.package-lock.json ] || [ package-lock.json -nt node_modules/.package-lock.json ]; then
  PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 npm ci --no-audit --no-fund
fi

rm -rf "$build/ui-artifacts"
NOX_DEMO=$demo UI_ARTIFACTS=$build/ui-artifacts \
  timeout 300 node --test --test-concurrency=1 --test-timeout=150000 inspector.test.js
