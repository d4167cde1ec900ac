#!/usr/bin/env bash
# The `pagewell` command: it becomes the application beside it with the same arguments, adds huge
# pages to the allocator's tunables without dropping the ones already set, and says in French when
# the application is missing.
set -euo pipefail
launcher="$1"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*"; echo "0 passed, 1 failed"; exit 1; }

cp "$launcher" "$work/pagewell"
# Stands in for the application: prints its arguments and tunables, in the same process.
cat > "$work/pagewell-app" <<'APP'
#!/usr/bin/env bash
echo "pid=$$"
printf 'arg=%s\n' "$0" "$@"
echo "tunables=${GLIBC_TUNABLES-}"
APP
chmod +x "$work/pagewell-app"

out="$(cd "$work" && exec env -u GLIBC_TUNABLES ./pagewell 'l'\''équipe.md' '' 'deux mots')"
grep -qx 'tunables=glibc.malloc.hugetlb=1' <<< "$out" || fail "no huge pages asked for: $out"
[ "$(grep '^arg=' <<< "$out" | tail -n 3)" = "$(printf 'arg=%s\n' "l'équipe.md" '' 'deux mots')" ] \
    || fail "the arguments changed: $out"

out="$(GLIBC_TUNABLES=glibc.malloc.check=3 "$work/pagewell")"
grep -qx 'tunables=glibc.malloc.check=3:glibc.malloc.hugetlb=1' <<< "$out" \
    || fail "the tunables already set were not kept: $out"
out="$(GLIBC_TUNABLES=glibc.malloc.hugetlb=0 "$work/pagewell")"
grep -qx 'tunables=glibc.malloc.hugetlb=0' <<< "$out" || fail "a choice of huge pages was overridden: $out"

# The same process: the application's pid is the command's.
"$work/pagewell" > "$work/out" & pid=$!
wait "$pid"
grep -qx "pid=$pid" "$work/out" || fail "the application is not the command's process: $(cat "$work/out")"

rm "$work/pagewell-app"
set +e
err="$("$work/pagewell" 2>&1)"; code=$?
set -e
[ "$code" = 127 ] && grep -q "Pagewell ne peut pas démarrer" <<< "$err" \
    || fail "a missing application: exit $code, $err"
echo "1 passed, 0 failed"
