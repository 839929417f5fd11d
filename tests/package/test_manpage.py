"""The manual page of the build tree: it renders cleanly and carries every usage text of the tool."""
import importlib.util
import subprocess

import pytest

from conftest import OPERATIONS, SOURCE, env, option_help, render, run, squeeze

_generator = importlib.util.spec_from_file_location("make_manpage", SOURCE / "docs/man/make_manpage.py")
make_manpage = importlib.util.module_from_spec(_generator)
_generator.loader.exec_module(make_manpage)


# The option parser wraps help texts on a width; the generator must find the declared lines again.
UNWRAP_CASES = [
    ("wrap keeps the space", ["one two three ", "four"], 16, ["one two three four"]),
    ("wrap on the space of a full line", ["one two three fo", "five"], 16, ["one two three fo five"]),
    ("long word cut", ["x abcdefghijklmn", "opq"], 16, ["x abcdefghijklmnopq"]),
    ("line break after a space", ["one two ", "six"], 16, ["one two", "six"]),
    ("line break", ["one", "two", "three"], 16, ["one", "two", "three"]),
    ("list keeps its alignment", ["- A    (1)", "- BB   (2)"], 16, ["- A    (1)", "- BB   (2)"]),
]


@pytest.mark.parametrize("case,physical,width,declared", UNWRAP_CASES, ids=[c[0] for c in UNWRAP_CASES])
def test_unwrap_finds_the_declared_lines(case, physical, width, declared):
    assert make_manpage.unwrap(physical, width) == declared


@pytest.mark.parametrize("text,expected", [
    (".starts with a dot", "\\&.starts with a dot"),
    ("back\\slash --force", "back\\eslash \\-\\-force"),
    ("\"" + "A:" * 25 + "\"", "\"" + "A:\\:" * 25 + "\""),
])
def test_roff_escapes_what_roff_would_interpret(text, expected):
    assert make_manpage.roff(text) == expected


@pytest.mark.parametrize("renderer", ["man 80", "man 60", "groff"])
def test_page_renders_without_warnings(renderer):
    if renderer == "groff":
        done = subprocess.run(["groff", "-man", "-wall", "-Tutf8", "-z", env("DICAPSULE_MANPAGE")],
                              capture_output=True, text=True, timeout=120)
        assert (done.returncode, done.stderr) == (0, "")
    else:
        assert render(env("DICAPSULE_MANPAGE"), int(renderer.split()[1]))[1] == ""


@pytest.mark.parametrize("operation", OPERATIONS)
def test_page_shows_every_option_with_the_help_the_tool_prints(operation):
    usage = run(env("DICAPSULE"), operation, "--help").stdout
    text = render(env("DICAPSULE_MANPAGE"))[0]
    section = text.split(f"Options of {operation}", 1)[1].split("Options of", 1)[0].split("EXIT STATUS")[0]
    assert squeeze(usage.splitlines()[1]) in squeeze(text)  # the synopsis line
    for names, help_text in option_help(usage).items():
        assert names in section, names
        assert help_text in squeeze(section), names


def test_page_documents_the_environment():
    text = render(env("DICAPSULE_MANPAGE"))[0]
    environment = text.split("ENVIRONMENT", 1)[1].split("FILES", 1)[0]
    for variable in ("CONVERTIX_TESTMODE", "FORCE_DISABLE_BLOCKS_PARALLEL", "DICAPSULE_TRACE"):
        assert variable in environment
