#!/usr/bin/env bash
# One command to try the console on a fresh Debian 12 machine: installs the
# packages, builds, and starts Trunkdesk. Arguments go to the program, e.g.
#   scripts/console.sh --home ~/trunkdesk
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh --target trunkdesk
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "No display here: running without a window (QT_QPA_PLATFORM=offscreen). Ctrl+C ends it."
  export QT_QPA_PLATFORM=offscreen
fi
exec "${BUILD_DIR:-build}/bin/trunkdesk" "$@"
