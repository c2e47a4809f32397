#!/bin/bash
# Runs in a bare Debian as root: installs the package that lies beside it, uses it, removes it again, and ends with 1 if
# something does not work or is left behind.
set -eu
cd /tmp
export DEBIAN_FRONTEND=noninteractive LC_ALL=C

fail() { echo "bare: $1"; exit 1; }
# All files but those that apt and dpkg write for themselves, with their contents.
files() {
  find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /tmp -o -path /var/log -o -path /var/cache \
    -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o \( -type f -exec sha256sum {} + -o ! -type f -print \) | sort
  dpkg-query -W -f '${Package} ${db:Status-Abbrev}\n'
}

apt-get update -qq
update-mime-database /usr/share/mime
update-desktop-database
ldconfig
files >/tmp/before
apt-get install -y -qq --no-install-recommends ./lumetra_*.deb

for program in lumetra lumetra-check lumetra-convert lumetra-render lumetra-xa; do
  $program --help >/dev/null || fail "$program does not start"
  ! ldd "$(command -v $program)" | grep 'not found' || fail "$program lacks a library"
done
cp -r /usr/share/lumetra/demo /tmp/song
lumetra-check /tmp/song/demo.bms >/dev/null || fail "the demo is not clean"
lumetra-render --wav /tmp/song.wav /tmp/song/demo.bms || fail "the demo is not rendered"
[ "$(stat -c %s /tmp/song.wav)" -gt 1000000 ] || fail "the demo is silent"
code=0
lumetra -P /tmp/song/demo.bms 2>/tmp/told || code=$?
[ $code -eq 255 ] && grep -q XWayland /tmp/told || fail "without a display it does not say so"
for ending in bms bme bml pms; do
  grep -q "text/x-bms:\*.$ending\$" /usr/share/mime/globs2 || fail ".$ending files have no type"
done
grep -q '^text/x-bms=lumetra.desktop' /usr/share/applications/mimeinfo.cache || fail "charts have no program"

apt-get purge -y -qq --auto-remove lumetra
update-mime-database /usr/share/mime
files >/tmp/after
diff /tmp/before /tmp/after || fail "the package leaves something behind"
