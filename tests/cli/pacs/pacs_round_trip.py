"""Packed instances through a real PACS: pack, send with storescu to an Orthanc started in a private
network namespace, fetch back over its REST API, unpack and compare; identifiers Orthanc needs to
file an instance; the preview Orthanc renders from a thumbnail duplicated into the pixel data; a PDF
packed as an Encapsulated PDF, served by Orthanc as a PDF and surviving its default anonymization.

Run as a script (pacs_round_trip.py PLAN.json) inside the namespace, the module is the Orthanc
session: it starts Orthanc with a temporary configuration, sends each planned file, fetches back what
Orthanc kept, stops Orthanc and prints one JSON report on standard output.
PLAN: {"workdir": dir, "instances": [{"id": case id, "file": path, "sop": SOPInstanceUID, "document": bool}]}
Report: {"ready": bool, "still_running": bool, "orthanc_log": path, "instances": {case id: {"store":
         exit status, "store_log": text, "orthanc_id": id or None, "file": path of the fetched copy,
         "tags": simplified tags, "preview_status": HTTP status, "preview": path of the preview or None,
         "pdf": path of /pdf's answer or None, "anonymized": path of the anonymized file or None}}}
"""
import ctypes
import json
import os
import pathlib
import random
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import time
import urllib.error
import urllib.request

import pydicom
import pytest
from PIL import Image, ImageChops, ImageStat

SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[3]))
METADATA = str(SOURCE / "examples" / "metadata.xml")
THUMBNAIL = str(SOURCE / "examples" / "thumbnail.png")
IDENTIFIERS = ("PatientID", "StudyInstanceUID", "SeriesInstanceUID", "SOPInstanceUID")

# id, original name, payload size
PAYLOADS = [("one-byte", "one.bin", 1), ("odd-length", "odd length.txt", 4097), ("one-mebibyte", "scan.pdf", 1 << 20)]
# Sent in implicit VR (storescu -xi) to an Orthanc that transcodes what it receives to explicit VR
# little endian: without our dictionary, the private sequence is stored as UN.
TRANSCODED = [("ingest-transcoded", "scan.pdf", 300_001), ("ingest-transcoded-small", "note.txt", 999)]
INGEST_SYNTAX = "1.2.840.10008.1.2.1"

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
PREVIEW_CASES = [("thumbnail-duplicated", ["-t", THUMBNAIL, "--hackforbmpacs"]),
                 ("thumbnail-icon-only", ["-t", THUMBNAIL])]

# A PDF packed as an Encapsulated PDF, with a reference.
DOCUMENT_CASE, DOCUMENT_NAME = "encapsulated-pdf", "report.pdf"
REPORT = (SOURCE / "examples" / "report.pdf").read_bytes()
DOCUMENT_PAYLOAD = REPORT + b"\n" * (1 - len(REPORT) % 2)  # odd length: the stored value is padded

MINIMAL_XML = ('<?xml version="1.0" encoding="UTF-8"?><orchid type="ConvertixToFp"><operations>'
               '<operation type="edition"><Patient><Name Name="PatientName" Family="Nobody"/></Patient>'
               '</operation></operations></orchid>')
CALLED_AET, LOOPBACK = "DICAPSULEPACS", "127.0.0.1"
# Proxies from the environment are ignored: every request goes to the loopback address.
OPENER = urllib.request.build_opener(urllib.request.ProxyHandler({}))


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_STREAM) as s:
        s.bind((LOOPBACK, 0))
        return s.getsockname()[1]


def request(port, path, body=None):
    """(HTTP status, body bytes); status None when nothing answered."""
    try:
        with OPENER.open(urllib.request.Request(f"http://{LOOPBACK}:{port}{path}", data=body,
                                                method="POST" if body else "GET"), timeout=30) as answer:
            return answer.status, answer.read()
    except urllib.error.HTTPError as e:
        return e.code, e.read()
    except (urllib.error.URLError, OSError):
        return None, b""


def exchange(http_port, dicom_port, workdir, case):
    report = {"orthanc_id": None, "file": None, "tags": None, "preview_status": None, "preview": None, "pdf": None,
              "anonymized": None}
    try:
        done = subprocess.run(["storescu", *case.get("store_options", []), "-aet", "DICAPSULETEST", "-aec", CALLED_AET,
                               LOOPBACK, str(dicom_port), case["file"]], capture_output=True, text=True, timeout=60)
        report["store"], report["store_log"] = done.returncode, done.stdout + done.stderr
    except subprocess.TimeoutExpired:
        report["store"], report["store_log"] = None, "storescu did not finish"
    status, found = request(http_port, "/tools/lookup", case["sop"].encode("ascii"))
    ids = [entry["ID"] for entry in (json.loads(found) if status == 200 else []) if entry.get("Type") == "Instance"]
    if len(ids) != 1:
        return report
    instance = report["orthanc_id"] = ids[0]
    status, tags = request(http_port, f"/instances/{instance}/simplified-tags")
    report["tags"] = json.loads(tags) if status == 200 else None
    for key, status_key, url, suffix in (("file", None, "file", "fetched.dcm"),
                                         ("preview", "preview_status", "preview", "preview.png")):
        status, data = request(http_port, f"/instances/{instance}/{url}")
        if status_key:
            report[status_key] = status
        if status == 200:
            report[key] = str(workdir / f"{case['id']}.{suffix}")
            pathlib.Path(report[key]).write_bytes(data)
    if case.get("document"):
        for key, url, body, suffix in (("pdf", "pdf", None, "served.pdf"), ("anonymized", "anonymize", b"{}", "anon.dcm")):
            status, data = request(http_port, f"/instances/{instance}/{url}", body)
            if status == 200:
                report[key] = str(workdir / f"{case['id']}.{suffix}")
                pathlib.Path(report[key]).write_bytes(data)
    return report


def die_with_parent():
    """Runs in the Orthanc child: if this session is killed (the test's timeout), Orthanc goes too."""
    ctypes.CDLL(None, use_errno=True).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG


def main(plan_path):
    plan = json.loads(pathlib.Path(plan_path).read_text(encoding="utf-8"))
    workdir = pathlib.Path(plan["workdir"])
    dicom_port, http_port = free_port(), free_port()
    while http_port == dicom_port:
        http_port = free_port()
    config = workdir / "orthanc.json"
    config.write_text(json.dumps({
        "Name": "DicapsuleTestPacs", "StorageDirectory": str(workdir / "storage"),
        "IndexDirectory": str(workdir / "index"), "StorageCompression": False, "Plugins": [], "LuaScripts": [],
        "HttpServerEnabled": True, "HttpPort": http_port, "RemoteAccessAllowed": False,
        "AuthenticationEnabled": False, "SslEnabled": False, "DicomServerEnabled": True, "DicomAet": CALLED_AET,
        "DicomPort": dicom_port, "DicomCheckCalledAet": False, "DicomModalities": {}, "OrthancPeers": {},
        "SaveJobs": False, "IngestTranscoding": INGEST_SYNTAX}), encoding="utf-8")
    log_path = workdir / "orthanc.log"
    result = {"ready": False, "instances": {}, "orthanc_log": str(log_path)}
    with open(log_path, "wb") as log:
        orthanc = subprocess.Popen(["Orthanc", "--no-jobs", str(config)], cwd=workdir, stdin=subprocess.DEVNULL,
                                   stdout=log, stderr=subprocess.STDOUT, preexec_fn=die_with_parent)
        try:
            deadline = time.monotonic() + 30
            while not result["ready"] and orthanc.poll() is None and time.monotonic() < deadline:
                result["ready"] = request(http_port, "/system")[0] == 200
                time.sleep(0 if result["ready"] else 0.2)
            if result["ready"]:
                for case in plan["instances"]:
                    result["instances"][case["id"]] = exchange(http_port, dicom_port, workdir, case)
                result["still_running"] = request(http_port, "/system")[0] == 200
        finally:
            orthanc.terminate()
            try:
                orthanc.wait(15)
            except subprocess.TimeoutExpired:
                orthanc.kill()
                orthanc.wait()
    json.dump(result, sys.stdout)


def run_tool(tool, *args, cwd):
    """The tool, under the command ctest names for a cross-built tool (wine for the Windows build)."""
    return subprocess.run([*shlex.split(os.environ.get("DICAPSULE_RUNNER", "")), tool, *args], cwd=cwd,
                          capture_output=True, text=True, timeout=300)


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
    jobs = [(cid, name, size, METADATA, []) for cid, name, size in PAYLOADS + TRANSCODED]
    jobs += [(cid, "id.bin", 33, metadata[kind], extra) for cid, kind, extra, _ in IDENTITY_CASES]
    jobs += [(cid, "preview.bin", 20, METADATA, extra) for cid, extra in PREVIEW_CASES]
    jobs += [(DOCUMENT_CASE, DOCUMENT_NAME, None, METADATA, ["-c", "document", "-r", "1.2.3:1.2.3.4:1.2.3.4.5"])]
    packed = {}
    for cid, name, size, meta, extra in jobs:
        folder = work / cid
        folder.mkdir()
        data = DOCUMENT_PAYLOAD if size is None else random.Random(size).randbytes(size)
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
        {"id": cid, "file": str(path), "sop": str(pydicom.dcmread(path).SOPInstanceUID),
         "store_options": ["-xi"] if cid in dict((c[0], c) for c in TRANSCODED) else [],
         "document": cid == DOCUMENT_CASE}
        for cid, (path, _) in packed.items()]}
    (work / "plan.json").write_text(json.dumps(plan), encoding="utf-8")
    done = subprocess.run(["unshare", "--net", "sh", "-c", 'ip link set lo up && exec "$0" "$@"',
                           sys.executable, __file__, str(work / "plan.json")],
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


@pytest.mark.parametrize("cid", [c[0] for c in PAYLOADS + TRANSCODED])
def test_payload_comes_back_from_the_pacs_unchanged(pacs, tmp_path, cid):
    tool, packed, report = pacs
    path, data = packed[cid]
    fetched = stored(report, cid)["file"]
    assert fetched, "Orthanc did not return the instance's file"
    done = run_tool(tool, "unpack", "-i", fetched, "-u", "-O", str(tmp_path), cwd=tmp_path)
    assert (done.returncode, done.stderr) == (0, "")
    name = next(n for c, n, _ in PAYLOADS + TRANSCODED if c == cid)
    assert (tmp_path / name).read_bytes() == data
    # The payload's facts (name, command line) are read back alike from the fetched copy.
    assert run_tool(tool, "info", "-i", fetched, cwd=tmp_path).stdout == \
        run_tool(tool, "info", "-i", str(path), cwd=tmp_path).stdout
    if cid in dict((c[0], c) for c in TRANSCODED):
        # Proof that the copy went through the transcoding it is here for.
        fetched_file = pydicom.dcmread(fetched)
        assert fetched_file.file_meta.TransferSyntaxUID == INGEST_SYNTAX
        assert fetched_file[0x0009, 0x11A0].VR == "UN"


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


def test_pacs_serves_the_packed_pdf_and_keeps_it_through_anonymization(pacs, tmp_path):
    tool, packed, report = pacs
    instance = stored(report, DOCUMENT_CASE)
    assert instance["pdf"], "Orthanc did not serve the instance as a PDF"
    assert pathlib.Path(instance["pdf"]).read_bytes() == DOCUMENT_PAYLOAD
    assert instance["anonymized"], "Orthanc did not anonymize the instance"
    # The private data goes, with the name, command line and references; the document stays.
    done = run_tool(tool, "unpack", "-i", instance["anonymized"], "-o", "back.pdf", cwd=tmp_path)
    assert (done.returncode, done.stderr) == (0, "")
    assert (tmp_path / "back.pdf").read_bytes() == DOCUMENT_PAYLOAD
    info = run_tool(tool, "info", "-i", instance["anonymized"], cwd=tmp_path).stdout
    assert f'<parameters originalname="" commandline="" size="{len(DOCUMENT_PAYLOAD)}" />' in info
    assert "reference" not in info


if __name__ == "__main__":
    os.umask(0o077)
    main(sys.argv[1])
