#!/usr/bin/env bash
# Installs Pagewell into a temporary prefix as `cmake --install` lays it out, checks the desktop
# files, then uses the installed binary end to end (its editor page, its dictionaries); and builds
# the Debian package and checks that Debian 12 can satisfy its dependencies.
set -euo pipefail
build="$1"
source_dir="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; echo "0 passed, 1 failed"; exit 1; }

prefix="$work/prefix"
cmake --install "$build" --prefix "$prefix" > "$work/install.log"
for f in bin/pagewell libexec/pagewell-app share/pagewell/web/editor.html share/pagewell/web/editor.js \
    share/pagewell/web/licenses.txt share/pagewell/web/formulas.js share/pagewell/web/diagrams.js share/pagewell/web/katex/katex.min.css \
    share/pagewell/qtwebengine_dictionaries/fr-FR.bdic \
    share/pagewell/qtwebengine_dictionaries/en-US.bdic share/pagewell/licenses/bootstrap-icons.txt \
    share/applications/org.pagewell.Pagewell.desktop share/metainfo/org.pagewell.Pagewell.metainfo.xml \
    share/icons/hicolor/scalable/apps/org.pagewell.Pagewell.svg \
    share/icons/hicolor/48x48/apps/org.pagewell.Pagewell.png \
    share/icons/hicolor/256x256/apps/org.pagewell.Pagewell.png; do
    [ -s "$prefix/$f" ] || fail "not installed: $f"
done
desktop-file-validate "$prefix/share/applications/org.pagewell.Pagewell.desktop" \
    || fail "the desktop entry does not validate"
grep -qx 'Exec=pagewell %F' "$prefix/share/applications/org.pagewell.Pagewell.desktop" \
    || fail "the desktop entry does not run pagewell with files"
appstreamcli validate --no-net "$prefix/share/metainfo/org.pagewell.Pagewell.metainfo.xml" \
    || fail "the AppStream metadata does not validate"

# The installed binary, away from the build tree, edits and saves through its own page.
"$source_dir/tests/e2e/run_under_xvfb.sh" /usr/bin/python3 "$source_dir/tests/e2e/window_test.py" \
    "$prefix/bin/pagewell" > "$work/e2e.log" 2>&1 || { grep -v dbus-daemon "$work/e2e.log"; fail "the installed application"; }

# Made the default handler of Markdown, the installed Pagewell opens a file xdg-open hands it.
export XDG_DATA_DIRS="$prefix/share:/usr/share" XDG_DATA_HOME="$work/data" \
    XDG_CONFIG_HOME="$work/config" HOME="$work/home" PATH="$prefix/bin:$PATH"
mkdir -p "$HOME" "$work/docs"
printf '# Ouvert par le bureau\n' > "$work/docs/ouvert.md"
xdg-mime default org.pagewell.Pagewell.desktop text/markdown
[ "$(xdg-mime query default text/markdown)" = org.pagewell.Pagewell.desktop ] \
    || fail "Pagewell is not the default handler of Markdown"
xvfb-run -a -s "-screen 0 1280x800x24" bash -c '
    # Generic xdg-open waits for the program it starts.
    xdg-open "$1" > /dev/null 2>&1 &
    for _ in $(seq 1 100); do
        grep -q "LastFile=$1" "$XDG_CONFIG_HOME/Pagewell/Pagewell.conf" 2>/dev/null && break
        sleep 0.1
    done
    pkill -f "$2/bin/pagewell" || true' _ "$work/docs/ouvert.md" "$prefix"
grep -q "Pagewell.LastFile=$work/docs/ouvert.md" "$XDG_CONFIG_HOME/Pagewell/Pagewell.conf" \
    || fail "xdg-open did not open the file in Pagewell"

(cd "$build" && cpack -G DEB -B "$work/deb" > "$work/cpack.log" 2>&1) \
    || { cat "$work/cpack.log"; fail "cpack"; }
deb="$(ls "$work"/deb/pagewell_*.deb)"
dpkg-deb --contents "$deb" > "$work/contents.txt"
grep -q './usr/bin/pagewell$' "$work/contents.txt" && grep -q './usr/libexec/pagewell-app$' "$work/contents.txt" \
    || fail "the package has no command or no application"
grep -q './usr/share/pagewell/web/editor.html$' "$work/contents.txt" || fail "the package has no page"
depends="$(dpkg-deb --field "$deb" Depends)"
for p in libqt6webenginequick6 qml6-module-qtwebengine qml6-module-qt-labs-folderlistmodel libqt6svg6; do
    grep -q "$p" <<< "$depends" || fail "the package does not depend on $p: $depends"
done
apt-get install --simulate --no-install-recommends "$deb" > "$work/simulate.log" 2>&1 \
    || { cat "$work/simulate.log"; fail "Debian cannot satisfy the package's dependencies"; }
echo "PASS: installed layout, desktop entry and metadata, installed binary end to end, .deb"
echo "1 passed, 0 failed"
