#!/usr/bin/env bash
# Installs the Debian packages the build, tests, benchmarks and fuzzers need, when
# they are missing. Nothing else is fetched.
set -euo pipefail

packages=(
  cmake ninja-build g++ make pkg-config
  libicu-dev
  libgtest-dev libbenchmark-dev zlib1g-dev libssl-dev
  clang libclang-rt-14-dev
  gzip zstd xz-utils
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
