#!/usr/bin/env bash
# Whether all files are as clang-format writes them, and what clang-tidy finds in the sources that
# differ from a commit; or in the lines that were changed by the last commits, as many as changed
# COUNT sources at most.
#   style.sh COMMIT | --last COUNT
set -eu
cd "$(dirname "$0")/.."
sources=('src/*.cpp' 'driver/*.cpp' 'tools/*.cpp')

changedSince() {
    git diff --name-only --diff-filter=d "$1" -- "${sources[@]}"
}

# The last commits as the one before them; HEAD in a clone without a history.
lastCommits() {
    local since=HEAD
    for commit in $(git rev-list --first-parent -n 50 HEAD | tail -n +2); do
        [ "$since" = HEAD ] || [ "$(changedSince "$commit" | wc -l)" -le "$1" ] || break
        since=$commit
    done
    echo "$since"
}

# As clang-tidy takes them. It meets headers by links, whose names end as those below src do.
changedLines() {
    git diff -U0 "$1" -- '*.cpp' '*.h' | awk '
        /^\+\+\+ / { name = substr($2, 3); sub(/^src\//, "", name) }
        /^@@ / {
            count = split(substr($3, 2), at, ",") > 1 ? at[2] : 1
            if (!count) next
            if (!(name in lines)) names[++files] = name
            lines[name] = lines[name] (lines[name] ? "," : "") "[" at[1] "," at[1] + count - 1 "]"
        }
        END {
            printf "["
            for (i = 1; i <= files; i++)
                printf "%s{\"name\":\"%s\",\"lines\":[%s]}", (i > 1 ? "," : ""), names[i], lines[names[i]]
            print "]"
        }'
}

status=0
git ls-files '*.cpp' '*.h' | xargs -n 50 clang-format --dry-run -Werror || status=1

tidy=(clang-tidy -p build/style --quiet --warnings-as-errors='*')
if [ "$1" = --last ]; then
    since=$(lastCommits "$2")
    changed=$(changedSince "$since" | head -n "$2")
    tidy+=("-line-filter=$(changedLines "$since")")
else
    changed=$(changedSince "$1")
fi
[ -n "$changed" ] || exit "$status"
# The compiler's precompiled headers mean nothing to it.
cmake -B build/style -G Ninja -DSONDRAVA_PRECOMPILED=OFF -DSONDRAVA_TESTS=OFF >/dev/null
echo "$changed" | xargs -P "$(nproc)" -d '\n' -n 1 "${tidy[@]}" 2>/dev/null || status=1
exit "$status"
