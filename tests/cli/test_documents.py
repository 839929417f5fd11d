"""The standard Encapsulated Document classes: pack --class document and auto, and unpack and info of
document instances written by this tool and by other toolkits (DCMTK, GDCM, pydicom), made at test time."""
import hashlib
import struct
import subprocess

import pydicom
import pytest
from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.uid import ExplicitVRLittleEndian, generate_uid

from conftest import METADATA, dciodvfy_errors, dcmftest_accepts

STL_UID = "1.2.840.10008.5.1.4.1.1.104.3"
PDF = b"%PDF-1.4\n1 0 obj\n<< /Type /Catalog >>\nendobj\ntrailer\n<< /Root 1 0 R >>\n%%EOF\n"  # odd length
CDA = (b'<?xml version="1.0"?>\n<ClinicalDocument xmlns="urn:hl7-org:v3"><id root="2.16.840.1.113883.19.4" '
       b'extension="c266"/><title>Note</title></ClinicalDocument>')
STL = b"binary stl".ljust(80, b" ") + struct.pack("<I", 2) + bytes(range(100))
OBJ = b"v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"
MTL = b"newmtl red\nKd 1 0 0\n"

# id, file name, bytes, SOP Class UID, MIME type, modality
DOCUMENTS = [
    ("pdf", "report.PDF", PDF, "1.2.840.10008.5.1.4.1.1.104.1", "application/pdf", "DOC"),
    ("cda", "note.xml", CDA, "1.2.840.10008.5.1.4.1.1.104.2", "text/XML", "DOC"),
    ("stl", "jaw.bin", STL, STL_UID, "model/stl", "M3D"),
    ("obj", "jaw.OBJ", OBJ, "1.2.840.10008.5.1.4.1.1.104.4", "model/obj", "M3D"),
    ("mtl", "jaw.mtl", MTL, "1.2.840.10008.5.1.4.1.1.104.5", "model/mtl", "M3D"),
]


def validation_errors(path, sop_class):
    """dciodvfy's errors; this dicom3tools edition has no OBJ and MTL IODs, so those instances are
    checked against the STL IOD, whose modules they share (with STL's MIME type, its one difference)."""
    if sop_class in ("1.2.840.10008.5.1.4.1.1.104.4", "1.2.840.10008.5.1.4.1.1.104.5"):
        ds = pydicom.dcmread(path)
        ds.SOPClassUID = ds.file_meta.MediaStorageSOPClassUID = STL_UID
        ds.MIMETypeOfEncapsulatedDocument = "model/stl"
        path = path.with_name("as-stl.dcm")
        ds.save_as(path)
    return dciodvfy_errors(path)


@pytest.mark.parametrize("mode", ["document", "auto"])
@pytest.mark.parametrize("case", DOCUMENTS, ids=[c[0] for c in DOCUMENTS])
def test_document_classes_are_written_and_read_back(run, tmp_path, case, mode):
    _, name, data, sop_class, mime, modality = case
    (tmp_path / name).write_bytes(data)
    result = run("pack", "-i", name, "-m", METADATA, "-c", mode, "-o", "out.dcm", "-r", "1.2:1.2.3:1.2.3.4")
    assert (result.status, result.out, result.err) == (0, "", "")
    ds = pydicom.dcmread(tmp_path / "out.dcm")
    assert (ds.SOPClassUID, ds.file_meta.MediaStorageSOPClassUID) == (sop_class, sop_class)
    assert (ds.MIMETypeOfEncapsulatedDocument, ds.Modality) == (mime, modality)
    assert ds[0x00420015].value == len(data)
    assert ds.EncapsulatedDocument[:len(data)] == data
    assert (0x0009, 0x11A0) in ds and b"Dicapsule.PackedFile.Content" not in (tmp_path / "out.dcm").read_bytes()
    assert validation_errors(tmp_path / "out.dcm", sop_class) == []

    assert run("unpack", "-i", "out.dcm").status == 0
    assert (tmp_path / ("out" + name[name.rindex("."):])).read_bytes() == data
    info = run("info", "-i", "out.dcm").out
    assert f'originalname="{name}"' in info and 'sopinstanceuid="1.2.3.4"' in info
    assert f'size="{len(data)}" sha256="{hashlib.sha256(data).hexdigest()}"' in info


def test_dcm2pdf_extracts_the_packed_pdf(run, tmp_path):
    (tmp_path / "a.pdf").write_bytes(PDF)
    assert run("pack", "-i", "a.pdf", "-m", METADATA, "-c", "document").status == 0
    subprocess.run(["dcm2pdf", "a.dcm", "back.pdf"], cwd=tmp_path, check=True)
    assert (tmp_path / "back.pdf").read_bytes() == PDF


@pytest.mark.parametrize("name, data", [("flat.stl", b"solid cube\nendsolid cube\n"), ("notes.txt", b"hello"),
                                        ("fake.pdf", b"PDF-1.4 no signature"), ("empty.obj", b""),
                                        ("other.xml", b'<ClinicalDocument xmlns="urn:other"/>')],
                         ids=["ascii-stl", "text", "unsigned-pdf", "empty-obj", "foreign-xml"])
def test_other_types_are_refused_as_documents_and_packed_raw_by_auto(run, tmp_path, name, data):
    (tmp_path / name).write_bytes(data)
    result = run("pack", "-i", name, "-m", METADATA, "-c", "document", "-o", "out.dcm")
    assert (result.status, result.out) == (1, "")
    assert result.err == f'Error: The input file "{name}" is not a PDF, CDA, STL, OBJ or MTL document.\n'
    assert not (tmp_path / "out.dcm").exists()
    assert run("pack", "-i", name, "-m", METADATA, "-c", "auto", "-o", "out.dcm").status == 0
    assert pydicom.dcmread(tmp_path / "out.dcm").SOPClassUID == "1.2.840.10008.5.1.4.1.1.66"


def test_raw_class_keeps_a_pdf_as_raw_data(run, tmp_path):
    (tmp_path / "a.pdf").write_bytes(PDF)
    assert run("pack", "-i", "a.pdf", "-m", METADATA, "-c", "raw").status == 0
    assert pydicom.dcmread(tmp_path / "a.dcm").SOPClassUID == "1.2.840.10008.5.1.4.1.1.66"
    assert dcmftest_accepts(tmp_path / "a.dcm")


def pydicom_document(path, data, sop_class, mime, length=None):
    """An Encapsulated Document as a pydicom script writes one: the value padded to even length by the
    caller or by pydicom (with NUL), (0042,0015) only when given."""
    ds = Dataset()
    ds.file_meta = FileMetaDataset()
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID = sop_class
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID = generate_uid()
    ds.file_meta.TransferSyntaxUID = ExplicitVRLittleEndian
    ds.PatientName, ds.PatientID, ds.Modality = "Doe^Jane", "P1", "DOC"
    ds.MIMETypeOfEncapsulatedDocument = mime
    ds.EncapsulatedDocument = data
    if length is not None:
        ds.add_new(0x00420015, "UL", length)
    ds.save_as(path, write_like_original=False)


def dcmtk(tool, *options):
    def make(source, output, cwd):
        subprocess.run([tool, *options, source, output], cwd=cwd, check=True, capture_output=True)
    return make


def gdcm_reencoded(option):
    def make(source, output, cwd):
        subprocess.run(["pdf2dcm", source, "dcmtk.dcm"], cwd=cwd, check=True)
        subprocess.run(["gdcmconv", option, "dcmtk.dcm", output], cwd=cwd, check=True)
    return make


def with_pydicom(value, sop_class="1.2.840.10008.5.1.4.1.1.104.1", mime="application/pdf", length=None):
    def make(source, output, cwd):
        pydicom_document(cwd / output, value, sop_class, mime, length)
    return make


ODD_XML = CDA + b"\r\n"  # odd: a NUL or a space pads it
EVEN_PDF = PDF + b"\n"
UNENDED_PDF = PDF[:-6] + b"\0"  # even, and its last NUL is no pad: no "%%EOF" before it
assert (len(PDF) % 2, len(ODD_XML) % 2, len(EVEN_PDF) % 2, len(UNENDED_PDF) % 2) == (1, 1, 0, 0)
FOREIGN = [
    ("pdf2dcm-explicit", "a.pdf", PDF, dcmtk("pdf2dcm", "+te"), ".pdf"),
    ("pdf2dcm-big-endian", "a.pdf", PDF, dcmtk("pdf2dcm", "+tb"), ".pdf"),
    ("pdf2dcm-implicit", "a.pdf", PDF, dcmtk("pdf2dcm", "+ti"), ".pdf"),
    ("pdf2dcm-even", "a.pdf", EVEN_PDF, dcmtk("pdf2dcm"), ".pdf"),
    ("cda2dcm", "a.xml", CDA, dcmtk("cda2dcm"), ".xml"),
    ("stl2dcm", "a.stl", STL, dcmtk("stl2dcm"), ".stl"),
    ("gdcm-deflated", "a.pdf", PDF, gdcm_reencoded("--deflated"), ".pdf"),
    ("gdcm-implicit", "a.pdf", PDF, gdcm_reencoded("--implicit"), ".pdf"),
    ("pydicom-odd-pdf", "a.pdf", PDF, with_pydicom(PDF), ".pdf"),
    ("pydicom-even-pdf", "a.pdf", EVEN_PDF, with_pydicom(EVEN_PDF), ".pdf"),
    ("pydicom-pdf-nul-not-after-eof", "a.pdf", UNENDED_PDF, with_pydicom(UNENDED_PDF), ".pdf"),
    ("pydicom-xml-space", "a.xml", ODD_XML,
     with_pydicom(ODD_XML + b" ", "1.2.840.10008.5.1.4.1.1.104.2", "text/xml"), ".xml"),
    ("pydicom-xml-nul", "a.xml", ODD_XML, with_pydicom(ODD_XML, "1.2.840.10008.5.1.4.1.1.104.2", "text/XML"), ".xml"),
    ("pydicom-odd-length", "a.pdf", PDF, with_pydicom(PDF + b"\0", length=len(PDF)), ".pdf"),
]


@pytest.mark.parametrize("case", FOREIGN, ids=[c[0] for c in FOREIGN])
def test_documents_of_other_toolkits_unpack_byte_for_byte(run, tmp_path, case):
    _, source, data, make, extension = case
    (tmp_path / source).write_bytes(data)
    make(source, "foreign.dcm", tmp_path)
    result = run("unpack", "-i", "foreign.dcm")
    assert (result.status, result.out, result.err) == (0, "", "")
    assert (tmp_path / ("foreign" + extension)).read_bytes() == data
    (tmp_path / "named").mkdir()
    assert run("unpack", "-i", "foreign.dcm", "-u", "-O", "named").status == 0
    assert (tmp_path / "named" / ("foreign" + extension)).read_bytes() == data
    info = run("info", "-i", "foreign.dcm")
    assert (info.status, info.err) == (0, "")
    assert f'<parameters originalname="" commandline="" size="{len(data)}" />' in info.out


def test_a_document_length_beyond_its_value_is_refused(run, tmp_path):
    pydicom_document(tmp_path / "bad.dcm", PDF + b"\0", "1.2.840.10008.5.1.4.1.1.104.1", "application/pdf", 4096)
    result = run("unpack", "-i", "bad.dcm", "-o", "out.pdf")
    assert (result.status, result.err) == (1, 'Error: Could not extract the packed file from the input file "bad.dcm".\n')
    assert not (tmp_path / "out.pdf").exists()


def test_a_damaged_document_fails_its_digest(run, tmp_path):
    (tmp_path / "report.pdf").write_bytes(PDF)
    assert run("pack", "-i", "report.pdf", "-m", METADATA, "-c", "document", "-o", "out.dcm").status == 0
    packed = bytearray((tmp_path / "out.dcm").read_bytes())
    at = packed.rindex(b"/Catalog")
    packed[at] ^= 0x20
    (tmp_path / "out.dcm").write_bytes(packed)
    result = run("unpack", "-i", "out.dcm", "-o", "back.pdf")
    assert (result.status, result.err) == (
        1, 'Error: The packed file of the input file "out.dcm" does not match its SHA-256 digest.\n')
    assert not (tmp_path / "back.pdf").exists()
    assert run("unpack", "-i", "out.dcm", "-o", "back.pdf", "--no-verify").status == 0
