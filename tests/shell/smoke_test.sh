#!/usr/bin/env bash
# Installs Velmora into a temporary folder, starts the installed program on a
# virtual X display with its settings in an empty folder and a song named on
# its command line, waits for the frame, presses Space and sees the counter
# move, closes it from the File menu, and checks that the settings were
# written. Usage: smoke_test.sh BUILD_DIR SCREEN_REGION SONG.mid
set -euo pipefail
build=$1
screen_region=$2
song=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/install" >/dev/null
program="$work/install/bin/velmora"
[ -x "$program" ] || { echo "smoke: $program was not installed"; exit 1; }
[ -f "$work/install/share/velmora/help/velmora.html" ] || { echo "smoke: the manual was not installed"; exit 1; }

export XDG_CONFIG_HOME="$work/config"
export XDG_RUNTIME_DIR="$work/runtime"
mkdir -p "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
unset QT_QPA_PLATFORM

cat > "$work/session" <<SESSION
set -euo pipefail
"$program" "$song" > "$work/velmora.log" 2>&1 &
pid=\$!
# The frame shows once the splash has run; a key press (Escape, which the frame
# leaves alone) ends the splash at once.
for i in \$(seq 1 60); do
  window=\$(xdotool search --name '^Velmora - \[format1_lyrics.mid\]\$' 2>/dev/null | head -n 1 || true)
  [ -n "\$window" ] && break
  xdotool key Escape 2>/dev/null || true
  sleep 0.5
done
if [ -z "\${window:-}" ]; then
  echo "smoke: the frame did not appear"; cat "$work/velmora.log"; kill \$pid; exit 1
fi
sleep 1
# Space plays the song: the counter (at 8, 8 of the Control Bar, under the menu and the toolbar) moves.
eval "\$(xdotool getwindowgeometry --shell "\$window")"
counter() { "$screen_region" \$((X + 4)) \$((Y + 52)) 200 36 "$work/counter-\$1.png" 2>/dev/null; }
# With no window manager the keyboard's focus is given by hand.
xdotool windowfocus "\$window"
sleep 0.5
before=\$(counter before)
xdotool key space
sleep 0.5
after=\$(counter after)
xdotool key space
if [ "\$before" = "\$after" ]; then
  echo "smoke: Space did not move the counter"; kill \$pid; exit 1
fi
sleep 1
# File, then its last entry, Exit, with the mouse: there is no window manager to give the keyboard's focus.
xdotool mousemove --window "\$window" 20 10 click 1
sleep 1
menu=\$(xdotool search --onlyvisible --name '' 2>/dev/null | while read -r w; do
  [ "\$w" != "\$window" ] && echo "\$w"; done | tail -n 1)
eval "\$(xdotool getwindowgeometry --shell "\$menu")"
xdotool mousemove \$((X + 30)) \$((Y + HEIGHT - 12)) click 1
for i in \$(seq 1 40); do
  kill -0 \$pid 2>/dev/null || break
  sleep 0.25
done
if kill -0 \$pid 2>/dev/null; then
  echo "smoke: Velmora did not close from File, Exit"; kill \$pid; exit 1
fi
wait \$pid
SESSION
xvfb-run -a -s "-screen 0 1280x1024x24" bash "$work/session"

settings="$XDG_CONFIG_HOME/NQuillon/Velmora.conf"
[ -f "$settings" ] || { echo "smoke: no settings were written ($settings)"; cat "$work/velmora.log"; exit 1; }
for name in "In%20Device" "Out%20Device" "Numerator" "Metronome%20count" "Midi%20Thru" "Functions%20Filters"; do
  grep -q "^Settings\\\\$name=" "$settings" || { echo "smoke: the settings lack $name"; cat "$settings"; exit 1; }
done
echo "smoke: Velmora started, closed and wrote its settings"
