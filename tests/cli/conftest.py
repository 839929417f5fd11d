"""Shared helpers of the end-to-end suites: run the built tool and capture exactly what it prints."""
import contextlib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys

import pytest

GOLDEN = pathlib.Path(__file__).parent / "golden"
SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[2]))

# A cross-built tool runs under the command ctest names here (wine for the Windows build).
RUNNER = shlex.split(os.environ.get("DICAPSULE_RUNNER", ""))
# Differences the Windows build cannot avoid: its program name, and a command line that arrives as
# UTF-16 text, so that no argument can hold bytes that are not UTF-8.
WINDOWS = os.environ.get("DICAPSULE", "").lower().endswith(".exe")
PROG = "dicapsule.exe" if WINDOWS else "dicapsule"
# The separator with which the tool joins a directory and a file name it made up.
SEP = "\\" if WINDOWS else "/"


class Result:
    def __init__(self, completed):
        self.status = completed.returncode
        self.raw_out = completed.stdout
        self.out, self.err = (s.decode("utf-8", "surrogateescape") for s in (completed.stdout, completed.stderr))


@pytest.fixture(scope="session")
def tool():
    return os.environ.get("DICAPSULE") or pytest.fail("DICAPSULE must name the built tool (ctest sets it)")


@pytest.fixture
def run(tool, tmp_path):
    """run(*args, argv0=None, cwd=tmp_path, env=None, stdin=b"") -> Result; arguments may be str or bytes;
    stdin is what the tool reads on its standard input. argv0 replaces
    the program's own argv[0]; under a runner, which passes the program's path as argv[0], the tool
    is copied to a file named as argv0's last component instead."""

    def _run(*args, argv0=None, cwd=None, env=None, stdin=b""):
        if not RUNNER:
            command, executable = [argv0 or "dicapsule", *args], tool
        else:
            program = tool
            if argv0 is not None:
                copies = tmp_path / "argv0"
                copies.mkdir(exist_ok=True)
                program = copies / argv0.replace("\\", "/").rsplit("/", 1)[-1]
                shutil.copyfile(tool, program)
            command, executable = [*RUNNER, str(program), *args], None
        for _ in range(2):
            completed = subprocess.run(command, executable=executable, cwd=cwd or tmp_path,
                                       input=stdin, capture_output=True, env=env, timeout=300)
            if not (RUNNER and completed.returncode == 1 and not completed.stdout + completed.stderr):
                break
            # Under wine a program now and then ends with status 1 before writing anything (about
            # once in 3,000 runs of these suites, never reproduced alone); the tool itself never
            # fails without a message, so the run is made once more.
            print(f"wine ended {args} with status 1 and no output; run again", file=sys.stderr)
        return Result(completed)

    return _run


def golden(name, prog=PROG):
    return (GOLDEN / name).read_text(encoding="utf-8").replace("PROG", prog)


EXAMPLES = SOURCE / "examples"
METADATA = str(EXAMPLES / "metadata.xml")


def edition(**scopes):
    """The text of a metadata document with one edition; each keyword names a scope, its value the elements."""
    body = "".join(f"<{scope}>{elements}</{scope}>" for scope, elements in scopes.items())
    return ('<orchid type="ConvertixToFp"><operations><operation type="edition">'
            f"{body}</operation></operations></orchid>")


def dcmftest_accepts(path):
    return subprocess.run(["dcmftest", str(path)], capture_output=True, text=True).stdout.startswith("yes:")


def dciodvfy_errors(path):
    """The "Error" lines dciodvfy prints for a file (its exit status does not tell); text of any character set."""
    out = subprocess.run(["dciodvfy", str(path)], capture_output=True)
    text = (out.stdout + out.stderr).decode("utf-8", "replace")
    return [line for line in text.splitlines() if line.startswith("Error")]


def sanitized(tool):
    """Whether the tool is built with the address sanitizer, whose runtime costs memory and needs /proc."""
    return b"libasan" in subprocess.run(["ldd", tool], capture_output=True).stdout


PAYLOAD = b"\x00payload\xff"


@pytest.fixture
def pack(run, tmp_path):
    """pack(*options, output="out.dcm") -> path of the file written; the run must succeed silently and
    dcmftest must accept the file. The payload is PAYLOAD, in payload.bin of the test's directory."""
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)

    def _pack(*options, output="out.dcm", env=None):
        result = run("pack", "-i", "payload.bin", "-o", output, "-f", *options, env=env)
        assert (result.status, result.out, result.err) == (0, "", "")
        assert dcmftest_accepts(tmp_path / output)
        return tmp_path / output

    return _pack


@contextlib.contextmanager
def xfs_loop_mount(base, size):
    """An XFS file system with reflink on a loop image of size bytes (sparse) in base, mounted for
    the duration; skips where mkfs.xfs or loop mounts are missing."""
    if shutil.which("mkfs.xfs") is None:
        pytest.skip("needs mkfs.xfs for an XFS loop image")
    image, mount = base / "xfs.img", base / "mnt"
    image.touch()
    os.truncate(image, size)
    mount.mkdir()
    subprocess.run(["mkfs.xfs", "-q", "-m", "reflink=1", str(image)], check=True)
    if subprocess.run(["mount", "-o", "loop", str(image), str(mount)], capture_output=True).returncode != 0:
        pytest.skip("this machine cannot mount a loop image")
    try:
        yield mount
    finally:
        subprocess.run(["umount", str(mount)], check=False)
        image.unlink()
