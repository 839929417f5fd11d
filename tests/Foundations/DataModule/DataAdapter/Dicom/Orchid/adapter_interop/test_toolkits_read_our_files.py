"""Files written by the DICOM file adapter, as DCMTK, pydicom and dicom3tools see them."""

import os
import shlex
import subprocess

import pydicom
import pytest

TOOL = os.environ.get("WRITE_SAMPLE_INSTANCE")
# A cross-built tool runs under the command ctest names (wine for the Windows build).
RUNNER = shlex.split(os.environ.get("DICAPSULE_RUNNER", ""))

# Warnings of dciodvfy accepted for a packed file, with the reason.
ACCEPTED_DCIODVFY_WARNINGS = (
    # Our private attributes are not in dicom3tools' dictionary; the creator names them.
    "Unrecognized tag",
    # Type 2 attributes the rows leave unset are written empty, which the IOD allows.
    "needed to build DICOMDIR",
    # Laterality is written empty when no Body Part Examined tells whether the part is paired:
    # the side is then unknown, and dciodvfy reports its absence as an error.
    "attribute <Laterality>",
)
# With an icon: the Icon Image Sequence and its top-level duplicate (which the user asks for)
# extend the Raw Data IOD.
ACCEPTED_WITH_ICON = (
    "Attribute is not present in standard DICOM IOD",
    "Standard Extended SOP Class",
)


def write(tmp_path, *options):
    if not TOOL:
        pytest.fail("WRITE_SAMPLE_INSTANCE must name the built writer (ctest sets it)")
    out = tmp_path / "packed.dcm"
    subprocess.run([*RUNNER, TOOL, str(out), *options], check=True)
    return out


def run(*command):
    result = subprocess.run(command, capture_output=True, text=True)
    return result.stdout + result.stderr


@pytest.mark.parametrize("options", [(), ("--icon",), ("--charset", "ISO_IR 100")], ids=["plain", "icon", "latin1"])
def test_dcmtk_and_dciodvfy_accept_the_file(tmp_path, options):
    path = write(tmp_path, *options)
    assert run("dcmftest", str(path)).startswith("yes:")
    assert "IvraDentalPrivate" in run("dcmdump", "+P", "0009,0011", "+s", str(path))
    full = run("dcmdump", str(path))
    assert "(0009,11a0) SQ" in full
    assert "W: " not in full and "E: " not in full, full
    report = run("dciodvfy", str(path))
    assert not [line for line in report.splitlines() if line.startswith("Error")], report
    accepted = ACCEPTED_DCIODVFY_WARNINGS + (ACCEPTED_WITH_ICON if "--icon" in options else ())
    warnings = [line for line in report.splitlines() if line.startswith("Warning")]
    assert not [w for w in warnings if not any(a in w for a in accepted)], report


def test_pydicom_reads_custom_data_items(tmp_path):
    payload = tmp_path / "payload.bin"
    payload.write_bytes(bytes(range(256)) * 3 + b"\x01")  # odd length
    path = write(tmp_path, "--payload", str(payload))
    ds = pydicom.dcmread(path)
    assert ds[0x0009, 0x0011].value == "IvraDentalPrivate"
    items = {}
    for item in ds[0x0009, 0x11A0].value:
        assert item[0x0009, 0x0011].value == "IvraDentalPrivate"
        block = item.private_block(0x0009, "IvraDentalPrivate")
        key = block[0xA1].value
        length = block[0xA2].value
        assert block[0xA3].VR == "UN"
        value = block[0xA3].value
        assert len(value) % 2 == 0
        items[key] = value[:length]
    assert list(items) == sorted(items)
    assert items["Dicapsule.PackedFile.Name"] == b"report.pdf"
    assert items["Dicapsule.PackedFile.Content"] == payload.read_bytes()
    assert ds.file_meta.MediaStorageSOPClassUID == ds.SOPClassUID == "1.2.840.10008.5.1.4.1.1.66"
    assert ds.file_meta.TransferSyntaxUID == "1.2.840.10008.1.2.1"
