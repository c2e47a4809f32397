#!/bin/bash
# packaging/check.sh OUT: builds the Debian package from a clean clone of what is committed into the folder OUT, and
# checks it. Called by ./package. Ends with 1 at the first check that fails; the logs stay in OUT.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
out=$1

say() { printf '%-72s' "$1" >&2; }
# pass TEXT COMMAND...: its output goes to a log, and is shown when it fails.
pass() {
  local log=$out/check.log
  say "$1"
  shift
  if "$@" >"$log" 2>&1; then echo ok >&2; else echo failed >&2; tail -n 40 "$log" >&2; exit 1; fi
}

# build FOLDER OPTIONS: its log is FOLDER/build.log.
build() {
  mkdir -p "$1"
  git clone -q --no-hardlinks "$top" "$1/lumetra"
  (cd "$1/lumetra" && DEB_BUILD_OPTIONS="parallel=$(nproc) $2" dpkg-buildpackage -us -uc -b) >"$1/build.log" 2>&1 ||
    { tail -n 40 "$1/build.log"; return 1; }
}

lint() {
  local user=()
  [ "$(id -u)" -ne 0 ] || user=(--allow-root)
  lintian "${user[@]}" -EvIL +pedantic --fail-on error,warning,info,pedantic "$1" || return 1
  ! find "$top/debian" -name '*lintian-overrides' | grep .
}

pages() {
  local page
  for page in "$1"/usr/share/man/man?/*.gz; do
    mandoc -T lint -W style "$page" || return 1
    LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null | { ! grep .; } || return 1
  done
}

# Full RELRO and immediate binding, a protected stack and checked string functions, in every program.
hardened() {
  local program
  for program in "$1"/usr/bin/*; do
    readelf -hdW "$program" | grep -q 'BIND_NOW' && readelf -hW "$program" | grep -q 'DYN (' &&
      readelf -lW "$program" | grep -q GNU_RELRO && readelf -sW --dyn-syms "$program" | grep -q __stack_chk_fail &&
      readelf -sW --dyn-syms "$program" | grep -q '_chk@' || { echo "$program is not hardened"; return 1; }
  done
}

same() {
  local deb
  for deb in "$out"/first/*.deb; do cmp "$deb" "$out/second/elsewhere/$(basename "$deb")" || return 1; done
}

# In a bare Debian 12: installs, looks, removes; whatever it leaves behind fails.
bare() {
  local tree=$out/bare code=0
  "${root[@]}" mmdebstrap --variant=minbase bookworm "$tree" --mode=root \
    --include=shared-mime-info,desktop-file-utils,hicolor-icon-theme,man-db || return 1
  "${root[@]}" cp "$out"/first/lumetra_*.deb "$top/packaging/bare.sh" /etc/resolv.conf "$tree/tmp/"
  "${root[@]}" cp "$tree/tmp/resolv.conf" "$tree/etc/resolv.conf"
  "${root[@]}" chroot "$tree" /bin/bash /tmp/bare.sh || code=1
  "${root[@]}" rm -rf "$tree"
  return $code
}

root=()
[ "$(id -u)" -eq 0 ] || root=(sudo)
# Of an earlier run that was interrupted; its files belong to root.
[ ! -e "$out/bare" ] || "${root[@]}" rm -rf "$out/bare"
rm -rf "$out"
mkdir -p "$out"
[ -z "$(git -C "$top" status --porcelain)" ] || echo "What is not committed is left out." >&2
# What a compiler cache keeps has the paths of another build.
export CCACHE_DISABLE=1
pass "builds from a clean clone, and its tests pass" build "$out/first" ""
dpkg-deb -x "$out"/first/lumetra_*.deb "$out/tree"
pass "lintian has no tag, and no override" lint "$out"/first/lumetra_*.changes
pass "blhc finds all hardening flags in the build log" blhc "$out/first/build.log"
pass "the programs are hardened" hardened "$out/tree"
pass "desktop entry" desktop-file-validate "$out"/tree/usr/share/applications/lumetra.desktop
pass "AppStream metainfo" appstreamcli validate --no-net "$out"/tree/usr/share/metainfo/*.xml
pass "MIME type and drawings are well-formed" xmllint --noout "$out"/tree/usr/share/mime/packages/lumetra.xml \
  "$out"/tree/usr/share/icons/hicolor/scalable/*/*.svg
pass "manual pages" pages "$out/tree"
# Another folder, time zone, language and mask: what depends on them shows.
export TZ=Pacific/Kiritimati LC_ALL=C.UTF-8
umask 027
pass "builds again elsewhere" build "$out/second/elsewhere" nocheck
umask 022
pass "the two are the same, byte for byte" same
pass "installs, plays, and leaves nothing behind in a bare Debian 12" bare
