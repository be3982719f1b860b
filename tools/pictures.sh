#!/bin/bash
# Makes the other pictures of the manual and the README anew, with the demo song, on displays of its
# own. Needs what desk.sh does.
#
#   tools/pictures.sh BUILD_DIR [DISPLAY_NUMBER]
set -eu
here=$(cd "$(dirname "$0")/.." && pwd)
images=$here/docs/images
. "$here/tools/desk.sh"
build=$1 display=${2:-98}

playing() { # LOOK: the demo song, heard from its start for some bars
    begin startwith=2 look="$1"
    at 700 560
    keys space
    sleep 8
}
of() { # TITLE FILE: a dialog that opens, which is left
    opened "$1"
    shot "$images/$2" "$(dialog "$1")"
    keys Escape
}
kit() { # LOOK FILE
    begin startwith=2 look="$1"
    keys ctrl+n
    opened Welcome
    keys Home Down Down Return # drums and a bass
    sleep 5
    at 60 225
    xdotool click 1
    keys ctrl+space
    shot "$images/$2"
    leave
}
rooms() { # ENDING: mixer, graph and panels of the demo song, which is open
    keys F9 Home space
    sleep 8
    shot "$images/mixer$1.png"
    keys space
    keys F12
    sleep 1
    shot "$images/modular$1.png"
    keys F8
    at 110 353 # the head of the pad
    xdotool click 1
    keys ctrl+space
    shot "$images/sampler$1.png"
    keys F8 ctrl+shift+a
    shot "$images/arp$1.png"
    keys F9
    sleep 1
    at 405 262 # the first insert of the pad
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
    shot "$images/rack$1.png"
}

(
    desk "$build" "$display" 1120x640
    kit 1 drums.png
    playing 0
    shot "$images/main-light.png"
    keys space
    rooms -light
    leave
    kit 0 drums-light.png
    playing 1
    shot "$images/main.png"
    keys space
    rooms ""
    keys F8
    keys ctrl+n
    of Welcome welcome.png
    keys F5
    of Export export.png
    keys F6
    of Setup setup.png
    at 330 309 # the first part of the bass
    xdotool click --repeat 2 --delay 60 1
    sleep 1.5
    shot "$images/notes.png"
)
( # the same at 200 %, for docs/looks.md
    zoom=200
    desk "$build" "$((display + 1))" 2240x1280
    for look in 1 0; do
        ending=-200
        [ "$look" = 1 ] || ending=-light-200
        kit "$look" "drums$ending.png"
        playing "$look"
        keys space
        rooms "$ending"
        leave
    done
)
