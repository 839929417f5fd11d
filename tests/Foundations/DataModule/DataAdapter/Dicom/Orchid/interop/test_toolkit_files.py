"""Interoperability of the codec (through dicom_tree_tool) with DCMTK and pydicom: files both
toolkits write, in every encoding and with defined and undefined sequence lengths, read into the
same tree, and our copies of them are accepted by both; files built byte by byte for the cases
toolkits do not write on request (odd lengths, a space-padded UID, implicit-VR content in a UN of
undefined length) read and copy alike."""
import os
import shlex
import struct
import subprocess

import pydicom
import pytest
from pydicom.dataelem import DataElement_from_raw, RawDataElement

TOOL = os.environ.get("DICOM_TREE_TOOL", "")
# A cross-built tool runs under the command ctest names (wine for the Windows build).
RUNNER = shlex.split(os.environ.get("DICAPSULE_RUNNER", ""))
# Byte-swapping unit of the VRs whose bytes pydicom hands over unswapped from big-endian files.
SWAPPED_UNITS = {"OW": 2, "OF": 4, "OL": 4, "OD": 8}


def run(*args):
    """Run a program; return (stdout, stderr) as text; fail the test on a non-zero status."""
    result = subprocess.run([str(a) for a in args], capture_output=True, text=True)
    if result.returncode != 0:
        pytest.fail(f"{' '.join(map(str, args))} exited {result.returncode}:\n{result.stderr}")
    return result.stdout, result.stderr


def tool(*args):
    return run(*RUNNER, TOOL or pytest.fail("DICOM_TREE_TOOL must name the built tool (ctest sets it)"), *args)


def canonical(path, with_vr=True):
    """Our tree of a file, without its meta group (which each writer fills in its own way).
    Without with_vr the VR column is dropped: an implicit-VR file carries no VRs to compare."""
    lines = []
    for line in tool("dump", path)[0].splitlines():
        fields = line.split(" ")
        if fields[0] == "0" and fields[1].startswith("(0002,"):
            continue
        if not with_vr and len(fields) > 2 and fields[1] != "item":
            del fields[2]
        lines.append(" ".join(fields))
    return "\n".join(lines)


def assert_same_tree(path, reference_path, *other_paths):
    """Same canonical tree; VRs are compared unless one of the files (or a file the first one
    was made from, in other_paths) is implicit VR."""
    with_vr = not any(pydicom.dcmread(p, force=True).is_implicit_VR for p in (path, reference_path, *other_paths))
    assert canonical(path, with_vr) == canonical(reference_path, with_vr)


def dcmdump_is_clean(path):
    """dcmdump reads the file and prints no warning or error."""
    bad = [line for line in run("dcmdump", "-dc", path)[1].splitlines() if line.startswith(("W:", "E:", "F:"))]
    assert not bad, "\n".join(bad)


def read(path):
    """pydicom's reading of a file's data set, without its meta group; pydicom takes a bare data set
    for implicit VR little endian."""
    ds = pydicom.dcmread(path, force=True)
    ds.file_meta = pydicom.dataset.FileMetaDataset()
    return ds


def native_value(elem, big_endian):
    """The element's value with multi-byte binary units in little-endian order."""
    value, unit = elem.value, SWAPPED_UNITS.get(elem.VR)
    if big_endian and unit and isinstance(value, bytes):
        value = b"".join(value[i:i + unit][::-1] for i in range(0, len(value), unit))
    return value


def assert_same_values(actual, expected, where="root"):
    """Same tags, VRs and values in both pydicom data sets, recursively."""
    assert [e.tag for e in actual] == [e.tag for e in expected], where
    for a, e in zip(actual, expected):
        here = f"{where} {a.tag}"
        if a.VR == "UN" and e.VR != "UN" and actual.is_implicit_VR and a.tag.is_private:
            # Written as implicit VR, a private element's VR is lost: read its bytes with the VR it had.
            a = DataElement_from_raw(RawDataElement(a.tag, e.VR, len(a.value), a.value, 0, False, True))
        assert a.VR == e.VR, here
        if a.VR == "SQ":
            assert len(a.value) == len(e.value), here
            for index, (item_a, item_e) in enumerate(zip(a.value, e.value)):
                assert_same_values(item_a, item_e, f"{here}[{index}]")
        else:
            assert native_value(a, not actual.is_little_endian) == native_value(e, not expected.is_little_endian), here


LONG_TEXT = "A long text that is longer than sixty-four bytes so that its value is shown as a digest"
LONG_BYTES = "\\".join(f"{i % 256:02x}" for i in range(300))

# The content every variant carries: text, numbers, binary, a private block and nested sequences
# (three levels deep, empty items, an empty sequence), in DCMTK's dump syntax.
CONTENT = rf"""
(0008,0005) CS [ISO_IR 100]
(0008,0016) UI [1.2.840.10008.5.1.4.1.1.66]
(0008,0018) UI [1.2.826.0.1.3680043.9.7.1]
(0008,0020) DA [20240131]
(0008,0030) TM [101530.25]
(0008,0060) CS [OT]
(0008,1115) SQ (Sequence with undefined length #=3)
  (fffe,e000) na (Item with undefined length #=3)
    (0008,1160) IS [1\2\3]
    (0008,1199) SQ (Sequence with undefined length #=2)
      (fffe,e000) na (Item with undefined length #=3)
        (0008,1150) UI [1.2.840.10008.5.1.4.1.1.7]
        (0008,1155) UI [1.2.826.0.1.3680043.9.7.2]
        (0040,a043) SQ (Sequence with undefined length #=1)
          (fffe,e000) na (Item with undefined length #=3)
            (0008,0100) SH [121311]
            (0008,0102) SH [DCM]
            (0008,0104) LO [Localizer]
          (fffe,e00d) na (ItemDelimitationItem)
        (fffe,e0dd) na (SequenceDelimitationItem)
      (fffe,e00d) na (ItemDelimitationItem)
      (fffe,e000) na (Item with undefined length #=0)
      (fffe,e00d) na (ItemDelimitationItem)
    (fffe,e0dd) na (SequenceDelimitationItem)
    (0020,000e) UI [1.2.826.0.1.3680043.9.7.3]
  (fffe,e00d) na (ItemDelimitationItem)
  (fffe,e000) na (Item with undefined length #=0)
  (fffe,e00d) na (ItemDelimitationItem)
  (fffe,e000) na (Item with undefined length #=1)
    (0020,000e) UI [1.2.826.0.1.3680043.9.7.4]
  (fffe,e00d) na (ItemDelimitationItem)
(fffe,e0dd) na (SequenceDelimitationItem)
(0010,0010) PN [Doe^John]
(0010,0020) LO [ID-12345]
(0010,0030) DA (no value available)
(0010,1010) AS [042Y]
(0010,21b0) LT [{LONG_TEXT}]
(0018,0050) DS [1.5\2.25]
(0018,9219) SS -3
(0018,9313) FD 1.5\-2.25
(0020,0013) IS [7]
(0028,0010) US 4
(0028,0011) US 2\3
(0029,0010) LO [INTEROP TEST CREATOR]
(0029,1010) LO [private text]
(0029,1011) UL 4000000000
(0029,1012) OB 01\02\03\04\05\06
(0029,1013) FL 0.5\-8
(0029,1014) UN 0a\0b\0c\0d
(0029,1015) OW 0102\0304\0506
(0029,1016) SL -70000
(0029,1017) OB {LONG_BYTES}
(0040,0275) SQ (Sequence with undefined length #=0)
(fffe,e0dd) na (SequenceDelimitationItem)
(0040,a160) UT [{LONG_TEXT} and some more]
(0072,0026) AT (0010,0010)\(0029,1010)
"""

ENCODINGS = ["implicit", "explicit", "big"]
DCMTK_VARIANTS = {f"dcmtk-{encoding}-{lengths}": [f"+t{encoding[0]}", option] for encoding in ENCODINGS
                  for lengths, option in (("defined", "+e"), ("undefined", "-e"))}
DCMTK_VARIANTS["dcmtk-implicit-no-preamble"] = ["+ti", "-F"]
# name: (implicit VR, little endian, transfer syntax, undefined lengths)
PYDICOM_VARIANTS = {
    f"pydicom-{encoding}-{lengths}": (encoding == "implicit", encoding != "big", syntax, lengths == "undefined")
    for encoding, syntax in zip(ENCODINGS, [pydicom.uid.ImplicitVRLittleEndian, pydicom.uid.ExplicitVRLittleEndian,
                                            pydicom.uid.ExplicitVRBigEndian])
    for lengths in ("defined", "undefined")
}
VARIANTS = [*DCMTK_VARIANTS, *PYDICOM_VARIANTS]


def write_with_pydicom(source, target, implicit, little, syntax, undefined):
    ds = pydicom.dcmread(source)
    for elem in ds.iterall():  # converts every raw element, so values are re-encoded
        if elem.VR == "SQ":
            elem.is_undefined_length = undefined
            for item in elem.value:
                item.is_undefined_length_sequence_item = undefined
        elif elem.VR in ("OW",) and not little:
            # pydicom writes OW bytes as they are; give it big-endian words.
            elem.value = b"".join(elem.value[i:i + 2][::-1] for i in range(0, len(elem.value), 2))
    ds.file_meta.TransferSyntaxUID = syntax
    ds.is_implicit_VR, ds.is_little_endian = implicit, little
    ds.save_as(target, write_like_original=False)


@pytest.fixture(scope="session")
def files(tmp_path_factory):
    folder = tmp_path_factory.mktemp("toolkit_files")
    (folder / "content.dump").write_text(CONTENT)
    source = folder / "source.dcm"
    run("dump2dcm", folder / "content.dump", source)
    made = {"source": source}
    for name, options in DCMTK_VARIANTS.items():
        made[name] = folder / f"{name}.dcm"
        run("dcmconv", *options, source, made[name])
    for name, how in PYDICOM_VARIANTS.items():
        made[name] = folder / f"{name}.dcm"
        write_with_pydicom(source, made[name], *how)
    return made


# A data set without meta group can only be written as implicit VR: nothing else would say how it is encoded.
COPIES = [(v, e) for v in VARIANTS for e in ENCODINGS if "no-preamble" not in v or e == "implicit"]


@pytest.mark.parametrize("variant,encoding", COPIES)
def test_copies_are_accepted_by_both_toolkits(files, variant, encoding, tmp_path):
    """Each variant is read into the source's tree (a misread value or VR would carry into the copy),
    and written in each encoding for DCMTK and pydicom to read alike."""
    copy = tmp_path / "copy.dcm"
    tool("copy", files[variant], copy, encoding)
    if "no-preamble" not in variant:
        out, _ = run("dcmftest", copy)
        assert out.startswith("yes:"), out
    dcmdump_is_clean(copy)
    assert_same_tree(copy, files["source"], files[variant])
    assert_same_values(read(copy), read(files[variant]))


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

# id, file bytes, the expected tree (meta group left out), whether pydicom reads the original as
# DCMTK does (pydicom 2.3 reads a UN of undefined length in a big-endian file as big endian).
HAND_BUILT = [
    ("odd-lengths-without-preamble",
     implicit(0x0008, 0x0005, b"ISO_IR 100") + implicit(0x0010, 0x0010, b"Doe") + implicit(0x0010, 0x0020, b"7"),
     "0 (0008,0005) CS 10 49534f5f495220313030\n0 (0010,0010) PN 3 446f65\n0 (0010,0020) LO 1 37", True),
    ("uid-padded-with-space",
     meta_file("1.2.840.10008.1.2.1", explicit(0x0008, 0x0018, b"UI", b"1.2.3 ") + explicit(0x0010, 0x0020, b"LO", b"AB")),
     "0 (0008,0018) UI 6 312e322e3300\n0 (0010,0020) LO 2 4142", True),
    ("un-undefined-length-explicit-little", un_sequence_file(big=False), UN_SEQUENCE_TREE, True),
    ("un-undefined-length-explicit-big", un_sequence_file(big=True), UN_SEQUENCE_TREE, False),
]


@pytest.mark.parametrize("case_id,content,tree,pydicom_reads", HAND_BUILT, ids=[c[0] for c in HAND_BUILT])
def test_hand_built_file_reads_and_copies(case_id, content, tree, pydicom_reads, tmp_path):
    original = tmp_path / f"{case_id}.dcm"
    original.write_bytes(content)
    run("dcmdump", original)  # the bytes are a file DCMTK reads
    assert canonical(original) == tree
    for encoding in ["implicit", "explicit", "big"] if content[128:132] == b"DICM" else ["implicit"]:
        copy = tmp_path / f"copy-{encoding}.dcm"
        tool("copy", original, copy, encoding)
        dcmdump_is_clean(copy)
        if pydicom_reads:
            assert_same_values(read(copy), read(original), encoding)
