#!/usr/bin/env bash
# Runs an end-to-end test with its own X server and session bus, and ends both with it:
# xvfb-run alone leaves the server behind when the test is killed.
set -euo pipefail
export QT_ACCESSIBILITY=1 NO_AT_BRIDGE=0
exec xvfb-run -a -s "-screen 0 1400x900x24" dbus-run-session -- "$@"
