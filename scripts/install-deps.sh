#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need; skips apt when all are present.
set -euo pipefail
packages=(cmake g++ make python3 python3-dev python3-pytest python3-pil python3-numpy
          python3-venv python3-pip python3-setuptools python3-wheel python3-mypy
          libgdiplus libfontconfig1 fonts-dejavu-core libgtest-dev ccache)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=""; [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
  $sudo_cmd apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y "${missing[@]}"
fi
command -v dotnet >/dev/null || { echo "the .NET SDK (dotnet) is required on PATH" >&2; exit 1; }
