"""Hostile inputs made at test time: deflated packed files that inflate to gigabytes and thumbnail
pictures that declare huge sizes. Each is answered in little memory, with no temporary file."""
import contextlib
import os
import struct
import subprocess
import threading
import zlib

import pytest

from conftest import METADATA, WINDOWS, sanitized

pytestmark = pytest.mark.skipif(WINDOWS, reason="measures the peak memory of a native process")

MiB = 1 << 20


def raw_deflate_blocks(data):
    """Raw deflate blocks inflating to data, byte-aligned and independent of what precedes or follows
    them (a full flush resets the window), so that they can be repeated and joined at will."""
    compressor = zlib.compressobj(9, zlib.DEFLATED, -15)
    return compressor.compress(data) + compressor.flush(zlib.Z_FULL_FLUSH)


FINAL_BLOCK = b"\x03\x00"  # an empty final fixed-Huffman block ends a raw deflate stream


def explicit_header(group, element, vr, length):
    if vr in (b"OB", b"UN", b"SQ", b"UT"):
        return struct.pack("<HH2sHI", group, element, vr, 0, length)
    return struct.pack("<HH2sH", group, element, vr, length)


def split_deflated(path):
    """The bytes of a deflated file up to its data set, and the data set inflated."""
    data = path.read_bytes()
    meta_end = 144 + struct.unpack_from("<I", data, 140)[0]
    return data[:meta_end], zlib.decompress(data[meta_end:], -15)


def deflated_packed_file(run, tmp_path, payload):
    (tmp_path / "payload.bin").write_bytes(payload)
    assert run("pack", "-i", "payload.bin", "-m", METADATA, "-o", "plain.dcm").status == 0
    subprocess.run(["dcmconv", "+td", str(tmp_path / "plain.dcm"), str(tmp_path / "deflated.dcm")], check=True)
    return tmp_path / "deflated.dcm"


def add_junk(path, count, size):
    """Private junk elements of zeros after the valid data set: count elements of size bytes."""
    meta, data_set = split_deflated(path)
    zeros = raw_deflate_blocks(bytes(MiB))
    with open(path, "wb") as out:
        out.write(meta + raw_deflate_blocks(data_set))
        out.write(raw_deflate_blocks(explicit_header(0x0011, 0x0010, b"LO", 4) + b"JUNK"))
        for i in range(count):
            out.write(raw_deflate_blocks(explicit_header(0x0011, 0x1000 + i, b"OB", size)))
            for _ in range(size // MiB):
                out.write(zeros)
        out.write(FINAL_BLOCK)


def replace_name(path, size):
    """The stored name made size bytes long: its item, the custom data sequence and its length
    element are rewritten to match."""
    meta, data_set = split_deflated(path)
    key = b"Dicapsule.PackedFile.Name"
    at = data_set.index(key)
    # (0009,11A2) UL length, then (0009,11A3) UN value, follow the key in the item.
    length_at = data_set.index(struct.pack("<HH2sH", 0x0009, 0x11A2, b"UL", 4), at)
    value_at = length_at + 12
    old = struct.unpack_from("<I", data_set, value_at + 8)[0]
    value_end = value_at + 12 + old
    grow = size - old
    item_at = data_set.rindex(struct.pack("<HH", 0xFFFE, 0xE000), 0, at)
    sequence_at = data_set.rindex(struct.pack("<HH2sH", 0x0009, 0x11A0, b"SQ", 0), 0, item_at)
    patched = bytearray(data_set[:value_end])
    for offset in (sequence_at + 8, item_at + 4):
        length = struct.unpack_from("<I", patched, offset)[0]
        if length != 0xFFFFFFFF:
            struct.pack_into("<I", patched, offset, length + grow)
    struct.pack_into("<I", patched, length_at + 8, size)
    struct.pack_into("<I", patched, value_at + 8, size)
    letters = raw_deflate_blocks(b"n" * MiB)
    with open(path, "wb") as out:
        out.write(meta + raw_deflate_blocks(bytes(patched[:value_at + 12])))
        for _ in range(size // MiB):
            out.write(letters)
        out.write(raw_deflate_blocks(data_set[value_end:]) + FINAL_BLOCK)


@contextlib.contextmanager
def small_tmpdir(tmp_path):
    """A 1 MiB tmpfs as $TMPDIR when root can mount one, else a plain folder: a temporary file of the
    inflated data set would not fit the former."""
    folder = tmp_path / "tmp"
    folder.mkdir()
    mounted = os.geteuid() == 0 and subprocess.run(
        ["mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", str(folder)], capture_output=True).returncode == 0
    try:
        yield folder
    finally:
        if mounted:
            subprocess.run(["umount", str(folder)], check=True)


def measured(tool, tmp_path, *args, env=None):
    """(status, stdout, stderr, peak RSS in MiB) of the tool, measured by GNU time."""
    process = subprocess.Popen(["/usr/bin/time", "-f", "%M", "-o", str(tmp_path / "time.txt"), tool, *args],
                               cwd=tmp_path, env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    timer = threading.Timer(240, process.kill)
    timer.start()
    out, err = process.communicate()
    timer.cancel()
    peak = int((tmp_path / "time.txt").read_text().split()[-1]) / 1024
    return process.returncode, out.decode(), err.decode(), peak


PAYLOAD = bytes(range(251)) * 4096  # 1 MiB that deflates little
NAME_TOO_LONG = 'Error: The input file "deflated.dcm" stores a name longer than 65536 bytes.\n'

# id, how the file is spoiled, operation, expected status, expected standard error
DEFLATED = [
    ("bomb-info", lambda p: add_junk(p, 4, 256 * MiB), "info", 0, ""),
    ("bomb-unpack", lambda p: add_junk(p, 4, 256 * MiB), "unpack", 0, ""),
    ("name-1GiB-info", lambda p: replace_name(p, 1024 * MiB), "info", 1, NAME_TOO_LONG),
    ("name-1GiB-unpack", lambda p: replace_name(p, 1024 * MiB), "unpack", 1, NAME_TOO_LONG),
    ("legitimate-unpack", lambda p: None, "unpack", 0, ""),
]


@pytest.mark.parametrize("spoil,operation,status,error", [c[1:] for c in DEFLATED], ids=[c[0] for c in DEFLATED])
def test_deflated_input_is_read_in_bounded_memory_without_temporary_files(run, tool, tmp_path, spoil, operation,
                                                                          status, error):
    path = deflated_packed_file(run, tmp_path, PAYLOAD)
    spoil(path)
    with small_tmpdir(tmp_path) as tmpdir:
        args = ["-i", path.name] + (["-o", "out.bin"] if operation == "unpack" else [])
        got_status, out, got_error, peak = measured(tool, tmp_path, operation, *args,
                                                    env=dict(os.environ, TMPDIR=str(tmpdir)))
        assert not os.listdir(tmpdir)
    assert (got_status, got_error) == (status, error)
    if operation == "info" and status == 0:
        assert 'originalname="payload.bin"' in out
    if operation == "unpack" and status == 0:
        assert (tmp_path / "out.bin").read_bytes() == PAYLOAD
    if not sanitized(tool):
        assert peak < 100, f"peak RSS {peak:.0f} MiB"


def rle8_bmp(width, height):
    """A BMP of 8-bit run-length data declaring width x height: a grey palette and an end-of-bitmap mark."""
    palette = b"".join(bytes((i, i, i, 0)) for i in range(256))
    pixels = b"\x00\x01"
    offset = 14 + 40 + len(palette)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 8, 1, len(pixels), 2835, 2835, 256, 0)
    return struct.pack("<2sIHHI", b"BM", offset + len(pixels), 0, 0, offset) + info + palette + pixels


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def zero_png(width, height):
    """A grey PNG of width x height whose rows are all zero, compressed as deflate blocks repeated."""
    row = bytes(1 + width)
    rows_per_block = max(1, MiB // len(row))
    block = raw_deflate_blocks(row * rows_per_block)
    blocks, rest = divmod(height, rows_per_block)
    total = len(row) * height
    stream = (b"\x78\x01" + block * blocks + raw_deflate_blocks(row * rest) + FINAL_BLOCK +
              struct.pack(">I", ((total % 65521) << 16) | 1))  # the Adler-32 of zeros
    header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + png_chunk(b"IHDR", header) + png_chunk(b"IDAT", stream) + png_chunk(b"IEND", b"")


THUMBNAILS = [
    ("rle8-bmp-16384x16384", "bomb.bmp", lambda: rle8_bmp(16384, 16384)),
    ("zero-png-16384x16384", "bomb.png", lambda: zero_png(16384, 16384)),
]


@pytest.mark.parametrize("name,make", [c[1:] for c in THUMBNAILS], ids=[c[0] for c in THUMBNAILS])
def test_thumbnail_beyond_the_pixel_limit_is_refused_from_its_header(run, tool, tmp_path, name, make):
    (tmp_path / name).write_bytes(make())
    (tmp_path / "payload.bin").write_bytes(b"payload")
    env = dict(os.environ, DICAPSULE_TRACE="1")
    status, _, error, peak = measured(tool, tmp_path, "pack", "-i", "payload.bin", "-m", METADATA, "-o", "out.dcm",
                                      "-t", name, env=env)
    assert status == 1
    assert error.splitlines()[-1] == f'Error: Could not load the thumbnail file "{name}".'
    assert "Refusing image of 16384 x 16384 pixels: the limit is 67108864 pixels" in error
    assert not (tmp_path / "out.dcm").exists()
    if not sanitized(tool):
        assert peak < 100, f"peak RSS {peak:.0f} MiB"
