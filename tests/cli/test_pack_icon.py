"""--thumbnail and --hackforbmpacs through the built tool: the Icon Image Sequence holds the pixels PIL
decodes from the same file, the duplicate at the top level equals the icon, dciodvfy finds no error
and the payload still unpacks."""
import os
import random
import struct
import subprocess

import pydicom
import pytest
from PIL import Image, ImageOps

from conftest import METADATA, PAYLOAD, WINDOWS, dciodvfy_errors, sanitized

WIDTH, HEIGHT = 13, 7  # odd sizes: rows of odd length and pixel data padded to even length; a turn swaps them


def noise(mode, seed=11):
    rng = random.Random(seed)
    count = WIDTH * HEIGHT
    if mode == "I;16":
        image = Image.new(mode, (WIDTH, HEIGHT))
        image.putdata([rng.randrange(65536) for _ in range(count)])
        return image
    rgb = Image.new("RGB", (WIDTH, HEIGHT))
    rgb.putdata([(rng.randrange(256), rng.randrange(256), rng.randrange(256)) for _ in range(count)])
    grey = rgb.convert("L")
    return {"RGB": rgb, "L": grey, "RGBA": Image.merge("RGBA", (*rgb.split(), grey)),
            "LA": Image.merge("LA", (grey, grey.point(lambda v: 255 - v))), "P": rgb.quantize(8)}[mode]


def made_with_pil(name, mode):
    return lambda directory: noise(mode).save(directory / name)


def made_with_imagemagick(name, mode, *arguments):
    def make(directory):
        noise(mode).save(directory / "source.png")
        subprocess.run(["convert", "source.png", *arguments, name], cwd=directory, check=True)
    return make


def turned(name, orientation):
    """EXIF orientation of a photo, or the TIFF Orientation tag, that turns the picture."""
    def make(directory):
        if ".tif" in name:
            noise("RGB").save(directory / name, tiffinfo={274: orientation})
        else:
            exif = Image.Exif()
            exif[274] = orientation
            noise("RGB").save(directory / name, quality=95, exif=exif.tobytes())
    return make


def expected_pixels(path):
    """Rows, columns, samples per pixel, bits allocated and the pixel bytes PIL decodes, turned upright
    (PIL turns TIFF pages upright as it loads them), alpha and palette dropped."""
    image = Image.open(path)
    image.load()
    image = ImageOps.exif_transpose(image) if path.suffix.lower() in (".jpg", ".jpeg") else image
    if image.mode in ("I", "I;16"):
        values = list(image.getdata())
        return image.height, image.width, 1, 16, struct.pack(f"<{len(values)}H", *values)
    grey = image.mode in ("L", "LA", "1")
    return image.height, image.width, (1 if grey else 3), 8, image.convert("L" if grey else "RGB").tobytes()


# thumbnail file name, how it is made.
THUMBNAILS = [(name, made_with_pil(name, mode)) for name, mode in [
    ("rgb.png", "RGB"), ("grey.png", "L"), ("rgba.png", "RGBA"), ("grey-alpha.png", "LA"), ("palette.png", "P"),
    ("grey16.png", "I;16"), ("rgb.jpg", "RGB"), ("grey.jpg", "L"), ("UPPER.JPG", "RGB"), ("rgb.tif", "RGB"),
    ("grey.tiff", "L"), ("rgba.tif", "RGBA"), ("grey16.tif", "I;16"), ("palette.tif", "P"), ("rgb.bmp", "RGB"),
    ("grey.bmp", "L"), ("palette.bmp", "P"), ("rgb.ppm", "RGB"), ("grey.pgm", "L"), ("rgb.jp2", "RGB"),
    ("grey.jp2", "L"),
]] + [
    ("im-rgba.bmp", made_with_imagemagick("im-rgba.bmp", "RGBA")),
    ("im-rgb3.bmp", made_with_imagemagick("bmp3:im-rgb3.bmp", "RGB")),
    ("im-grey16.pgm", made_with_imagemagick("im-grey16.pgm", "L", "-depth", "16")),
    ("im-adam7.png", made_with_imagemagick("im-adam7.png", "RGB", "-interlace", "PNG")),
    ("im-adam7-la.png", made_with_imagemagick("im-adam7-la.png", "LA", "-interlace", "PNG")),
    ("im-adam7-16.png", made_with_imagemagick("im-adam7-16.png", "I;16", "-interlace", "PNG", "-depth", "16")),
] + [(name, turned(name, orientation)) for name, orientation in [("turned6.jpg", 6), ("turned8.jpeg", 8),
                                                                  ("turned7.tif", 7), ("turned3.tiff", 3)]]
IMAGE_PIXEL_KEYWORDS = ["SamplesPerPixel", "PhotometricInterpretation", "Rows", "Columns", "BitsAllocated",
                        "BitsStored", "HighBit", "PixelRepresentation", "PixelData"]


@pytest.mark.parametrize("hack", [False, True], ids=["icon", "hackforbmpacs"])
@pytest.mark.parametrize("name,make", THUMBNAILS, ids=[c[0] for c in THUMBNAILS])
def test_thumbnail_becomes_the_icon(pack, run, tmp_path, name, make, hack):
    # In a folder of a non-ASCII name: the thumbnail's path reaches each image library intact.
    (tmp_path / "aper\u00e7u").mkdir()
    make(tmp_path / "aper\u00e7u")
    packed = pack("-m", METADATA, "-t", f"aper\u00e7u/{name}", *(["--hackforbmpacs"] if hack else []))
    assert dciodvfy_errors(packed) == []
    (tmp_path / "payload.bin").rename(tmp_path / "sent.bin")
    assert run("unpack", "-i", packed.name, "-u").status == 0
    assert (tmp_path / "payload.bin").read_bytes() == PAYLOAD
    ds = pydicom.dcmread(packed)
    rows, columns, samples, bits, pixels = expected_pixels(tmp_path / "aper\u00e7u" / name)
    icon = ds.IconImageSequence[0]
    assert (icon.Rows, icon.Columns, icon.SamplesPerPixel) == (rows, columns, samples)
    assert (icon.BitsAllocated, icon.BitsStored, icon.HighBit, icon.PixelRepresentation) == (bits, bits, bits - 1, 0)
    if samples == 1:
        assert icon.PhotometricInterpretation == "MONOCHROME2" and "PlanarConfiguration" not in icon
    else:
        assert (icon.PhotometricInterpretation, icon.PlanarConfiguration) == ("RGB", 0)
    assert icon.PixelData == pixels + b"\0" * (len(pixels) % 2)
    if hack:
        assert [ds[k].value for k in IMAGE_PIXEL_KEYWORDS] == [icon[k].value for k in IMAGE_PIXEL_KEYWORDS]
    else:
        assert not any(k in ds for k in IMAGE_PIXEL_KEYWORDS)


@pytest.mark.skipif(WINDOWS or os.geteuid() != 0, reason="hiding /proc takes root and a Linux mount namespace")
@pytest.mark.skipif(not WINDOWS and sanitized(os.environ.get("DICAPSULE", "")), reason="the sanitizers' runtime needs /proc")
def test_the_imaging_module_is_found_without_proc_as_root(tool, tmp_path):
    # Bare chroots and some containers have no /proc, where the tool first looks for itself.
    Image.new("L", (WIDTH, HEIGHT), 90).save(tmp_path / "grey.png")
    (tmp_path / "payload.bin").write_bytes(PAYLOAD)
    hidden = subprocess.run(["unshare", "--mount", "--fork", "sh", "-c", 'umount -l /proc && exec "$@"', "sh",
                             tool, "pack", "-i", "payload.bin", "-m", METADATA, "-t", "grey.png", "-o", "out.dcm"],
                            cwd=tmp_path, capture_output=True, text=True)
    assert (hidden.returncode, hidden.stderr) == (0, "")
    assert pydicom.dcmread(tmp_path / "out.dcm").IconImageSequence[0].PixelData[:1] == b"\x5a"
