#!/usr/bin/env bash
# Installs what Trunkdesk needs to build, test and run on Debian 12, from Debian's
# own packages. Does nothing when everything is already there.
set -euo pipefail

PACKAGES=(
  g++ cmake ninja-build ccache pkg-config
  qt6-base-dev libqt6sql6-sqlite libsqlite3-dev
  qt6-multimedia-dev   # the ring and the recordings player
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good  # what the player decodes and plays with
  qt6-httpserver-dev   # the reference recording server's HTTP side
  qt6-websockets-dev   # the API tests subscribe to the event stream with its client
  sqlite3              # plays "another program holding the database" in the tests
  libqt6sql6-psql      # the shared store: QtSql's PostgreSQL driver
  postgresql           # the tests start a throwaway server of their own (initdb, postgres)
  libbenchmark-dev
  fonts-wqy-microhei   # Chinese text on screen and in screenshots
)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Run as root, or install sudo." >&2; exit 1; }
  SUDO=sudo
fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
