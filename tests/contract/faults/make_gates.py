#!/usr/bin/env python3
"""Writes the source of the gates: one for each function that a module takes from its host.

The host's library tells functions from data.
"""

import argparse
import subprocess


def symbols(nm, file, which):
    lines = subprocess.run([nm, "-D", which, file], check=True, capture_output=True, text=True).stdout.splitlines()
    return {fields[-1].split("@")[0]: fields[-2] for fields in map(str.split, lines)}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for option in ("--nm", "--module", "--host", "--output"):
        parser.add_argument(option, required=True)
    options = parser.parse_args()

    supplied = symbols(options.nm, options.host, "--defined-only")
    # The factory's side of the singleton is compiled into both; what is weak in the host is no operation of it.
    wanted = sorted(symbols(options.nm, options.module, "--undefined-only"))
    functions = [name for name in wanted if supplied.get(name) == "T"]
    names = "".join(f'    "{name}",\n' for name in functions)
    gates = "".join(f'TALVIK_GATE({number}, "{name}")\n' for number, name in enumerate(functions))
    with open(options.output, "w", encoding="utf-8") as out:
        out.write(f"""#include "tests/contract/faults/gate_code.h"

const char* const talvik::gates::kSymbols[] = {{
{names}}};
const std::size_t talvik::gates::kSymbolCount = {len(functions)};

{gates}""")


if __name__ == "__main__":
    main()
