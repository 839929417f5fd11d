"""Makes the benchmark's input files: PDF payloads of an exact size, a sparse 4 GiB one, and
photo-like JPEG and PNG thumbnails of 12 and 50 megapixels."""

import os
import random
import subprocess
from pathlib import Path

MIB = 1 << 20
_BLOCK = MIB  # the padding is one block of pseudo-random bytes, written again and again


def _pdf_parts(padding: int) -> tuple[bytes, bytes]:
    """Head and tail of a valid one-page PDF whose unreferenced stream object holds padding bytes.

    The stream sits between head and tail; the cross-reference table gives every object's offset,
    so the file is well formed whatever the padding's size and content.
    """
    objects = [
        b"<< /Type /Catalog /Pages 2 0 R >>",
        b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] >>",
    ]
    head = bytearray(b"%PDF-1.4\n%\xe2\xe3\xcf\xd3\n")
    offsets = []
    for number, body in enumerate(objects, start=1):
        offsets.append(len(head))
        head += b"%d 0 obj\n" % number + body + b"\nendobj\n"
    offsets.append(len(head))
    head += b"4 0 obj\n<< /Length %d >>\nstream\n" % padding
    tail = bytearray(b"\nendstream\nendobj\n")
    xref_at = len(head) + padding + len(tail)
    tail += b"xref\n0 5\n0000000000 65535 f \n"
    for offset in offsets:
        tail += b"%010d 00000 n \n" % offset
    tail += b"trailer\n<< /Size 5 /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % xref_at
    return bytes(head), bytes(tail)


def _padding_for(size: int) -> int:
    """The padding that makes the whole PDF size bytes (the /Length and startxref numbers have
    as many digits as they need, so the overhead is found by iterating to a fixed point)."""
    padding = size
    for _ in range(8):
        head, tail = _pdf_parts(max(padding, 0))
        wanted = size - len(head) - len(tail)
        if wanted == padding:
            break
        padding = wanted
    if padding < 0:
        raise ValueError(f"a PDF cannot be as small as {size} bytes")
    return padding


def make_pdf(path: Path, size: int) -> None:
    """A valid PDF of exactly size bytes, its padding not compressible and not sparse."""
    padding = _padding_for(size)
    head, tail = _pdf_parts(padding)
    block = random.Random(size).randbytes(_BLOCK)
    with open(path, "wb") as out:
        out.write(head)
        left = padding
        while left:
            chunk = min(left, _BLOCK)
            out.write(block[:chunk])
            left -= chunk
        out.write(tail)


def make_sparse_pdf(path: Path, size: int) -> None:
    """A PDF of exactly size bytes whose padding is a hole: it takes no disk space."""
    padding = _padding_for(size)
    head, tail = _pdf_parts(padding)
    with open(path, "wb") as out:
        out.write(head)
        out.seek(len(head) + padding)
        out.write(tail)


def make_jpeg(path: Path, width: int, height: int) -> None:
    """A photo-like JPEG (plasma fractal, quality 90), made once and then reused."""
    if path.exists():
        return
    subprocess.run(["/usr/bin/convert", "-seed", "1", "-size", f"{width}x{height}", "plasma:fractal",
                    "-quality", "90", str(path)], check=True, stdout=subprocess.DEVNULL)


def make_png(path: Path, source: Path) -> None:
    """An 8-bit RGB PNG of the same picture as source, made once and then reused."""
    if path.exists():
        return
    subprocess.run(["/usr/bin/convert", str(source), "-depth", "8", str(path)], check=True, stdout=subprocess.DEVNULL)


def warm(path: Path) -> None:
    """Read the whole file so that it sits in the page cache before it is timed."""
    with open(path, "rb", buffering=0) as source:
        while source.read(8 * MIB):
            pass


def free_bytes(directory: Path) -> int:
    """Bytes available to this user in the file system of directory."""
    stats = os.statvfs(directory)
    return stats.f_bavail * stats.f_frsize
