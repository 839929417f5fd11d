"""Files written by DCMTK and by pydicom, in every encoding and with defined and undefined
sequence lengths, read into the same tree; and our copies of them accepted by both toolkits."""

import pydicom
import pytest

from conftest import assert_same_tree, assert_same_values, data_set_only, dcmdump_is_clean, run, tool

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

DCMTK_VARIANTS = {
    "dcmtk-implicit-defined": ["+ti", "+e"],
    "dcmtk-implicit-undefined": ["+ti", "-e"],
    "dcmtk-explicit-defined": ["+te", "+e"],
    "dcmtk-explicit-undefined": ["+te", "-e"],
    "dcmtk-big-defined": ["+tb", "+e"],
    "dcmtk-big-undefined": ["+tb", "-e"],
    "dcmtk-implicit-no-preamble": ["+ti", "-F"],
}

# name: (implicit VR, little endian, transfer syntax, undefined lengths)
PYDICOM_VARIANTS = {
    f"pydicom-{encoding}-{lengths}": (implicit, little, syntax, lengths == "undefined")
    for encoding, implicit, little, syntax in [
        ("implicit", True, True, pydicom.uid.ImplicitVRLittleEndian),
        ("explicit", False, True, pydicom.uid.ExplicitVRLittleEndian),
        ("big", False, False, pydicom.uid.ExplicitVRBigEndian),
    ]
    for lengths in ("defined", "undefined")
}

VARIANTS = [*DCMTK_VARIANTS, *PYDICOM_VARIANTS]
ENCODINGS = ["implicit", "explicit", "big"]


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
    ds.is_implicit_VR = implicit
    ds.is_little_endian = little
    ds.save_as(target, write_like_original=False)


@pytest.fixture(scope="session")
def files(tmp_path_factory):
    folder = tmp_path_factory.mktemp("toolkit_files")
    dump = folder / "content.dump"
    dump.write_text(CONTENT)
    source = folder / "source.dcm"
    run("dump2dcm", dump, source)
    made = {"source": source}
    for name, options in DCMTK_VARIANTS.items():
        made[name] = folder / f"{name}.dcm"
        run("dcmconv", *options, source, made[name])
    for name, how in PYDICOM_VARIANTS.items():
        made[name] = folder / f"{name}.dcm"
        write_with_pydicom(source, made[name], *how)
    return made


@pytest.mark.parametrize("variant", VARIANTS)
def test_every_variant_reads_into_the_source_tree(files, variant):
    assert_same_tree(files[variant], files["source"])


# A data set without meta group can only be written as implicit VR: nothing else would say how it is encoded.
COPIES = [(v, e) for v in VARIANTS for e in ENCODINGS if "no-preamble" not in v or e == "implicit"]


@pytest.mark.parametrize("variant,encoding", COPIES)
def test_copies_are_accepted_by_both_toolkits(files, variant, encoding, tmp_path):
    original = files[variant]
    copy = tmp_path / "copy.dcm"
    tool("copy", original, copy, encoding)
    has_meta = "no-preamble" not in variant
    if has_meta:
        out, _ = run("dcmftest", copy)
        assert out.startswith("yes:"), out
    dcmdump_is_clean(copy)
    assert_same_tree(copy, files["source"], original)
    read_copy = pydicom.dcmread(copy, force=not has_meta)
    read_original = pydicom.dcmread(original, force=not has_meta)
    if not has_meta:
        # pydicom needs to be told how a bare data set is encoded.
        read_copy.is_implicit_VR = read_original.is_implicit_VR = True
        read_copy.is_little_endian = read_original.is_little_endian = True
    assert_same_values(data_set_only(read_copy), data_set_only(read_original))
