#!/usr/bin/env bash
# ./dev format: formats every C++ file that git knows or that is new and not ignored.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

setup
cd "$root"
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' |
    while IFS= read -r -d '' file; do [ ! -f "$file" ] || printf '%s\0' "$file"; done |
    xargs -0 -r -n 32 -P "$jobs" clang-format -i ||
    fail "clang-format failed (messages above)"
