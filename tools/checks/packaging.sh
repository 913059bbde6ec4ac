#!/bin/bash
# Installs into a folder and asks the desktop's own tools: is each file right, and does a .vlp belong to the player?
set -uo pipefail
cd "$(dirname "$0")/../.."
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0
check() {
  "${@:2}" >"$folder/out" 2>&1 || { echo "packaging: $1"; cat "$folder/out"; failed=1; }
}

check "the installation fails" cmake --install build --prefix "$folder/usr"
share=$folder/usr/share
check "the desktop entry is wrong" desktop-file-validate "$share/applications/org.vorlane.Player.desktop"
check "the description is wrong" appstreamcli validate --no-net "$share/metainfo/org.vorlane.Player.metainfo.xml"
check "the file types are wrong" update-mime-database "$share/mime"
check "the desktop entries can't be listed" update-desktop-database "$share/applications"
check "no icon" test -s "$share/icons/hicolor/scalable/apps/org.vorlane.Player.svg"
check "no man page" test -s "$share/man/man1/vorlane.1"
check "the installed command doesn't run" "$folder/usr/bin/vorlane" --version
# An embedder's program builds against what is installed, and the library shows nothing but its interface.
library=$(dirname "$(find "$folder/usr" -name vorlane.pc)")
export PKG_CONFIG_PATH=$library LD_LIBRARY_PATH=${library%/pkgconfig}
embed() { cc -Wall -Wextra -Werror examples/embed/two_players.c $(pkg-config --cflags --libs vorlane sdl2) -o "$folder/two_players"; }
check "the embedding sample doesn't build" embed
"$folder/two_players" >/dev/null 2>&1
[ $? -eq 64 ] || { echo "packaging: the embedding sample doesn't run"; failed=1; }
shown=$(nm -D --defined-only "$LD_LIBRARY_PATH/libvorlane.so" | awk '{ print $3 }' | grep -v '^vl_[a-z_]*$' | head -5)
[ -z "$shown" ] || { echo "packaging: the library also shows" $shown; failed=1; }
build/tools/vorlane pack examples/life -o "$folder/life.vlp" >/dev/null
export XDG_DATA_HOME=$folder/home XDG_DATA_DIRS=$share:/usr/share XDG_CONFIG_HOME=$folder/config
type=$(gio info -a standard::content-type "$folder/life.vlp" 2>/dev/null | sed -n 's/.*content-type: //p')
[ "$type" = application/x-vorlane ] || { echo "packaging: a .vlp is \"$type\""; failed=1; }
# All of it is read: a pipe that is closed early is an error here.
PATH=$folder/usr/bin:$PATH gio mime application/x-vorlane | grep org.vorlane.Player.desktop >/dev/null || { echo "packaging: no player for a .vlp"; failed=1; }
exit $failed
