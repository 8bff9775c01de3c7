#!/usr/bin/env bash
# Pictures of the console as an operator sees it: the simulated exchange with 60
# mixed devices, live status and a call ringing in, the console logged in to it
# under a virtual display, once in Chinese and once in English.
#   tools/screenshots.sh [OUTPUT_FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-screenshots}
BUILD_DIR=${BUILD_DIR:-build}
scripts/install-deps.sh
command -v xvfb-run >/dev/null || { DEBIAN_FRONTEND=noninteractive apt-get install -y -qq xvfb xauth; }
scripts/build.sh --target trunkdesk trunkdesk-exchange
mkdir -p "$out"
for lang in 0 1; do
  home=$(mktemp -d)
  mkdir -p "$home/ini"
  printf '[System]\nDebug=1\n[Lang]\nLangID=%d\n[host]\nIP=127.0.0.1\nPort=5091\n[user]\nuserName=8001\npassWord=1234\nrecPwdFlag=1\n' "$lang" >"$home/ini/sys.ini"
  printf 'at 2500 ring 13900001111\n' >"$home/script.txt"
  "$BUILD_DIR/bin/trunkdesk-exchange" --port 5091 --user 8001:1234 --extensions 8001-8050 \
    --trunks 6 --gsm 2 --ivr 2 --udp-port 5092 --live 10 --script "$home/script.txt" >"$home/exchange.log" 2>&1 &
  exchange=$!
  sleep 0.5
  xvfb-run -a -s "-screen 0 1366x768x24" "$BUILD_DIR/bin/trunkdesk" --home "$home" --login \
    --udp-port 5092 --screenshot "$out/main-$([ "$lang" = 1 ] && echo en || echo zh).png" || true
  kill "$exchange" 2>/dev/null || true
  wait "$exchange" 2>/dev/null || true
  rm -rf "$home"
done
ls -l "$out"
