# SPDX-License-Identifier: Apache-2.0
# Sourced by ./kvt and ./kvt-lab: builds $program into build/ when it is missing or older than its
# sources, and installs what the build needs. Says so on standard error only.
#   ROOT      the repository
#   program   the program, which is also the target's name
#   packages  which part's packages it needs (lib.sh): tool, lab
#   targets   what is built beside kvt
#   folders   where its sources lie
# shellcheck shell=sh disable=SC2154 # set by the file that sources this one
built=$ROOT/build/.built-$program

up_to_date() {
    [ -e "$built" ] && [ -x "$ROOT/build/bin/$program" ] || return 1
    # shellcheck disable=SC2086 # one word a folder
    newer=$(cd "$ROOT" && find $folders CMakeLists.txt -newer "$built" -print -quit) && [ -z "$newer" ]
}

build() {
    . "$ROOT/scripts/lib.sh"
    mkdir -p "$ROOT/build" || return 1
    exec 9>"$ROOT/build/.lock"
    flock -n 9 || { # one installation and one build at a time; the next finds it done
        say "Waiting for another build"
        flock 9
    }
    if ! up_to_date; then
        need "$packages" || return 1
        [ -e "$built" ] || say "Building $program (once)"
        touch "$built.started" || return 1
        how='-G Ninja --fresh' # unless build/ is configured already, and not a copy of another clone's
        grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$ROOT" "$ROOT/build/CMakeCache.txt" && how=
        # shellcheck disable=SC2086 # no word or three
        quietly cmake -S "$ROOT" -B "$ROOT/build" $how &&
            with_progress cmake --build "$ROOT/build" -j "$(nproc)" --target kvt $targets &&
            mv "$built.started" "$built"
    fi
    exec 9>&-
    up_to_date
}

up_to_date || build || {
    echo "$program could not be built" >&2
    exit 1
}
