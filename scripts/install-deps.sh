#!/usr/bin/env bash
# Installs the Debian packages the build, tests and benchmarks need.
# Idempotent: does nothing when every package is already present.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config curl
  libprotobuf-dev protobuf-compiler
  libyajl-dev
  libcivetweb-dev
  libcurl4-openssl-dev
  libgtest-dev libgmock-dev
  libbenchmark-dev
  rapidjson-dev nlohmann-json3-dev
  wrk
  groff-base dpkg-dev clang-format-14 clang-tidy-14
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
