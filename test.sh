#!/usr/bin/env bash
# Builds everything and runs the tests: the release build, then the build with sanitizers.
#
#   ./test.sh [--quick] [--slow]
#     --quick  without the build with sanitizers
#     --slow   also the tests that take minutes
set -euo pipefail
root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
source "$root/scripts/setup.sh"

labels='unit|golden'
presets=(release asan)
for argument in "$@"; do
    case $argument in
    --quick) presets=(release) ;;
    --slow) labels+='|slow' ;;
    *)
        say "usage: ./test.sh [--quick] [--slow]"
        exit 2
        ;;
    esac
done

# run_tests PRESET LABELS: the failures with their output, and the summary; a test that passes is not worth a line.
run_tests() {
    echo "== $1: $2"
    ctest --test-dir "$root/build/$1" -L "^($2)\$" -j "$(nproc)" --output-on-failure --no-tests=error </dev/null 2>&1 |
        { grep -Ev '^ *Start +[0-9]+:| +Passed +[0-9.]+ sec *$' || true; }
}

ensure_packages
for preset in "${presets[@]}"; do
    if [ "$preset" = release ]; then
        build release
        run_tests release "$labels"
    else
        build "$preset" unit_tests
        run_tests "$preset" unit
    fi
done
