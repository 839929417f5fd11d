"""The cross-built tool (run under DICAPSULE_RUNNER) against the native one (DICAPSULE_PEER): a file
packed by either unpacks byte for byte with the other, both describe it alike, and in test mode
both write the same bytes from the same inputs and command line."""
import os
import pathlib
import random
import shlex
import shutil
import subprocess

import pytest
from PIL import Image

SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[3]))
METADATA = SOURCE / "examples" / "metadata.xml"
PAYLOAD = "r\u00e9sum\u00e9 \u5c71\u7530.pdf"


def tools():
    cross, native = os.environ.get("DICAPSULE"), os.environ.get("DICAPSULE_PEER")
    if not cross or not native:
        pytest.fail("DICAPSULE and DICAPSULE_PEER must name the two builds (ctest sets them)")
    return {"cross": [*shlex.split(os.environ.get("DICAPSULE_RUNNER", "")), cross], "native": [native]}


def run(which, *args, cwd, test_mode=False):
    env = dict(os.environ, CONVERTIX_TESTMODE="") if test_mode else None
    done = subprocess.run([*tools()[which], *args], cwd=cwd, capture_output=True, env=env, timeout=300)
    assert (done.returncode, done.stderr) == (0, b""), (which, args)
    return done.stdout


def inputs(directory):
    """The same payload, metadata and thumbnails in a fresh directory."""
    directory.mkdir()
    (directory / PAYLOAD).write_bytes(random.Random(5).randbytes(70001))
    shutil.copyfile(METADATA, directory / "metadata.xml")
    rng = random.Random(3)
    image = Image.new("RGB", (13, 7))
    image.putdata([(rng.randrange(256), rng.randrange(256), rng.randrange(256)) for _ in range(13 * 7)])
    for name in ("t.png", "t.jpg", "t.tif", "t.bmp", "t.ppm", "t.jp2"):
        image.save(directory / name)
    return directory


def edition(name):
    return ('<orchid type="ConvertixToFp"><operations><operation type="edition"><Patient>'
            f'<String Name="PatientName" Value="{name}"/></Patient></operation></operations></orchid>')


# case id, options after "pack -i PAYLOAD -o out.dcm".
PACKS = [
    ("plain", ["-m", "metadata.xml"]),
    ("references", ["-m", "metadata.xml", "-r", "1.2.3:1.2.3.4:1.2.3.4.5", "-I", "1.2.3::"]),
    *[(f"thumbnail-{name[2:]}", ["-m", "metadata.xml", "-t", name, "--hackforbmpacs"])
      for name in ("t.png", "t.jpg", "t.tif", "t.bmp", "t.ppm", "t.jp2")],
    ("western", ["-m", edition("Buc^J\u00e9r\u00f4me"), "-e", "western"]),
    ("hebrew", ["-m", edition("\u05e9\u05e8\u05d5\u05df^\u05d3\u05d1\u05d5\u05e8\u05d4"), "-e", "hebrew"]),
    ("japanese", ["-m", edition("Yamada^Tarou=\u5c71\u7530^\u592a\u90ce=\u3084\u307e\u3060^\u305f\u308d\u3046"),
                  "-e", "japanese"]),
    ("korean", ["-m", edition("Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9"), "-e", "korean"]),
    ("chinese", ["-m", edition("Wang^XiaoDong=\u738b^\u5c0f\u6771"), "-e", "chinese"]),
    ("unicode", ["-m", edition("G\u00fcrsoy^\u00d6mer=\u5c71\u7530^\u592a\u90ce"), "-e", "unicode"]),
]


@pytest.mark.parametrize("options", [c[1] for c in PACKS], ids=[c[0] for c in PACKS])
def test_test_mode_writes_the_same_bytes_on_both_platforms(tmp_path, options):
    written = {}
    for which in ("cross", "native"):
        directory = inputs(tmp_path / which)
        run(which, "pack", "-i", PAYLOAD, "-o", "out.dcm", *options, cwd=directory, test_mode=True)
        written[which] = (directory / "out.dcm").read_bytes()
    assert written["cross"] == written["native"]


@pytest.mark.parametrize("packer,reader", [("cross", "native"), ("native", "cross")])
def test_a_file_packed_on_one_platform_unpacks_on_the_other(tmp_path, packer, reader):
    directory = inputs(tmp_path / "work")
    payload = (directory / PAYLOAD).read_bytes()
    run(packer, "pack", "-i", PAYLOAD, "-m", "metadata.xml", "-o", "out.dcm", "-t", "t.jpg", cwd=directory)
    (directory / PAYLOAD).unlink()
    run(reader, "unpack", "-i", "out.dcm", "-u", cwd=directory)
    assert (directory / PAYLOAD).read_bytes() == payload
    assert run(reader, "info", "-i", "out.dcm", cwd=directory) == run(packer, "info", "-i", "out.dcm", cwd=directory)
