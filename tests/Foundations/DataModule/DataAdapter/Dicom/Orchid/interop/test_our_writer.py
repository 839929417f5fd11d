"""Data sets built by our writer from a tree outline, in each encoding, and copies of them in the
other encodings: accepted by dcmftest and dcmdump, and read by pydicom with the values put in."""

import struct

import pydicom
import pytest

from conftest import dcmdump_is_clean, run, tool

PIXELS = bytes(range(1, 17))  # 2 x 4 pixels of 16 bits, little endian

OUTLINE = rf"""
(0002,0000) UL 0
(0002,0001) OB hex:0001
(0002,0002) UI 1.2.840.10008.5.1.4.1.1.7
(0002,0003) UI 1.2.826.0.1.3680043.9.7.11
(0002,0010) UI 1.2.840.10008.1.2.1
(0008,0005) CS ISO_IR 100
(0008,0016) UI 1.2.840.10008.5.1.4.1.1.7
(0008,0018) UI 1.2.826.0.1.3680043.9.7.11
(0008,0060) CS OT
(0008,1115) SQ
  item
    (0008,1199) SQ
      item
        (0008,1150) UI 1.2.840.10008.5.1.4.1.1.7
        (0040,A043) SQ
          item
            (0008,0100) SH 121311
            (0008,0104) LO Odd
      item
    (0020,000E) UI 1.2.826.0.1.3680043.9.7.12
  item
(0010,0010) PN Doe^Jane
(0010,0020) LO ID7
(0018,0050) DS 2.5
(0018,9313) FD 1.5\-2.25
(0020,0013) IS 12
(0028,0002) US 1
(0028,0004) CS MONOCHROME2
(0028,0010) US 2
(0028,0011) US 4
(0028,0100) US 16
(0028,0101) US 12
(0028,0102) US 11
(0028,0103) US 0
(0029,0010) LO INTEROP TEST CREATOR
(0029,1010) LO abc
(0029,1013) FL 0.5\-8
(0029,1015) OW hex:010203040506
(0040,0275) SQ
(0072,0026) AT 00100010\00291010
(7FE0,0010) OW hex:{PIXELS.hex()}
"""

# What pydicom must read back: an expression on the data set and its value.
EXPECTED = [
    ("ds.PatientName", "Doe^Jane"),
    ("ds.PatientID", "ID7"),
    ("ds.SOPInstanceUID", "1.2.826.0.1.3680043.9.7.11"),
    ("ds.SliceThickness", 2.5),
    ("list(ds.DataCollectionCenterPatient)", [1.5, -2.25]),
    ("ds.InstanceNumber", 12),
    ("(ds.Rows, ds.Columns, ds.BitsAllocated)", (2, 4, 16)),
    ("list(ds.SelectorAttribute)", [0x00100010, 0x00291010]),
    ("len(ds.ReferencedSeriesSequence)", 2),
    ("len(ds.ReferencedSeriesSequence[1])", 0),
    ("ds.ReferencedSeriesSequence[0].SeriesInstanceUID", "1.2.826.0.1.3680043.9.7.12"),
    ("len(ds.ReferencedSeriesSequence[0].ReferencedSOPSequence)", 2),
    ("ds.ReferencedSeriesSequence[0].ReferencedSOPSequence[0].ConceptNameCodeSequence[0].CodeMeaning", "Odd"),
    ("len(ds.RequestAttributesSequence)", 0),
    ("pixel_words(ds)", [0x0201, 0x0403, 0x0605, 0x0807, 0x0A09, 0x0C0B, 0x0E0D, 0x100F]),
]

ENCODINGS = ["implicit", "explicit", "big"]


def pixel_words(ds):
    """The 16-bit pixel values, in the file's byte order (pydicom keeps OW bytes as stored)."""
    count = len(ds.PixelData) // 2
    return list(struct.unpack(("<" if ds.is_little_endian else ">") + "H" * count, ds.PixelData))


def check_file(path):
    out, _ = run("dcmftest", path)
    assert out.startswith("yes:"), out
    dcmdump_is_clean(path)
    ds = pydicom.dcmread(path)
    for expression, expected in EXPECTED:
        assert eval(expression, {"ds": ds, "pixel_words": pixel_words}) == expected, expression
    # (0002,0000) counts the meta group's bytes: the data set's first tag follows them.
    meta_end = 132 + 12 + ds.file_meta.FileMetaInformationGroupLength
    raw = path.read_bytes()
    assert raw[meta_end:meta_end + 2] == (b"\x00\x08" if not ds.is_little_endian else b"\x08\x00")


@pytest.fixture(scope="module")
def outline(tmp_path_factory):
    path = tmp_path_factory.mktemp("outline") / "tree.outline"
    path.write_text(OUTLINE)
    return path


# Read from an implicit-VR file, pixel data has the dictionary's "OB or OW" VR, which is written
# as OB: a big-endian copy then keeps 16-bit pixels in little-endian order under OB.
OX_AS_OB = pytest.mark.xfail(strict=True, reason="implicit-VR pixel data is copied as OB into big endian")
COPIES = [pytest.param(w, c, marks=OX_AS_OB) if (w, c) == ("implicit", "big") else (w, c)
          for w in ENCODINGS for c in ENCODINGS]


@pytest.mark.parametrize("encoding", ENCODINGS)
def test_written_file_is_read_back_by_the_toolkits(outline, encoding, tmp_path):
    written = tmp_path / "written.dcm"
    tool("write", outline, written, encoding)
    check_file(written)


@pytest.mark.parametrize("written_as,copied_as", COPIES)
def test_copy_of_written_file_is_read_back_by_the_toolkits(outline, written_as, copied_as, tmp_path):
    written = tmp_path / "written.dcm"
    copy = tmp_path / "copy.dcm"
    tool("write", outline, written, written_as)
    tool("copy", written, copy, copied_as)
    check_file(copy)
