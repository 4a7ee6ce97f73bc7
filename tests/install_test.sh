#!/usr/bin/env bash
# What `cmake --install` places, checked as a desktop checks it: the desktop
# entry with desktop-file-validate, the metainfo with appstreamcli, the MIME
# type with xmllint and, through a temporary XDG_DATA_HOME, with xdg-mime on a
# saved set-up file; the icons, the manual and the man pages are there.
# Usage: install_test.sh BUILD_DIR SAVED_SETUP.vlm
set -euo pipefail
build=$1
setup=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "install: $*"; exit 1; }

cmake --install "$build" --prefix "$work/usr" >/dev/null
share=$work/usr/share
for program in velmora velmora-render velmora-devices; do
  [ -x "$work/usr/bin/$program" ] || fail "$program was not installed"
done
for file in velmora/help/velmora.html icons/hicolor/scalable/apps/velmora.svg man/man1/velmora.1.gz \
    man/man1/velmora-render.1.gz man/man1/velmora-devices.1.gz; do
  [ -s "$share/$file" ] || fail "$file was not installed"
done
for size in 16 24 32 48 64 128 256; do
  [ -s "$share/icons/hicolor/${size}x${size}/apps/velmora.png" ] || fail "no ${size}x${size} icon"
done

desktop-file-validate "$share/applications/org.nquillon.Velmora.desktop"
appstreamcli validate --no-net --pedantic "$share/metainfo/org.nquillon.Velmora.metainfo.xml"
xmllint --noout "$share/mime/packages/velmora.xml"
xmllint --noout "$share/icons/hicolor/scalable/apps/velmora.svg"
for page in velmora velmora-render velmora-devices; do
  warnings=$(MANWIDTH=80 man --warnings -l "$share/man/man1/$page.1.gz" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "man finds fault with $page.1: $warnings"
done

# The set-up type, as a desktop session sees it once the package is installed:
# by its ending, and by its "VLhd" magic alone.
export XDG_DATA_HOME=$work/data
mkdir -p "$XDG_DATA_HOME/mime/packages"
cp "$share/mime/packages/velmora.xml" "$XDG_DATA_HOME/mime/packages/"
update-mime-database "$XDG_DATA_HOME/mime"
cp "$setup" "$work/saved.vlm"
cp "$setup" "$work/saved-without-ending"
for file in saved.vlm saved-without-ending; do
  type=$(xdg-mime query filetype "$work/$file")
  [ "$type" = "application/x-velmora-setup" ] || fail "xdg-mime says $file is '$type'"
done
grep -q '^MimeType=.*audio/midi;' "$share/applications/org.nquillon.Velmora.desktop" ||
  fail "the desktop entry does not open MIDI files"
echo "install: programs, manual, icons, desktop entry, metainfo, MIME type and man pages are in place and valid"
