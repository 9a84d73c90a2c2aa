#!/usr/bin/env bash
# Installs the Debian packages the build, tests, benchmarks and fuzzers need. Idempotent: does
# nothing when everything is present.
set -euo pipefail
packages=(build-essential cmake ninja-build pkg-config python3 clang libclang-rt-14-dev
          clang-format clang-tidy libicu-dev nlohmann-json3-dev libgtest-dev libgmock-dev libbenchmark-dev
          libsimpleini-dev libinih-dev libspdlog-dev time
          libxcb1-dev libxcb-ewmh-dev libxcb-icccm4-dev libxcb-randr0-dev
          xvfb openbox xdotool x11-utils xclip
          qt6-base-dev qt6-qpa-plugins poppler-utils imagemagick libreoffice-calc-nogui python3-uno)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi
echo "setup: installing ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
