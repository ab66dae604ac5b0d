#!/bin/sh
# Installs from the system's packages what building, testing and the demo need, and further packages that are named.
# Does nothing when all is there.
set -eu

packages="g++ cmake ninja-build ccache pkg-config python3 \
  libgtest-dev libgmock-dev librapidcheck-dev libbenchmark-dev \
  libembree-dev libopenexr-dev libimath-dev libopenimageio-dev libassimp-dev zlib1g-dev libtinyobjloader-dev \
  libtinygltf-dev libtomlplusplus-dev libcli11-dev nlohmann-json3-dev glmark2-data libdw1"

missing=""
for p in $packages "$@"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $p"
done
[ -z "$missing" ] && exit 0

echo "installing:$missing"
sudo=""
[ "$(id -u)" = 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
# shellcheck disable=SC2086
$sudo apt-get install -y -qq --no-install-recommends $missing >/dev/null
