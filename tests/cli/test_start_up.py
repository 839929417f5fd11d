"""The image libraries are loaded by the first thumbnail of a run and by nothing else: the dynamic
loader's own report (LD_DEBUG=files) of a run lists every library that the run loaded."""
import os
import re

import pytest

from conftest import EXAMPLES, METADATA, WINDOWS

pytestmark = pytest.mark.skipif(WINDOWS, reason="one static executable: no library is loaded at run time")

IMAGE_LIBRARIES = re.compile(r"file=\S*lib(jpeg|png16|tiff|openjp2|charls)\.so")


@pytest.mark.parametrize("command, loads_images", [
    (["--help"], False),
    (["pack", "--help"], False),
    (["pack", "-i", "payload.bin", "-m", METADATA, "-o", "new.dcm"], False),
    (["info", "-i", "out.dcm"], False),
    (["unpack", "-i", "out.dcm", "-o", "payload.out"], False),
    (["pack", "-i", "payload.bin", "-m", METADATA, "-o", "icon.dcm", "-t", str(EXAMPLES / "thumbnail.png")], True),
], ids=["help", "pack-help", "pack", "info", "unpack", "pack-thumbnail"])
def test_image_libraries_are_loaded_only_for_a_thumbnail(run, pack, command, loads_images):
    pack("-m", METADATA)
    result = run(*command, env=dict(os.environ, LD_DEBUG="files"))
    assert result.status == 0, result.err
    assert bool(IMAGE_LIBRARIES.search(result.err)) == loads_images
