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
