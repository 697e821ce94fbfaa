#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests and the demo need, and only those that
# are missing, so that a machine that has them all is left untouched and no network is needed.
set -euo pipefail

packages=(qtbase5-dev libgl-dev cmake g++ libgtest-dev libbenchmark-dev xvfb xauth libgl1-mesa-dri)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done

if [ "${#missing[@]}" -eq 0 ]; then
    exit 0
fi

echo "Installing missing packages: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
