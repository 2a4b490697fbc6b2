"""The commands that a page shows, told apart from what they print and from configuration."""

import re
import shutil
from typing import NamedTuple

from pages import SOURCE

SHELL = {"sh", "shell", "bash"}
DATA = {"json", "xml", "yaml", "ini", "conf", "text", "c", "cpp", "cmake", "sql", "smi", "make", "snmp"}
# Programs by their names alone; others count as programs when this machine has them.
PROGRAMS = {"talvikctl", "talvik-agentd", "talvik-backendd", "apt", "apt-get", "cat", "cd", "chmod", "cmake", "cp", "ctest",
            "curl", "dpkg", "export", "fuser", "gdb", "git", "grep", "install", "journalctl", "logger", "ls", "make", "mkdir",
            "mv", "prometheus", "promtool", "python3", "rm", "smidump", "smilint", "snmpbulkget", "snmpbulkwalk", "snmpd",
            "snmpget", "snmpgetnext", "snmpset", "snmptable", "snmptranslate", "snmptrap", "snmptrapd", "snmptt", "snmpwalk",
            "sqlite3", "ss", "strace", "sudo", "systemctl", "tail", "tcpdump", "wget"}
# First words of net-snmp's configuration; some are names of programs as well.
SETTINGS = {"access", "agentAddress", "agentXPerms", "agentXTimeout", "agentaddress", "authCommunity", "authUser",
            "com2sec", "createUser", "disableAuthorization", "format2", "group", "master", "rocommunity", "rouser", "rwcommunity", "rwuser", "sendMessageMaxSize", "sysContact",
            "sysLocation", "traphandle", "view"}
ASSIGNMENT = re.compile(r"^(?:export +)?[A-Za-z_]\w*=")
ASSIGNED_FOR_ONE = re.compile(r"^(?:[A-Za-z_]\w*=(?:\"[^\"]*\"|'[^']*'|[^\s\"']+) +)+(?=\S)")
OPTIONAL = re.compile(r"(?<!\S)\[[^]]+\]")


class Command(NamedTuple):
    page: str
    line: int
    text: str
    shown: list  # what the page shows that it prints, empty where it shows nothing

    @property
    def where(self):
        return f"{self.page}:{self.line}: {self.text}"

    @property
    def is_synopsis(self):
        """Whether it has parts in brackets, which nobody can type as they stand."""
        return bool(OPTIONAL.search(self.text))


def program_of(text):
    """The program that a command line begins with; empty where it only sets variables."""
    rest = ASSIGNED_FOR_ONE.sub("", text)
    if ASSIGNMENT.match(rest):
        return ""
    words = rest.split()
    return words[0] if words else ""


def looks_like_a_command(line):
    if line.startswith((" ", "#")) or not line.strip():
        return False
    if ASSIGNMENT.match(line):
        return True
    program = program_of(line)
    if program in SETTINGS:
        return False
    if program.startswith(("./", "build/", "tools/", "tests/", "~/")) or (SOURCE / program).is_file():
        return True
    return program in PROGRAMS or (re.fullmatch(r"[a-z][\w.+-]*", program) and shutil.which(program) is not None)


def is_output(block, outputs):
    """Whether the block is known as what a command prints: `outputs` has the beginnings of such blocks."""
    return any(block.lines[0].startswith(start) for page, start in outputs if page == block.page)


def kind_of(block, outputs=()):
    """What a block is: "commands", "output", "settings" or "data"; None where that cannot be told."""
    if block.language in SHELL or block.language == "console":
        return "commands"
    if is_output(block, outputs):
        return "output"
    lines = [line for line in block.lines if line.strip()]
    if any(line.startswith("$ ") or looks_like_a_command(line) for line in lines):
        return None if block.language else "commands"
    words = {line.split()[0] for line in lines if not line.startswith("#")}
    if words and words <= SETTINGS:
        return "settings"
    if block.language in DATA or (not block.language and lines[0].startswith(("{", "["))):
        return "data"
    return None


def is_shell_line(block, line):
    return block.language in SHELL and line.strip() and not line.startswith("#")


def commands_of(block):
    """The commands of a block in their order; a backslash at the end continues a line."""
    marked = block.language == "console" or any(line.startswith("$ ") for line in block.lines)
    found, continued = [], False
    for number, line in enumerate(block.lines, block.line):
        if continued:
            found[-1] = found[-1]._replace(text=found[-1].text[:-1] + line.strip())
        elif marked and line.startswith("$ "):
            found.append(Command(block.page, number, line[2:].strip(), []))
        elif not marked and (looks_like_a_command(line) or is_shell_line(block, line)):
            found.append(Command(block.page, number, line.strip(), []))
        elif found and line.strip() and block.language not in SHELL:
            found[-1].shown.append(line.rstrip())
            continue
        else:
            continue
        continued = found[-1].text.endswith("\\")
    return found


def unaccounted(pages, outputs):
    """A line for each block of which nobody can tell what it is."""
    for page in pages.values():
        for block in page.blocks:
            if kind_of(block, outputs) is None:
                yield (f"{block.page}:{block.line}: cannot tell what this block is: \"{block.lines[0]}\". Give its fence a "
                       "language: console with \"$ \" in front of commands, sh, text, json ...")


def commands_of_page(page, outputs):
    return [command for block in page.blocks if kind_of(block, outputs) == "commands" for command in commands_of(block)]


def differs(shown, printed):
    """Why what is printed is not what is shown, or None. "..." stands for anything, alone in a line for any lines."""
    printed = [line.rstrip() for line in printed if line.strip()]
    position, gap = 0, False
    for line in shown:
        if line.strip() == "...":
            gap = True
            continue
        pattern = re.compile(".*".join(re.escape(part) for part in re.split(r"\.\.\.|…", line)) if "..." in line else
                             re.escape(line))
        while gap and position < len(printed) and not pattern.fullmatch(printed[position]):
            position += 1
        if position == len(printed) or not pattern.fullmatch(printed[position]):
            return f"shown: {line!r}\nprinted:\n" + "\n".join(printed)
        position, gap = position + 1, False
    if position < len(printed) and not gap:
        return f"printed, but not shown: {printed[position]!r}"
    return None


