#!/bin/bash
# Makes the pictures of the manual's steps anew: from an empty window to an exported song, by keys
# and mouse on a display of its own. Needs Xvfb, xdotool, ImageMagick, sox and Python.
#
#   tools/steps.sh BUILD_DIR [DISPLAY_NUMBER]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
programs=$(cd "$1" && pwd)/bin
number=${2:-98}
pictures=$here/docs/images/steps
size=960x520

rm -f "$pictures"/*.png
room=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; wait 2>/dev/null; rm -rf "$room"' EXIT
mkdir -p "$room/home" "$room/run" "$pictures"
chmod 700 "$room/run"
cp "$programs"/sondrava "$programs"/*.so "$room"
touch "$room/home/alsa"
printf '[options]\nstartwith=1\nlook=1\nscale=100\n' > "$room/Sondrava.ini"
export HOME=$room/home XDG_RUNTIME_DIR=$room/run ALSA_CONFIG_PATH=$room/home/alsa
export PULSE_SERVER=unix:/nonexistent JACK_NO_START_SERVER=1 DISPLAY=:$number

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

Xvfb ":$number" -screen 0 ${size}x24 >/dev/null 2>&1 &
for _ in $(seq 50); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done
(cd "$room" && exec ./sondrava) >/dev/null 2>&1 &
window=
for _ in $(seq 100); do
    window=$(xdotool search --onlyvisible --name Sondrava 2>/dev/null | tail -1) && [ "$window" ] && break
    sleep 0.1
done
xdotool windowsize "$window" ${size%x*} ${size#*x} windowmove "$window" 0 0
sleep 1.5

step=0
picture() {
    sleep 0.8
    step=$((step + 1))
    import -window root -strip +dither -colors 64 "PNG8:$(printf '%s/%02d-%s.png' "$pictures" $step "$1")"
}
keys() { for k in "$@"; do xdotool key "$k"; sleep 0.25; done; }
file() { # by an entry of the menu File that begins with these letters
    keys F10 Return "${@:2}" Return
    sleep 1
    xdotool type --delay 8 "$1"
    keys Return
    sleep 2
}
at() { xdotool mousemove "$1" "$2"; sleep 0.2; }
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
sleep 0.8
import -window root -strip +dither -colors 64 "PNG8:$here/docs/images/audio.png"
