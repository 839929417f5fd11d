"""The payload survives re-encodings, proves itself with its SHA-256 digest, and is packed only from
an input that stayed still; empty and /proc inputs round-trip."""
import hashlib
import subprocess
import threading

import pydicom
import pytest

from conftest import METADATA, WINDOWS


def packed(run, tmp_path, data, *options, name="p.bin", output="p.dcm"):
    (tmp_path / name).write_bytes(data)
    result = run("pack", "-i", name, "-m", METADATA, "-o", output, *options)
    assert (result.status, result.err) == (0, "")
    return tmp_path / output


def pydicom_transfer(source, target, implicit, big_endian=False):
    ds = pydicom.dcmread(source)
    ds.is_implicit_VR, ds.is_little_endian = implicit, not big_endian
    ds.file_meta.TransferSyntaxUID = (pydicom.uid.ImplicitVRLittleEndian if implicit else
                                      pydicom.uid.ExplicitVRBigEndian if big_endian else
                                      pydicom.uid.ExplicitVRLittleEndian)
    ds.save_as(target, write_like_original=False)


def tool(*command):
    return lambda source, target: subprocess.run([*command, str(source), str(target)], check=True,
                                                 capture_output=True)


# Chains of re-encodings; after an implicit step a peer without our dictionary writes the private
# sequence back as UN (PS3.5 6.2.2), its items in implicit VR little endian.
REENCODINGS = {
    "dcmconv implicit": [tool("dcmconv", "+ti")],
    "dcmconv implicit then explicit (UN)": [tool("dcmconv", "+ti"), tool("dcmconv", "+te")],
    "dcmconv implicit then deflated (UN)": [tool("dcmconv", "+ti"), tool("dcmconv", "+td")],
    "dcmconv implicit then big endian (UN)": [tool("dcmconv", "+ti"), tool("dcmconv", "+tb")],
    "dcmconv big endian": [tool("dcmconv", "+tb")],
    "dcmconv deflated": [tool("dcmconv", "+td")],
    "gdcmconv implicit then explicit": [tool("gdcmconv", "--implicit"), tool("gdcmconv", "--explicit")],
    "pydicom implicit then explicit (UN)": [lambda s, t: pydicom_transfer(s, t, True),
                                            lambda s, t: pydicom_transfer(s, t, False)],
}


@pytest.mark.skipif(WINDOWS, reason="the peers run on the build machine only")
@pytest.mark.parametrize("size", [100, 300_001], ids=["in memory", "left in the file"])
@pytest.mark.parametrize("chain", REENCODINGS)
def test_payload_survives_reencoding(run, tmp_path, chain, size):
    data = bytes(range(256)) * (size // 256) + b"\x7f" * (size % 256)
    source = packed(run, tmp_path, data)
    for step, convert in enumerate(REENCODINGS[chain]):
        target = tmp_path / f"step{step}.dcm"
        convert(source, target)
        source = target
    info = run("info", "-i", source.name)
    assert (info.status, info.err) == (0, "")
    assert f'size="{size}" sha256="{hashlib.sha256(data).hexdigest()}"' in info.out
    result = run("unpack", "-i", source.name, "-o", "back.bin")
    assert (result.status, result.out, result.err) == (0, "", "")
    assert (tmp_path / "back.bin").read_bytes() == data


def flip_payload_byte(path, data):
    whole = bytearray(path.read_bytes())
    at = whole.find(data)
    whole[at + len(data) // 2] ^= 0x01
    path.write_bytes(whole)


def damage_digest(path, data):
    whole = bytearray(path.read_bytes())
    at = whole.find(hashlib.sha256(data).hexdigest().encode())
    whole[at] = ord("0") if whole[at] != ord("0") else ord("1")
    path.write_bytes(whole)


MISMATCH = 'Error: The packed file of the input file "p.dcm" does not match its SHA-256 digest.\n'

# id, pack options, damage, unpack options, expected status and error, whether the
# unpacked bytes are the packed ones
DIGEST_CASES = [
    ("sound", [], None, [], 0, "", True),
    ("damaged payload", [], flip_payload_byte, [], 1, MISMATCH, None),
    ("damaged digest", [], damage_digest, [], 1, MISMATCH, None),
    ("damaged payload, --no-verify", [], flip_payload_byte, ["--no-verify"], 0, "", False),
    ("no digest recorded", ["--no-digest"], None, [], 0, "", True),
    ("no digest recorded, damaged", ["--no-digest"], flip_payload_byte, [], 0, "", False),
]


@pytest.mark.parametrize("size", [5000, 200_000], ids=["in memory", "left in the file"])
@pytest.mark.parametrize("cid,pack_options,damage,unpack_options,status,error,intact", DIGEST_CASES,
                         ids=[c[0] for c in DIGEST_CASES])
def test_digest(run, tmp_path, size, cid, pack_options, damage, unpack_options, status, error, intact):
    data = bytes((i * 131) % 251 for i in range(size))
    path = packed(run, tmp_path, data, *pack_options)
    info = run("info", "-i", "p.dcm")
    digest = "" if pack_options else f' sha256="{hashlib.sha256(data).hexdigest()}"'
    assert f' size="{size}"{digest} />' in info.out
    if damage:
        damage(path, data)
    result = run("unpack", "-i", "p.dcm", "-o", "back.bin", *unpack_options)
    assert (result.status, result.out, result.err) == (status, "", error)
    back = tmp_path / "back.bin"
    if intact is None:
        assert not back.exists()
    else:
        assert (back.read_bytes() == data) == intact


@pytest.mark.skipif(WINDOWS, reason="the input is changed by a thread of the test, beside the tool")
@pytest.mark.parametrize("change", ["grows", "is overwritten"])
def test_input_changed_while_packing_fails(run, tmp_path, change):
    source = tmp_path / "live.bin"
    source.write_bytes(b"\x00" * (64 << 20))
    stop = threading.Event()

    def keep_changing():
        with open(source, "r+b") as f:
            while not stop.is_set():
                if change == "grows":
                    f.seek(0, 2)
                else:
                    f.seek(1 << 20)
                f.write(b"\x01" * 4096)
                f.flush()

    writer = threading.Thread(target=keep_changing)
    writer.start()
    try:
        result = run("pack", "-i", "live.bin", "-m", METADATA, "-o", "live.dcm")
    finally:
        stop.set()
        writer.join()
    assert (result.status, result.out) == (1, "")
    assert result.err == 'Error: The input file "live.bin" changed while it was being packed.\n'
    assert not (tmp_path / "live.dcm").exists()


@pytest.mark.parametrize("source", ["empty", pytest.param("/proc/version", marks=pytest.mark.skipif(
    WINDOWS, reason="no /proc"))])
def test_empty_and_proc_inputs_round_trip(run, tmp_path, source):
    if source == "empty":
        (tmp_path / "empty").write_bytes(b"")
    data = (tmp_path / source).read_bytes()  # /proc/version reports size 0 but has content
    result = run("pack", "-i", str(source), "-m", METADATA, "-o", "p.dcm")
    assert (result.status, result.err) == (0, "")
    info = run("info", "-i", "p.dcm")
    assert f'size="{len(data)}" sha256="{hashlib.sha256(data).hexdigest()}"' in info.out
    assert run("unpack", "-i", "p.dcm", "-o", "back.bin").status == 0
    assert (tmp_path / "back.bin").read_bytes() == data
