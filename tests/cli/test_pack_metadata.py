"""Metadata sources of pack through the built tool: DICOM files in several character sets and transfer
syntaxes, documents given as files or as text, and what --Identifier and --Modality make of them."""
import os
import pathlib
import subprocess

import pydicom
import pytest

from conftest import METADATA, dciodvfy_errors, edition

PYDICOM_DATA = pathlib.Path(pydicom.__file__).parent / "data"

# Patient and study attributes a DICOM source hands to the packed instance.
KEPT_KEYWORDS = ["PatientName", "PatientID", "PatientBirthDate", "PatientSex", "StudyInstanceUID",
                 "AccessionNumber", "StudyID", "StudyDate", "StudyTime", "StudyDescription",
                 "ReferringPhysicianName", "PatientAge", "PatientWeight"]

PYDICOM_SOURCES = [f"charset_files/{name}.dcm" for name in (
    "chrArab", "chrFren", "chrFrenMulti", "chrGerm", "chrGreek", "chrH31", "chrH32", "chrHbrw", "chrI2",
    "chrJapMulti", "chrJapMultiExplicitIR6", "chrKoreanMulti", "chrRuss", "chrX1", "chrX2")] + [
    f"test_files/{name}.dcm" for name in (
        "CT_small", "MR_small", "MR_small_bigendian", "MR_small_implicit", "MR_small_RLE", "JPEG2000",
        "SC_rgb_jpeg_dcmtk", "rtplan", "ExplVR_LitEndNoMeta")]

# dump2dcm sources: id, dump2dcm options, Specific Character Set, encoding of the dump's bytes.
DUMP_SOURCES = [
    ("latin1-explicit-le", ["+te"], "ISO_IR 100", "latin-1"),
    ("latin1-implicit-le", ["+ti"], "ISO_IR 100", "latin-1"),
    ("latin1-explicit-be", ["+tb"], "ISO_IR 100", "latin-1"),
    ("utf8-bare-explicit-le", ["-F", "+te"], "ISO_IR 192", "utf-8"),
    ("utf8-bare-implicit-le", ["-F", "+ti"], "ISO_IR 192", "utf-8"),
    ("cyrillic-explicit-le", ["+te"], "ISO_IR 144", "iso8859_5"),
]
DUMP = """(0008,0005) CS [{charset}]
(0008,0016) UI =SecondaryCaptureImageStorage
(0008,0018) UI [1.2.826.0.1.3680043.9.7.5]
(0008,0020) DA [20240102]
(0008,0030) TM [101500]
(0008,0050) SH [ACC-7]
(0008,0060) CS [MR]
(0008,0070) LO [Acme]
(0008,1030) LO [Kontrolle {name}]
(0010,0010) PN [{name}]
(0010,0020) LO [PID-7]
(0010,0040) CS [M]
(0020,000d) UI [1.2.826.0.1.3680043.9.7]
(0020,000e) UI [1.2.826.0.1.3680043.9.7.1]
(0020,0010) SH [S7]
"""


def written_charset(source):
    """The Specific Character Set written for a source's: an empty first value before a code
    extension becomes "ISO 2022 IR 6", except before Korean, whose form keeps it empty."""
    terms = source.get("SpecificCharacterSet", "")
    if isinstance(terms, str) or terms[0] or terms[1] == "ISO 2022 IR 149":
        return terms
    return ["ISO 2022 IR 6", *terms[1:]]


def comparable(ds, keyword):
    value = ds.get(keyword, "")
    if keyword == "PatientWeight" and value != "":
        return float(value)
    # Name groups of empty components are written as nothing.
    return str(value).rstrip("^=")


def check_taken_over(source_path, packed_path):
    source = pydicom.dcmread(source_path, force=True)
    packed = pydicom.dcmread(packed_path)
    for keyword in KEPT_KEYWORDS:
        if keyword in source:
            assert comparable(packed, keyword) == comparable(source, keyword), keyword
    assert packed.get("SpecificCharacterSet", "") == written_charset(source)
    assert packed.SeriesInstanceUID not in ("", source.get("SeriesInstanceUID"))
    assert packed.SOPInstanceUID not in ("", source.get("SOPInstanceUID"), packed.SeriesInstanceUID)
    assert packed.file_meta.MediaStorageSOPInstanceUID == packed.SOPInstanceUID
    return packed


@pytest.mark.parametrize("source", PYDICOM_SOURCES)
def test_pydicom_files_give_patient_and_study_to_a_new_series(pack, source):
    check_taken_over(PYDICOM_DATA / source, pack("-m", str(PYDICOM_DATA / source)))


@pytest.mark.parametrize("options,charset,codec", [c[1:] for c in DUMP_SOURCES], ids=[c[0] for c in DUMP_SOURCES])
def test_dump2dcm_files_give_patient_and_study_to_a_new_series(pack, tmp_path, options, charset, codec):
    name = {"latin-1": "M\u00fcller^J\u00fcrgen", "utf-8": "M\u00fcller^\u00c5sa",
            "iso8859_5": "\u041c\u044e\u043b\u043b\u0435\u0440^\u042e\u0440\u0438\u0439"}[codec]
    (tmp_path / "source.txt").write_bytes(DUMP.format(charset=charset, name=name).encode(codec))
    subprocess.run(["dump2dcm", *options, "source.txt", "source.dcm"], cwd=tmp_path, check=True)
    packed = check_taken_over(tmp_path / "source.dcm", pack("-m", "source.dcm"))
    assert str(packed.PatientName) == name
    # A new series of raw data: the source's modality is not taken over.
    assert packed.Modality == "OT"


def test_document_as_file_and_as_text_write_the_same_instance(pack, tmp_path):
    env = dict(os.environ, CONVERTIX_TESTMODE="")
    text = pathlib.Path(METADATA).read_text(encoding="utf-8")
    from_file = pydicom.dcmread(pack("-m", METADATA, output="file.dcm", env=env))
    from_text = pydicom.dcmread(pack("-m", "\n  " + text, output="text.dcm", env=env))
    assert from_text.PatientName == "Doe^Jane^Q==doh^jayn"
    # Only the recorded command line, in the private custom data, tells them apart.
    from_file.remove_private_tags()
    from_text.remove_private_tags()
    assert from_text == from_file


def test_ill_formed_document_text_is_reported_as_given(run, tmp_path):
    (tmp_path / "payload.bin").write_bytes(b"x")
    text = '<orchid type="ConvertixToFp"><operations>'
    result = run("pack", "-i", "payload.bin", "-m", text)
    assert (result.status, result.out) == (1, "")
    assert result.err == ('Error: The metadata file "<orchid type=&"ConvertixToFp&"><operations>" '
                          "either doesn't exist or is ill-formed.\n")
    assert os.listdir(tmp_path) == ["payload.bin"]


WITH_UIDS = edition(Study='<String Name="StudyInstanceUID" Value="1.2.3.100"/>',
                    Series='<String Name="SeriesInstanceUID" Value="1.2.3.100.1"/><Code Name="Modality" Value="CT"/>',
                    Instance='<String Name="SOPInstanceUID" Value="1.2.3.100.1.1"/>')
WITHOUT = '<orchid type="ConvertixToFp"/>'
NEW = None  # a generated UID
REFERENCES = ["-r", "1.2.3:1.2.3.4:1.2.3.4.5", "-r", "1.2.3:1.2.3.4:1.2.3.4.6:1.2.840.10008.5.1.4.1.1.7"]

# id, metadata, options, Study, Series and SOP Instance UIDs, InstanceNumber, Modality written.
IDENTIFIERS = [
    ("none", WITHOUT, [], NEW, NEW, NEW, "1", "OT"),
    ("all", WITHOUT, ["-I", "1.2.3:1.2.3.4:1.2.3.4.5:7"], "1.2.3", "1.2.3.4", "1.2.3.4.5", "7", "OT"),
    ("empty-fields", WITHOUT, ["-I", "::"], NEW, NEW, NEW, "1", "OT"),
    ("sop-only", WITHOUT, ["-I", "::1.9", "-M", "mr"], NEW, NEW, "1.9", "1", "MR"),
    ("number-only", WITHOUT, ["-I", ":::12", "--Modality", "Doc"], NEW, NEW, NEW, "12", "DOC"),
    ("from-metadata", WITH_UIDS, [], "1.2.3.100", "1.2.3.100.1", "1.2.3.100.1.1", "1", "CT"),
    ("study-overrides", WITH_UIDS, ["-I", "1.9.8:::", "-M", "sr"], "1.9.8", "1.2.3.100.1", "1.2.3.100.1.1", "1", "SR"),
    ("series-overrides", WITH_UIDS, ["--Identifier", ":1.9.8.7"], "1.2.3.100", "1.9.8.7", "1.2.3.100.1.1", "1", "CT"),
    ("dicom-source", str(PYDICOM_DATA / "test_files/MR_small.dcm"), ["-I", "::2.25.1:4"],
     "1.3.6.1.4.1.5962.1.2.4.20040826185059.5457", NEW, "2.25.1", "4", "OT"),
    ("example-with-references", METADATA, REFERENCES, NEW, NEW, NEW, "1", "DOC"),
]


@pytest.mark.parametrize("metadata,options,study,series,sop,number,modality", [c[1:] for c in IDENTIFIERS],
                         ids=[c[0] for c in IDENTIFIERS])
def test_identifiers_and_modality_written(pack, metadata, options, study, series, sop, number, modality):
    path = pack("-m", metadata, *options)
    ds = pydicom.dcmread(path)
    written = [ds.StudyInstanceUID, ds.SeriesInstanceUID, ds.SOPInstanceUID]
    for value, expected in zip(written, [study, series, sop]):
        if expected is NEW:
            assert pydicom.uid.UID(value).is_valid and value not in ("1.2.3.100", "1.2.3.100.1", "1.2.3.100.1.1")
        else:
            assert value == expected
    assert len(set(written)) == 3
    assert ds.file_meta.MediaStorageSOPInstanceUID == ds.SOPInstanceUID
    assert (ds.InstanceNumber, ds.Modality, ds.SOPClassUID) == (int(number), modality, "1.2.840.10008.5.1.4.1.1.66")
    assert ds[0x0018, 0x1020].value == "Dicapsule 2.0.10"
    assert dciodvfy_errors(path) == []
