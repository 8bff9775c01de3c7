#!/usr/bin/env bash
# One command for the whole test suite on a fresh Debian 12 machine:
# installs the packages, builds everything, runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh
cd "${BUILD_DIR:-build}"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)"
