#!/usr/bin/python3
"""Writes the codec test images into OUTDIR with real tools (PIL, netpbm, libtiff tools, OpenJPEG,
libjpeg-turbo, ImageMagick, pydicom) and, beside each, NAME.golden: the pixels as PIL decodes them
(a text line "planes width height bytes-per-sample", then the planes one after the other, little-endian).
Usage: make_test_images.py OUTDIR"""
import io
import os
import shutil
import subprocess
import sys

import struct
from PIL import Image

W, H = 37, 23
out = sys.argv[1]
os.makedirs(out, exist_ok=True)


def path(name):
    return os.path.join(out, name)


def sample(x, y, c, maximum=255):
    scale = maximum // 255 if maximum > 255 else 1
    return ((x * 7 + y * 13 + c * 50) * scale + c) % (maximum + 1)


def interleaved(channels, maximum=255):
    """Pixel-interleaved samples of the test pattern, row by row."""
    return [sample(x, y, c, maximum) for y in range(H) for x in range(W) for c in range(channels)]


def image(mode):
    channels = {"L": 1, "LA": 2, "RGB": 3, "RGBA": 4}[mode]
    return Image.frombytes(mode, (W, H), bytes(interleaved(channels)))


def words(values):
    return struct.pack("<%dH" % len(values), *values)


def grey16():
    return Image.frombytes("I;16", (W, H), words(interleaved(1, 65535)))


def write_pgm16(name):
    with open(path(name), "wb") as f:
        f.write(b"P5\n%d %d\n65535\n" % (W, H))
        f.write(struct.pack(">%dH" % (W * H), *interleaved(1, 65535)))


def golden(name, decoded):
    planes = decoded.split() if decoded.mode not in ("I;16", "I") else [decoded]
    wide = decoded.mode in ("I;16", "I")
    with open(path(name + ".golden"), "wb") as f:
        f.write(f"{len(planes)} {decoded.width} {decoded.height} {2 if wide else 1}\n".encode())
        for plane in planes:
            values = list(plane.getdata())
            f.write(words(values) if wide else bytes(values))


def golden_as_read(name, mode=None):
    """The golden of a written file as PIL reads it, converted to mode (palette and 1-bit images)."""
    decoded = Image.open(path(name))
    golden(name, decoded.convert(mode) if mode else decoded)


def save(name, im, mode=None, **options):
    im.save(path(name), **options)
    golden_as_read(name, mode)


def run(*command):
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


# PNG
for mode in ("L", "LA", "RGB", "RGBA"):
    save(f"png_{mode}.png", image(mode))
save("png_palette.png", image("RGB").convert("P", palette=Image.ADAPTIVE, colors=64), "RGB")
save("png_1bit.png", image("L").convert("1"), "L")
save("png_grey16.png", grey16())

# JPEG
save("jpeg_L.jpg", image("L"), quality=90)
save("jpeg_RGB.jpg", image("RGB"), quality=90)
save("jpeg_CMYK.jpg", image("RGB").convert("CMYK"), "RGB", quality=95)
image("L").save(path("source_L.pgm"))
run("cjpeg", "-grayscale", "-outfile", path("cjpeg_grey.jpeg"), path("source_L.pgm"))
golden_as_read("cjpeg_grey.jpeg")

# TIFF
save("tiff_L.tif", image("L"))
save("tiff_RGB.tif", image("RGB"), compression="tiff_lzw")
save("tiff_grey16.tif", grey16())
save("tiff_palette.tif", image("RGB").convert("P", palette=Image.ADAPTIVE, colors=16), "RGB")
run("tiffcp", "-t", "-w", "16", "-l", "16", path("tiff_RGB.tif"), path("tiff_tiled.tif"))
golden_as_read("tiff_tiled.tif")
run("tiffcp", "-p", "separate", path("tiff_RGB.tif"), path("tiff_separate.tif"))
golden_as_read("tiff_separate.tif")
run("tiffcp", path("tiff_L.tif"), path("tiff_RGB.tif"), path("tiff_pages.tif"))
page = Image.open(path("tiff_pages.tif"))
page.seek(1)
golden("tiff_pages.tif", page.convert("RGB"))

# JPEG 2000
image("RGB").save(path("source_RGB.ppm"))
write_pgm16("source_16.pgm")
run("opj_compress", "-n", "3", "-i", path("source_L.pgm"), "-o", path("j2k_L.j2k"))
run("opj_compress", "-n", "3", "-i", path("source_RGB.ppm"), "-o", path("j2k_RGB.jp2"))
run("opj_compress", "-n", "3", "-i", path("source_16.pgm"), "-o", path("j2k_grey16.j2k"))
for name in ("j2k_L.j2k", "j2k_RGB.jp2", "j2k_grey16.j2k"):
    golden(name, Image.open(path(name)))

# BMP
save("bmp_1bit.bmp", image("L").convert("1"), "L")
save("bmp_grey8.bmp", image("L"))
save("bmp_palette8.bmp", image("RGB").convert("P", palette=Image.ADAPTIVE, colors=100), "RGB")
save("bmp_RGB.bmp", image("RGB"))
save("bmp_RGBA.bmp", image("RGBA"))
if shutil.which("convert"):
    run("convert", path("source_RGB.ppm"), "-colors", "12", "BMP3:" + path("bmp_palette4.bmp"))
    golden_as_read("bmp_palette4.bmp", "RGB")
    run("convert", path("source_RGB.ppm"), "-colors", "200", "-compress", "RLE", "BMP3:" + path("bmp_rle8.bmp"))
    golden_as_read("bmp_rle8.bmp", "RGB")

# Netpbm
save("pnm_P4.pbm", image("L").convert("1"), "L")
save("pnm_P5.pgm", image("L"))
save("pnm_P6.ppm", image("RGB"))
write_pgm16("pnm_P5_16.pgm")
golden_as_read("pnm_P5_16.pgm")
for plain, binary in (("pnm_P1.pbm", "pnm_P4.pbm"), ("pnm_P2.pgm", "pnm_P5.pgm"), ("pnm_P3.ppm", "pnm_P6.ppm")):
    with open(path(plain), "wb") as f:
        subprocess.run(["pnmtoplainpnm", path(binary)], check=True, stdout=f, stderr=subprocess.DEVNULL)
    shutil.copy(path(binary + ".golden"), path(plain + ".golden"))
for pam, source in (("pnm_grey.pam", "pnm_P5.pgm"), ("pnm_RGB.pam", "pnm_P6.ppm")):
    with open(path(pam), "wb") as f, open(path(source), "rb") as given:
        subprocess.run(["pamtopam"], check=True, stdin=given, stdout=f, stderr=subprocess.DEVNULL)
    shutil.copy(path(source + ".golden"), path(pam + ".golden"))

# DICOM
from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.encaps import encapsulate
from pydicom.sequence import Sequence
from pydicom.uid import ExplicitVRLittleEndian, ImplicitVRLittleEndian, JPEGBaseline8Bit


def pixel_module(ds, im, pixels):
    planes = len(im.getbands())
    ds.Rows, ds.Columns = im.height, im.width
    ds.SamplesPerPixel = planes
    ds.PhotometricInterpretation = "MONOCHROME2" if planes == 1 else "RGB"
    if planes == 3:
        ds.PlanarConfiguration = 0
    ds.BitsAllocated = ds.BitsStored = 8
    ds.HighBit = 7
    ds.PixelRepresentation = 0
    ds.PixelData = pixels


def dicom(name, syntax, build):
    ds = Dataset()
    ds.file_meta = FileMetaDataset()
    ds.file_meta.MediaStorageSOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    ds.file_meta.MediaStorageSOPInstanceUID = "1.2.3.4"
    ds.file_meta.TransferSyntaxUID = syntax
    ds.SOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    ds.SOPInstanceUID = "1.2.3.4"
    ds.PatientName = "Test^Image"
    build(ds)
    ds.is_little_endian = True
    ds.is_implicit_VR = syntax == ImplicitVRLittleEndian
    ds.save_as(path(name), write_like_original=False)


def with_icon(ds):
    pixel_module(ds, image("L"), image("L").tobytes())
    icon = Dataset()
    pixel_module(icon, image("RGB"), image("RGB").tobytes())
    ds.IconImageSequence = Sequence([icon])


dicom("dicom_icon.dcm", ExplicitVRLittleEndian, with_icon)
golden("dicom_icon.dcm", image("L"))
dicom("dicom_implicit.dcm", ImplicitVRLittleEndian, with_icon)
shutil.copy(path("dicom_icon.dcm.golden"), path("dicom_implicit.dcm.golden"))


def twelve_bit(ds):
    pixel_module(ds, image("L"), b"")
    ds.BitsAllocated, ds.BitsStored, ds.HighBit = 16, 12, 11
    ds.PixelData = words(interleaved(1, 4095))


dicom("dicom_12bit.dcm", ExplicitVRLittleEndian, twelve_bit)


def jpeg_baseline(ds):
    buffer = io.BytesIO()
    image("RGB").save(buffer, "JPEG", quality=90)
    pixel_module(ds, image("RGB"), encapsulate([buffer.getvalue()]))
    ds.PhotometricInterpretation = "YBR_FULL_422"
    ds["PixelData"].VR = "OB"


dicom("dicom_jpeg.dcm", JPEGBaseline8Bit, jpeg_baseline)
golden("dicom_jpeg.dcm", Image.open(path("jpeg_RGB.jpg")))


def palette(ds):
    pixel_module(ds, image("L"), image("L").tobytes())
    ds.PhotometricInterpretation = "PALETTE COLOR"


dicom("dicom_palette.dcm", ExplicitVRLittleEndian, palette)
