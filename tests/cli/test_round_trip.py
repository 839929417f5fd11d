"""pack -> info -> unpack through the built tool: payloads, names, output naming and every message."""
import hashlib
import os
import random
import subprocess

import pydicom
import pytest

from conftest import METADATA, SEP, WINDOWS


def make_payload(directory, name, size):
    data = random.Random(size).randbytes(size)
    (directory / name).write_bytes(data)
    return directory / name, data


@pytest.mark.parametrize("name", [
    "my report.pdf",
    pytest.param('quote"d.txt', marks=pytest.mark.skipif(WINDOWS, reason="Windows file names hold no double quote")),
    "R&D.bin", "caf\u00e9 \u5c71\u7530.dat", "no_extension", ".hidden",
])
def test_names_round_trip_and_are_reported(run, tmp_path, name):
    source, data = make_payload(tmp_path, name, 100)
    assert run("pack", "-i", name, "-m", METADATA, "-o", "out.dcm").status == 0
    info = run("info", "-i", "out.dcm")
    escaped = name.replace("&", "&amp;").replace('"', "&quot;")
    quoted = f"&quot;{escaped}&quot;" if " " in name else escaped
    assert (info.status, info.err) == (0, "")
    assert (f'<parameters originalname="{escaped}" commandline="pack -i {quoted} -m {METADATA} -o out.dcm" '
            f'size="100" sha256="{hashlib.sha256(data).hexdigest()}" />' in info.out)
    source.unlink()
    assert run("unpack", "-i", "out.dcm", "-u").status == 0
    assert (tmp_path / name).read_bytes() == data


def test_info_document(run, tmp_path):
    _, data = make_payload(tmp_path, "r.pdf", 10)
    assert run("pack", "-i", "r.pdf", "-m", METADATA, "-r", "1.2.3:1.2.3.4:1.2.3.4.5",
               "-r", "1.2.3:1.2.3.4:1.2.3.4.6:1.2.840.10008.5.1.4.1.1.66").status == 0
    result = run("info", "-i", "r.dcm")
    assert (result.status, result.err) == (0, "")
    assert result.out == (
        '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
        '<orchid type="Dicapsule">\n'
        f'\t<parameters originalname="r.pdf" commandline="pack -i r.pdf -m {METADATA} -r 1.2.3:1.2.3.4:1.2.3.4.5 '
        f'-r 1.2.3:1.2.3.4:1.2.3.4.6:1.2.840.10008.5.1.4.1.1.66" size="10" sha256="{hashlib.sha256(data).hexdigest()}" />\n'
        '\t<references>\n'
        '\t\t<reference studyinstanceuid="1.2.3" seriesinstanceuid="1.2.3.4" sopinstanceuid="1.2.3.4.5" />\n'
        '\t\t<reference studyinstanceuid="1.2.3" seriesinstanceuid="1.2.3.4" sopinstanceuid="1.2.3.4.6" '
        'sopclassuid="1.2.840.10008.5.1.4.1.1.66" />\n'
        '\t</references>\n'
        '</orchid>\n')
    packed = pydicom.dcmread(tmp_path / "r.dcm")
    # Only a reference that names its SOP class can be an item of the standard sequence.
    items = packed.ReferencedInstanceSequence
    assert [item.ReferencedSOPInstanceUID for item in items] == ["1.2.3.4.6"]
    assert items[0].ReferencedSOPClassUID == "1.2.840.10008.5.1.4.1.1.66"
    assert all(item.PurposeOfReferenceCodeSequence[0].CodingSchemeDesignator == "99DCAPS" for item in items)


def test_existing_outputs_need_force(run, tmp_path):
    make_payload(tmp_path, "a.pdf", 40)
    assert run("pack", "-i", "a.pdf", "-m", METADATA).status == 0
    again = run("pack", "-i", "missing.pdf", "-m", METADATA, "-o", "a.dcm")
    assert (again.status, again.err) == (1, 'Error: "a.dcm" already exists. Use the --force option to overwrite it.\n')
    assert run("pack", "-i", "a.pdf", "-m", METADATA, "-f").status == 0

    (tmp_path / "a.pdf").unlink()
    assert run("unpack", "-i", "a.dcm").status == 0
    twice = run("unpack", "-i", "a.dcm")
    assert (twice.status, twice.err) == (1, f'Error: ".{SEP}a.pdf" already exists. Use the --force option to overwrite it.\n')
    (tmp_path / "a.pdf").write_bytes(b"changed")
    assert run("unpack", "-i", "a.dcm", "-f").status == 0
    assert len((tmp_path / "a.pdf").read_bytes()) == 40


PACK = ["pack", "-i", "a.pdf", "-o", "x.dcm", "-m"]


@pytest.mark.parametrize("args,message", [
    (["pack", "-i", "missing.pdf", "-m", METADATA, "-o", "x.dcm"], 'Could not read "missing.pdf".'),
    (PACK + ["nothing.xml"], 'The metadata file "nothing.xml" either doesn\'t exist or is ill-formed.'),
    (PACK + ["a.pdf"], 'The metadata file "a.pdf" either doesn\'t exist or is ill-formed.'),
    pytest.param(PACK + [b"meta\xffdata.xml"], "Cannot decode UTF-8 string.",
                 marks=pytest.mark.skipif(WINDOWS, reason="a UTF-16 command line holds no ill-formed UTF-8")),
    (PACK + [METADATA, "-t", "a.pdf"], 'Could not load the thumbnail file "a.pdf".'),
    (["pack", "-i", "a.pdf", "-m", METADATA, "-o", "no/dir/x.dcm"],
     'Could not write the output Dicom file "no/dir/x.dcm". The directory "no/dir" does not exist.'),
    (PACK + [METADATA, "-M", "XYZ"], '"XYZ" is not a valid modality.'),
    (PACK + [METADATA, "-I", "1.2.a"], '"1.2.a" is not a valid UID.'),
    (PACK + [METADATA, "-r", "1.2.3:1.2.3.4:1.2.x"], '"1.2.x" is not a valid UID.'),
    (PACK + [METADATA, "-r", "1.2.3:1.2.3.4:1.2.3.4.5:1.2.840..1"], '"1.2.840..1" is not a valid UID.'),
    (PACK + [METADATA, "-r", "1.2.3:1.2.3.4:1.2.3.4.5", "-r", "01.2:1.3:1.4"], '"01.2" is not a valid UID.'),
    (["unpack", "-i", "missing.dcm"], 'Could not load the input file "missing.dcm".'),
    (["info", "-i", "a.pdf"], 'Could not load the input file "a.pdf".'),
    (["unpack", "-i", "a.dcm", "-O", "no/dir"], f'Could not open "no/dir{SEP}a.pdf". The directory "no/dir" does not exist.'),
])
def test_operation_errors(run, tmp_path, args, message):
    make_payload(tmp_path, "a.pdf", 20)
    assert run("pack", "-i", "a.pdf", "-m", METADATA).status == 0
    before = sorted(os.listdir(tmp_path))
    result = run(*args)
    assert (result.status, result.out, result.err) == (1, "", "Error: " + message + "\n")
    assert sorted(os.listdir(tmp_path)) == before


@pytest.mark.parametrize("operation", ["info", "unpack"])
def test_foreign_file_is_not_a_packed_file(run, tmp_path, operation):
    (tmp_path / "foreign.txt").write_text("(0008,0016) UI =SecondaryCaptureImageStorage\n(0008,0018) UI [1.2.3.4]\n"
                                          "(0010,0010) PN [Doe^John]\n(0010,0020) LO [X1]\n")
    subprocess.run(["dump2dcm", "foreign.txt", "foreign.dcm"], cwd=tmp_path, check=True)
    for name in ("foreign.dcm",):
        result = run(operation, "-i", name)
        assert (result.status, result.out) == (1, "")
        assert result.err == (f'Error: The input file "{name}" misses Dicapsule custom data. '
                              "It seems it hasn't been created by Dicapsule.\n")


def test_truncated_and_corrupted_files_fail_cleanly(run, tmp_path):
    make_payload(tmp_path, "a.pdf", 5000)
    assert run("pack", "-i", "a.pdf", "-m", METADATA).status == 0
    whole = (tmp_path / "a.dcm").read_bytes()
    for label, data in {"cut-header": whole[:200], "cut-payload": whole[:-1000], "cut-last": whole[:-1],
                        "garbage": whole[:132] + bytes(range(256)) * 4}.items():
        (tmp_path / "bad.dcm").write_bytes(data)
        for args in (["info", "-i", "bad.dcm"], ["unpack", "-i", "bad.dcm", "-o", "out.bin"]):
            result = run(*args)
            assert (result.status, result.out) == (1, ""), label
            assert result.err.startswith("Error: "), label
            assert not (tmp_path / "out.bin").exists(), label


# The identifiers and stamps of test mode: the configured root, then the fixed machine number,
# time and process id of the test identity, and the kind and counter of each identifier.
FIXED = "845147831.20150521162055.6676"


@pytest.mark.parametrize("identifier,study,series", [
    ([], f"10.{FIXED}.1", f"20.{FIXED}.2"),
    (["-I", "1.2.3::"], None, f"20.{FIXED}.1"),
], ids=["generated", "study-given"])
def test_test_mode_is_reproducible_with_fixed_identifiers(run, tmp_path, identifier, study, series):
    root = os.environ.get("DICAPSULE_ORG_UID_ROOT") or pytest.fail("ctest passes the configured UID root")
    env = dict(os.environ, CONVERTIX_TESTMODE="")
    outputs = []
    for index in range(2):
        directory = tmp_path / f"run{index}"
        directory.mkdir()
        make_payload(directory, "a.pdf", 999)
        assert run("pack", "-i", "a.pdf", "-m", METADATA, *identifier, env=env, cwd=directory).status == 0
        outputs.append((directory / "a.dcm").read_bytes())
    assert outputs[0] == outputs[1]
    packed = pydicom.dcmread(tmp_path / "run0" / "a.dcm")
    assert packed.SOPInstanceUID == packed.file_meta.MediaStorageSOPInstanceUID == f"{root}.50.{FIXED}.32"
    assert packed.StudyInstanceUID == (f"{root}.{study}" if study else "1.2.3")
    assert packed.SeriesInstanceUID == f"{root}.{series}"
    assert packed.file_meta.ImplementationClassUID == f"{root}.50.7.0.0.0"
    assert (packed.ContentDate, packed.ContentTime) == ("20150521", "162055")


@pytest.mark.skipif(not WINDOWS, reason="drive letters and backslashes are Windows paths")
def test_windows_paths_with_drive_letters_and_backslashes(run, tmp_path):
    # Under wine the Linux root is drive Z:.
    drive_path = "Z:" + str(tmp_path).replace("/", "\\")
    for folder in ("in", "out", "back"):
        (tmp_path / folder).mkdir()
    _, data = make_payload(tmp_path / "in", "r\u00e9sum\u00e9 \u5c71.pdf", 5000)
    packed = run("pack", "-i", drive_path + "\\in\\r\u00e9sum\u00e9 \u5c71.pdf", "-m", METADATA, "-o", "out\\r.dcm")
    assert (packed.status, packed.err) == (0, "")
    info = run("info", "-i", drive_path + "\\out\\r.dcm")
    assert 'originalname="r\u00e9sum\u00e9 \u5c71.pdf"' in info.out
    unpacked = run("unpack", "-i", "out\\r.dcm", "-u", "-O", drive_path + "\\back")
    assert (unpacked.status, unpacked.err) == (0, "")
    assert (tmp_path / "back" / "r\u00e9sum\u00e9 \u5c71.pdf").read_bytes() == data
