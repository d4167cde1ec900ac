#!/usr/bin/env bash
# Starts the real application under Xvfb on a folder named on the command line, as a user would,
# and checks that the window came up and that the session was opened and remembered.
set -euo pipefail
app="$1"
work="$(mktemp -d)"
trap 'kill "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/config"
export QT_QPA_PLATFORM=xcb
mkdir -p "$HOME" "$work/docs/guide"
printf '# Accueil\n' > "$work/docs/README.md"
printf '# Guide\n' > "$work/docs/guide/start.md"
conf="$XDG_CONFIG_HOME/Pagewell/Pagewell.conf"

fail() { echo "FAIL: $*"; echo "0 passed, 1 failed"; exit 1; }

xvfb-run -a -s "-screen 0 1280x800x24" "$app" "$work/docs/guide/start.md" > "$work/app.log" 2>&1 &
pid=$!
for _ in $(seq 1 100); do
    grep -q 'LastFile' "$conf" 2>/dev/null && break
    sleep 0.1
done
[ -f "$conf" ] || fail "no preferences written"
grep -qx "Pagewell.LastFolder=$work/docs/guide" "$conf" || fail "last folder not stored: $(cat "$conf")"
grep -qx "Pagewell.LastFile=$work/docs/guide/start.md" "$conf" || fail "last file not stored"
grep -qx "Pagewell.RecentFolders=$work/docs/guide" "$conf" || fail "recent folder not stored"
sleep 1
kill -0 "$pid" 2>/dev/null || { cat "$work/app.log"; fail "the application exited"; }
if grep -qiE 'qrc:.*(error|is not a type|unavailable)|ReferenceError|TypeError' "$work/app.log"; then
    cat "$work/app.log"
    fail "QML errors at start"
fi
echo "PASS: window up, folder and file opened and remembered"
echo "1 passed, 0 failed"
