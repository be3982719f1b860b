#!/bin/bash
# Makes the pictures of the manual's steps anew: from an empty window to an exported song, by keys
# and mouse on a display of its own. Needs what desk.sh does, sox and Python.
#
#   tools/steps.sh BUILD_DIR [DISPLAY_NUMBER]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
pictures=$here/docs/images/steps
mkdir -p "$pictures"
rm -f "$pictures"/*.png
. "$here/tools/desk.sh"
desk "$1" "${2:-98}" 960x520

# What is brought in: two bars of a beat, and a bass line of four as a MIDI file.
sox -q -n -r 44100 -c 2 "$room/Beat.wav" synth 0.5 pluck E2 synth 0.5 noise mix \
    fade h 0 0.5 0.45 vol 0.6 repeat 7
python3 - "$room/Bass.mid" <<'END'
import struct, sys
keys = [40, 40, 47, 45, 40, 40, 43, 38] * 4
track = b"\0\xff\x03\x04Bass\0\xff\x51\x03\x07\xa1\x20"
for i, key in enumerate(keys):
    track += bytes([0x60 if i else 0, 0x90, key, 100, 0x83, 0x00, 0x80, key, 0])
track += b"\0\xff\x2f\0"
with open(sys.argv[1], "wb") as f:
    f.write(b"MThd" + struct.pack(">IHHH", 6, 0, 1, 480))
    f.write(b"MTrk" + struct.pack(">I", len(track)) + track)
END

begin startwith=1 look=1

step=0
picture() {
    step=$((step + 1))
    shot "$(printf '%s/%02d-%s.png' "$pictures" $step "$1")"
}
file() { # by an entry of the menu File that begins with these letters
    keys F10 Return "${@:2}" Return
    sleep 1
    xdotool type --delay 8 "$1"
    keys Return
    sleep 2
}
row() { echo $((grid + $1 * 44 + 24)); } # the middle of a track's row
grid=183 # the top of the first row

sleep 2
keys F10 Return n Right e Return
sleep 1
picture empty
file "$room/Bass.mid" i i
picture notes
keys ctrl+a ctrl+shift+plus
keys Escape
file "$room/Beat.wav" i
picture sound
at 90 "$(row 0)"
xdotool click 1
sleep 0.5
keys ctrl+r
xdotool type --delay 8 "Deep bass"
picture name
keys Return
at 31 "$(($(row 0) - 11))"
xdotool click 1
picture instrument
keys Escape
at 320 "$(row 1)"
xdotool keydown ctrl mousedown 1
at 400 "$(row 1)"
at 487 "$(row 1)"
picture copy
xdotool mouseup 1 keyup ctrl
sleep 0.5
keys ctrl+d ctrl+d
picture repeat
keys ctrl+t
picture marker
at 16 "$(($(row 1) - 11))"
xdotool click 1
sleep 0.5
for x in 300 500 700; do
    at $x $((grid + 2 * 44 + 10 + (x - 300) / 20))
    xdotool click --repeat 2 --delay 60 1
    sleep 0.6
done
picture automation
keys Home space
sleep 2
picture play
keys 0 F5
sleep 1
picture export
keys Return
sleep 1
xdotool key ctrl+a
xdotool type --delay 8 "$room/Song.wav"
keys Return
for _ in $(seq 100); do [ -s "$room/Song.wav" ] && break; sleep 0.1; done
sleep 2
picture done
[ -s "$room/Song.wav" ] || { echo "No song was exported" >&2; exit 1; }

# The editor of sound, for the manual.
at 250 135
xdotool click 1
sleep 0.5
at 280 "$(row 1)"
xdotool click --repeat 2 --delay 60 1
sleep 1
at 300 300
xdotool mousedown 1
at 400 300
at 508 300
xdotool mouseup 1
shot "$here/docs/images/audio.png"
