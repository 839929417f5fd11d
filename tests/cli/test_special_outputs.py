"""Outputs that are not files to replace (devices, FIFOs, sockets, this process's descriptors) are
written through, with or without -f, and are still what they were afterwards; a full or read-only
target file system is named as the cause."""
import os
import socket
import stat
import subprocess
import threading
import time

import pytest

from conftest import METADATA, WINDOWS

pytestmark = pytest.mark.skipif(WINDOWS, reason="POSIX devices, FIFOs and descriptors")

PAYLOAD = bytes(range(256)) * 40


@pytest.fixture
def packed(tool, tmp_path):
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)
    done = subprocess.run([tool, "pack", "-i", "payload.bin", "-m", METADATA, "-o", "packed.dcm"], cwd=tmp_path)
    assert done.returncode == 0
    return tmp_path / "packed.dcm"


def reader_of_fifo(path):
    """A FIFO at path and a thread that collects what is written into it."""
    os.mkfifo(path)
    received = []
    thread = threading.Thread(target=lambda: received.append(path.read_bytes()))
    thread.start()
    return lambda: (thread.join(30), received[0])[1]


def reader_of_socket(path):
    server = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    server.bind(str(path))
    server.listen(1)
    received = []

    def serve():
        connection, _ = server.accept()
        data = b""
        while chunk := connection.recv(65536):
            data += chunk
        received.append(data)

    thread = threading.Thread(target=serve)
    thread.start()
    return lambda: (thread.join(30), server.close(), received[0])[2]


def null_device_node(path):
    if os.geteuid() != 0:
        pytest.skip("mknod takes root")
    os.mknod(path, 0o666 | stat.S_IFCHR, os.makedev(1, 3))


# (id, output as the tool is given it, how to prepare it, whether it is read from the standard output)
OUTPUTS = [
    ("dev-null", "/dev/null", None, False),
    ("device-node", "null", null_device_node, False),
    ("dev-stdout", "/dev/stdout", None, True),
    ("proc-self-fd-1", "/proc/self/fd/1", None, True),
    ("link-to-fd-1", "link", lambda p: p.symlink_to("/proc/self/fd/1"), True),
    ("fifo", "fifo", reader_of_fifo, False),
    ("socket", "socket", reader_of_socket, False),
]


@pytest.mark.parametrize("operation", ["pack", "unpack"])
@pytest.mark.parametrize("force", [[], ["-f"]], ids=["", "force"])
@pytest.mark.parametrize("output, prepare, to_stdout", [c[1:] for c in OUTPUTS], ids=[c[0] for c in OUTPUTS])
def test_outputs_that_are_not_files_are_written_through(tool, packed, operation, force, output, prepare, to_stdout):
    directory = packed.parent
    collect = prepare(directory / output) if prepare else None
    before = os.lstat(directory / output if prepare else output)
    args = (["pack", "-i", "payload.bin", "-m", METADATA] if operation == "pack" else ["unpack", "-i", "packed.dcm"])
    done = subprocess.run([tool, *args, "-o", output, *force], cwd=directory, capture_output=True, timeout=60)
    assert (done.returncode, done.stderr) == (0, b"")
    written = done.stdout if to_stdout else collect() if collect else None
    if operation == "unpack" and written is not None:
        assert written == PAYLOAD
    elif written is not None:
        assert written[128:132] == b"DICM" and PAYLOAD in written
    after = os.lstat(directory / output if prepare else output)
    assert (stat.S_IFMT(after.st_mode), after.st_ino) == (stat.S_IFMT(before.st_mode), before.st_ino)


# (id, options of a small tmpfs mounted at mnt/, which is also $TMPDIR; command; message)
FILE_SYSTEM_FAILURES = [
    ("output-full", "size=4k", '"$0" unpack -i packed.dcm -o mnt/out.bin',
     'Error: Could not write "mnt/out.bin". Its file system is full.\n'),
    ("output-read-only", "size=1m,ro", '"$0" unpack -i packed.dcm -o mnt/out.bin',
     'Error: Could not open "mnt/out.bin". Its file system is read-only.\n'),
    ("temporary-directory-full", "size=64k", 'head -c 300000 /dev/zero | "$0" pack -i /dev/stdin -m "$1" -o out.dcm',
     'Error: Could not read "/dev/stdin". The temporary directory "{}/mnt" is full.\n'),
]


@pytest.mark.skipif(os.geteuid() != 0, reason="mounting a tmpfs takes root")
@pytest.mark.parametrize("options, command, message", [c[1:] for c in FILE_SYSTEM_FAILURES],
                         ids=[c[0] for c in FILE_SYSTEM_FAILURES])
def test_root_a_full_or_read_only_file_system_is_named(tool, packed, options, command, message):
    directory = packed.parent
    (directory / "mnt").mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", directory / "mnt"], check=True)
    try:
        done = subprocess.run(["sh", "-c", command, tool, METADATA], cwd=directory, capture_output=True, text=True,
                              env={**os.environ, "TMPDIR": str(directory / "mnt")})
        assert (done.returncode, done.stderr) == (1, message.format(directory))
        assert os.listdir(directory / "mnt") == [] and not (directory / "out.dcm").exists()
    finally:
        subprocess.run(["umount", directory / "mnt"], check=True)


def writing_output(pid, directory):
    """True once the process holds an output file of `directory` open (unnamed or hidden)."""
    try:
        links = [os.readlink(f"/proc/{pid}/fd/{fd}") for fd in os.listdir(f"/proc/{pid}/fd")]
    except (FileNotFoundError, ProcessLookupError):
        return False
    return any(os.path.dirname(link) == str(directory) and ("(deleted)" in link or "/.dcp" in link) for link in links)


# (id, operation, its input, message)
SHRINKING = [
    ("pack", ["pack", "-i", "big.bin", "-m", METADATA], "big.bin",
     'Error: The input file "big.bin" changed while it was being packed.\n'),
    ("unpack", ["unpack", "-i", "big.dcm"], "big.dcm",
     'Error: Could not extract the packed file from the input file "big.dcm".\n'),
]


@pytest.mark.parametrize("args, shrunk, message", [c[1:] for c in SHRINKING], ids=[c[0] for c in SHRINKING])
def test_an_input_that_shrinks_while_copied_is_blamed(tool, tmp_path, args, shrunk, message):
    (tmp_path / "big.bin").touch()
    os.truncate(tmp_path / "big.bin", 256 << 20)  # sparse: costs no disk until copied
    if shrunk == "big.dcm":
        subprocess.run([tool, "pack", "-i", "big.bin", "-m", METADATA, "-o", "big.dcm"], cwd=tmp_path, check=True)
    (tmp_path / "out").mkdir()
    process = subprocess.Popen([tool, *args, "-o", "out/result"], cwd=tmp_path, stderr=subprocess.PIPE, text=True)
    deadline = time.monotonic() + 60
    while not writing_output(process.pid, tmp_path / "out"):
        assert process.poll() is None and time.monotonic() < deadline, "the run was not caught copying"
        time.sleep(0.001)
    os.truncate(tmp_path / shrunk, 1000)
    assert (process.wait(60), process.stderr.read()) == (1, message)
    process.stderr.close()
    assert os.listdir(tmp_path / "out") == []
