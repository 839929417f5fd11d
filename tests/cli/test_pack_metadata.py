"""Metadata documents of pack through the built tool, given as files or as text, and what
--Identifier and --Modality make of them."""
import os
import pathlib

import pydicom
import pytest

from conftest import METADATA, dciodvfy_errors, edition

PYDICOM_DATA = pathlib.Path(pydicom.__file__).parent / "data"

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
