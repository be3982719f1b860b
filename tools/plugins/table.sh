#!/usr/bin/env bash
# Uses every plug-in that a package of the system has installed, each in a process of its own, and
# writes a table of what became of them by format and package; what failed goes to standard error.
# The status is 1 where of a format less than 95 of 100 do what they should.
#   tools/plugins/table.sh CHECK HELPER    the paths of sondrava-plugin-check and sondrava-plugins
set -eu
check=$1
helper=$2
export HOME=${HOME:-/tmp}
declare -A files loads sounds keeps drawn shows

listed() { # files in folders, each once: the test of find, the folders
    find -L "${@:2}" $1 -print0 2>/dev/null | xargs -0 -r stat -L -c '%d:%i %n' | sort -k 2 |
        awk '!seen[$1]++ {print $2}'
}
everything() { # lines of a format and a file or bundle
    listed '-name *.so' /usr/lib/vst /usr/lib/lxvst | sed 's/^/VST_2 /'
    listed '-name *.vst3' /usr/lib/vst3 | sed 's/^/VST_3 /'
    listed '-name *.clap' /usr/lib/clap | sed 's/^/CLAP /'
    listed '-maxdepth 1 -name *.lv2' /usr/lib/lv2 | sed 's/^/LV2 /'
}
within() { # of a file, lines of the names of what it holds, empty for its only one
    local found
    found=$(timeout -k 1 20 "$helper" --scan "$1" 2>/dev/null </dev/null) || true
    [ "$found" != "no plug-in" ] || return 0
    awk -F '\t' 'NF > 7 {print $9} NF <= 7 {print ""}' <<<"$found"
}

while read -r format file; do
    package=$(dpkg -S "$(realpath "$file")" 2>/dev/null | sed 's/[:,].*//' | head -n 1)
    row="$format ${package:-other}"
    while read -r name; do
        what=$file${name:+::$name}
        result=$(timeout -k 1 60 "$check" "$what" 2>/dev/null </dev/null) || result="0 0 0 0 0"
        read -r l s k d w <<<"$result"
        files[$row]=$((${files[$row]:-0} + 1))
        loads[$row]=$((${loads[$row]:-0} + l))
        sounds[$row]=$((${sounds[$row]:-0} + s))
        keeps[$row]=$((${keeps[$row]:-0} + k))
        drawn[$row]=$((${drawn[$row]:-0} + d))
        shows[$row]=$((${shows[$row]:-0} + w))
        [ "$l$s$k" = 111 ] && [ "$d" = "$w" ] || echo "$row $what: $result" >&2
    done < <(within "$file")
done < <(everything)

echo '| Format | Package | Plug-ins | Load | Sound | Keep their state | Have a window | Show it |'
echo '|---|---|---|---|---|---|---|---|'
while read -r format package; do
    row="$format $package"
    echo "| ${format/_/ } | $package | ${files[$row]} | ${loads[$row]} | ${sounds[$row]} |" \
        "${keeps[$row]} | ${drawn[$row]} | ${shows[$row]} |"
done < <(printf '%s\n' "${!files[@]}" | sort)

# The same effects in all formats, one after the other; but for inputs behind the first bus, which
# these do not hear as VST 3.
status=0
apart=0
compared=0
left="ZamGate/Sidechain ZamGateX2/Sidechain"
for clap in /usr/lib/clap/*.clap; do
    name=$(basename "$clap" .clap)
    formats=("$clap")
    for other in /usr/lib/vst/"$name"-vst.so /usr/lib/vst3/"$name".vst3 /usr/lib/lv2/"$name".lv2; do
        [ ! -e "$other" ] || formats+=("$other")
    done
    [ ${#formats[@]} -eq 4 ] || continue
    compared=$((compared + 1))
    lines=$(timeout -k 1 300 "$check" --same "${formats[@]}" 2>/dev/null </dev/null) || lines=-1
    while read -r now at; do
        [[ " $left " != *" $name/$at "* ]] || continue
        if awk -v d="$now" 'BEGIN {exit !(d < 0 || d > 1e-5)}'; then
            echo "$name: the formats are $now apart${at:+ at the end of $at}" >&2
            status=1
        fi
        apart=$(awk -v a="$apart" -v b="$now" 'BEGIN {print (a > b ? a : b)}')
    done <<<"${lines:--1}"
done
echo
echo "$compared effects in four formats, each parameter at its end once, but for $left:" \
    "$apart apart at most."

sum() { # an array, a format
    local -n numbers=$1
    local total=0 row
    for row in "${!numbers[@]}"; do [[ $row != "$2 "* ]] || total=$((total + numbers[$row])); done
    echo "$total"
}
for format in VST_2 VST_3 CLAP LV2; do
    for done in loads sounds keeps; do
        [ "$((100 * $(sum "$done" $format)))" -ge "$((95 * $(sum files $format)))" ] || status=1
    done
    [ "$((100 * $(sum shows $format)))" -ge "$((95 * $(sum drawn $format)))" ] || status=1
done
exit $status
