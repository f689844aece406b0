#!/bin/bash
# scripts_test.sh: every script parses, can be run, and stops at the first error
set -euo pipefail
source "$(dirname "$0")/../../tools/lib.sh"

cd "$root"
mapfile -t scripts < <(grep -rlI --exclude-dir=build --exclude-dir='.[!c]*' '^#!/bin/\(ba\)\?sh' .)
((${#scripts[@]} > 5)) || die "found only ${#scripts[@]} scripts"
for script in "${scripts[@]}" tools/lib.sh; do
    bash -n "$script" || die "$script does not parse"
done
for script in "${scripts[@]}"; do
    [[ -x $script ]] || die "$script is not executable"
    grep -q '^set -euo pipefail$' "$script" || die "$script goes on after errors: set -euo pipefail"
done
for script in tools/setup tools/run tools/test tools/package .ci/run; do
    "$script" --help | grep -q "^$script" || die "$script --help does not say what it does"
done
