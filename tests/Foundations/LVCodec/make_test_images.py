#!/usr/bin/python3
"""Writes the codec test images into OUTDIR with real tools (PIL, netpbm, libtiff tools, OpenJPEG,
libjpeg-turbo, ImageMagick, pydicom) and, beside each, NAME.golden: the pixels as PIL decodes them
(a text line "planes width height bytes-per-sample", then the planes one after the other, little-endian).
Usage: make_test_images.py OUTDIR"""
import io
import os
import shutil
import struct
import subprocess
import sys

from PIL import Image
from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.encaps import encapsulate
from pydicom.sequence import Sequence
from pydicom.uid import ExplicitVRLittleEndian, ImplicitVRLittleEndian, JPEGBaseline8Bit

W, H = 37, 23
out = sys.argv[1]
os.makedirs(out, exist_ok=True)


def path(name):
    return os.path.join(out, name)


def interleaved(channels, maximum=255):
    """Pixel-interleaved samples of the test pattern, row by row."""
    scale = maximum // 255 if maximum > 255 else 1
    return [((x * 7 + y * 13 + c * 50) * scale + c) % (maximum + 1)
            for y in range(H) for x in range(W) for c in range(channels)]


def image(mode):
    return Image.frombytes(mode, (W, H), bytes(interleaved(len(mode))))


def words(values, order="<"):
    return struct.pack(f"{order}{len(values)}H", *values)


def golden(name, decoded):
    wide = decoded.mode in ("I;16", "I")
    with open(path(name + ".golden"), "wb") as f:
        planes = [decoded] if wide else decoded.split()
        f.write(f"{len(planes)} {decoded.width} {decoded.height} {2 if wide else 1}\n".encode())
        for plane in planes:
            f.write(words(list(plane.getdata())) if wide else bytes(plane.getdata()))


def golden_as_read(name, mode=None):
    """The golden of a written file as PIL reads it, converted to mode (palette and 1-bit images)."""
    decoded = Image.open(path(name))
    golden(name, decoded.convert(mode) if mode else decoded)


def save(name, im, mode=None, **options):
    im.save(path(name), **options)
    golden_as_read(name, mode)


def run(*command, **streams):
    subprocess.run(command, check=True, **{"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL, **streams})


def same_golden(name, source):
    shutil.copy(path(source + ".golden"), path(name + ".golden"))


grey16 = Image.frombytes("I;16", (W, H), words(interleaved(1, 65535)))
pgm16 = b"P5\n%d %d\n65535\n" % (W, H) + words(interleaved(1, 65535), ">")

for mode in ("L", "LA", "RGB", "RGBA"):
    save(f"png_{mode}.png", image(mode))
save("png_palette.png", image("RGB").convert("P", palette=Image.ADAPTIVE, colors=64), "RGB")
save("png_1bit.png", image("L").convert("1"), "L")
save("png_grey16.png", grey16)

save("jpeg_L.jpg", image("L"), quality=90)
save("jpeg_RGB.jpg", image("RGB"), quality=90)
save("jpeg_CMYK.jpg", image("RGB").convert("CMYK"), "RGB", quality=95)
image("L").save(path("source_L.pgm"))
run("cjpeg", "-grayscale", "-outfile", path("cjpeg_grey.jpeg"), path("source_L.pgm"))
golden_as_read("cjpeg_grey.jpeg")

save("tiff_L.tif", image("L"))
save("tiff_RGB.tif", image("RGB"), compression="tiff_lzw")
save("tiff_grey16.tif", grey16)
save("tiff_palette.tif", image("RGB").convert("P", palette=Image.ADAPTIVE, colors=16), "RGB")
for name, options in (("tiff_tiled.tif", ["-t", "-w", "16", "-l", "16"]), ("tiff_separate.tif", ["-p", "separate"])):
    run("tiffcp", *options, path("tiff_RGB.tif"), path(name))
    golden_as_read(name)
run("tiffcp", path("tiff_L.tif"), path("tiff_RGB.tif"), path("tiff_pages.tif"))
page = Image.open(path("tiff_pages.tif"))
page.seek(1)
golden("tiff_pages.tif", page.convert("RGB"))

image("RGB").save(path("source_RGB.ppm"))
with open(path("source_16.pgm"), "wb") as f:
    f.write(pgm16)
for source, name in (("source_L.pgm", "j2k_L.j2k"), ("source_RGB.ppm", "j2k_RGB.jp2"),
                     ("source_16.pgm", "j2k_grey16.j2k")):
    run("opj_compress", "-n", "3", "-i", path(source), "-o", path(name))
    golden(name, Image.open(path(name)))

save("bmp_1bit.bmp", image("L").convert("1"), "L")
save("bmp_grey8.bmp", image("L"))
save("bmp_palette8.bmp", image("RGB").convert("P", palette=Image.ADAPTIVE, colors=100), "RGB")
save("bmp_RGB.bmp", image("RGB"))
save("bmp_RGBA.bmp", image("RGBA"))
if shutil.which("convert"):
    for name, options in (("bmp_palette4.bmp", ["-colors", "12"]),
                          ("bmp_rle8.bmp", ["-colors", "200", "-compress", "RLE"])):
        run("convert", path("source_RGB.ppm"), *options, "BMP3:" + path(name))
        golden_as_read(name, "RGB")

save("pnm_P4.pbm", image("L").convert("1"), "L")
save("pnm_P5.pgm", image("L"))
save("pnm_P6.ppm", image("RGB"))
with open(path("pnm_P5_16.pgm"), "wb") as f:
    f.write(pgm16)
golden_as_read("pnm_P5_16.pgm")
for name, source, command in (("pnm_P1.pbm", "pnm_P4.pbm", ["pnmtoplainpnm", path("pnm_P4.pbm")]),
                              ("pnm_P2.pgm", "pnm_P5.pgm", ["pnmtoplainpnm", path("pnm_P5.pgm")]),
                              ("pnm_P3.ppm", "pnm_P6.ppm", ["pnmtoplainpnm", path("pnm_P6.ppm")]),
                              ("pnm_grey.pam", "pnm_P5.pgm", ["pamtopam"]),
                              ("pnm_RGB.pam", "pnm_P6.ppm", ["pamtopam"])):
    with open(path(name), "wb") as f, open(path(source), "rb") as given:
        run(*command, stdin=given, stdout=f)
    same_golden(name, source)


def pixel_module(ds, im, pixels):
    planes = len(im.getbands())
    ds.Rows, ds.Columns, ds.SamplesPerPixel = im.height, im.width, planes
    ds.PhotometricInterpretation = "MONOCHROME2" if planes == 1 else "RGB"
    if planes == 3:
        ds.PlanarConfiguration = 0
    ds.BitsAllocated = ds.BitsStored = 8
    ds.HighBit, ds.PixelRepresentation, ds.PixelData = 7, 0, pixels


def dicom(name, syntax, build):
    ds = Dataset()
    ds.file_meta = FileMetaDataset()
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID = "1.2.3.4"
    ds.file_meta.TransferSyntaxUID = syntax
    ds.PatientName = "Test^Image"
    build(ds)
    ds.is_little_endian, ds.is_implicit_VR = True, syntax == ImplicitVRLittleEndian
    ds.save_as(path(name), write_like_original=False)


def with_icon(ds):
    pixel_module(ds, image("L"), image("L").tobytes())
    icon = Dataset()
    pixel_module(icon, image("RGB"), image("RGB").tobytes())
    ds.IconImageSequence = Sequence([icon])


def twelve_bit(ds):
    pixel_module(ds, image("L"), words(interleaved(1, 4095)))
    ds.BitsAllocated, ds.BitsStored, ds.HighBit = 16, 12, 11


def jpeg_baseline(ds):
    buffer = io.BytesIO()
    image("RGB").save(buffer, "JPEG", quality=90)
    pixel_module(ds, image("RGB"), encapsulate([buffer.getvalue()]))
    ds.PhotometricInterpretation = "YBR_FULL_422"
    ds["PixelData"].VR = "OB"


def palette(ds):
    pixel_module(ds, image("L"), image("L").tobytes())
    ds.PhotometricInterpretation = "PALETTE COLOR"


dicom("dicom_icon.dcm", ExplicitVRLittleEndian, with_icon)
golden("dicom_icon.dcm", image("L"))
dicom("dicom_implicit.dcm", ImplicitVRLittleEndian, with_icon)
same_golden("dicom_implicit.dcm", "dicom_icon.dcm")
dicom("dicom_12bit.dcm", ExplicitVRLittleEndian, twelve_bit)
dicom("dicom_jpeg.dcm", JPEGBaseline8Bit, jpeg_baseline)
golden("dicom_jpeg.dcm", Image.open(path("jpeg_RGB.jpg")))
dicom("dicom_palette.dcm", ExplicitVRLittleEndian, palette)
