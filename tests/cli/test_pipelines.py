"""The tool in scripts and pipelines: "-" for the standard streams, --name, --version, info's JSON,
the run-time UID root, references taken from a DICOM source, DICOM terms for --encoding and the
progress line."""
import hashlib
import json
import os
import pathlib
import re
import subprocess
import time

import pydicom
import pytest

from conftest import METADATA, PAYLOAD, RUNNER, WINDOWS, edition

PYDICOM_DATA = pathlib.Path(pydicom.__file__).parent / "data"
MR_SMALL = str(PYDICOM_DATA / "test_files/MR_small.dcm")
VERSION = os.environ["DICAPSULE_VERSION"]
TEST_MODE = dict(os.environ, CONVERTIX_TESTMODE="")


def info_json(run, path):
    result = run("info", "-i", str(path), "--format", "json")
    assert (result.status, result.err) == (0, "")
    return json.loads(result.out)


@pytest.fixture
def packed(pack):
    """A packed file of PAYLOAD named "payload.bin", written as packed.dcm; its bytes."""
    return pack("-m", METADATA, output="packed.dcm").read_bytes()


# id, arguments, what standard input holds ("packed": the packed file), the file written (None:
# none), the name stored in it (pack) and what standard output holds ("payload", or the start of
# a text).
STREAMS = [
    ("pack-stdin", ["pack", "-i", "-", "-o", "out.dcm"], PAYLOAD, "out.dcm", "stdin", b""),
    ("pack-stdin-named", ["pack", "-i", "-", "--name", "r.pdf", "-o", "out.dcm"], PAYLOAD, "out.dcm", "r.pdf", b""),
    ("pack-stdin-derived", ["pack", "-i", "-"], PAYLOAD, "stdin.dcm", "stdin", b""),
    ("pack-stdin-derived-named", ["pack", "-i", "-", "--name", "r.tar.gz"], PAYLOAD, "r.tar.dcm", "r.tar.gz", b""),
    ("pack-file-named", ["pack", "-i", "payload.bin", "--name", "x", "-o", "out.dcm"], b"", "out.dcm", "x", b""),
    ("unpack-stdin", ["unpack", "-i", "-"], "packed", "stdin.bin", None, b""),
    ("unpack-stdin-original", ["unpack", "-i", "-", "-u", "-O", "u"], "packed", "u/payload.bin", None, b""),
    ("unpack-stdout", ["unpack", "-i", "packed.dcm", "-o", "-"], b"", None, None, "payload"),
    ("unpack-both", ["unpack", "-i", "-", "-o", "-"], "packed", None, None, "payload"),
    ("info-stdin", ["info", "-i", "-"], "packed", None, None, b'<?xml version="1.0"'),
]


@pytest.mark.parametrize("args,stdin,written,name,out", [c[1:] for c in STREAMS], ids=[c[0] for c in STREAMS])
def test_standard_streams(run, tmp_path, packed, args, stdin, written, name, out):
    (tmp_path / "u").mkdir()
    before = set(tmp_path.rglob("*"))
    extra = ["-m", METADATA] if args[0] == "pack" else []
    result = run(*args, *extra, stdin=packed if stdin == "packed" else stdin)
    assert (result.status, result.err) == (0, "")
    if out == "payload":
        assert result.raw_out == PAYLOAD
    else:
        assert result.raw_out.startswith(out) and bool(result.raw_out) == bool(out)
    made = {p.relative_to(tmp_path).as_posix() for p in set(tmp_path.rglob("*")) - before if p.is_file()}
    assert made == ({written} if written else set())
    if name is not None:
        assert info_json(run, written)["originalname"] == name
        assert run("unpack", "-i", written, "-o", "-").raw_out == PAYLOAD
    elif written:
        assert (tmp_path / written).read_bytes() == PAYLOAD


@pytest.mark.skipif(WINDOWS, reason="/dev/stdin is a Linux path")
@pytest.mark.parametrize("operation,options", [("unpack", ["-o", "-"]), ("info", ["--format", "json"])])
def test_dev_stdin_reads_like_the_dash(run, packed, operation, options):
    dash = run(operation, "-i", "-", *options, stdin=packed)
    device = run(operation, "-i", "/dev/stdin", *options, stdin=packed)
    assert (device.status, device.err, device.raw_out) == (0, "", dash.raw_out)


def test_pack_to_standard_output_writes_the_file_it_would_write(run, tmp_path):
    """In test mode the two differ only in the custom data, which holds the command line."""
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)
    piped = run("pack", "-i", "-", "-m", METADATA, "-o", "-", "--name", "payload.bin", stdin=PAYLOAD, env=TEST_MODE)
    assert (piped.status, piped.err) == (0, "")
    assert run("pack", "-i", "payload.bin", "-m", METADATA, "-o", "file.dcm", env=TEST_MODE).status == 0
    stream = pydicom.dcmread(pydicom.filebase.DicomBytesIO(piped.raw_out))
    file = pydicom.dcmread(tmp_path / "file.dcm")
    del stream[0x0009, 0x11A0], file[0x0009, 0x11A0]
    assert stream == file and stream.file_meta == file.file_meta
    whole = run("unpack", "-i", "-", "-o", "-", stdin=piped.raw_out)
    assert (whole.status, whole.raw_out) == (0, PAYLOAD)


STREAM_ERRORS = [
    ("unpack-nothing", ["unpack", "-i", "-"], b"", 'Error: Could not load the input file "-".\n'),
    ("info-nothing", ["info", "-i", "-"], b"", 'Error: Could not load the input file "-".\n'),
    ("info-not-dicom", ["info", "-i", "-"], b"DICM" * 100, 'Error: Could not load the input file "-".\n'),
    ("unpack-not-packed", ["unpack", "-i", "-", "-o", "-"], pathlib.Path(MR_SMALL).read_bytes(),
     'Error: The input file "-" misses Dicapsule custom data. It seems it hasn\'t been created by Dicapsule.\n'),
]


@pytest.mark.parametrize("args,stdin,message", [c[1:] for c in STREAM_ERRORS], ids=[c[0] for c in STREAM_ERRORS])
def test_stream_failures_quote_the_dash(run, args, stdin, message):
    result = run(*args, stdin=stdin)
    assert (result.status, result.out, result.err) == (1, "", message)


def test_version(run):
    result = run("--version")
    assert (result.status, result.out, result.err) == (0, f"dicapsule {VERSION}\n", "")
    assert re.fullmatch(r"\d+\.\d+\.\d+", VERSION)


REFERENCES = ["-r", "1.2.3:1.2.3.4:1.2.3.4.5:1.2.840.10008.5.1.4.1.1.7", "-r", "2.1:2.1.1:2.1.1.1"]


def test_info_json_matches_the_file(run, pack):
    path = pack("-m", METADATA, *REFERENCES)
    xml = run("info", "-i", path.name)
    assert run("info", "-i", path.name, "--format", "xml").out == xml.out
    result = run("info", "-i", path.name, "--format", "json")
    assert (result.status, result.err) == (0, "")
    info = json.loads(result.out)
    ds = pydicom.dcmread(path)
    assert list(info) == ["originalname", "commandline", "size", "sha256", "references", "instance"]
    assert (info["originalname"], info["size"]) == ("payload.bin", len(PAYLOAD))
    assert info["sha256"] == hashlib.sha256(PAYLOAD).hexdigest()
    assert info["commandline"] == " ".join(["pack", "-i", "payload.bin", "-o", "out.dcm", "-f", "-m", METADATA,
                                            *REFERENCES])
    assert info["references"] == [
        {"studyinstanceuid": "1.2.3", "seriesinstanceuid": "1.2.3.4", "sopinstanceuid": "1.2.3.4.5",
         "sopclassuid": "1.2.840.10008.5.1.4.1.1.7"},
        {"studyinstanceuid": "2.1", "seriesinstanceuid": "2.1.1", "sopinstanceuid": "2.1.1.1"}]
    keywords = ["SOPClassUID", "SOPInstanceUID", "StudyInstanceUID", "SeriesInstanceUID", "PatientID", "PatientName"]
    assert info["instance"] == {**{k: str(ds[k].value) for k in keywords},
                                "TransferSyntaxUID": ds.file_meta.TransferSyntaxUID}


def test_info_format_is_checked(run):
    result = run("info", "-i", "x.dcm", "--format", "yaml")
    assert result.status == 1 and result.err.startswith('Usage error: "yaml" is not a valid format.\n\n')


def generated_uids(ds):
    return [ds.StudyInstanceUID, ds.SeriesInstanceUID, ds.SOPInstanceUID, ds.file_meta.ImplementationClassUID,
            ds[0x0008, 0x9123].value]


ROOTS = [  # id, DICAPSULE_UID_ROOT, accepted
    ("short", "1.2.3", True),
    ("longest", "1.2.826.0.1.3680043.2.11", True),  # 24 characters
    ("too-long", "1.2.826.0.1.3680043.2.113", False),
    ("letter", "1.2.x", False),
    ("leading-zero", "1.02.3", False),
    ("empty", "", False),
    ("trailing-dot", "1.2.", False),
    ("quote", '1"2', False),
]


@pytest.mark.parametrize("root,accepted", [c[1:] for c in ROOTS], ids=[c[0] for c in ROOTS])
def test_uid_root_from_the_environment(run, tmp_path, root, accepted):
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)
    env = dict(os.environ, DICAPSULE_UID_ROOT=root)
    result = run("pack", "-i", "payload.bin", "-m", METADATA, "-o", "out.dcm", env=env)
    if not accepted:
        quoted = root.replace("&", "&&").replace('"', '&"')
        assert (result.status, result.out) == (1, "")
        assert result.err == f'Error: The UID root "{quoted}" in DICAPSULE_UID_ROOT is not valid.\n'
        assert not (tmp_path / "out.dcm").exists()
        return
    assert (result.status, result.err) == (0, "")
    for uid in generated_uids(pydicom.dcmread(tmp_path / "out.dcm")):
        assert uid.startswith(root + ".") and pydicom.uid.UID(uid).is_valid, uid


def test_uid_root_in_test_mode(pack):
    path = pack("-m", METADATA, env=dict(TEST_MODE, DICAPSULE_UID_ROOT="1.2.3"))
    assert pydicom.dcmread(path).SOPInstanceUID == "1.2.3.50.845147831.20150521162055.6676.32"


def referenced(path):
    ds = pydicom.dcmread(path)
    items = ds.get("ReferencedInstanceSequence", [])
    return [(item.ReferencedSOPClassUID, item.ReferencedSOPInstanceUID) for item in items]


SOURCES = [  # id, metadata, options, the references of info --format json (study, series, instance, class)
    ("dicom-source", MR_SMALL, [], "source"),
    ("replaced-by-r", MR_SMALL, ["-r", "1.2:1.3:1.4"], [["1.2", "1.3", "1.4", ""]]),
    ("document-source", METADATA, [], []),
]


@pytest.mark.parametrize("metadata,options,expected", [c[1:] for c in SOURCES], ids=[c[0] for c in SOURCES])
def test_references_from_a_dicom_source(run, pack, metadata, options, expected):
    if expected == "source":
        source = pydicom.dcmread(metadata)
        expected = [[source.StudyInstanceUID, source.SeriesInstanceUID, source.SOPInstanceUID, source.SOPClassUID]]
    path = pack("-m", metadata, *options)
    info = info_json(run, path.name)
    keys = ["studyinstanceuid", "seriesinstanceuid", "sopinstanceuid", "sopclassuid"]
    assert [[r.get(k, "") for k in keys] for r in info["references"]] == expected
    # (0008,114A) holds the class only when it is known, as for a --reference.
    assert referenced(path) == [(r[3], r[2]) for r in expected if r[3]]


TERMS = [  # id, --encoding value, the word it stands for
    ("ascii", "ISO_IR 6", "ascii"),
    ("ascii-2022", "ISO 2022 IR 6", "ascii"),
    ("chinese", "GB18030", "chinese"),
    ("hebrew", "ISO_IR 138", "hebrew"),
    ("japanese", "ISO 2022 IR 13\\ISO 2022 IR 87", "japanese"),
    ("korean", "\\ISO 2022 IR 149", "korean"),
    ("korean-single", "ISO 2022 IR 149", "korean"),
    ("unicode", "ISO_IR 192", "unicode"),
    ("western", " iso_ir 100 ", "western"),
    ("western-2022", "ISO 2022 IR 100", "western"),
]


@pytest.mark.parametrize("term,word", [c[1:] for c in TERMS], ids=[c[0] for c in TERMS])
def test_encoding_takes_dicom_terms(pack, term, word):
    metadata = edition(Patient='<String Name="PatientName" Value="Doe^Jane"/>')
    by_term = pydicom.dcmread(pack("-m", metadata, "-e", term, output="term.dcm"))
    by_word = pydicom.dcmread(pack("-m", metadata, "-e", word, output="word.dcm"))
    assert by_term.get("SpecificCharacterSet") == by_word.get("SpecificCharacterSet")


@pytest.mark.parametrize("term", ["ISO_IR 87", "ISO 2022 IR 87", "ISO_IR 6\\ISO 2022 IR 87", "ISO_IR 101"])
def test_encoding_refuses_other_terms(run, term):
    result = run("pack", "-i", "x", "-m", METADATA, "-e", term)
    assert result.status == 1 and result.err.startswith(f'Usage error: "{term}" is not a valid encoding.\n\n')


PROGRESS = [  # id, standard error is a terminal, test mode, a line is shown
    ("terminal", True, False, True),
    ("terminal-test-mode", True, True, False),
    ("pipe", False, False, False),
]


@pytest.mark.skipif(bool(RUNNER), reason="the pseudo-terminal is a Linux one")
@pytest.mark.parametrize("terminal,test_mode,shown", [c[1:] for c in PROGRESS], ids=[c[0] for c in PROGRESS])
def test_progress_line(tool, tmp_path, terminal, test_mode, shown):
    """A pack whose piped input takes 1.5 s to arrive: past the first second, the line is drawn."""
    import pty
    env = {k: v for k, v in os.environ.items() if k != "CONVERTIX_TESTMODE"}
    if test_mode:
        env["CONVERTIX_TESTMODE"] = ""
    master, slave = pty.openpty() if terminal else os.pipe()
    process = subprocess.Popen([tool, "pack", "-i", "-", "-m", METADATA, "-o", "out.dcm"], cwd=tmp_path, env=env,
                               stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=slave)
    os.close(slave)
    for _ in range(15):
        process.stdin.write(b"x" * 65536)
        process.stdin.flush()
        time.sleep(0.1)
    process.stdin.close()
    assert process.wait(timeout=60) == 0
    err = b""
    while True:
        try:
            chunk = os.read(master, 4096)
        except OSError:  # the terminal's other side is closed
            break
        if not chunk:
            break
        err += chunk
    os.close(master)
    if not shown:
        assert err == b""
        return
    lines = err.decode().split("\r")
    assert lines[0] == "" and len(lines) >= 3 and err.endswith(b"\r\n"), err
    # "1.00 MiB, 1016.12 KiB/s": no total while the pipe is read. A slow build may draw the copy
    # that follows too, with its total: "960.00 KiB of 960.00 KiB (100%), 73.43 MiB/s".
    unknown = r" *\d+\.\d\d (KiB|MiB), \d+\.\d\d (B|KiB|MiB)/s *"
    known = r" *\d+\.\d\d (KiB|MiB) of \d+\.\d\d (KiB|MiB) \(\d+%\), \d+\.\d\d (B|KiB|MiB)/s *"
    assert re.fullmatch(unknown, lines[1]), lines[1]
    for line in lines[2:-1]:
        assert re.fullmatch(unknown, line) or re.fullmatch(known, line), line
    assert (tmp_path / "out.dcm").stat().st_size > 15 * 65536
