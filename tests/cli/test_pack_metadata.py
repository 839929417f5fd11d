"""Metadata sources of pack through the built tool.

DICOM files as other toolkits write them: pydicom's sample files, files made at test time with
dump2dcm and pydicom (a file per VR in each encoding, each Specific Character Set term, undeclared
Latin-1, deflated files, packed files modified afterwards). Each gives its patient and study to a
new series in the character set it names; each packed file unpacks byte for byte, and every file
pack writes from them reads cleanly in dcmdump, gdcminfo, pydicom and dciodvfy, and in unpack and
info. Edition documents, given as files or as text: every VR, nesting limits, and what --Identifier
and --Modality make of them. --encoding: the Specific Character Set written, text read back by
pydicom, text the chosen set cannot hold, and the metadata's own set when no --encoding is given."""
import os
import pathlib
import struct
import subprocess

import pydicom
import pytest
from pydicom.dataset import FileDataset, FileMetaDataset
from pydicom.uid import DeflatedExplicitVRLittleEndian, ExplicitVRBigEndian, ExplicitVRLittleEndian, \
    ImplicitVRLittleEndian

from conftest import METADATA, PAYLOAD, WINDOWS, dciodvfy_errors, edition

PATIENT = {"PatientName": "Doe^John", "PatientID": "PID-42", "PatientBirthDate": "19700101", "PatientSex": "M"}
STUDY = {"StudyInstanceUID": "1.2.826.0.1.3680043.9.7.42", "StudyDate": "20240131", "StudyTime": "101530",
         "AccessionNumber": "ACC-42", "StudyID": "S42"}

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


# One standard attribute per VR with a value of it: (VR, tag, value).
VR_ELEMENTS = [
    ("AE", 0x00400001, "STATION_AE"), ("AS", 0x0072005F, "042Y"), ("AT", 0x00000901, 0x00100010),
    ("CS", 0x00189004, "RESEARCH"), ("DA", 0x00140102, "20240131"), ("DS", 0x00140030, "1.5"),
    ("DT", 0x00181078, "20240131101530"), ("FD", 0x00189073, 1.5), ("FL", 0x00180013, 2.5),
    ("IS", 0x00142004, "7"), ("LO", 0x00181016, "Maker"), ("LT", 0x00140046, "Material notes"),
    ("OB", 0x00143080, b"\x01\x02\x03\x04"), ("OD", 0x00660022, struct.pack("<2d", 1.5, -2.5)),
    ("OF", 0x00181638, struct.pack("<2f", 1.5, -2.5)), ("OL", 0x00660040, struct.pack("<2I", 1, 2)),
    ("OV", 0x00720081, struct.pack("<2Q", 1, 2)), ("OW", 0x00720069, struct.pack("<2H", 1, 2)),
    ("PN", 0x00140104, "Roe^Jane"), ("SH", 0x00142016, "Label"), ("SL", 0x00186020, -5),
    ("SS", 0x00189219, -3), ("ST", 0x00400280, "Comments"), ("SV", 0x00720082, -7),
    ("TM", 0x00140103, "101530"), ("UC", 0x00189367, "Source 1"), ("UI", 0x00081155, "1.2.826.0.1.3680043.9.7.9"),
    ("UL", 0x00081161, 7), ("UN", 0x0072006D, b"\x01\x02"), ("UR", 0x00081190, "http://pacs/wado"),
    ("US", 0x00540081, 7), ("UT", 0x00160020, "Unlimited text"), ("UV", 0x00720083, 9),
]
ENCODINGS = {"implicit": ImplicitVRLittleEndian, "explicit-le": ExplicitVRLittleEndian,
             "explicit-be": ExplicitVRBigEndian}

# Specific Character Set terms with a Patient's Name they can hold.
CHARSETS = [
    ("ISO_IR 6", "Doe^John"), ("ISO_IR 13", "ﾔﾏﾀﾞ^ﾀﾛｳ"), ("ISO_IR 100", "Jérôme^Müller"),
    ("ISO_IR 101", "Łukasz^Dvořák"), ("ISO_IR 109", "Ġorġ^Ħabib"), ("ISO_IR 110", "Ģirts^Šķēle"),
    ("ISO_IR 126", "Αθηνά^Παππά"), ("ISO_IR 127", "قباني^لنزار"), ("ISO_IR 138", "שרון^דבורה"),
    ("ISO_IR 144", "Иванов^Иван"), ("ISO_IR 148", "Şahin^Ömer"), ("ISO_IR 166", "สมชาย^ใจดี"),
    ("ISO_IR 192", "Jérôme^山田"), ("GB18030", "王^小东"), ("GBK", "王^小东"),
    ("ISO 2022 IR 6", "Doe^John"), ("ISO 2022 IR 100", "Jérôme^Müller"), ("ISO 2022 IR 101", "Łukasz^Dvořák"),
    ("ISO 2022 IR 109", "Ġorġ^Ħabib"), ("ISO 2022 IR 110", "Ģirts^Šķēle"), ("ISO 2022 IR 126", "Αθηνά^Παππά"),
    ("ISO 2022 IR 127", "قباني^لنزار"), ("ISO 2022 IR 138", "שרון^דבורה"), ("ISO 2022 IR 144", "Иванов^Иван"),
    ("ISO 2022 IR 148", "Şahin^Ömer"), ("ISO 2022 IR 166", "สมชาย^ใจดี"),
    (["ISO 2022 IR 13", "ISO 2022 IR 87"], "ﾔﾏﾀﾞ^ﾀﾛｳ=山田^太郎"),
    (["", "ISO 2022 IR 149"], "Hong^Gildong=洪^吉洞=홍^길동"),
    pytest.param(["", "ISO 2022 IR 87", "ISO 2022 IR 159"], "Yamada^Taro=山田^丂",
                 marks=pytest.mark.skipif(WINDOWS, reason="wine's EUC-JP code page lacks JIS X 0212")),
]


def new_source(**extra):
    ds = FileDataset("source.dcm", {}, file_meta=FileMetaDataset(), preamble=b"\0" * 128)
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID = "1.2.826.0.1.3680043.9.7.43"
    ds.Modality, ds.SeriesInstanceUID = "OT", "1.2.826.0.1.3680043.9.7.44"
    for keyword, value in {**PATIENT, **STUDY, **extra}.items():
        setattr(ds, keyword, value)
    return ds


def save(ds, path, syntax=ExplicitVRLittleEndian):
    ds.file_meta.TransferSyntaxUID = syntax
    ds.is_implicit_VR, ds.is_little_endian = syntax == ImplicitVRLittleEndian, syntax != ExplicitVRBigEndian
    ds.save_as(path, write_like_original=False)
    return path


def run_peer(*command):
    result = subprocess.run(command, capture_output=True)
    return result.returncode, (result.stdout + result.stderr).decode("utf-8", "replace")


def assert_peers_read_cleanly(path, source=None):
    """No complaint from dcmdump, gdcminfo or dciodvfy; from dciodvfy none that it does not also
    make of the source (it refuses ISO 2022 text without escape sequences and JIS X 0201
    katakana, whoever wrote them)."""
    status, dump = run_peer("dcmdump", str(path))
    assert status == 0 and "W: " not in dump and "E: " not in dump, dump
    status, report = run_peer("gdcminfo", str(path))
    assert status == 0 and "error" not in report.lower(), report
    assert not set(dciodvfy_errors(path)) - set(dciodvfy_errors(source) if source else ())


def write_edition(tmp_path, **scopes):
    (tmp_path / "metadata.xml").write_text(edition(**scopes), encoding="utf-8")
    return str(tmp_path / "metadata.xml")


def try_pack(run, tmp_path, metadata, *options, env=None):
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)
    return run("pack", "-i", "payload.bin", "-m", metadata, "-o", "out.dcm", *options, env=env)


def assert_unpacks_and_describes(run, tmp_path, packed):
    result = run("unpack", "-i", str(packed), "-o", "restored.bin", "-f")
    assert (result.status, result.err) == (0, ""), result.err
    assert (tmp_path / "restored.bin").read_bytes() == PAYLOAD
    info = run("info", "-i", str(packed))
    assert (info.status, info.err) == (0, "")


def written_charset(source):
    """The Specific Character Set written for a source's: an empty first value before a code
    extension becomes "ISO 2022 IR 6", except before Korean, whose form keeps it empty; the default
    repertoire is written as no term and GBK as its superset GB18030."""
    terms = source.get("SpecificCharacterSet", "")
    if isinstance(terms, str):
        return {"ISO_IR 6": "", "GBK": "GB18030"}.get(terms, terms)
    return terms if terms[0] or terms[1] == "ISO 2022 IR 149" else ["ISO 2022 IR 6", *terms[1:]]


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


@pytest.mark.parametrize("encoding", ENCODINGS)
@pytest.mark.parametrize("vr, tag, value", VR_ELEMENTS, ids=[e[0] for e in VR_ELEMENTS])
def test_file_of_each_vr_is_accepted_as_metadata(run, pack, tmp_path, vr, tag, value, encoding):
    ds = new_source()
    ds.add_new(tag, vr, value)
    source = save(ds, tmp_path / "source.dcm", ENCODINGS[encoding])
    packed = pack("-m", str(source))
    check_taken_over(source, packed)
    assert_peers_read_cleanly(packed)
    assert_unpacks_and_describes(run, tmp_path, packed)


@pytest.mark.parametrize("charset, name", CHARSETS, ids=[str(c.values[0] if hasattr(c, "values") else c[0]) for c in CHARSETS])
def test_each_character_set_term_is_accepted(run, pack, tmp_path, charset, name):
    source = save(new_source(SpecificCharacterSet=charset, PatientName=name), tmp_path / "source.dcm")
    assert str(pydicom.dcmread(source).PatientName) == name  # the peer wrote what we meant
    packed = pack("-m", str(source))
    check_taken_over(source, packed)
    assert_peers_read_cleanly(packed, source)
    assert_unpacks_and_describes(run, tmp_path, packed)


def test_undeclared_latin1_is_read_as_latin1(run, pack, tmp_path):
    source = save(new_source(PatientName="Jerome^Muller"), tmp_path / "source.dcm")
    name = "Jérôme^Müller"
    source.write_bytes(source.read_bytes().replace(b"Jerome^Muller", name.encode("latin-1"), 1))
    packed = pack("-m", str(source))
    ds = pydicom.dcmread(packed)
    assert str(ds.PatientName) == name
    assert ds.SpecificCharacterSet == "ISO_IR 192"
    assert_peers_read_cleanly(packed)


def test_deflated_files_are_read(run, pack, tmp_path):
    """A deflated metadata source; a packed file deflated by pydicom (by DCMTK: see the streaming case)."""
    source = save(new_source(), tmp_path / "plain.dcm")
    deflated_source = tmp_path / "deflated-source.dcm"
    subprocess.run(["dcmconv", "+td", str(source), str(deflated_source)], check=True)
    assert pydicom.dcmread(deflated_source).file_meta.TransferSyntaxUID == DeflatedExplicitVRLittleEndian
    packed = pack("-m", str(deflated_source))
    check_taken_over(source, packed)
    ds = pydicom.dcmread(packed)
    ds.file_meta.TransferSyntaxUID = DeflatedExplicitVRLittleEndian
    ds.save_as(tmp_path / "pydicom-deflated.dcm", write_like_original=False)
    assert_unpacks_and_describes(run, tmp_path, tmp_path / "pydicom-deflated.dcm")


@pytest.mark.parametrize("change", [
    "(0008,1190)=http://pacs/wado", "(0018,9367)=Source 1", "(0016,0020)=Unlimited", "(0010,1000)=Other ID"])
def test_packed_file_modified_by_dcmodify_still_unpacks(run, pack, tmp_path, change):
    source = save(new_source(), tmp_path / "source.dcm")
    packed = pack("-m", str(source))
    subprocess.run(["dcmodify", "-nb", "-i", change, str(packed)], check=True, capture_output=True)
    assert_unpacks_and_describes(run, tmp_path, packed)
    check_taken_over(source, pack("-m", str(packed), output="again.dcm"))  # and as metadata of a new pack


# Edition documents: each VR text can carry, at top level and inside a sequence item.
TEXT_VRS = [e for e in VR_ELEMENTS if isinstance(e[2], str) or e[0] in ("FD", "FL", "SL", "SS", "SV", "UL", "US", "UV")]


def element_xml(tag, vr, value):
    return f'<Element Tag="({tag >> 16:04X},{tag & 0xFFFF:04X})" VR="{vr}" Value="{value}"/>'


@pytest.mark.parametrize("inside_sequence", [False, True], ids=["top-level", "in-sequence"])
def test_edition_with_each_vr_writes_a_clean_file(run, pack, tmp_path, inside_sequence):
    elements = "".join(element_xml(tag, vr, value) for vr, tag, value in TEXT_VRS)
    if inside_sequence:
        elements = f'<Sequence Name="ImageSetSelectorSequence"><Item>{elements}</Item></Sequence>'
    document = write_edition(tmp_path, Patient='<Name Name="PatientName" Family="Doe" Given="John"/>',
                             Instance=elements)
    packed = pack("-m", document)
    ds = pydicom.dcmread(packed)
    assert str(ds.PatientName) == "Doe^John"
    holder = ds.ImageSetSelectorSequence[0] if inside_sequence else ds
    for vr, tag, value in TEXT_VRS:
        assert holder[tag].VR == vr
        assert str(holder[tag].value) == str(value), vr
    assert_peers_read_cleanly(packed)
    assert_unpacks_and_describes(run, tmp_path, packed)


@pytest.mark.parametrize("depth, accepted", [(64, True), (65, False)])
def test_nesting_deeper_than_the_reader_accepts_is_refused(run, tmp_path, depth, accepted):
    nested = ""
    for _ in range(depth):
        nested = f'<Sequence Name="ImageSetSelectorSequence"><Item>{nested}</Item></Sequence>'
    result = try_pack(run, tmp_path, write_edition(tmp_path, Instance=nested))
    if accepted:
        assert (result.status, result.err) == (0, "")
        assert_unpacks_and_describes(run, tmp_path, tmp_path / "out.dcm")
    else:
        assert result.status == 1 and "either doesn't exist or is ill-formed" in result.err
        assert not (tmp_path / "out.dcm").exists()


def test_trace_reaches_standard_error_on_request(run, tmp_path):
    document = write_edition(tmp_path, Instance=element_xml(0x00100010, "PN", "x"))
    quiet = try_pack(run, tmp_path, document)
    traced = try_pack(run, tmp_path, document, env={"DICAPSULE_TRACE": "1", "PATH": "/usr/bin:/bin"})
    assert quiet.status == traced.status == 1
    extra = traced.err.replace(quiet.err, "")
    assert "Module LVDataEditor LVDataEditor.cpp:" in extra and "(0010,0010)" in extra


@pytest.mark.parametrize("body_part, laterality", [("CHEST", None), ("KNEE", ""), (None, "")],
                         ids=["unpaired", "paired", "unknown"])
def test_laterality_only_where_the_body_part_may_be_paired(run, pack, tmp_path, body_part, laterality):
    series = f'<String Name="BodyPartExamined" Value="{body_part}"/>' if body_part else ""
    ds = pydicom.dcmread(pack("-m", write_edition(tmp_path, Series=series)))
    assert ds.get("Laterality") == laterality
    assert not dciodvfy_errors(tmp_path / "out.dcm")


@pytest.mark.skipif(WINDOWS, reason="measures the peak memory of a native process")
def test_deflated_unpack_streams_the_payload(run, tool, tmp_path):
    big = bytes(range(251)) * ((48 << 20) // 251)
    (tmp_path / "big.bin").write_bytes(big)
    source = save(new_source(), tmp_path / "source.dcm")
    assert run("pack", "-i", "big.bin", "-m", str(source), "-o", "plain.dcm").status == 0
    subprocess.run(["dcmconv", "+td", str(tmp_path / "plain.dcm"), str(tmp_path / "deflated.dcm")], check=True)
    peaks = {}
    for name in ("plain", "deflated"):
        # Measured by GNU time: a child of this process would count the test's own memory, which fork hands on.
        command = ["unpack", "-i", str(tmp_path / f"{name}.dcm"), "-o", str(tmp_path / f"{name}.bin")]
        result = subprocess.run(["/usr/bin/time", "-f", "%M", "-o", str(tmp_path / "time.txt"), tool, *command],
                                capture_output=True)
        assert result.returncode == 0, result.stderr
        peaks[name] = int((tmp_path / "time.txt").read_text().split()[-1]) / 1024
        assert (tmp_path / f"{name}.bin").read_bytes() == big
    # The payload is never held whole: inflating costs far less than its 48 MiB over a plain
    # unpack (about 7.5 MiB each in an optimised build; sanitizers raise both alike).
    assert peaks["deflated"] < peaks["plain"] + 16, peaks


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
    result = try_pack(run, tmp_path, '<orchid type="ConvertixToFp"><operations>')
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
    assert ds[0x0018, 0x1020].value == "Dicapsule " + os.environ["DICAPSULE_VERSION"]
    assert dciodvfy_errors(path) == []


def named(name, description="", charset="", meaning=""):
    """A document with a patient's name, a study description, the meaning of a code in a sequence item
    and a Specific Character Set, each if given."""
    instance = f'<String Name="SpecificCharacterSet" Value="{charset}"/>' if charset else ""
    if meaning:
        instance += ('<Sequence Name="ImageSetSelectorSequence"><Item><Code Name="ProcedureCodeSequence" Code="P1" '
                     f'Scheme="99X" Meaning="{meaning}"/></Item></Sequence>')
    return edition(Patient=f'<String Name="PatientName" Value="{name}"/><String Name="PatientID" Value="ID-1"/>',
                   Study=f'<String Name="StudyDescription" Value="{description}"/>' if description else "",
                   Instance=instance)


def meaning(ds):
    return ds.ImageSetSelectorSequence[0].ProcedureCodeSequence[0].CodeMeaning


# word, patient name that needs it, study description, Specific Character Set expected.
ENCODING_WORDS = [
    ("ascii", "Doe^John", "Check-up", ""),
    ("western", "Buc^J\u00e9r\u00f4me", "Contr\u00f4le d\u00e9taill\u00e9", "ISO_IR 100"),
    ("hebrew", "\u05e9\u05e8\u05d5\u05df^\u05d3\u05d1\u05d5\u05e8\u05d4", "\u05d1\u05d3\u05d9\u05e7\u05d4", "ISO_IR 138"),
    ("japanese", "Yamada^Tarou=\u5c71\u7530^\u592a\u90ce=\u3084\u307e\u3060^\u305f\u308d\u3046",
     "\u30ec\u30f3\u30c8\u30b2\u30f3 \u691c\u67fb", ["ISO 2022 IR 13", "ISO 2022 IR 87"]),
    ("korean", "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9", "\uac80\uc0ac", ["", "ISO 2022 IR 149"]),
    ("chinese", "Wang^XiaoDong=\u738b^\u5c0f\u6771", "\u68c0\u67e5 \u62a5\u544a", "GB18030"),
    ("unicode", "G\u00fcrsoy^\u00d6mer=\u5c71\u7530^\u592a\u90ce=\ud64d^\uae38\ub3d9",
     "\u05d1\u05d3\u05d9\u05e7\u05d4 \u68c0\u67e5", "ISO_IR 192"),
    ("KOREAN", "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9", "", ["", "ISO 2022 IR 149"]),
]


@pytest.mark.parametrize("word,name,description,charset", ENCODING_WORDS, ids=[c[0] for c in ENCODING_WORDS])
def test_encoding_writes_its_character_set_and_the_text_reads_back(pack, word, name, description, charset):
    # The metadata asks for UTF-8: the command line wins.
    path = pack("-m", named(name, description, "ISO_IR 192", description or "x"), "-e", word)
    ds = pydicom.dcmread(path)
    assert ds.get("SpecificCharacterSet", "") == charset
    assert (str(ds.PatientName), ds.get("StudyDescription", ""), meaning(ds)) == (name, description, description or "x")
    assert dciodvfy_errors(path) == []


UNWRITABLE = [
    ("kanji-in-western", ["-e", "western"], "\u5c71\u7530^\u592a\u90ce"),
    ("accent-in-ascii", ["-e", "ascii"], "Buc^J\u00e9r\u00f4me"),
    ("hangul-in-hebrew", ["-e", "hebrew"], "\ud64d^\uae38\ub3d9"),
    ("hebrew-in-japanese", ["-e", "japanese"], "\u05e9\u05e8\u05d5\u05df"),
    ("hebrew-in-korean", ["-e", "korean"], "\u05e9\u05e8\u05d5\u05df"),
    ("kanji-in-a-sequence-in-western", ["-e", "western"], "Doe^John", "\u5c71\u7530"),
]


@pytest.mark.parametrize("options,name,meaning", [(c + ("",))[1:4] for c in UNWRITABLE], ids=[c[0] for c in UNWRITABLE])
def test_text_the_character_set_cannot_hold_is_refused(run, tmp_path, options, name, meaning):
    result = try_pack(run, tmp_path, named(name, meaning=meaning), *options)
    assert (result.status, result.out) == (1, "")
    assert result.err == 'Error: Could not write the output Dicom file "out.dcm".\n'
    assert os.listdir(tmp_path) == ["payload.bin"]


# Specific Character Set of the metadata document -> written without --encoding; a document that
# names none gets UTF-8 when its text (a sequence item's included) needs more than ASCII, and no
# Specific Character Set otherwise. The name is also the meaning of a code in a sequence item, unless
# a row gives that meaning.
KEPT = [(row + (row[1],))[:4] for row in [
    (None, "Buc^J\u00e9r\u00f4me", "ISO_IR 192"),
    (None, "Doe^John", None),
    (None, "Doe^John", "ISO_IR 192", "Contr\u00f4le"),
    ("ISO_IR 100", "Buc^J\u00e9r\u00f4me", "ISO_IR 100"),
    ("ISO_IR 144", "\u041b\u044e\u043a\u0441\u0435\u043c\u0431\u0443\u0440\u0433^\u0410\u0433\u043d\u0435\u0441\u0441\u0430",
     "ISO_IR 144"),
    ("\\ISO 2022 IR 149", "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9", ["", "ISO 2022 IR 149"]),
    ("\\ISO 2022 IR 87", "Yamada^Tarou=\u5c71\u7530^\u592a\u90ce", ["ISO 2022 IR 6", "ISO 2022 IR 87"]),
    ("GB18030", "Wang^XiaoDong=\u738b^\u5c0f\u6771", "GB18030"),
]]


@pytest.mark.parametrize("source,name,written,code_meaning", KEPT, ids=[f"{c[0]}-{c[1][:3]}-{c[3][:3]}" for c in KEPT])
def test_without_encoding_the_metadata_character_set_is_kept(pack, source, name, written, code_meaning):
    ds = pydicom.dcmread(pack("-m", named(name, charset=source, meaning=code_meaning)))
    assert ds.get("SpecificCharacterSet") == written
    assert (str(ds.PatientName), meaning(ds)) == (name, code_meaning)
