"""Shared helpers of the interoperability suite: running the tool and the DCMTK programs,
canonical dumps, and an element-by-element comparison of two pydicom readings."""

import os
import shlex
import subprocess

import pydicom
import pytest
from pydicom.dataelem import DataElement_from_raw, RawDataElement

TOOL = os.environ.get("DICOM_TREE_TOOL", "")
# A cross-built tool runs under the command ctest names (wine for the Windows build).
RUNNER = shlex.split(os.environ.get("DICAPSULE_RUNNER", ""))

# Byte-swapping unit of the VRs whose bytes pydicom hands over unswapped from big-endian files.
SWAPPED_UNITS = {"OW": 2, "OF": 4, "OL": 4, "OD": 8}


def run(*args, check=True):
    """Run a program; return (stdout, stderr) as text; fail the test on a non-zero status."""
    result = subprocess.run([str(a) for a in args], capture_output=True, text=True)
    if check and result.returncode != 0:
        pytest.fail(f"{' '.join(map(str, args))} exited {result.returncode}:\n{result.stderr}")
    return result.stdout, result.stderr


def tool(*args, check=True):
    if not TOOL:
        pytest.skip("DICOM_TREE_TOOL is not set")
    return run(*RUNNER, TOOL, *args, check=check)


def canonical(path, with_vr=True):
    """Our tree of a file, without its meta group (which each writer fills in its own way).
    Without with_vr the VR column is dropped: an implicit-VR file carries no VRs to compare."""
    text, _ = tool("dump", path)
    lines = []
    for line in text.splitlines():
        fields = line.split(" ")
        if fields[0] == "0" and fields[1].startswith("(0002,"):
            continue
        if not with_vr and len(fields) > 2 and fields[1] != "item":
            del fields[2]
        lines.append(" ".join(fields))
    return "\n".join(lines)


def is_implicit(path):
    return pydicom.dcmread(path, force=True).is_implicit_VR


def assert_same_tree(path, reference_path, *other_paths):
    """Same canonical tree; VRs are compared unless one of the files (or a file the first one
    was made from, in other_paths) is implicit VR."""
    with_vr = not any(is_implicit(p) for p in (path, reference_path, *other_paths))
    assert canonical(path, with_vr) == canonical(reference_path, with_vr)


def dcmdump_is_clean(path):
    """dcmdump reads the file and prints no warning or error."""
    _, err = run("dcmdump", "-dc", path)
    bad = [line for line in err.splitlines() if line.startswith(("W:", "E:", "F:"))]
    assert not bad, "\n".join(bad)


def native_value(elem, big_endian):
    """The element's value with multi-byte binary units in little-endian order."""
    value = elem.value
    unit = SWAPPED_UNITS.get(elem.VR)
    if big_endian and unit and isinstance(value, bytes):
        value = b"".join(value[i:i + unit][::-1] for i in range(0, len(value), unit))
    return value


def assert_same_values(actual, expected, where="root"):
    """Same tags, VRs and values in both pydicom data sets, recursively."""
    assert [e.tag for e in actual] == [e.tag for e in expected], where
    for a, e in zip(actual, expected):
        here = f"{where} {a.tag}"
        if a.VR == "UN" and e.VR != "UN" and actual.is_implicit_VR and a.tag.is_private:
            # Written as implicit VR, a private element's VR is lost: read its bytes with the VR it had.
            a = DataElement_from_raw(RawDataElement(a.tag, e.VR, len(a.value), a.value, 0, False, True))
        assert a.VR == e.VR, here
        if a.VR == "SQ":
            assert len(a.value) == len(e.value), here
            for index, (item_a, item_e) in enumerate(zip(a.value, e.value)):
                assert_same_values(item_a, item_e, f"{here}[{index}]")
        else:
            assert native_value(a, not actual.is_little_endian) == native_value(e, not expected.is_little_endian), here


def data_set_only(ds):
    """The data set of a pydicom reading without its meta group."""
    ds.file_meta = pydicom.dataset.FileMetaDataset()
    return ds
