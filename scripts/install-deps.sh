#!/usr/bin/env bash
# Installs the Debian packages the kit, its tests, benchmarks and demo need.
# Only packages that are missing are installed; a machine that has them all is left alone.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git curl clang
  qt6-base-dev qt6-declarative-dev qt6-quick3d-dev qt6-shadertools-dev
  libqt6opengl6-dev libgl-dev qt6-base-private-dev qt6-declarative-private-dev libxkbcommon-dev
  qt6-image-formats-plugins
  qml6-module-qtquick qml6-module-qtquick-controls qml6-module-qtquick-layouts
  qml6-module-qtquick-window qml6-module-qtquick-templates qml6-module-qtqml-workerscript
  qml6-module-qtquick-shapes qml6-module-quick3d qml6-module-quick3d-helpers
  qml6-module-qt5compat-graphicaleffects qml6-module-qtquick-dialogs
  fonts-material-design-icons-iconfont
  libassimp-dev liblz4-dev nlohmann-json3-dev libdraco-dev
  libopencv-dev libopencv-contrib-dev libqrencode-dev poppler-utils
  qt6-multimedia-dev qml6-module-qtmultimedia gstreamer1.0-plugins-base gstreamer1.0-plugins-good
  libgtest-dev libgmock-dev libbenchmark-dev zlib1g-dev
  xvfb xauth libgl1-mesa-dri mesa-utils time
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
