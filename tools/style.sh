#!/ usr / bin / env bash
#Whether all files are as clang - format writes them,                                              \
    and what clang - tidy finds in the sources that
#differ from a commit, or in the COUNT that were changed last.
#style.sh COMMIT | --last COUNT
set - eu cd "$(dirname " $0 ")/.." sources = ('src/*.cpp' 'driver/*.cpp' 'tools/*.cpp')

    lastChanged() {
#in a clone without a history its only commit adds all git log-- format =
    --name - only-- "${sources[@]}" | awk '!known[$0]++' | while read - r file;
    do [!-f "$file"] || echo "$file" done | head - n "$1"
}

status =
    0 git ls - files '*.cpp' '*.h' | xargs - n 50 clang - format-- dry - run - Werror || status = 1

    if["$1" = --last];
then changed = $(lastChanged "$2") else changed =
    $(git diff-- name - only-- diff - filter = d "$1" --"${sources[@]}") fi[-n "$changed"] ||
    exit "$status"
#The compiler's precompiled headers mean nothing to it.
        cmake -
        B build / style - G Ninja - DSONDRAVA_PRECOMPILED =
        OFF - DSONDRAVA_TESTS = OFF > / dev / null echo "$changed" |
                                xargs - P "$(nproc)" - n 1 clang - tidy -
                                    p build / style-- quiet-- warnings - as - errors =
                                    '*' 2 > / dev / null || status = 1 exit "$status"
