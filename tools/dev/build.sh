#!/usr/bin/env bash
# ./dev build [PRESET]
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -le 1 ] || misuse "usage: ./dev build [PRESET]"
preset=${1:-release}
requirePreset "$preset"
setup
configureAndBuild "$preset"
say "built: build/$preset"
