#!/usr/bin/env bash
# Installs the Debian packages the build, tests and benchmarks need, then the npm
# packages of the test folders that use them.
# Idempotent: does nothing when every package is already present and every npm test
# folder's node_modules matches its lock file.
set -euo pipefail
cd "$(dirname "$0")/.."

# Test folders with a package.json and package-lock.json, installed with `npm ci`.
npm_test_folders=(
  tests/dap
  tests/ui
)

packages=(
  build-essential cmake ninja-build pkg-config curl python3
  libprotobuf-dev protobuf-compiler
  libyajl-dev
  libcivetweb-dev
  libcurl4-openssl-dev
  libgtest-dev libgmock-dev
  libbenchmark-dev
  rapidjson-dev nlohmann-json3-dev
  wrk
  clang libclang-rt-dev
  groff-base dpkg-dev clang-format-14 clang-tidy-14
  chromium
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done
# Node.js for the end-to-end tests: Debian's, unless a node with npm is already there.
if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
  missing+=(nodejs npm)
fi

if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
  fi
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# `npm ci` leaves a copy of the lock file it installed from; a folder whose copy still
# matches is up to date. Browsers come from Debian (chromium), never from npm.
for folder in "${npm_test_folders[@]}"; do
  stamp="$folder/node_modules/.installed-package-lock.json"
  if cmp -s "$folder/package-lock.json" "$stamp"; then
    continue
  fi
  echo "npm ci in $folder"
  (cd "$folder" && PLAYWRIGHT_SKIP_BROWSER_DOWNLOAD=1 npm ci --no-audit --no-fund --loglevel=error)
  cp "$folder/package-lock.json" "$stamp"
done
