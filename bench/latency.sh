#!/bin/bash
# What the program's window costs its user, on a machine that does nothing else: from an event to
# its paint, streams of events, the start, the memory, the blocks of sound meanwhile, and the views
# by themselves. Needs a build with the preset `bench`, Xvfb, and about ten minutes.
#
#   bench/latency.sh BUILD_DIR [OPTION ... -- PEER [ARGUMENT ...]]
#
# What follows the folder goes to latency_bench, which then measures another program in the same
# run; `SONG` in it stands for the MIDI file of 60 tracks with 96,000 notes. STEPS in the environment
# is how many of each kind, 200 if there is none.
set -eu
build=$(cd "$1" && pwd)
shift
room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
echo "Load before: $(cut -d' ' -f1-3 /proc/loadavg)"
"$build/bench/song_files" "$room"
"$build/bin/sondrava-render" "$room/notes.mid" --save "$room/notes.qv"

install() { # FOLDER SONG: the program with that song, on the Silent clock in blocks of 256
    mkdir -p "$room/$1"
    cp "$build/bin/sondrava" "$build"/bin/*.so "$build/bench/counted_program" "$room/$1"
    printf '%s\n' '[options]' 'startwith=2' 'glide=1' "scale=${3:-100}" '[last]' \
        "project=$room/$2" '[audio]' 'devicename=Silent clock' 'buffersize=256' \
        > "$room/$1/Sondrava.ini"
}
install notes notes.qv
install large large.qv
latency() {
    "$build/bench/latency_bench" --steps "${STEPS:-200}" "$@" || echo "latency_bench failed" >&2
}

echo "60 tracks with 96,000 notes, window of 1560 x 940"
ours=(--window 1560,940 --canvas 240,200,1290,680 --part 500,260)
latency --name ours --folder "$room/notes" --titled notes "${ours[@]}" -- ./sondrava
[ $# -eq 0 ] || latency --name peer --titled notes "${@//SONG/$room/notes.mid}"

echo "232 tracks with 500,000 notes and 16 hours of audio, window of 1600 x 1000"
ours=(--window 1600,1000 --canvas 240,200,1330,740 --part 300,260)
latency --name large --folder "$room/large" --titled large "${ours[@]}" --play space -- ./sondrava
echo "The same, all of its parts dragged"
latency --name all --folder "$room/large" --titled large "${ours[@]}" --keys ctrl+a --only drag \
    -- ./sondrava
echo "The same, playing"
latency --name playing --folder "$room/large" --titled large "${ours[@]}" --keys space \
    --only streams --loud -- ./counted_program

echo "The views by themselves"
for program in arrange_bench editor_bench; do
    [ ! -x "$build/bench/$program" ] || xvfb-run -a -s "-noreset -screen 0 1700x1100x24" "$build/bench/$program"
done
xvfb-run -a -s "-noreset -screen 0 3300x2100x24" "$build/bench/paint_bench"
echo "Load behind it: $(cut -d' ' -f1-3 /proc/loadavg)"
