#!/usr/bin/env bash
# Uses every VST 2 plug-in that a package of the system has installed, each in a process of its own,
# and writes a table of what became of them by package; what failed goes to standard error. The
# status is 1 where less than 95 of 100 do what they should.
#   tools/plugins/table.sh PROGRAM    the path of sondrava-plugin-check
set -eu
check=$1
export HOME=${HOME:-/tmp}
declare -A files loads sounds keeps drawn shows
while read -r file; do
    package=$(dpkg -S "$(realpath "$file")" 2>/dev/null | sed 's/:.*//' | head -n 1)
    package=${package:-other}
    result=$(timeout -k 1 60 "$check" "$file" 2>/dev/null </dev/null) || result="0 0 0 0 0"
    read -r l s k d w <<<"$result"
    files[$package]=$((${files[$package]:-0} + 1))
    loads[$package]=$((${loads[$package]:-0} + l))
    sounds[$package]=$((${sounds[$package]:-0} + s))
    keeps[$package]=$((${keeps[$package]:-0} + k))
    drawn[$package]=$((${drawn[$package]:-0} + d))
    shows[$package]=$((${shows[$package]:-0} + w))
    [ "$l$s$k" = 111 ] && [ "$d" = "$w" ] || echo "$package $file: $result" >&2
done < <(find -L /usr/lib/vst /usr/lib/lxvst -name '*.so' -print0 2>/dev/null |
    xargs -0 -r stat -L -c '%d:%i %n' | sort -k 2 | awk '!seen[$1]++ {print $2}')

echo '| Package | Files | Load | Sound | Keep their state | Have a window | Show it |'
echo '|---|---|---|---|---|---|---|'
for package in $(printf '%s\n' "${!files[@]}" | sort); do
    echo "| $package | ${files[$package]} | ${loads[$package]} | ${sounds[$package]} |" \
        "${keeps[$package]} | ${drawn[$package]} | ${shows[$package]} |"
done

sum() { # an array
    local -n numbers=$1
    local total=0 n
    for n in "${numbers[@]}"; do total=$((total + n)); done
    echo "$total"
}
all=$(sum files)
for done in loads sounds keeps; do
    [ "$((100 * $(sum "$done")))" -ge "$((95 * all))" ] || exit 1
done
[ "$((100 * $(sum shows)))" -ge "$((95 * $(sum drawn)))" ]
