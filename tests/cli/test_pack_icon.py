"""--thumbnail and --hackforbmpacs through the built tool: the Icon Image Sequence holds the pixels PIL
decodes from the same file, and the duplicate at the top level equals the icon."""
import random
import struct
import subprocess

import pydicom
import pytest
from PIL import Image, ImageOps

from conftest import EXAMPLES, METADATA, dciodvfy_errors

WIDTH, HEIGHT = 13, 7  # odd sizes: rows of odd length and pixel data padded to even length


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
    def make(directory):
        noise(mode).save(directory / name)
    return make


def made_with_imagemagick(name, mode, *arguments):
    def make(directory):
        noise(mode).save(directory / "source.png")
        subprocess.run(["convert", "source.png", *arguments, name], cwd=directory, check=True)
    return make


def expected_pixels(path):
    """Samples per pixel, bits allocated and the pixel bytes PIL decodes, alpha and palette dropped."""
    image = Image.open(path)
    image.load()
    if image.mode in ("I", "I;16"):
        values = list(image.getdata())
        return 1, 16, struct.pack(f"<{len(values)}H", *values)
    grey = image.mode in ("L", "LA", "1")
    image = image.convert("L" if grey else "RGB")
    return (1 if grey else 3), 8, image.tobytes()


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
]
IMAGE_PIXEL_KEYWORDS = ["SamplesPerPixel", "PhotometricInterpretation", "Rows", "Columns", "BitsAllocated",
                        "BitsStored", "HighBit", "PixelRepresentation", "PixelData"]


@pytest.mark.parametrize("hack", [False, True], ids=["icon", "hackforbmpacs"])
@pytest.mark.parametrize("name,make", THUMBNAILS, ids=[c[0] for c in THUMBNAILS])
def test_thumbnail_becomes_the_icon(pack, tmp_path, name, make, hack):
    make(tmp_path)
    ds = pydicom.dcmread(pack("-m", METADATA, "-t", name, *(["--hackforbmpacs"] if hack else [])))
    samples, bits, pixels = expected_pixels(tmp_path / name)
    icon = ds.IconImageSequence[0]
    assert (icon.Rows, icon.Columns, icon.SamplesPerPixel) == (HEIGHT, WIDTH, samples)
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


@pytest.mark.parametrize("name", ["rgb.png", "rgb.jpg", "rgb.tif", "rgb.bmp", "rgb.ppm", "rgb.jp2"])
def test_thumbnail_in_a_folder_with_a_non_ascii_name(pack, tmp_path, name):
    dict(THUMBNAILS)[name](tmp_path)
    (tmp_path / "aperçu").mkdir()
    (tmp_path / name).rename(tmp_path / "aperçu" / name)
    ds = pydicom.dcmread(pack("-m", METADATA, "-t", f"aperçu/{name}"))
    pixels = expected_pixels(tmp_path / "aperçu" / name)[2]
    assert ds.IconImageSequence[0].PixelData == pixels + b"\0" * (len(pixels) % 2)


@pytest.mark.parametrize("name,orientation", [("photo.jpg", 6), ("photo.jpeg", 8), ("page.tif", 7), ("page.tiff", 3)])
def test_turned_thumbnail_is_stored_upright(pack, tmp_path, name, orientation):
    """EXIF orientation of a photo and the TIFF Orientation tag both turn the icon upright."""
    picture = noise("RGB")
    if name.endswith(".tif") or name.endswith(".tiff"):
        picture.save(tmp_path / name, tiffinfo={274: orientation})
        upright = Image.open(tmp_path / name)  # PIL turns TIFF pages upright as it loads them
        upright.load()
    else:
        exif = Image.Exif()
        exif[274] = orientation
        picture.save(tmp_path / name, quality=95, exif=exif.tobytes())
        upright = ImageOps.exif_transpose(Image.open(tmp_path / name))
    ds = pydicom.dcmread(pack("-m", METADATA, "-t", name))
    icon = ds.IconImageSequence[0]
    turned = orientation > 4
    assert (icon.Columns, icon.Rows) == upright.size == ((HEIGHT, WIDTH) if turned else (WIDTH, HEIGHT))
    pixels = upright.convert("RGB").tobytes()
    assert icon.PixelData == pixels + b"\0" * (len(pixels) % 2)


@pytest.mark.parametrize("hack", [[], ["--hackforbmpacs"]], ids=["icon", "hackforbmpacs"])
@pytest.mark.parametrize("mode", ["RGB", "L"])
def test_thumbnail_packs_without_iod_errors(pack, tmp_path, mode, hack):
    noise(mode).save(tmp_path / "thumbnail.png")
    assert dciodvfy_errors(pack("-m", METADATA, "-t", "thumbnail.png", *hack)) == []


def test_example_thumbnail_round_trips_with_the_payload(pack, run, tmp_path):
    packed = pack("-m", METADATA, "-t", str(EXAMPLES / "thumbnail.png"), "--hackforbmpacs")
    (tmp_path / "payload.bin").rename(tmp_path / "sent.bin")
    assert run("unpack", "-i", packed.name, "-u").status == 0
    assert (tmp_path / "payload.bin").read_bytes() == b"\x00payload\xff"
