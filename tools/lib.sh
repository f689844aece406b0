# shellcheck shell=bash
# What the scripts share. Source it after `set -euo pipefail`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# Prints the comment at the head of the calling script and ends it, if its first argument asks for that.
offer_help() {
    if [[ ${1-} == --help || ${1-} == -h ]]; then
        sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"
        exit 0
    fi
}

# Prints a list file without comments and empty lines.
entries() {
    sed 's/[[:space:]]*#.*//; /^[[:space:]]*$/d' "$1"
}

# build_preset PRESET [TARGET...]: configures once (Ninja repeats that by itself where a CMake file changed), then builds.
build_preset() {
    local preset=$1 launcher=()
    shift
    # The same sources in another clone or preset are the same, also where headers are precompiled.
    export CCACHE_BASEDIR=/ CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros
    if [[ ! -f $root/build/$preset/build.ninja ]]; then
        if command -v ccache > /dev/null; then
            launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        fi
        (cd "$root" && cmake --preset "$preset" "${launcher[@]}")
    fi
    cmake --build "$root/build/$preset" ${1+--target "$@"}
}
