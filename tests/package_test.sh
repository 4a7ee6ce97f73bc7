#!/usr/bin/env bash
# Builds the Debian package with CPack and lists its contents and control
# fields with dpkg-deb: the programs and the desktop files are in it, and its
# dependencies were computed from the programs' libraries.
# Usage: package_test.sh BUILD_DIR
set -euo pipefail
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "package: $*"; exit 1; }

cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail "cpack failed"; }
deb=$(ls "$work"/velmora_*.deb)
dpkg-deb --info "$deb"
dpkg-deb --contents "$deb" | awk '{print $6}' | tee "$work/contents"
for path in ./usr/bin/velmora ./usr/bin/velmora-render ./usr/bin/velmora-devices \
    ./usr/share/applications/org.nquillon.Velmora.desktop ./usr/share/mime/packages/velmora.xml \
    ./usr/share/metainfo/org.nquillon.Velmora.metainfo.xml ./usr/share/icons/hicolor/scalable/apps/velmora.svg \
    ./usr/share/man/man1/velmora.1.gz ./usr/share/man/man1/velmora-render.1.gz \
    ./usr/share/velmora/help/velmora.html ./usr/share/velmora/help/pictures/frame-playing.png; do
  grep -qxF "$path" "$work/contents" || fail "$path is not in the package"
done
depends=$(dpkg-deb --field "$deb" Depends)
for library in libqt6widgets libfluidsynth librtmidi libc6; do
  [[ "$depends" == *"$library"* ]] || fail "the computed dependencies lack $library: $depends"
done
echo "package: $(basename "$deb") holds the programs and desktop files; Depends: $depends"
