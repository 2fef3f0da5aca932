#!/usr/bin/env bash
# Runs the solver, building it first where that is needed.
#
#   ./run.sh [ARGUMENTS OF quillon]      without arguments: solve, the problems the program carries in itself
set -euo pipefail
root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
source "$root/scripts/setup.sh"

ensure_packages
build release quillon

[ "$#" -gt 0 ] || set -- solve
exec "$root/build/release/quillon" "$@"
