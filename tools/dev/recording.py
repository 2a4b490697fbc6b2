#!/usr/bin/env python3
"""Recordings of a terminal: of what script(1) kept, a text file that asciinema plays, and of that a moving picture.

Usage: recording.py cast OUTPUT TIMING COMMAND [--without TEXT]   writes the recording to standard output
       recording.py svg CAST                                      writes the picture to standard output

The recording keeps the times as they were, but for pauses longer than two seconds, which are cut. The picture shows each
stage, which begins with a line "== ...", for as long as one takes to read it. Where nothing moves, as on paper, it shows the
end.
"""

import argparse
import codecs
import json
import sys
import xml.sax.saxutils

COLUMNS, ROWS = 116, 32
LONGEST_PAUSE = 2.0  # seconds
READING = 2.4  # seconds at least from one stage to the next, in the picture
AT_THE_END = 8.0
CHARACTER, LINE, FONT_SIZE = 7.25, 16, 12  # pixels
MARGIN, BAR = 14, 28

STYLE = """\
text { font-family: ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; font-size: %dpx; fill: #dfe7ef; }
.stage { fill: #8fd18f; font-weight: bold; }
.typed { fill: #8fbff0; font-weight: bold; }
@media (prefers-reduced-motion: no-preference) {
%s
}"""


def cast_of(output, timing, command, without):
    """The lines of a recording: a header, the command as it is typed, and what came when."""
    header = {"version": 2, "width": COLUMNS, "height": ROWS, "title": command, "env": {"TERM": "xterm-256color"}}
    lines = [json.dumps(header), json.dumps([0.0, "o", f"$ {command}\r\n"])]
    # The first line of what script keeps is its own.
    data = output[output.index(b"\n") + 1:]
    now, position = 1.0, 0
    decode = codecs.getincrementaldecoder("utf-8")().decode
    for line in timing.splitlines():
        pause, count = line.split()[:2]
        now += min(float(pause), LONGEST_PAUSE)
        piece, position = data[position:position + int(count)], position + int(count)
        text = decode(piece)
        for part in without:
            text = text.replace(part, "")
        lines.append(json.dumps([round(now, 3), "o", text], ensure_ascii=False))
    return "\n".join(lines) + "\n"


def lines_of(cast):
    """The lines of the screen, as (time, text); a line longer than the screen takes several."""
    header, *events = [json.loads(line) for line in cast.splitlines()]
    finished, text, begun = [], "", 0.0
    for moment, _, data in events:
        for character in data.replace("\r", ""):
            begun = begun if text else moment
            if character == "\n":
                finished.append((begun, text))
                text = ""
            else:
                text += character
    folded = []
    for moment, line in finished:
        pieces = [line[at:at + header["width"]] for at in range(0, len(line), header["width"])] or [""]
        folded += [(moment, piece) for piece in pieces]
    return folded


def paced(lines):
    """The same lines with time to read each stage."""
    shown, last, behind = [], None, 0.0
    for moment, line in lines:
        if line.startswith("== "):
            if last is not None and moment + behind < last + READING:
                behind = last + READING - moment
            last = moment + behind
        shown.append((round(moment + behind, 2), line))
    return shown


def svg_of(cast):
    lines = paced(lines_of(cast))
    length = lines[-1][0] + AT_THE_END
    moments = sorted({moment for moment, _ in lines})
    classes = {moment: f"m{number}" for number, moment in enumerate(moments)}
    rules, steps = [], []
    for moment in moments:
        percent = f"{100 * moment / length:.3f}%"
        top = max(0, sum(1 for when, _ in lines if when <= moment) - ROWS)
        steps.append(f"{percent} {{ transform: translateY({-top * LINE}px) }}")
        if moment:
            rules.append(f"@keyframes {classes[moment]} {{ 0% {{ opacity: 0 }} {percent} {{ opacity: 1 }} }}")
            rules.append(f".{classes[moment]} {{ animation: {classes[moment]} {length:.2f}s step-end infinite }}")
    rules.append("@keyframes scroll { %s }" % " ".join(steps))
    rules.append(f".screen {{ animation: scroll {length:.2f}s step-end infinite }}")
    width, height = round(2 * MARGIN + COLUMNS * CHARACTER), BAR + ROWS * LINE + MARGIN
    rows = []
    for number, (moment, line) in enumerate(lines):
        if line:
            kind = "stage" if line.startswith("== ") else "typed" if line.startswith("$ ") else ""
            rows.append(f'<text class="{" ".join(filter(None, (classes[moment], kind)))}" x="0" y="{number * LINE + FONT_SIZE}" '
                        f'textLength="{len(line) * CHARACTER:g}" xml:space="preserve">{xml.sax.saxutils.escape(line)}</text>')
    end = -max(0, len(lines) - ROWS) * LINE
    body = "\n".join(rows)
    return f"""\
<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}" role="img">
<title>{xml.sax.saxutils.escape(json.loads(cast.splitlines()[0])["title"])}</title>
<style>
{STYLE % (FONT_SIZE, chr(10).join(rules))}
</style>
<rect width="{width}" height="{height}" rx="8" fill="#1b2a3a"/>
<circle cx="18" cy="14" r="5" fill="#e06c60"/>
<circle cx="36" cy="14" r="5" fill="#e5b567"/>
<circle cx="54" cy="14" r="5" fill="#7fb77e"/>
<svg x="{MARGIN}" y="{BAR}" width="{width - 2 * MARGIN}" height="{ROWS * LINE}">
<g class="screen" transform="translate(0 {end})">
{body}
</g>
</svg>
</svg>
"""


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    kinds = parser.add_subparsers(dest="kind", required=True)
    cast = kinds.add_parser("cast")
    for name in ("output", "timing", "command"):
        cast.add_argument(name)
    cast.add_argument("--without", action="append", default=[])
    kinds.add_parser("svg").add_argument("cast")
    arguments = parser.parse_args()
    if arguments.kind == "svg":
        with open(arguments.cast, encoding="utf-8") as file:
            sys.stdout.write(svg_of(file.read()))
        return
    with open(arguments.output, "rb") as output, open(arguments.timing, encoding="ascii") as timing:
        sys.stdout.write(cast_of(output.read(), timing.read(), arguments.command, arguments.without))


if __name__ == "__main__":
    main()
