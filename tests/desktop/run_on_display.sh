#!/usr/bin/env bash
# Runs a test program on a private X display with a window manager (see x_session.sh).
set -u
for tool in Xvfb openbox xprop xdotool; do
  command -v "$tool" >/dev/null || { echo "FAIL: $tool is missing (scripts/setup.sh installs it)"; exit 1; }
done
# shellcheck source=x_session.sh
source "$(dirname "$0")/x_session.sh"
export XDG_RUNTIME_DIR="$work/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"
"$@"
