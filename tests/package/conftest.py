"""Shared helpers of the package suite: the built tool, its usage texts and manual page renderers."""
import os
import pathlib
import re
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[2]))
OPERATIONS = ["pack", "info", "unpack"]
OPTION_START = re.compile(r"^  (-\w \[ --[\w-]+ \]|--[\w-]+)( arg(?: \(=[^)]*\))?)?")


def env(name):
    value = os.environ.get(name)
    if not value:
        pytest.fail(f"{name} must be set (ctest sets it)")
    return value


def run(tool, *args, **kwargs):
    """Runs the tool as "dicapsule" whatever its path, so usage texts name it the same way."""
    return subprocess.run(["dicapsule", *args], executable=tool, capture_output=True, text=True,
                          timeout=120, **kwargs)


def option_help(usage):
    """{"-e, --encoding": help text without its layout} for each option of an operation usage text."""
    options, current = {}, None
    for line in usage.split("Options:\n", 1)[1].splitlines():
        match = OPTION_START.match(line)
        if match:
            names = re.sub(r"-(\w) \[ (--[\w-]+) \]", r"-\1, \2", match.group(1))
            current = options.setdefault(names, [])
            line = line[match.end():]
        current.append(line)
    return {names: squeeze(" ".join(lines)) for names, lines in options.items()}


def squeeze(text):
    """Text without any white space, to compare texts laid out on different widths."""
    return re.sub(r"\s+", "", text)


def render(page, width=80):
    """The manual page as man shows it on a terminal of `width` columns: (text, warnings)."""
    done = subprocess.run(["man", "--warnings=all", "-l", str(page)], capture_output=True, text=True,
                          env={**os.environ, "MANWIDTH": str(width), "LC_ALL": "C.UTF-8",
                               "MAN_KEEP_FORMATTING": ""}, timeout=120)
    assert done.returncode == 0, done.stderr
    return done.stdout, done.stderr
