#!/bin/bash
# format_test.sh: C and C++ sources stand as clang-format 14 writes them
set -euo pipefail
source "$(dirname "$0")/../../tools/lib.sh"

formatter=$(command -v clang-format-14 || command -v clang-format) || die "no clang-format; run tools/setup"
cd "$root"
mapfile -t sources < <(find . \( -path ./build -o -name '.?*' \) -prune -o -name '*.c' -print -o -name '*.cpp' -print -o -name '*.h' -print)
((${#sources[@]} > 0)) || die "found no sources"
"$formatter" --dry-run -Werror "${sources[@]}"
