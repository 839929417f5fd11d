#!/usr/bin/python3
"""Writes the thumbnail corpus into OUTDIR: the sources whose icons were once wrong (JPEG-LS in every
interleave mode and depth, signed DICOM, TIFF and JPEG orientations, RGB JPEG in DICOM, 12-bit and
lossless JPEG, RLE), each made by a real encoder, and beside each NAME.golden: what an independent
decoder (PIL, DCMTK's dcmd* tools, gdcmconv) gives for it, turned upright, with the documented
shift of signed samples (+ 2^(bits-1)). Golden format: a line
"planes width height bytes-per-sample", then the planes one after the other, little-endian.
Usage: make_thumbnail_corpus.py OUTDIR"""
import os
import shutil
import struct
import subprocess
import sys

from PIL import Image, ImageOps
import pydicom
from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.encaps import encapsulate, generate_pixel_data_frame
from pydicom.uid import ExplicitVRLittleEndian

W, H = 37, 23  # not square, so a wrong turn changes the size
out = sys.argv[1]
os.makedirs(out, exist_ok=True)


def path(name):
    return os.path.join(out, name)


def run(*command):
    subprocess.run(command, check=True, cwd=out, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def pattern(channels, bits):
    """Pixel-interleaved samples of an asymmetric pattern covering the whole range of `bits`."""
    top = (1 << bits) - 1
    return [(x * 7919 + y * 104729 + c * 7907 + x * y * 31) % (top + 1) if top > 255 else
            (x * 7 + y * 13 + c * 50 + (x * y) % 5) % (top + 1)
            for y in range(H) for x in range(W) for c in range(channels)]


def write_golden(name, planes, width, height, wide, values):
    """values: pixel-interleaved samples."""
    with open(path(name + ".golden"), "wb") as f:
        f.write(f"{planes} {width} {height} {2 if wide else 1}\n".encode())
        for p in range(planes):
            plane = values[p::planes]
            f.write(struct.pack(f"<{len(plane)}H", *plane) if wide else bytes(plane))


def golden_from_pil(name, image):
    bands = image.split()
    values = [v for pixel in zip(*(b.getdata() for b in bands)) for v in pixel]
    write_golden(name, len(bands), image.width, image.height, False, values)


def golden_from_dicom(name, native_file, shift=0):
    """Golden of a native DICOM file an independent tool decompressed."""
    ds = pydicom.dcmread(path(native_file))
    samples, wide, plane = ds.SamplesPerPixel, ds.BitsAllocated > 8, ds.Rows * ds.Columns
    code = ("hH" if wide else "bB")[0 if ds.PixelRepresentation else 1]
    values = struct.unpack(f"<{plane * samples}{code}", ds.PixelData[:plane * samples * (2 if wide else 1)])
    if samples == 3 and getattr(ds, "PlanarConfiguration", 0) == 1:
        values = [values[p * plane + i] for i in range(plane) for p in range(3)]
    write_golden(name, samples, ds.Columns, ds.Rows, wide, [v + shift for v in values])


def native_dicom(name, channels, bits_allocated, bits_stored, signed=False, values=None):
    ds = Dataset()
    ds.file_meta = FileMetaDataset()
    ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID = "1.2.3.4.5"
    ds.file_meta.TransferSyntaxUID = ExplicitVRLittleEndian
    ds.Modality, ds.Rows, ds.Columns, ds.SamplesPerPixel = "OT", H, W, channels
    ds.PhotometricInterpretation = "RGB" if channels == 3 else "MONOCHROME2"
    if channels == 3:
        ds.PlanarConfiguration = 0
    ds.BitsAllocated, ds.BitsStored, ds.HighBit = bits_allocated, bits_stored, bits_stored - 1
    ds.PixelRepresentation = 1 if signed else 0
    values = values if values is not None else pattern(channels, bits_stored)
    code = ("h" if signed else "H") if bits_allocated == 16 else ("b" if signed else "B")
    ds.PixelData = struct.pack(f"<{len(values)}{code}", *values)
    ds.is_little_endian, ds.is_implicit_VR = True, False
    ds.save_as(path(name), write_like_original=False)


def extract_stream(dicom_file, stream_file):
    """Write the first frame of an encapsulated DICOM file as a plain file."""
    with open(path(stream_file), "wb") as f:
        f.write(next(generate_pixel_data_frame(pydicom.dcmread(path(dicom_file)).PixelData, 1)))


def encode(name, encoder, source, decoder, shift=0, stream=None, stream_shift=None):
    """NAME.dcm: src_SOURCE.dcm through the encoder, its golden from what the decoder makes of it; with
    `stream`, the first frame also as the plain file NAME+stream."""
    run(*encoder, f"src_{source}.dcm", name + ".dcm")
    run(*decoder, name + ".dcm", name + "_native.dcm")
    golden_from_dicom(name + ".dcm", name + "_native.dcm", shift)
    if stream:
        extract_stream(name + ".dcm", name + stream)
        golden_from_dicom(name + stream, name + "_native.dcm", shift if stream_shift is None else stream_shift)


# Sources: native DICOM files of each depth; CT from air at -1024 up to the top of 12 signed bits.
for name, channels, allocated, stored in (("grey8", 1, 8, 8), ("rgb8", 3, 8, 8), ("grey12", 1, 16, 12),
                                          ("rgb12", 3, 16, 12), ("grey16", 1, 16, 16)):
    native_dicom(f"src_{name}.dcm", channels, allocated, stored)
native_dicom("src_ct.dcm", 1, 16, 12, signed=True, values=[-1024 + v % 3072 for v in pattern(1, 12)])
native_dicom("src_ct16.dcm", 1, 16, 16, signed=True, values=[v - 32768 for v in pattern(1, 16)])
golden_from_dicom("src_ct.dcm", "src_ct.dcm", shift=2048)
golden_from_dicom("src_ct16.dcm", "src_ct16.dcm", shift=32768)

# JPEG-LS: every interleave mode of colour, grey of 8 to 16 bits; in DICOM and as plain .jls files.
# (dcmcjpls codes fewer than 8 stored bits as 8; the unit tests encode those depths with CharLS.)
for source, option, mode in [("rgb8", "+il", "line"), ("rgb8", "+is", "sample"), ("rgb8", "+in", "none"),
                             ("rgb12", "+il", "line"), ("grey8", "+il", "grey"), ("grey12", "+il", "grey"),
                             ("grey16", "+il", "grey")]:
    encode(f"jls_{source}_{mode}", ["dcmcjpls", option], source, ["dcmdjpls"], stream=".jls")
# Signed CT through RLE, JPEG-LS and JPEG 2000 (GDCM codes it as signed 16-bit components).
encode("rle_ct", ["dcmcrle"], "ct", ["dcmdrle"], 2048)
encode("jls_ct", ["dcmcjpls"], "ct", ["dcmdjpls"], 2048)
encode("j2k_ct", ["gdcmconv", "--j2k"], "ct", ["gdcmconv", "--raw"], 2048, ".j2k", 32768)
for source in ("grey8", "grey12", "rgb8"):
    encode(f"rle_{source}", ["dcmcrle"], source, ["dcmdrle"])
# 12-bit and lossless JPEG, decoded by GDCM for the goldens; the streams also as plain files.
for source, option, process in [("grey12", "+ee", "extended"), ("grey12", "+el", "lossless"), ("grey12", "+e1", "sv1"),
                                ("grey16", "+e1", "sv1"), ("rgb8", "+e1", "sv1"), ("grey8", "+el", "lossless")]:
    encode(f"jpeg_{source}_{process}", ["dcmcjpeg", option], source, ["gdcmconv", "--raw"], stream=".jpg")


def without_app14(stream):
    """The stream without Adobe APP14 markers: nothing but DICOM then says the colours are RGB."""
    pos, kept = 2, bytearray(stream[:2])
    while stream[pos] == 0xFF and stream[pos + 1] not in (0xDA, 0xD9):
        length = struct.unpack(">H", stream[pos + 2:pos + 4])[0]
        if stream[pos + 1] != 0xEE:
            kept += stream[pos:pos + 2 + length]
        pos += 2 + length
    return bytes(kept + stream[pos:])


# DICOM RGB JPEG without colour transform, its Adobe marker removed so libjpeg would guess YCbCr.
run("dcmcjpeg", "+eb", "+cr", "src_rgb8.dcm", "jpeg_rgb_notransform_marked.dcm")
ds = pydicom.dcmread(path("jpeg_rgb_notransform_marked.dcm"))
ds.PixelData = encapsulate([without_app14(next(generate_pixel_data_frame(ds.PixelData, 1)))])
ds.save_as(path("jpeg_rgb_notransform.dcm"))
run("dcmdjpeg", "jpeg_rgb_notransform.dcm", "jpeg_rgb_notransform_native.dcm")
golden_from_dicom("jpeg_rgb_notransform.dcm", "jpeg_rgb_notransform_native.dcm")


def picture(mode):
    return Image.frombytes(mode, (W, H), bytes(pattern(len(mode), 8)))


def cmyk_to_rgb(image):
    """libtiff's separated-to-RGB rule, r = (255 - k) * (255 - c) / 255 truncated, on PIL's raw bands."""
    c, m, y, k = (list(b.getdata()) for b in image.split())
    bands = [[(255 - kk) * (255 - v) // 255 for v, kk in zip(channel, k)] for channel in (c, m, y)]
    rgb = Image.new("RGB", image.size)
    rgb.putdata(list(zip(*bands)))
    return rgb


# TIFF Orientation 1 to 8 in grey, RGB, CMYK and palette; PIL turns TIFF pages upright as it loads them.
for orientation in range(1, 9):
    for kind, image in (("grey", picture("L")), ("rgb", picture("RGB")), ("cmyk", picture("CMYK")),
                        ("palette", picture("RGB").quantize(16))):
        name = f"tiff_{kind}_o{orientation}.tif"
        image.save(path(name), tiffinfo={274: orientation})
        upright = Image.open(path(name))
        upright.load()
        assert upright.size == ((H, W) if orientation > 4 else (W, H))
        golden_from_pil(name, cmyk_to_rgb(upright) if kind == "cmyk" else
                        upright.convert("RGB") if kind == "palette" else upright)

# Strips of 5 rows and 16 x 16 tiles: libtiff's RGBA reader runs over the page in pieces.
for source, name, layout in (("tiff_palette_o6.tif", "tiff_palette_o6_strips.tif", ["-r", "5"]),
                             ("tiff_cmyk_o7.tif", "tiff_cmyk_o7_strips.tif", ["-r", "5"]),
                             ("tiff_cmyk_o5.tif", "tiff_cmyk_o5_tiles.tif", ["-t", "-w", "16", "-l", "16"]),
                             ("tiff_rgb_o8.tif", "tiff_rgb_o8_tiles.tif", ["-t", "-w", "16", "-l", "16"])):
    run("tiffcp", *layout, source, name)
    shutil.copy(path(source + ".golden"), path(name + ".golden"))

# 16-bit grey TIFF turned by ImageMagick's -orient (it writes the Orientation tag).
with open(path("src_grey16.pgm"), "wb") as f:
    f.write(b"P5\n%d %d\n65535\n" % (W, H) + struct.pack(f">{W * H}H", *pattern(1, 16)))
for orientation, orient in enumerate(["TopLeft", "TopRight", "BottomRight", "BottomLeft", "LeftTop", "RightTop",
                                      "RightBottom", "LeftBottom"], start=1):
    name = f"tiff_grey16_o{orientation}.tif"
    run("convert", "src_grey16.pgm", "-orient", orient, "-depth", "16", name)
    upright = Image.open(path(name))
    upright.load()
    assert upright.mode == "I;16" and upright.size == ((H, W) if orientation > 4 else (W, H))
    write_golden(name, 1, upright.width, upright.height, True, list(upright.getdata()))

# JPEG with EXIF orientation 1 to 8, colour and grey.
for orientation in range(1, 9):
    for kind, mode in (("rgb", "RGB"), ("grey", "L")):
        name = f"jpeg_exif_{kind}_o{orientation}.jpg"
        exif = Image.Exif()
        exif[274] = orientation
        picture(mode).save(path(name), quality=92, exif=exif.tobytes())
        golden_from_pil(name, ImageOps.exif_transpose(Image.open(path(name))))
