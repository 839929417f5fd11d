"""A payload beyond one DICOM value: pack writes two instances of one series, each under 4 GiB;
unpack restores the exact bytes from either part, from renamed parts given as repeated --input,
and refuses a missing, foreign or damaged part with one line and nothing written; info tells the
part. The 4.7 GiB payload is sparse with a few random blocks, on an XFS image with reflink, so
that the copies are clones and disk and time stay small (root only)."""
import os
import random
import subprocess

import pydicom
import pytest

from conftest import METADATA, WINDOWS, dciodvfy_errors, xfs_loop_mount

pytestmark = pytest.mark.skipif(WINDOWS or os.geteuid() != 0, reason="an XFS loop image is mounted by root on Linux")

SIZE = 4700 * 1024 * 1024 + 12345
STEP = 4278124544  # the length of every part but the last: the value limit rounded down to 64 KiB
BLOCKS = [0, 1 << 20, STEP - 4096, STEP, SIZE - 5000]  # random bytes around the cut and at both ends


class Tool:
    def __init__(self, tool, directory):
        self.tool, self.directory = tool, directory

    def __call__(self, *args, cwd=None):
        done = subprocess.run([self.tool, *map(str, args)], cwd=cwd or self.directory, capture_output=True,
                              text=True, timeout=600)
        return done.returncode, done.stdout, done.stderr


@pytest.fixture(scope="module")
def xfs(tmp_path_factory, tool):
    with xfs_loop_mount(tmp_path_factory.mktemp("split"), 8 << 30) as mount:
        yield Tool(tool, mount)


@pytest.fixture(scope="module")
def packed(xfs):
    """The payload (its SHA-256) packed once into big.dcm and big.2.dcm of the image's root."""
    randomness = random.Random(47)
    with open(xfs.directory / "big.bin", "wb") as payload:
        payload.truncate(SIZE)
        for offset in BLOCKS:
            payload.seek(offset)
            payload.write(randomness.randbytes(4096))
    digest = subprocess.run(["openssl", "dgst", "-sha256", "-r", str(xfs.directory / "big.bin")], capture_output=True,
                            text=True, check=True).stdout.split()[0]
    assert xfs("pack", "-i", "big.bin", "-m", METADATA, "-o", "big.dcm", "-I", ":::7") == (0, "", "")
    return digest


def same_as_payload(xfs, path):
    return subprocess.run(["cmp", str(xfs.directory / "big.bin"), str(path)]).returncode == 0


def listing(directory):
    return sorted(os.listdir(directory))


def test_pack_gives_two_instances_of_one_series_as_root(xfs, packed):
    parts = [xfs.directory / "big.dcm", xfs.directory / "big.2.dcm"]
    assert [path.stat().st_size < 4 << 30 for path in parts] == [True, True]
    first, second = (pydicom.dcmread(path, stop_before_pixels=True, defer_size=1024) for path in parts)
    assert (first.StudyInstanceUID, first.SeriesInstanceUID) == (second.StudyInstanceUID, second.SeriesInstanceUID)
    assert first.SOPInstanceUID != second.SOPInstanceUID
    assert (first.InstanceNumber, second.InstanceNumber) == (7, 8)
    assert dciodvfy_errors(parts[1]) == []
    # Each part is a clone of its range of the payload.
    used = int(subprocess.run(["du", "-k", "--total", *map(str, parts)], capture_output=True, text=True,
                              check=True).stdout.split()[-2])
    assert used < 16 * 1024


def test_info_on_a_part_tells_the_whole_payload_as_root(xfs, packed):
    command = f"pack -i big.bin -m {METADATA} -o big.dcm -I :::7"
    status, out, err = xfs("info", "-i", "big.2.dcm")
    assert (status, err) == (0, "")
    assert out == ('<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n<orchid type="Dicapsule">\n'
                   f'\t<parameters originalname="big.bin" commandline="{command}" size="{SIZE}" sha256="{packed}" '
                   'part="2" parts="2" />\n</orchid>\n')
    status, out, err = xfs("info", "-i", "big.dcm", "--format", "json")
    assert (status, err) == (0, "")
    assert out.startswith('{\n  "originalname": "big.bin",\n  "commandline": "' + command + '",\n'
                          f'  "size": {SIZE},\n  "sha256": "{packed}",\n  "part": 1,\n  "parts": 2,\n')


@pytest.mark.parametrize("given, verify", [("big.dcm", True), ("big.2.dcm", False)])
def test_unpack_from_either_part_found_in_its_directory_as_root(xfs, packed, given, verify):
    # Files of other kinds and other packed files beside the parts are passed over.
    (xfs.directory / "notes.txt").write_text("not DICOM")
    (xfs.directory / "small.bin").write_bytes(b"small")
    assert xfs("pack", "-i", "small.bin", "-m", METADATA, "-o", "small.dcm", "-f")[0] == 0
    status, out, err = xfs("unpack", "-i", given, "-o", "back.bin", "-f", *([] if verify else ["--no-verify"]))
    assert (status, out, err) == (0, "", "")
    assert same_as_payload(xfs, xfs.directory / "back.bin")
    (xfs.directory / "back.bin").unlink()


def test_renamed_parts_given_as_repeated_inputs_as_root(xfs, packed):
    apart = xfs.directory / "apart"
    apart.mkdir(exist_ok=True)
    subprocess.run(["cp", "--reflink=always", str(xfs.directory / "big.dcm"), str(apart / "second-half.x")], check=True)
    subprocess.run(["cp", "--reflink=always", str(xfs.directory / "big.2.dcm"), str(apart / "first")], check=True)
    status, out, err = xfs("unpack", "-i", "apart/first", "-i", "apart/second-half.x", "--no-verify", "-O", "apart")
    assert (status, out, err) == (0, "", "")
    assert same_as_payload(xfs, apart / "first.bin")


def test_refusals_leave_nothing_as_root(xfs, packed):
    lone = xfs.directory / "lone"
    lone.mkdir(exist_ok=True)
    subprocess.run(["cp", "--reflink=always", str(xfs.directory / "big.dcm"), str(lone / "big.dcm")], check=True)
    damaged = lone / "damaged.2.dcm"
    subprocess.run(["cp", "--reflink=always", str(xfs.directory / "big.2.dcm"), str(damaged)], check=True)
    with open(damaged, "r+b") as part:  # one byte of the random block at the payload's end
        part.seek(damaged.stat().st_size - 4000)
        byte = part.read(1)
        part.seek(-1, os.SEEK_CUR)
        part.write(bytes([byte[0] ^ 1]))
    moved = xfs.directory / "damaged.away"
    cases = [
        ("missing", ["unpack", "-i", "lone/big.dcm", "-o", "lone/out.bin"], lambda: damaged.rename(moved),
         'Error: Part 2 of 2 of the packed file of the input file "lone/big.dcm" was not found.\n'),
        ("foreign", ["unpack", "-i", "lone/big.dcm", "-i", "small.dcm", "-o", "lone/out.bin"], lambda: moved.rename(damaged),
         'Error: The input file "small.dcm" is not a part of the packed file of the input file "lone/big.dcm".\n'),
        ("duplicated", ["unpack", "-i", "lone/big.dcm", "-i", "lone/damaged.2.dcm", "-i", "big.2.dcm", "-o", "lone/out.bin"], None,
         'Error: Part 2 of the packed file of the input file "lone/big.dcm" is held twice, by "lone/damaged.2.dcm" and "big.2.dcm".\n'),
        ("whole with others", ["unpack", "-i", "small.dcm", "-i", "big.dcm", "-o", "lone/out.bin"], None,
         'Error: The input file "small.dcm" holds a whole packed file: give it alone.\n'),
        ("damaged part", ["unpack", "-i", "lone/big.dcm", "-o", "lone/out.bin"], None,
         'Error: Part 2 of the packed file of the input file "lone/big.dcm", in "lone/damaged.2.dcm", does not match its SHA-256 digest.\n'),
        ("part name taken", ["pack", "-i", "big.bin", "-m", METADATA, "-o", "lone/damaged.dcm"], None,
         'Error: "lone/damaged.2.dcm" already exists. Use the --force option to overwrite it.\n'),
        ("standard output", ["pack", "-i", "big.bin", "-m", METADATA, "-o", "-"], None,
         f'Error: The input file "big.bin" ({SIZE} bytes) is packed into 2 files: use the --output or --Output option '
         'rather than the standard output.\n'),
        ("a device", ["pack", "-i", "big.bin", "-m", METADATA, "-o", "/dev/null"], None,
         f'Error: The input file "big.bin" ({SIZE} bytes) is packed into 2 files: use the --output or --Output option '
         'rather than "/dev/null".\n'),
        ("a document is one value", ["pack", "-i", "big.bin", "-m", METADATA, "-c", "document", "-o", "lone/doc.dcm"], None,
         f'Error: The input file "big.bin" is too large to be packed ({SIZE} bytes): a DICOM value holds at most '
         '4278190078 bytes.\n'),
    ]
    for case, args, prepare, message in cases:
        if prepare:
            prepare()
        before = listing(lone)
        assert xfs(*args) == (1, "", message), case
        assert listing(lone) == before, case
