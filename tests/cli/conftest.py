"""Shared helpers of the end-to-end suites: run the built tool and capture exactly what it prints."""
import os
import pathlib
import subprocess

import pytest

GOLDEN = pathlib.Path(__file__).parent / "golden"
SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[2]))


class Result:
    def __init__(self, completed):
        self.status = completed.returncode
        self.out = completed.stdout.decode("utf-8", "surrogateescape")
        self.err = completed.stderr.decode("utf-8", "surrogateescape")


@pytest.fixture(scope="session")
def tool():
    path = os.environ.get("DICAPSULE")
    if not path:
        pytest.fail("DICAPSULE must name the built tool (ctest sets it)")
    return path


@pytest.fixture
def run(tool, tmp_path):
    """run(*args, argv0="dicapsule", cwd=tmp_path) -> Result; arguments may be str or bytes."""

    def _run(*args, argv0="dicapsule", cwd=None, env=None):
        completed = subprocess.run([argv0, *args], executable=tool, cwd=cwd or tmp_path,
                                   capture_output=True, env=env, timeout=120)
        return Result(completed)

    return _run


def golden(name, prog="dicapsule"):
    return (GOLDEN / name).read_text(encoding="utf-8").replace("PROG", prog)


EXAMPLES = SOURCE / "examples"
METADATA = str(EXAMPLES / "metadata.xml")


def edition(**scopes):
    """The text of a metadata document with one edition; each keyword names a scope, its value the elements."""
    body = "".join(f"<{scope}>{elements}</{scope}>" for scope, elements in scopes.items())
    return ('<orchid type="ConvertixToFp"><operations><operation type="edition">'
            f"{body}</operation></operations></orchid>")


def dcmftest_accepts(path):
    out = subprocess.run(["dcmftest", str(path)], capture_output=True, text=True)
    return out.stdout.startswith("yes:")


def dciodvfy_errors(path):
    """The "Error" lines dciodvfy prints for a file (its exit status does not tell)."""
    out = subprocess.run(["dciodvfy", str(path)], capture_output=True, text=True)
    return [line for line in (out.stdout + out.stderr).splitlines() if line.startswith("Error")]


@pytest.fixture
def pack(run, tmp_path):
    """pack(*options, output="out.dcm") -> path of the file written; the run must succeed silently and
    dcmftest must accept the file. The payload is a small binary file of the test's directory."""
    (tmp_path / "payload.bin").write_bytes(b"\x00payload\xff")

    def _pack(*options, output="out.dcm", env=None):
        result = run("pack", "-i", "payload.bin", "-o", output, "-f", *options, env=env)
        assert (result.status, result.out, result.err) == (0, "", "")
        path = tmp_path / output
        assert dcmftest_accepts(path)
        return path

    return _pack
