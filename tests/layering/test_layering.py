"""A source added to a lower library cannot include a header of a higher one.

Each probe is compiled with the command line that the build uses for one of the library's own
sources, so it sees exactly the include folders that library sees."""
import json
import os
import pathlib
import shlex
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ["DICAPSULE_SOURCE"])
COMMANDS = json.loads(pathlib.Path(os.environ["DICAPSULE_COMPILE_COMMANDS"]).read_text())

# The layers from the bottom up, as docs/architecture.md lists them.
LAYERS = [
    "Portability/Misc",
    "Foundations/DataModule/DataAdapter/Dicom/Core",
    "Foundations/DataModule",
    "Foundations/DataModule/DataAdapter/Dicom/Orchid",
    "Foundations/DataModule/metadata",
    "Foundations/LVBuffer2DTools",
    "Foundations/BufferTools",
    "Foundations/LVCodec",
    "Foundations/LVCodec/module",
    "cmdline",
    "app",
]


def owner(path):
    """The layer folder a file belongs to: the longest layer folder that holds it."""
    relative = path.relative_to(SOURCE).as_posix()
    return max((layer for layer in LAYERS if relative.startswith(layer + "/")), key=len, default=None)


def first_header(layer):
    return next(str(h.relative_to(SOURCE)) for h in sorted((SOURCE / layer).rglob("*.h")) if owner(h) == layer)


def compile_probe(layer, header, tmp_path):
    entry = next(c for c in COMMANDS if pathlib.Path(c["file"]).suffix == ".cpp"
                 and SOURCE in pathlib.Path(c["file"]).parents and owner(pathlib.Path(c["file"])) == layer)
    probe = tmp_path / "probe.cpp"
    probe.write_text(f'#include "{header}"\n')
    args = shlex.split(entry["command"])
    args = [str(probe) if a == entry["file"] else a for a in args]
    out = args.index("-o")
    args[out:out + 2] = ["-fsyntax-only"]
    return subprocess.run(args, cwd=entry["directory"], capture_output=True, text=True)


@pytest.mark.parametrize("lower", range(len(LAYERS) - 1), ids=LAYERS[:-1])
def test_a_library_reaches_its_own_headers_and_no_higher_ones(lower, tmp_path):
    layer = LAYERS[lower]
    own = compile_probe(layer, first_header(layer), tmp_path)
    assert own.returncode == 0, own.stderr
    for higher in LAYERS[lower + 1:]:
        refused = compile_probe(layer, first_header(higher), tmp_path)
        assert refused.returncode != 0, f"{layer} compiled an include of {higher}"
        assert "No such file or directory" in refused.stderr
