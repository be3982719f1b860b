# For scripts that make pictures: the program in a room of its own, on a display of its own, with
# hands. Needs Xvfb, xdotool and ImageMagick. To be sourced under bash with `set -eu`.

desk() { # BUILD_DIR DISPLAY_NUMBER SIZE
    programs=$(cd "$1" && pwd)/bin
    size=$3
    zoom=${zoom:-100}
    room=$(mktemp -d)
    trap 'kill $(jobs -p) 2>/dev/null; wait 2>/dev/null; rm -rf "$room"' EXIT
    mkdir -p "$room/home" "$room/run"
    chmod 700 "$room/run"
    cp "$programs"/sondrava "$programs"/*.so "$room"
    touch "$room/home/alsa"
    export HOME=$room/home XDG_RUNTIME_DIR=$room/run ALSA_CONFIG_PATH=$room/home/alsa
    export PULSE_SERVER=unix:/nonexistent JACK_NO_START_SERVER=1 DISPLAY=:$2
    Xvfb "$DISPLAY" -screen 0 "${size}x24" >/dev/null 2>&1 &
    for _ in $(seq 50); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done
}

begin() { # OPTION=VALUE ...: starts the program with these at $zoom percent, over all of the screen
    printf '%s\n' '[options]' scale="$zoom" "$@" > "$room/Sondrava.ini"
    (cd "$room" && exec ./sondrava) >/dev/null 2>&1 &
    program=$!
    window=
    for _ in $(seq 100); do
        window=$(xdotool search --onlyvisible --name Sondrava 2>/dev/null | tail -1) &&
            [ "$window" ] && break
        sleep 0.1
    done
    xdotool windowsize "$window" "${size%x*}" "${size#*x}" windowmove "$window" 0 0
    sleep 8 # until the song is there, on a busy machine too
}

leave() { # ends it; nothing is kept, nor brought back at the next start
    kill "$program"
    wait "$program" 2>/dev/null || true
    find "$room" -type f ! -name "*.so" ! -name sondrava ! -name alsa -delete
}

shot() { # FILE [WINDOW]: a picture of it, else of the screen
    sleep 0.8
    import -window "${2:-root}" -strip +dither -colors 128 "PNG8:$1"
}

dialog() { xdotool search --onlyvisible --name "$1" | tail -1; } # that is called so
opened() { # TITLE: waits for a dialog that has been asked for
    for _ in $(seq 100); do
        [ -z "$(dialog "$1")" ] || break
        sleep 0.1
    done
    sleep 1
}
keys() { for k in "$@"; do xdotool key "$k"; sleep 0.25; done; }
at() { xdotool mousemove $(($1 * zoom / 100)) $(($2 * zoom / 100)); sleep 0.2; } # at 100 %
