#!/bin/bash
# Makes the other pictures of the manual and the README anew, with the demo song, on a display of its
# own. Needs what desk.sh does.
#
#   tools/pictures.sh BUILD_DIR [DISPLAY_NUMBER]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
images=$here/docs/images
. "$here/tools/desk.sh"
desk "$1" "${2:-98}" 1120x640

playing() { # LOOK FILE: the song, heard from its start for some bars
    begin startwith=2 look="$1"
    at 700 560
    keys space
    sleep 8
    shot "$images/$2"
    keys space
}
of() { # TITLE FILE: a dialog that is open, which is left
    sleep 1
    shot "$images/$2" "$(dialog "$1")"
    keys Escape
}

playing 0 main-light.png
leave
begin startwith=2 look=1
keys ctrl+n
sleep 1
keys Home Down Down Return # drums and a bass
sleep 2
at 60 225
xdotool click 1
keys ctrl+space
shot "$images/drums.png"
leave
playing 1 main.png
keys F9 Home space
sleep 8
shot "$images/mixer.png"
keys space
keys F12
sleep 1
shot "$images/modular.png"
keys F8
at 110 309 # the head of the pad
xdotool click 1
keys ctrl+space
shot "$images/sampler.png"
keys F8 ctrl+shift+a
shot "$images/arp.png"
keys F9
sleep 1
at 405 262 # the first insert of the pluck
xdotool click 1
sleep 0.5
keys Down Return
sleep 1
xdotool click --repeat 2 --delay 60 1
sleep 1
at 70 470 # another effect
xdotool click 1
sleep 0.5
keys Down Down Return
shot "$images/rack.png"
keys F8
keys ctrl+n
of Welcome welcome.png
keys F5
of Export export.png
keys F6
of Setup setup.png
at 330 250 # the first part of the bass
xdotool click --repeat 2 --delay 60 1
sleep 1.5
shot "$images/notes.png"
