"""Files built byte by byte for the cases toolkits do not write on request (odd lengths, a
space-padded UID, implicit-VR content in a UN of undefined length)."""

import struct

import pydicom
import pytest

from conftest import assert_same_values, canonical, data_set_only, dcmdump_is_clean, run, tool

UNDEFINED = 0xFFFFFFFF
LONG_LENGTH_VRS = {b"OB", b"OW", b"OF", b"SQ", b"UN", b"UT"}


def tag(group, element, big=False):
    return struct.pack(">HH" if big else "<HH", group, element)


def implicit(group, element, value):
    """(gggg,eeee) with a 32-bit length, little endian."""
    return tag(group, element) + struct.pack("<I", len(value)) + value


def explicit(group, element, vr, value, big=False, length=None):
    """An explicit-VR element; length overrides the length field (e.g. UNDEFINED)."""
    length = len(value) if length is None else length
    order = ">" if big else "<"
    if vr in LONG_LENGTH_VRS:
        return tag(group, element, big) + vr + b"\0\0" + struct.pack(order + "I", length) + value
    return tag(group, element, big) + vr + struct.pack(order + "H", length) + value


def delimiter(element, big=False):
    """Item (E000) with undefined length, or an item/sequence delimitation (E00D, E0DD)."""
    return tag(0xFFFE, element, big) + struct.pack(">I" if big else "<I", UNDEFINED if element == 0xE000 else 0)


def uid(text):
    """A UID value padded to even length with NUL."""
    return text.encode() + b"\0" * (len(text) % 2)


def meta_file(syntax, data_set):
    """Preamble, "DICM" and a meta group naming the transfer syntax, then the data set bytes."""
    meta = (explicit(0x0002, 0x0001, b"OB", b"\0\1") + explicit(0x0002, 0x0002, b"UI", uid("1.2.840.10008.5.1.4.1.1.66"))
            + explicit(0x0002, 0x0003, b"UI", uid("1.2.826.0.1.3680043.9.7.9")) + explicit(0x0002, 0x0010, b"UI", uid(syntax)))
    return b"\0" * 128 + b"DICM" + explicit(0x0002, 0x0000, b"UL", struct.pack("<I", len(meta))) + meta + data_set


CREATOR = b"INTEROP TEST CREATOR"


def un_sequence_file(big):
    """A private UN of undefined length whose content is implicit VR little endian, as the
    standard requires, between two elements in the file's own encoding."""
    content = (delimiter(0xE000) + implicit(0x0010, 0x0020, b"ID42") + implicit(0x0028, 0x0010, b"\4\0")
               + delimiter(0xE00D) + delimiter(0xE000) + delimiter(0xE00D) + delimiter(0xE0DD))
    data_set = (explicit(0x0029, 0x0010, b"LO", CREATOR, big)
                + explicit(0x0029, 0x1020, b"UN", b"", big, length=UNDEFINED) + content
                + explicit(0x0029, 0x1021, b"LO", b"after ", big))
    return meta_file("1.2.840.10008.1.2.2" if big else "1.2.840.10008.1.2.1", data_set)


UN_SEQUENCE_TREE = """\
0 (0029,0010) LO 20 494e5445524f5020544553542043524541544f52
0 (0029,1020) SQ items=2
1 item
1 (0010,0020) LO 4 49443432
1 (0028,0010) US 2 0400
1 item
0 (0029,1021) LO 6 616674657220"""

BOTH = {"dcmtk", "pydicom"}

# id, file bytes, the expected tree (meta group left out), the toolkits that read the original
# (pydicom 2.3 reads a UN of undefined length in a big-endian file as big endian).
HAND_BUILT = [
    ("odd-lengths-without-preamble",
     implicit(0x0008, 0x0005, b"ISO_IR 100") + implicit(0x0010, 0x0010, b"Doe") + implicit(0x0010, 0x0020, b"7"),
     "0 (0008,0005) CS 10 49534f5f495220313030\n0 (0010,0010) PN 3 446f65\n0 (0010,0020) LO 1 37", BOTH),
    ("uid-padded-with-space",
     meta_file("1.2.840.10008.1.2.1", explicit(0x0008, 0x0018, b"UI", b"1.2.3 ") + explicit(0x0010, 0x0020, b"LO", b"AB")),
     "0 (0008,0018) UI 6 312e322e3300\n0 (0010,0020) LO 2 4142", BOTH),
    ("un-undefined-length-explicit-little", un_sequence_file(big=False), UN_SEQUENCE_TREE, BOTH),
    ("un-undefined-length-explicit-big", un_sequence_file(big=True), UN_SEQUENCE_TREE, {"dcmtk"}),
]


def read_with_pydicom(path):
    ds = pydicom.dcmread(path, force=True)
    if "TransferSyntaxUID" not in ds.file_meta:
        ds.file_meta.TransferSyntaxUID = pydicom.uid.ImplicitVRLittleEndian
    return ds


@pytest.mark.parametrize("case_id,content,tree,readers", HAND_BUILT, ids=[c[0] for c in HAND_BUILT])
def test_hand_built_file_reads_and_copies(case_id, content, tree, readers, tmp_path):
    original = tmp_path / f"{case_id}.dcm"
    original.write_bytes(content)
    if "dcmtk" in readers:
        run("dcmdump", original)  # the bytes are a file DCMTK reads
    assert canonical(original) == tree
    encodings = ["implicit", "explicit", "big"] if content[128:132] == b"DICM" else ["implicit"]
    for encoding in encodings:
        copy = tmp_path / f"copy-{encoding}.dcm"
        tool("copy", original, copy, encoding)
        dcmdump_is_clean(copy)
        if "pydicom" in readers:
            assert_same_values(data_set_only(read_with_pydicom(copy)), data_set_only(read_with_pydicom(original)), encoding)
