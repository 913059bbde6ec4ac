#!/bin/bash
# The embedding sample in C on a real (virtual) display: two players in one window, one of a file and one of a server's
# address. The second is stopped and runs again; at the end no file is left behind.
set -uo pipefail
cd "$(dirname "$0")/../.."
folder=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$folder"' EXIT
fail() { echo "embed: $1"; cat "$folder/said"; exit 1; }
mkdir "$folder/files" "$folder/tmp" "$folder/data"
touch "$folder/said"
build/tools/vorlane pack examples/follow -o "$folder/files/follow.vlp" >/dev/null || fail "no application"
mkdir "$folder/spot"
echo 'name = "Spot"' >"$folder/spot/vorlane.toml"
cat >"$folder/spot/main.vlq" <<'END'
// A field of one colour with a spot; it makes a file of its own and asks for another one.
f = New File(Disk.CreateTemporaryFile());
f.Write("kept");
System.DownloadFile("follow.vlp");
While (1) { Clear(0x205080); Wait(20); }
END
build/tools/vorlane pack "$folder/spot" -o "$folder/files/spot.vlp" >/dev/null || fail "no second application"

mkfifo "$folder/display"
Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$folder/display" 2>/dev/null &
read -r -t 20 number <"$folder/display" || fail "no X server"
export DISPLAY=:$number SDL_AUDIODRIVER=dummy TMPDIR=$folder/tmp XDG_DATA_HOME=$folder/data
python3 -u -m http.server -b 127.0.0.1 -d "$folder/files" 0 >"$folder/server" 2>"$folder/asked" &
for _ in $(seq 100); do
  port=$(sed -nE 's/.* port ([0-9]+) .*/\1/p' "$folder/server")
  [ -n "$port" ] && break
  sleep 0.1
done
[ -n "$port" ] || fail "no HTTP server"

build/examples/embed/two_players "$folder/files/follow.vlp" "http://127.0.0.1:$port/spot.vlp" 2>"$folder/said" &
host=$!
window=$(timeout 20 xdotool search --sync --onlyvisible --name 'Two players' 2>/dev/null | head -1)
[ -n "$window" ] || fail "no window"
# The right half has the program's colour while it plays.
right_is() {
  local seen=
  for _ in $(seq 100); do
    seen=$(import -window "$window" -crop 1x1+600+150 -depth 8 txt:- 2>/dev/null | grep -oE '#[0-9A-F]{6}')
    [ "$seen" = "$1" ] && return 0
    sleep 0.1
  done
  fail "$2: the right half is $seen, not $1"
}
right_is "#205080" "at the start"
import -window "$window" -crop 400x300+0+0 +repage "$folder/left.png"
[ "$(identify -format %k "$folder/left.png")" -gt 2 ] || fail "the left half shows nothing"
[ -n "${VL_EMBED_SHOT:-}" ] && import -window "$window" "$VL_EMBED_SHOT"
xdotool key --window "$window" F2
right_is "#404040" "stopped"
xdotool key --window "$window" F2
right_is "#205080" "again"
python3 tools/checks/close_window.py "$window"
for _ in $(seq 100); do
  kill -0 "$host" 2>/dev/null || break
  sleep 0.1
done
kill -0 "$host" 2>/dev/null && fail "the sample is still there 10 s after its window was closed"
wait "$host" || fail "the sample ended with status $?"
[ "$(grep -c 'GET /spot.vlp' "$folder/asked")" -eq 2 ] || fail "the application was not fetched twice"
[ "$(grep -c 'GET /follow.vlp' "$folder/asked")" -eq 2 ] || fail "the program did not load its file twice"
left=$(find "$folder/tmp" "$folder/data" -type f)
[ -z "$left" ] || fail "left behind: $left"
echo "embed: both played, one stopped and ran again, nothing left behind"
