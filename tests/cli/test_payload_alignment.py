"""Payloads of every size round trip byte for byte. The packed payload's value starts on a 4096-byte
boundary when it is at least 64 KiB, so that it can be cloned; the padding keeps every peer reading
the file, and a file whose layout another tool changed still unpacks. On an XFS image with reflink
(root only), pack and unpack share extents."""
import os
import random
import subprocess

import pydicom
import pytest

from conftest import METADATA, WINDOWS, dciodvfy_errors, dcmftest_accepts, xfs_loop_mount

BLOCK = 4096
MINIMUM = 64 * 1024


def packed(run, directory, size):
    data = random.Random(size).randbytes(size)
    (directory / "payload.bin").write_bytes(data)
    result = run("pack", "-i", "payload.bin", "-m", METADATA)
    assert (result.status, result.out, result.err) == (0, "", "")
    return directory / "payload.dcm", data


def meta_elements(raw):
    """(element number, encoded size) of each explicit VR meta group element after "DICM"."""
    at, found = 132, []
    while raw[at:at + 2] == b"\x02\x00":
        if raw[at + 4:at + 6] in (b"OB", b"UN", b"SQ", b"UT", b"OW"):
            size = 12 + int.from_bytes(raw[at + 8:at + 12], "little")
        else:
            size = 8 + int.from_bytes(raw[at + 6:at + 8], "little")
        found.append((int.from_bytes(raw[at + 2:at + 4], "little"), size))
        at += size
    return found


@pytest.mark.parametrize("size", [1, 2, 3, 1023, 4096, MINIMUM - 2, MINIMUM - 1, MINIMUM, MINIMUM + 1,
                                  MINIMUM + BLOCK - 1, 3 * MINIMUM + 7, 1024 * 1024, 3 * 1024 * 1024 + 1])
def test_payload_alignment_peers_and_round_trip(run, tmp_path, size):
    path, data = packed(run, tmp_path, size)
    raw = path.read_bytes()
    offset = raw.find(data[:64])
    assert offset > 0 and raw[offset:offset + size] == data
    elements = meta_elements(raw)
    group_length = sum(s for n, s in elements if n != 0)
    assert int.from_bytes(raw[140:144], "little") == group_length
    assert pydicom.dcmread(path).file_meta.FileMetaInformationGroupLength == group_length
    if size >= MINIMUM:
        assert offset % BLOCK == 0
    else:
        assert not {0x0100, 0x0102} & {number for number, _ in elements}
    assert dcmftest_accepts(path)
    assert dciodvfy_errors(path) == []
    assert subprocess.run(["gdcminfo", str(path)], capture_output=True).returncode == 0
    (tmp_path / "payload.bin").unlink()
    result = run("unpack", "-i", "payload.dcm", "-u")
    assert (result.status, result.out, result.err) == (0, "", "")
    assert (tmp_path / "payload.bin").read_bytes() == data


def test_file_rewritten_without_padding_still_unpacks(run, tmp_path):
    path, data = packed(run, tmp_path, MINIMUM + 100)
    dataset = pydicom.dcmread(path)
    del dataset.file_meta.PrivateInformation
    del dataset.file_meta.PrivateInformationCreatorUID
    dataset.save_as(tmp_path / "rewritten.dcm", write_like_original=False)
    assert (tmp_path / "rewritten.dcm").read_bytes().find(data[:64]) % BLOCK != 0
    result = run("unpack", "-i", "rewritten.dcm", "-o", "back.bin")
    assert (result.status, result.err) == (0, "")
    assert (tmp_path / "back.bin").read_bytes() == data


@pytest.fixture
def xfs_mount(tmp_path):
    with xfs_loop_mount(tmp_path, 512 << 20) as mount:
        yield mount


def shared_blocks(path):
    """Blocks of the file's extents that filefrag marks as shared."""
    report = subprocess.run(["filefrag", "-v", str(path)], capture_output=True, text=True, check=True).stdout
    total = 0
    for line in report.splitlines():
        fields = line.split()
        if "shared" in line and len(fields) > 5 and fields[0].endswith(":"):
            total += int(fields[5].rstrip(":"))
    return total


def free_bytes(directory):
    os.sync()
    stats = os.statvfs(directory)
    return stats.f_bfree * stats.f_frsize


@pytest.mark.skipif(WINDOWS, reason="cloning is copy_file_range on a Linux file system")
@pytest.mark.skipif(os.geteuid() != 0, reason="an XFS loop image is mounted by root")
def test_pack_and_unpack_clone_on_xfs_as_root(run, xfs_mount):
    size = 64 * 1024 * 1024 + 123
    data = random.Random(3).randbytes(size)
    (xfs_mount / "payload.bin").write_bytes(data)
    before = free_bytes(xfs_mount)
    assert run("pack", "-i", "payload.bin", "-m", METADATA, "-o", "out.dcm", cwd=xfs_mount).status == 0
    assert run("unpack", "-i", "out.dcm", "-o", "back.bin", cwd=xfs_mount).status == 0
    used = before - free_bytes(xfs_mount)
    assert (xfs_mount / "back.bin").read_bytes() == data
    assert dcmftest_accepts(xfs_mount / "out.dcm")
    assert shared_blocks(xfs_mount / "out.dcm") >= size // BLOCK
    assert shared_blocks(xfs_mount / "back.bin") >= size // BLOCK
    assert used < 8 * 1024 * 1024
