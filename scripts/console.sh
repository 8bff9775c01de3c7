#!/usr/bin/env bash
# One command to try the console on a fresh Debian 12 machine: installs the
# packages, builds, and starts Trunkdesk. Arguments go to the program, e.g.
#   scripts/console.sh --home ~/trunkdesk
# With --demo first, it also starts the simulated exchange on port 5003 and logs
# the console in to it as extension 8001 (password 1234), keeping its files in
# build/demo-home:
#   scripts/console.sh --demo
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}

demo=0
if [ "${1:-}" = "--demo" ]; then
  demo=1
  shift
fi

scripts/install-deps.sh
scripts/build.sh --target trunkdesk trunkdesk-exchange

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display here: running without a window (QT_QPA_PLATFORM=offscreen). Ctrl+C ends it."
  export QT_QPA_PLATFORM=offscreen
fi

if [ $demo -eq 0 ]; then
  exec "$BUILD_DIR/bin/trunkdesk" "$@"
fi

home="$BUILD_DIR/demo-home"
mkdir -p "$home/ini"
if [ ! -f "$home/ini/sys.ini" ]; then
  printf '[System]\nDebug=1\n[host]\nIP=127.0.0.1\nPort=5003\n[user]\nuserName=8001\npassWord=1234\nrecPwdFlag=1\n' \
    >"$home/ini/sys.ini"
fi
"$BUILD_DIR/bin/trunkdesk-exchange" --port 5003 --user 8001:1234 &
exchange=$!
trap 'kill $exchange 2>/dev/null || true' EXIT
sleep 0.5
"$BUILD_DIR/bin/trunkdesk" --home "$home" --login "$@"
