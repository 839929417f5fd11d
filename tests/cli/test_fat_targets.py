"""Outputs on FAT-like file systems (no unnamed files, no rename without replacing, no hard links, no
owners): a FAT image mounted with fusefat, and with the kernel's vfat and exfat where this machine
has them. New, refused and forced outputs, parallel runs and a killed run."""
import os
import re
import shutil
import signal
import subprocess
import time

import pytest

from conftest import METADATA, WINDOWS, dcmftest_accepts

pytestmark = pytest.mark.skipif(WINDOWS or os.geteuid() != 0, reason="mounting file system images takes root on Linux")

ALREADY = 'Error: "{}" already exists. Use the --force option to overwrite it.\n'
TEMPORARY = re.compile(r"\.dcp[a-z0-9]{6}")

def kernel_mounts(name):
    """Whether this kernel has the file system, loading its module where that is possible."""
    try:
        subprocess.run(["modprobe", "-q", name], capture_output=True)
    except OSError:
        pass
    try:
        with open("/proc/filesystems") as listing:
            return any(line.split()[-1] == name for line in listing if line.strip())
    except OSError:
        return False


# (id, command that formats the image, command that mounts it at MOUNT, command that unmounts it);
# the kernel's own drivers only where this kernel has them (the FUSE one is always there).
FILE_SYSTEMS = [
    ("fusefat", ["mkfs.vfat", "IMAGE"], ["fusefat", "-o", "rw+", "IMAGE", "MOUNT"], ["fusermount", "-u", "MOUNT"]),
    ("vfat", ["mkfs.vfat", "IMAGE"], ["mount", "-t", "vfat", "-o", "loop", "IMAGE", "MOUNT"], ["umount", "MOUNT"]),
    ("exfat", ["mkfs.exfat", "IMAGE"], ["mount", "-t", "exfat", "-o", "loop", "IMAGE", "MOUNT"], ["umount", "MOUNT"]),
]
FILE_SYSTEMS = [fs for fs in FILE_SYSTEMS if fs[0] == "fusefat" or (not WINDOWS and kernel_mounts(fs[0]))]


@pytest.fixture(scope="module", params=FILE_SYSTEMS, ids=[fs[0] for fs in FILE_SYSTEMS])
def volume(request, tmp_path_factory):
    _, make, mount, unmount = request.param
    if not shutil.which(make[0]) or not shutil.which(mount[0]):
        pytest.skip(f"{make[0]} or {mount[0]} is not installed")
    work = tmp_path_factory.mktemp("fat")
    image, point = work / "volume.img", work / "mnt"
    point.mkdir()
    image.touch()
    os.truncate(image, 128 << 20)

    def command(words):
        return [str(image) if w == "IMAGE" else str(point) if w == "MOUNT" else w for w in words]

    subprocess.run(command(make), check=True, capture_output=True)
    if subprocess.run(command(mount), capture_output=True).returncode != 0:
        pytest.skip(f"{request.param[0]} cannot be mounted here")
    yield point
    subprocess.run(command(unmount), check=True, capture_output=True)


@pytest.fixture
def folder(volume, request, tmp_path):
    """A fresh folder on the volume; the payload and a packed file wait in the test's own folder."""
    here = volume / re.sub(r"\W", "_", request.node.name)[-60:]
    here.mkdir()
    (tmp_path / "payload.bin").write_bytes(os.urandom(200_000))
    yield here
    shutil.rmtree(here)


def arguments(operation, tmp_path, output, *extra):
    if operation == "pack":
        return ["pack", "-i", str(tmp_path / "payload.bin"), "-m", METADATA, "-o", str(output), *extra]
    return ["unpack", "-i", str(tmp_path / "packed.dcm"), "-o", str(output), *extra]


def packed(tool, tmp_path):
    subprocess.run([tool, *arguments("pack", tmp_path, tmp_path / "packed.dcm")], check=True)


def written_right(operation, tmp_path, output):
    if operation == "pack":
        return dcmftest_accepts(output)
    return output.read_bytes() == (tmp_path / "payload.bin").read_bytes()


# (id, operation, an output there before, -f, exit status)
CASES = [
    ("pack-new", "pack", False, False, 0),
    ("pack-existing-refused", "pack", True, False, 1),
    ("pack-existing-forced", "pack", True, True, 0),
    ("unpack-new", "unpack", False, False, 0),
    ("unpack-existing-refused", "unpack", True, False, 1),
    ("unpack-existing-forced", "unpack", True, True, 0),
]


@pytest.mark.parametrize("operation, existing, force, status", [c[1:] for c in CASES], ids=[c[0] for c in CASES])
def test_root_outputs_on_fat(tool, tmp_path, folder, operation, existing, force, status):
    packed(tool, tmp_path)
    output = folder / "out.bin"
    if existing:
        output.write_bytes(b"old")
    done = subprocess.run([tool, *arguments(operation, tmp_path, output, *(["-f"] if force else []))],
                          capture_output=True, text=True, timeout=120)
    assert (done.returncode, done.stderr) == (status, ALREADY.format(output) if status else "")
    assert output.read_bytes() == b"old" if status else written_right(operation, tmp_path, output)
    assert os.listdir(folder) == ["out.bin"]


@pytest.mark.parametrize("force", [False, True], ids=["", "force"])
def test_root_parallel_runs_on_fat(tool, tmp_path, folder, force):
    """Without -f the check before the rename is not atomic here: more than one run may win, but
    every run ends cleanly and the output is one whole file."""
    output = folder / "out.dcm"
    runs = [subprocess.Popen([tool, *arguments("pack", tmp_path, output, *(["-f"] if force else []))],
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) for _ in range(6)]
    results = [(run.wait(120), run.stderr.read()) for run in runs]
    for run in runs:
        run.stdout.close()
        run.stderr.close()
    assert all(result == (0, "") or (not force and result == (1, ALREADY.format(output))) for result in results)
    assert [status for status, _ in results].count(0) >= 1
    assert dcmftest_accepts(output)
    assert os.listdir(folder) == ["out.dcm"]


@pytest.mark.parametrize("operation", ["pack", "unpack"])
def test_root_a_killed_run_on_fat_leaves_at_most_its_temporary_file(tool, tmp_path, folder, operation):
    """SIGKILL cannot be caught: where files cannot be unnamed, the hidden temporary file stays."""
    os.truncate(tmp_path / "payload.bin", 64 << 20)
    packed(tool, tmp_path)
    process = subprocess.Popen([tool, *arguments(operation, tmp_path, folder / "out.bin")])
    deadline = time.monotonic() + 60
    while not any(TEMPORARY.fullmatch(name) for name in os.listdir(folder)):
        assert process.poll() is None and time.monotonic() < deadline, "the run was not caught writing"
        time.sleep(0.001)
    process.send_signal(signal.SIGKILL)
    assert process.wait(60) == -signal.SIGKILL
    left = os.listdir(folder)
    assert len(left) <= 1 and all(TEMPORARY.fullmatch(name) for name in left), left
