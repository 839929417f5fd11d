"""Packed instances through a real PACS: pack, send with storescu to an Orthanc started in a private
network namespace, fetch back over its REST API, unpack and compare; identifiers Orthanc needs to
file an instance; the preview Orthanc renders from a thumbnail duplicated into the pixel data."""
import json
import os
import pathlib
import random
import shlex
import shutil
import subprocess
import sys

import pydicom
import pytest
from PIL import Image, ImageChops, ImageStat

SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[3]))
METADATA = str(SOURCE / "examples" / "metadata.xml")
THUMBNAIL = str(SOURCE / "examples" / "thumbnail.png")
SESSION = pathlib.Path(__file__).with_name("orthanc_session.py")
IDENTIFIERS = ("PatientID", "StudyInstanceUID", "SeriesInstanceUID", "SOPInstanceUID")

# id, original name, payload size
PAYLOADS = [("one-byte", "one.bin", 1), ("odd-length", "odd length.txt", 4097), ("one-mebibyte", "scan.pdf", 1 << 20)]

# id, metadata ("xml" or "dicom": written by the fixture without any identifier), extra pack
# arguments, identifiers Orthanc must show (the others are read from the packed file)
IDENTITY_CASES = [
    ("metadata-without-patient-id", "xml", [], {"PatientID": ""}),
    ("dicom-source-without-identifiers", "dicom", [], {"PatientID": ""}),
    ("identifiers-from-command-line", "xml", ["-I", "1.2.826.0.1.3680043.2.1125.7:1.2.826.0.1.3680043.2.1125.8"
                                              ":1.2.826.0.1.3680043.2.1125.9:3"],
     {"StudyInstanceUID": "1.2.826.0.1.3680043.2.1125.7", "SeriesInstanceUID": "1.2.826.0.1.3680043.2.1125.8",
      "SOPInstanceUID": "1.2.826.0.1.3680043.2.1125.9", "InstanceNumber": "3"}),
]

# id, extra pack arguments; only the duplicated thumbnail has to render as the preview
PREVIEW_CASES = [("thumbnail-duplicated", ["-t", THUMBNAIL, "--hackforbmpacs"]), ("thumbnail-icon-only", ["-t", THUMBNAIL])]

MINIMAL_XML = ('<?xml version="1.0" encoding="UTF-8"?><orchid type="ConvertixToFp"><operations>'
               '<operation type="edition"><Patient><Name Name="PatientName" Family="Nobody"/></Patient>'
               '</operation></operations></orchid>')


def run_tool(tool, *args, cwd):
    # A cross-built tool runs under the command ctest names (wine for the Windows build).
    runner = shlex.split(os.environ.get("DICAPSULE_RUNNER", ""))
    return subprocess.run([*runner, tool, *args], cwd=cwd, capture_output=True, text=True, timeout=300)


def pack_all(tool, work):
    """Packs every case into work/; returns {case id: (packed path, payload bytes)}."""
    (work / "minimal.xml").write_text(MINIMAL_XML, encoding="utf-8")
    # A DICOM metadata source with a patient name only: no PatientID and no study or series UIDs.
    ds = pydicom.Dataset()
    ds.PatientName = "Nobody^Known"
    ds.file_meta = pydicom.dataset.FileMetaDataset()
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID = pydicom.uid.generate_uid()
    ds.file_meta.TransferSyntaxUID = pydicom.uid.ExplicitVRLittleEndian
    ds.is_little_endian, ds.is_implicit_VR = True, False
    ds.save_as(work / "minimal.dcm", write_like_original=False)
    metadata = {"xml": str(work / "minimal.xml"), "dicom": str(work / "minimal.dcm")}
    jobs = [(cid, name, size, METADATA, []) for cid, name, size in PAYLOADS]
    jobs += [(cid, "id.bin", 33, metadata[kind], extra) for cid, kind, extra, _ in IDENTITY_CASES]
    jobs += [(cid, "preview.bin", 20, METADATA, extra) for cid, extra in PREVIEW_CASES]
    packed = {}
    for cid, name, size, meta, extra in jobs:
        folder = work / cid
        folder.mkdir()
        data = random.Random(size).randbytes(size)
        (folder / name).write_bytes(data)
        done = run_tool(tool, "pack", "-i", name, "-m", meta, "-o", "packed.dcm", *extra, cwd=folder)
        assert done.returncode == 0, f"{cid}: {done.stderr}"
        packed[cid] = (folder / "packed.dcm", data)
    return packed


@pytest.fixture(scope="module")
def pacs(tmp_path_factory):
    """Packs every case, then runs the Orthanc session in a new network namespace with only loopback up."""
    tool = os.environ.get("DICAPSULE") or pytest.fail("DICAPSULE must name the built tool (ctest sets it)")
    for program in ("Orthanc", "storescu", "unshare", "ip"):
        if not shutil.which(program):
            pytest.skip(f"{program} is not installed (scripts/install-deps installs the PACS peers)")
    probe = subprocess.run(["unshare", "--net", "true"], capture_output=True, text=True)
    if probe.returncode != 0:
        pytest.skip(f"unshare --net is not permitted here: {probe.stderr.strip()}")
    work = tmp_path_factory.mktemp("pacs")
    packed = pack_all(tool, work)
    plan = {"workdir": str(work), "instances": [
        {"id": cid, "file": str(path), "sop": str(pydicom.dcmread(path).SOPInstanceUID)}
        for cid, (path, _) in packed.items()]}
    (work / "plan.json").write_text(json.dumps(plan), encoding="utf-8")
    done = subprocess.run(["unshare", "--net", "sh", "-c", 'ip link set lo up && exec "$0" "$@"',
                           sys.executable, str(SESSION), str(work / "plan.json")],
                          capture_output=True, text=True, timeout=300)
    assert done.returncode == 0, done.stderr
    report = json.loads(done.stdout)
    if not report["ready"]:
        pytest.fail("Orthanc did not start:\n" + pathlib.Path(report["orthanc_log"]).read_text()[-4000:])
    return tool, packed, report


def stored(report, cid):
    """The session's record of one case, after checking that Orthanc filed the instance."""
    instance = report["instances"][cid]
    assert instance["store"] == 0, instance["store_log"]
    assert instance["orthanc_id"], "Orthanc has no instance with the packed SOPInstanceUID"
    return instance


@pytest.mark.parametrize("cid", [c[0] for c in PAYLOADS])
def test_payload_comes_back_from_the_pacs_unchanged(pacs, tmp_path, cid):
    tool, packed, report = pacs
    path, data = packed[cid]
    fetched = stored(report, cid)["file"]
    assert fetched, "Orthanc did not return the instance's file"
    done = run_tool(tool, "unpack", "-i", fetched, "-u", "-O", str(tmp_path), cwd=tmp_path)
    assert (done.returncode, done.stderr) == (0, "")
    name = next(n for c, n, _ in PAYLOADS if c == cid)
    assert (tmp_path / name).read_bytes() == data
    # The payload's facts (name, command line) are read back alike from the fetched copy.
    assert run_tool(tool, "info", "-i", fetched, cwd=tmp_path).stdout == \
        run_tool(tool, "info", "-i", str(path), cwd=tmp_path).stdout


@pytest.mark.parametrize("cid", [c[0] for c in PAYLOADS + IDENTITY_CASES + PREVIEW_CASES])
def test_pacs_files_the_instance_under_its_identifiers(pacs, cid):
    _, packed, report = pacs
    tags = stored(report, cid)["tags"]
    packed_file = pydicom.dcmread(packed[cid][0])
    expected = {key: str(packed_file.get(key, "")) for key in IDENTIFIERS}
    expected.update(next((c[3] for c in IDENTITY_CASES if c[0] == cid), {}))
    assert {key: tags.get(key) for key in expected} == expected
    for key in ("StudyInstanceUID", "SeriesInstanceUID", "SOPInstanceUID"):
        assert tags[key], f"{key} is empty"


@pytest.mark.parametrize("cid", [c[0] for c in PREVIEW_CASES])
def test_preview_is_answered_and_shows_a_duplicated_thumbnail(pacs, record_property, cid):
    _, _, report = pacs
    instance = stored(report, cid)
    record_property("orthanc_preview_status", instance["preview_status"])
    assert instance["preview_status"] is not None
    assert report["still_running"], "Orthanc stopped answering after the preview requests"
    if cid == "thumbnail-icon-only":
        return  # only the icon carries pixels: what Orthanc renders is recorded, not judged
    assert instance["preview_status"] == 200
    thumbnail = Image.open(THUMBNAIL).convert("RGB")
    with Image.open(instance["preview"]) as preview:
        assert (preview.format, preview.size) == ("PNG", thumbnail.size)
        difference = ImageStat.Stat(ImageChops.difference(preview.convert("RGB"), thumbnail)).mean
    # Orthanc may window the pixels it renders: a small average difference is accepted.
    assert max(difference) < 4.0, difference
