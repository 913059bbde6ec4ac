#!/bin/bash
# The first example opens a window on a real (virtual) display, shows more than one colour and closes when asked to.
set -uo pipefail
cd "$(dirname "$0")/../.."
app=${1:-examples/follow}
folder=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$folder"' EXIT

# The server picks a free display number and writes it when it is ready for clients.
mkfifo "$folder/display"
Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$folder/display" 2>/dev/null &
read -r -t 20 number <"$folder/display" || { echo "window: no X server"; exit 1; }
export DISPLAY=:$number SDL_AUDIODRIVER=dummy

build/tools/vorlane run "$app" --screenshot "$folder/end.png" &
player=$!
window=$(timeout 20 xdotool search --sync --onlyvisible --pid "$player" 2>/dev/null | head -1)
[ -n "$window" ] || window=$(timeout 10 xdotool search --sync --onlyvisible --name '.' 2>/dev/null | head -1)
[ -n "$window" ] || { echo "window: none opened within 20 s"; exit 1; }
xdotool mousemove --sync --window "$window" 200 150
colours=0
for _ in $(seq 50); do
  import -window "$window" "$folder/now.png" 2>/dev/null && colours=$(identify -format %k "$folder/now.png")
  [ "${colours:-0}" -gt 2 ] && break
  sleep 0.2
done
[ "$colours" -gt 2 ] || { echo "window: it shows $colours colours"; exit 1; }
[ -n "${VL_WINDOW_SHOT:-}" ] && cp "$folder/now.png" "$VL_WINDOW_SHOT"
python3 tools/checks/close_window.py "$window"
for _ in $(seq 100); do
  kill -0 "$player" 2>/dev/null || break
  sleep 0.1
done
kill -0 "$player" 2>/dev/null && { echo "window: the player is still there 10 s after its window was closed"; exit 1; }
wait "$player"
status=$?
[ $status -eq 0 ] || { echo "window: the player ended with status $status"; exit 1; }
echo "window: opened, $colours colours, closed"
