#!/usr/bin/env bash
# record.sh: records `./dev run --once` with the programs that are built, as docs/pictures/first-run.cast, which asciinema
# plays, and draws docs/pictures/first-run.svg of it. With the argument "svg" it only draws.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

pictures="$root/docs/pictures"
[ $# -le 1 ] && [ "${1:-svg}" = svg ] || misuse "usage: tools/dev/record.sh [svg]"

if [ $# = 0 ]; then
    folder=$(mktemp -d "${TMPDIR:-/tmp}/talvik-record-XXXXXX")
    trap 'rm -rf "$folder"' EXIT
    must script --quiet --return --log-out "$folder/output" --log-timing "$folder/timing" --logging-format classic \
        --command "bash '$tools/run.sh' --once --no-build --folder '$folder/run'"
    python3 "$tools/recording.py" cast "$folder/output" "$folder/timing" "./dev run --once" --without "$folder/" \
        >"$pictures/first-run.cast.new"
    mv "$pictures/first-run.cast.new" "$pictures/first-run.cast"
fi
python3 "$tools/recording.py" svg "$pictures/first-run.cast" >"$pictures/first-run.svg.new"
mv "$pictures/first-run.svg.new" "$pictures/first-run.svg"
