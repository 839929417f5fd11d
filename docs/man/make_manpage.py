#!/usr/bin/python3
"""Writes the dicapsule(1) manual page: the hand-written template with its synopsis and option
list filled in from the usage texts that the built tool prints, so the page follows the tool.

    make_manpage.py --tool build/dicapsule --template docs/man/dicapsule.1.in \
                    --version 2.0.10 --output build/dicapsule.1
"""
import argparse
import os
import re
import subprocess
import sys

PROG = "dicapsule"
# The tool lays its option lists out on 80 columns; the text of a line never reaches the last one.
LAST_COLUMN = 79
OPTION_NAMES = re.compile(r"^  (?P<names>--[\w-]+|-\w \[ --[\w-]+ \])"
                          r"(?P<arg> arg(?: \(=(?P<default>[^)]*)\))?)?(?P<rest>.*)$")


class ManpageError(Exception):
    pass


def usage_text(tool, *words):
    """What `dicapsule WORDS...` prints on standard output; it must succeed."""
    done = subprocess.run([PROG, *words], executable=tool, capture_output=True, text=True)
    if done.returncode != 0:
        raise ManpageError(f"{PROG} {' '.join(words)} failed ({done.returncode}): {done.stderr.strip()}")
    return done.stdout


def roff(text):
    """Text as a roff input line: backslashes and hyphens escaped, no control character up front,
    and break points after the colons of words too long for a line (the UID list templates)."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    text = re.sub(r"\S{40,}", lambda m: m.group(0).replace(":", ":\\:"), text)
    return "\\&" + text if text.startswith((".", "'")) else text


def synopsis_lines(general):
    """The "  dicapsule OPERATION ..." lines of the general usage text, words only."""
    lines = [line.strip() for line in general.splitlines() if line.startswith(f"  {PROG} ")]
    if not lines:
        raise ManpageError("the general usage text lists no operation")
    return lines


def operation_names(synopses):
    return [line.split()[1] for line in synopses if line.split()[1].islower()]


def synopsis_roff(line):
    """"dicapsule pack -i INPUT_FILE [OPTION]..." with the command and options in bold, operands in italics."""
    words = line.split()
    command = 2 if words[1].islower() else 1  # "dicapsule pack", or "dicapsule" before OPERATION
    out = [f"\\fB{roff(' '.join(words[:command]))}\\fR"]
    for word in words[command:]:
        if word.startswith("-"):
            out.append(f"\\fB{roff(word)}\\fR")
        else:
            out.append(re.sub(r"[A-Z][A-Z_]+", lambda m: f"\\fI{m.group(0)}\\fR", roff(word)))
    return " ".join(out)


def parse_options(text):
    """[(names, arg, default, [physical description lines]), ...] from one operation's usage text,
    and the column where descriptions start."""
    lines = text.splitlines()
    try:
        start = lines.index("Options:") + 1
    except ValueError:
        raise ManpageError("an operation usage text has no option list") from None
    options, column = [], None
    for line in lines[start:]:
        if not line.strip():
            continue
        match = OPTION_NAMES.match(line)
        if match:
            rest = match.group("rest")
            options.append((match.group("names"), match.group("arg") is not None,
                            match.group("default"), []))
            if rest.strip():
                if not rest.startswith(" "):
                    raise ManpageError(f"no space between option names and help text: {line!r}")
                column = len(line) - len(rest.lstrip(" "))
                options[-1][3].append(line[column:])
            continue
        indent = len(line) - len(line.lstrip(" "))
        if not options or indent < 4 or (column is not None and indent != column):
            raise ManpageError(f"unexpected line in an option list: {line!r}")
        column = indent
        options[-1][3].append(line[column:])
    if not options or column is None:
        raise ManpageError("an option list is empty")
    return options, column


def unwrap(physical, width):
    """Undoes the option parser's wrapping: the lines of the help text as declared.

    Two lines belong together when the first word of the second did not fit on the first (the
    wrap keeps the space, or breaks on it when the line is full), or when the first is full and
    ends inside a word too long to wrap on a space (its last word fills more than half of the
    line). Any other line end is a line break of the help text itself."""
    declared = [physical[0]]
    for previous, line in zip(physical, physical[1:]):
        if previous.endswith(" "):
            joiner = "" if len(previous) + len(line.split(" ", 1)[0]) > width else None
        elif len(previous) >= width:
            joiner = "" if len(previous.rsplit(" ", 1)[-1]) > width // 2 else " "
        else:
            joiner = None
        if joiner is None:
            declared.append(line)
        else:
            declared[-1] += joiner + line
    return [text.rstrip() for text in declared]


def option_roff(names, has_arg, default, physical, width):
    short_long = re.fullmatch(r"-(\w) \[ --([\w-]+) \]", names)
    if short_long:
        heading = f"\\fB\\-{short_long.group(1)}\\fR, \\fB\\-\\-{roff(short_long.group(2))}\\fR"
    else:
        heading = f"\\fB{roff(names)}\\fR"
    if has_arg:
        heading += " \\fIarg\\fR"
    if default is not None:
        heading += f" (default: \\fB{roff(default)}\\fR)"
    body = "\n.br\n".join(roff(p) for p in unwrap(physical, width))
    return f".TP\n{heading}\n{body}"


def options_roff(tool, operations):
    sections = []
    for operation in operations:
        options, column = parse_options(usage_text(tool, operation, "--help"))
        width = LAST_COLUMN - column
        entries = [option_roff(*option, width) for option in options if option[3]]
        if len(entries) != len(options):
            raise ManpageError(f"an option of {operation} has no help text")
        sections.append(f'.SS "Options of {operation}"\n' + "\n".join(entries))
    return "\n".join(sections)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--tool", required=True)
    parser.add_argument("--template", required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("--output", required=True)
    args = parser.parse_args()
    try:
        synopses = synopsis_lines(usage_text(args.tool, "--help"))
        with open(args.template, encoding="utf-8") as f:
            page = f.read()
        fills = {"@SYNOPSIS@": "\n.br\n".join(synopsis_roff(s) for s in synopses),
                 "@OPTIONS@": options_roff(args.tool, operation_names(synopses))}
        lines = page.split("\n")
        for marker, text in fills.items():
            if lines.count(marker) != 1:
                raise ManpageError(f"the template needs exactly one {marker} line")
            lines[lines.index(marker)] = text
        page = "\n".join(lines)
        if "@VERSION@" not in page:
            raise ManpageError("the template lacks @VERSION@")
        page = page.replace("@VERSION@", args.version)
    except (ManpageError, OSError) as e:
        print(f"make_manpage.py: {e}", file=sys.stderr)
        return 1
    with open(args.output + ".tmp", "w", encoding="utf-8") as f:
        f.write(page)
    os.replace(args.output + ".tmp", args.output)
    return 0


if __name__ == "__main__":
    sys.exit(main())
