#!/usr/bin/env bash
# One command to try the console on a fresh Debian 12 machine: installs the
# packages, builds, and starts Trunkdesk. Arguments go to the program, e.g.
#   scripts/console.sh --home ~/trunkdesk
# With --demo the console brings its own simulated hotel exchange and logs in to
# it, in a throwaway folder:
#   scripts/console.sh --demo
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}

scripts/install-deps.sh
scripts/build.sh --target trunkdesk trunkdesk-exchange

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display here: running without a window (QT_QPA_PLATFORM=offscreen). Ctrl+C ends it."
  export QT_QPA_PLATFORM=offscreen
fi
exec "$BUILD_DIR/bin/trunkdesk" "$@"
