"""The imaging module loads only from where the tool is installed, and only as it was built: a damaged,
missing or foreign module gets one line that names the module, and everything else keeps working."""
import pathlib
import shutil
import subprocess

import pytest
from PIL import Image

from conftest import METADATA, PAYLOAD, WINDOWS

pytestmark = pytest.mark.skipif(WINDOWS, reason="the Windows build links the codecs into the tool")

MODULE = "dicapsule_imaging.so"


def truncate(size):
    return lambda module: module.write_bytes(module.read_bytes()[:size])


def flip_last_byte(module):
    data = bytearray(module.read_bytes())
    data[-1] ^= 0xFF
    module.write_bytes(bytes(data))


def replace_by_other_module(module):
    other = module.with_name("dicapsule_jpegext.so")
    if not other.is_file():
        pytest.skip("no other module in this build")
    shutil.copyfile(other, module)


def replace_by_directory(module):
    module.unlink()
    module.mkdir()


# (id, damage done to the module beside the tool, module named in the message: None for the file name)
DAMAGES = [
    ("truncated-4096", truncate(4096), "bin"),
    ("truncated-64", truncate(64), "bin"),
    ("removed", pathlib.Path.unlink, None),
    ("foreign", replace_by_other_module, "bin"),
    ("corrupted", flip_last_byte, "bin"),
    ("directory", replace_by_directory, "bin"),
]


@pytest.fixture
def installed(tool, tmp_path):
    """A copy of the tool in bin/ with its modules beside it, as a build tree lays them out."""
    built = pathlib.Path(tool).parent
    if not (built / MODULE).is_file():
        pytest.skip("this build has no imaging module")
    (tmp_path / "bin").mkdir()
    for name in ("dicapsule", MODULE, "dicapsule_jpegext.so"):
        if (built / name).exists():
            shutil.copy2(built / name, tmp_path / "bin" / name)
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)
    Image.new("L", (5, 3), 90).save(tmp_path / "grey.png")
    return tmp_path / "bin"


def pack(directory, *options):
    return subprocess.run([str(directory / "dicapsule"), "pack", "-i", "payload.bin", "-m", METADATA, *options],
                          cwd=directory.parent, capture_output=True, text=True, timeout=120)


@pytest.mark.parametrize("damage, named", [case[1:] for case in DAMAGES], ids=[case[0] for case in DAMAGES])
def test_a_damaged_module_is_refused_in_one_line(installed, damage, named):
    damage(installed / MODULE)
    done = pack(installed, "-t", "grey.png", "-o", "icon.dcm")
    shown = str(installed / MODULE) if named else MODULE
    assert (done.returncode, done.stdout, done.stderr) == (1, "", f'Error: Could not load the imaging module "{shown}".\n')
    assert not (installed.parent / "icon.dcm").exists()
    done = pack(installed, "-o", "plain.dcm")
    assert (done.returncode, done.stderr) == (0, "")


def test_the_module_loads_from_the_installed_layout_only(installed, tmp_path):
    """bin/../lib/dicapsule/ is the installed place; the working directory and the build tree are not."""
    library = tmp_path / "lib" / "dicapsule"
    library.mkdir(parents=True)
    (installed / MODULE).rename(library / MODULE)
    assert pack(installed, "-t", "grey.png", "-o", "installed.dcm").returncode == 0
    (library / MODULE).rename(tmp_path / MODULE)  # the working directory of the run
    done = pack(installed, "-t", "grey.png", "-o", "cwd.dcm")
    assert (done.returncode, done.stderr) == (1, f'Error: Could not load the imaging module "{MODULE}".\n')
