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
if [ ! -x /usr/bin/chromium ] || ! command -v node >/dev/null || [ ! -d "$here/node_modules/playwright-core" ]; then
  echo "ui tests: Chromium, Node.js or playwright-core is missing (make deps installs them)" >&2
  exit 1
fi

cd "$here"

rm -rf "$build/ui-artifacts"
NOX_DEMO=$demo UI_ARTIFACTS=$build/ui-artifacts \
  timeout 300 node --test --test-concurrency=1 --test-timeout=150000 poller.test.js inspector.test.js
