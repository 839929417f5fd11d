#!/usr/bin/python3
# Regenerate with: /usr/bin/python3 scripts/fuzz_seeds.py [--tool build-fuzzreplay/dicapsule]
"""Writes the seed corpora of the fuzz targets and the libFuzzer dictionary fuzz/dicom.dict.

DICOM seeds are built byte by byte (so lengths, VRs and delimiters are exactly the ones wanted,
including the wrong ones) and from pydicom data sets transcoded by DCMTK's dcmconv. With --tool, a
real packed file made by the tool from examples/ is added to the payload seeds.
"""

import argparse
import hashlib
import io
import os
import shutil
import struct
import subprocess
import sys
import tempfile

from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.sequence import Sequence
from pydicom.uid import ExplicitVRBigEndian, ExplicitVRLittleEndian, ImplicitVRLittleEndian

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FUZZ = os.path.join(ROOT, "fuzz")

IMPLICIT, EXPLICIT, BIG = "implicit", "explicit", "big"
UNDEFINED = 0xFFFFFFFF
LONG_LENGTH_VRS = {"OB", "OF", "OW", "SQ", "UN", "UT"}

TRANSFER_SYNTAXES = {
    "implicit": "1.2.840.10008.1.2",
    "explicit": "1.2.840.10008.1.2.1",
    "big": "1.2.840.10008.1.2.2",
    "deflated": "1.2.840.10008.1.2.1.99",
    "jpeg-baseline": "1.2.840.10008.1.2.4.50",
    "jpeg-lossless": "1.2.840.10008.1.2.4.70",
    "jpeg-ls": "1.2.840.10008.1.2.4.80",
    "jpeg2000": "1.2.840.10008.1.2.4.90",
    "rle": "1.2.840.10008.1.2.5",
    "unknown": "1.2.3.4.5.6.7",
}
RAW_DATA_STORAGE = "1.2.840.10008.5.1.4.1.1.66"
SECONDARY_CAPTURE = "1.2.840.10008.5.1.4.1.1.7"
PRIVATE_CREATOR = b"IvraDentalPrivate "


# ---------------------------------------------------------------- byte builders

def tag(group, element, encoding):
    return struct.pack(">HH" if encoding == BIG else "<HH", group, element)


def u16(value, encoding):
    return struct.pack(">H" if encoding == BIG else "<H", value)


def u32(value, encoding):
    return struct.pack(">I" if encoding == BIG else "<I", value)


def pad(value, vr):
    """Values are padded to even length: UI with NUL, binary VRs with NUL, text with a space."""
    if len(value) % 2 == 0:
        return value
    return value + (b"\0" if vr in ("UI", "OB", "UN") else b" ")


def element(group, number, vr, value, encoding, length=None, padded=True):
    """One element; length overrides the written length (undefined, odd, lying)."""
    if padded:
        value = pad(value, vr)
    if length is None:
        length = len(value)
    header = tag(group, number, encoding)
    if encoding == IMPLICIT:
        return header + u32(length, encoding) + value
    if vr in LONG_LENGTH_VRS:
        return header + vr.encode() + b"\0\0" + u32(length, encoding) + value
    return header + vr.encode() + u16(length & 0xFFFF, encoding) + value


def item(content, encoding, undefined=False):
    body = tag(0xFFFE, 0xE000, encoding) + u32(UNDEFINED if undefined else len(content), encoding) + content
    return body + (tag(0xFFFE, 0xE00D, encoding) + u32(0, encoding) if undefined else b"")


def sequence(group, number, items, encoding, undefined=False, vr="SQ"):
    content = b"".join(items)
    ending = tag(0xFFFE, 0xE0DD, encoding) + u32(0, encoding) if undefined else b""
    return element(group, number, vr, content + ending, encoding, UNDEFINED if undefined else len(content))


def meta_group(transfer_syntax, sop_class=SECONDARY_CAPTURE, sop_instance="1.2.826.0.1.3680043.2.1143.1"):
    rest = (element(0x0002, 0x0001, "OB", b"\0\1", EXPLICIT)
            + element(0x0002, 0x0002, "UI", sop_class.encode(), EXPLICIT)
            + element(0x0002, 0x0003, "UI", sop_instance.encode(), EXPLICIT)
            + element(0x0002, 0x0010, "UI", transfer_syntax.encode(), EXPLICIT)
            + element(0x0002, 0x0012, "UI", b"1.2.826.0.1.3680043.2.1143.9", EXPLICIT))
    return element(0x0002, 0x0000, "UL", struct.pack("<I", len(rest)), EXPLICIT) + rest


def part10(transfer_syntax, body, **meta):
    return b"\0" * 128 + b"DICM" + meta_group(transfer_syntax, **meta) + body


def demographics(encoding, sop_class=SECONDARY_CAPTURE):
    """The patient, study, series and equipment identity a metadata source must have."""
    parts = [
        (0x0008, 0x0005, "CS", b"ISO_IR 100"),
        (0x0008, 0x0016, "UI", sop_class.encode()),
        (0x0008, 0x0018, "UI", b"1.2.826.0.1.3680043.2.1143.1"),
        (0x0008, 0x0060, "CS", b"OT"),
        (0x0008, 0x0070, "LO", b"Seed Maker"),
        (0x0010, 0x0010, "PN", b"Doe^Jane"),
        (0x0010, 0x0020, "LO", b"PAT-1"),
        (0x0020, 0x000D, "UI", b"1.2.826.0.1.3680043.2.1143.2"),
        (0x0020, 0x000E, "UI", b"1.2.826.0.1.3680043.2.1143.3"),
    ]
    return b"".join(element(g, e, vr, v, encoding) for g, e, vr, v in parts)


def nested(depth, encoding, undefined):
    """depth sequences, each in the one item of the sequence around it."""
    inner = element(0x0008, 0x0100, "SH", b"LEAF", encoding)
    for _ in range(depth):
        inner = sequence(0x0040, 0xA730, [item(inner, encoding, undefined)], encoding, undefined)
    return inner


def custom_data_item(key, value, encoding, vr="UN"):
    return item(element(0x0009, 0x11A1, "LO", key, encoding)
                + element(0x0009, 0x11A2, "UL", u32(len(value), encoding), encoding)
                + element(0x0009, 0x11A3, vr, value, encoding), encoding)


def packed(entries, encoding=EXPLICIT, undefined=False, vr="UN"):
    """A raw data instance whose custom data sequence holds entries (key, value) in order."""
    items = [custom_data_item(k, v, encoding, vr) for k, v in entries]
    body = (demographics(encoding, RAW_DATA_STORAGE)
            + element(0x0009, 0x0011, "LO", PRIVATE_CREATOR, encoding)
            + sequence(0x0009, 0x11A0, items, encoding, undefined))
    ts = {IMPLICIT: "implicit", EXPLICIT: "explicit", BIG: "big"}[encoding]
    return part10(TRANSFER_SYNTAXES[ts], body, sop_class=RAW_DATA_STORAGE)


def packed_as_un(entries, encoding=EXPLICIT, undefined_items=False):
    """A packed instance re-encoded by a toolkit without our dictionary: the custom data sequence is
    one UN element of defined length whose value holds the items in implicit VR little endian."""
    items = b"".join(item(element(0x0009, 0x0011, "LO", PRIVATE_CREATOR, IMPLICIT)
                          + element(0x0009, 0x11A1, "LO", k, IMPLICIT)
                          + element(0x0009, 0x11A2, "UL", u32(len(v), IMPLICIT), IMPLICIT)
                          + element(0x0009, 0x11A3, "UN", v, IMPLICIT), IMPLICIT, undefined_items)
                     for k, v in entries)
    body = (demographics(encoding, RAW_DATA_STORAGE)
            + element(0x0009, 0x0011, "LO", PRIVATE_CREATOR, encoding)
            + element(0x0009, 0x11A0, "UN", items, encoding))
    ts = {EXPLICIT: "explicit", BIG: "big"}[encoding]
    return part10(TRANSFER_SYNTAXES[ts], body, sop_class=RAW_DATA_STORAGE)


def first_item_length_lies(data):
    """The first item (of little endian tag order) claims far more bytes than its container holds."""
    at = data.index(b"\xfe\xff\x00\xe0") + 4
    return data[:at] + struct.pack("<I", 0x7FFFFFF0) + data[at + 4:]


def encapsulated_pixels(fragments, encoding=EXPLICIT):
    items = [item(b"", encoding)] + [item(pad(f, "OB"), encoding) for f in fragments]
    return element(0x7FE0, 0x0010, "OB", b"".join(items) + tag(0xFFFE, 0xE0DD, encoding) + u32(0, encoding),
                   encoding, UNDEFINED, padded=False)


def image_attributes(rows, columns, bits, samples, photometric, encoding):
    return (element(0x0028, 0x0002, "US", u16(samples, encoding), encoding)
            + element(0x0028, 0x0004, "CS", photometric, encoding)
            + element(0x0028, 0x0010, "US", u16(rows, encoding), encoding)
            + element(0x0028, 0x0011, "US", u16(columns, encoding), encoding)
            + element(0x0028, 0x0100, "US", u16(bits, encoding), encoding)
            + element(0x0028, 0x0101, "US", u16(bits, encoding), encoding)
            + element(0x0028, 0x0102, "US", u16(bits - 1, encoding), encoding)
            + element(0x0028, 0x0103, "US", u16(0, encoding), encoding))


# ---------------------------------------------------------------- DICOM seeds

def transfer_syntax_seeds():
    """Every transfer syntax, with its data set in the encoding the reader expects for it."""
    seeds = {}
    for name, uid in TRANSFER_SYNTAXES.items():
        encoding = {"implicit": IMPLICIT, "big": BIG}.get(name, EXPLICIT)
        body = demographics(encoding)
        if name not in ("implicit", "explicit", "big", "deflated", "unknown"):
            body += image_attributes(2, 2, 8, 1, b"MONOCHROME2", encoding) + encapsulated_pixels([b"\xff\xd8\xff\xd9"])
        seeds[f"ts-{name}.dcm"] = part10(uid, body)
    return seeds


def structure_seeds():
    """Lengths, nesting, private and UN elements, files without preamble."""
    ex, im, be = EXPLICIT, IMPLICIT, BIG
    leaf = element(0x0008, 0x0100, "SH", b"CODE", ex)
    seeds = {
        "seq-defined.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                  + sequence(0x0008, 0x1140, [item(leaf, ex), item(leaf, ex)], ex)),
        "seq-undefined.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                    + sequence(0x0008, 0x1140, [item(leaf, ex, True), item(leaf, ex, True)], ex, True)),
        "seq-mixed-implicit.dcm": part10(TRANSFER_SYNTAXES["implicit"], demographics(im)
                                         + sequence(0x0008, 0x1140, [item(element(0x0008, 0x1150, "UI", b"1.2", im), im, True)], im)),
        "seq-big-endian.dcm": part10(TRANSFER_SYNTAXES["big"], demographics(be)
                                     + sequence(0x0008, 0x1140, [item(element(0x0008, 0x1150, "UI", b"1.2", be), be)], be, True)),
        "seq-empty.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex) + sequence(0x0008, 0x1140, [], ex)
                                + sequence(0x0008, 0x1150 - 0x10, [item(b"", ex)], ex, True)),
        "nested-10.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex) + nested(10, ex, False)),
        "nested-70-undefined.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex) + nested(70, ex, True)),
        "nested-65-implicit.dcm": part10(TRANSFER_SYNTAXES["implicit"], demographics(im) + nested(65, im, True)),
        "odd-lengths.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                  + element(0x0008, 0x0080, "LO", b"ODD", ex, padded=False)
                                  + sequence(0x0008, 0x1140, [item(element(0x0008, 0x0100, "SH", b"ABC", ex, padded=False), ex)], ex)),
        "zero-lengths.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                   + element(0x0008, 0x0020, "DA", b"", ex) + element(0x0008, 0x1030, "LO", b"", ex)
                                   + element(0x0028, 0x0010, "US", b"", ex) + element(0x7FE0, 0x0010, "OW", b"", ex)),
        "private-and-un.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                     + element(0x0009, 0x0010, "LO", b"SOME CREATOR", ex)
                                     + element(0x0009, 0x1001, "UN", b"\1\2\3\4", ex)
                                     + element(0x0011, 0x0010, "LO", PRIVATE_CREATOR, ex)
                                     + element(0x0011, 0x1010, "UN", item(leaf, im, True) + tag(0xFFFE, 0xE0DD, im) + u32(0, im), ex, UNDEFINED, padded=False)
                                     + element(0x0019, 0x1000, "XX", b"ab", ex)),
        "un-undefined-implicit.dcm": part10(TRANSFER_SYNTAXES["implicit"], demographics(im)
                                            + element(0x0029, 0x1010, "UN", item(b"", im) + tag(0xFFFE, 0xE0DD, im) + u32(0, im), im, UNDEFINED, padded=False)),
        "ut-od-short.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                  + ex_short_ut(b"shortT") + element(0x0040, 0xA310 - 0x10, "UT", b"long form", ex)
                                  + element(0x0070, 0x1A08, "OD", struct.pack("<d", 1.5), ex)),
        "ui-trailing-space.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                        + element(0x0008, 0x1155, "UI", b"1.2 ", ex, padded=False)),
        "pixels-native.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                    + image_attributes(2, 2, 8, 1, b"MONOCHROME2", ex)
                                    + element(0x6000, 0x3000, "OW", b"\1\0\2\0", ex)
                                    + element(0x7FE0, 0x0010, "OW", bytes(range(4)), ex)),
        "pixels-fragments.dcm": part10(TRANSFER_SYNTAXES["jpeg-baseline"], demographics(ex)
                                       + image_attributes(2, 2, 8, 1, b"MONOCHROME2", ex)
                                       + encapsulated_pixels([b"\xff\xd8", b"\xff\xd9\0"])),
        "no-preamble-implicit.dcm": demographics(im),
        "no-preamble-meta.dcm": meta_group(TRANSFER_SYNTAXES["explicit"]) + demographics(ex),
        "no-preamble-explicit.dcm": demographics(ex),
        "meta-bad-group-length.dcm": b"\0" * 128 + b"DICM" + element(0x0002, 0x0000, "UL", struct.pack("<I", 0xFFFFFFF0), ex)
        + element(0x0002, 0x0010, "UI", b"1.2.840.10008.1.2", ex) + demographics(im),
        "meta-only.dcm": part10(TRANSFER_SYNTAXES["big"], b""),
        "length-lies.dcm": part10(TRANSFER_SYNTAXES["explicit"], demographics(ex)
                                  + element(0x0008, 0x0080, "LO", b"AB", ex, length=0xFFF0)
                                  + element(0x0008, 0x1140, "SQ", item(leaf, ex), ex, length=0x7FFFFFFF)),
    }
    return seeds


def ex_short_ut(value):
    """A UT element written with a 16-bit length (as some writers do), which the reader accepts."""
    return tag(0x0040, 0xA160, EXPLICIT) + b"UT" + u16(len(value), EXPLICIT) + value


def pydicom_seeds(tmp):
    """One data set written by pydicom in each uncompressed syntax, and dcmconv's deflated form."""
    seeds = {}
    ds = Dataset()
    ds.SpecificCharacterSet = "ISO_IR 192"
    ds.SOPClassUID = SECONDARY_CAPTURE
    ds.SOPInstanceUID = "1.2.826.0.1.3680043.2.1143.10"
    ds.PatientName = "Müller^Jürgen"
    ds.PatientID = "PAT-2"
    ds.StudyInstanceUID = "1.2.826.0.1.3680043.2.1143.11"
    ds.SeriesInstanceUID = "1.2.826.0.1.3680043.2.1143.12"
    ds.Modality = "OT"
    ds.Manufacturer = "pydicom"
    reference = Dataset()
    reference.ReferencedSOPClassUID = SECONDARY_CAPTURE
    reference.ReferencedSOPInstanceUID = "1.2.826.0.1.3680043.2.1143.13"
    ds.ReferencedImageSequence = Sequence([reference, reference])
    for name, uid, little, implicit in (("implicit", ImplicitVRLittleEndian, True, True),
                                        ("explicit", ExplicitVRLittleEndian, True, False),
                                        ("big", ExplicitVRBigEndian, False, False)):
        ds.file_meta = FileMetaDataset()
        ds.file_meta.MediaStorageSOPClassUID = ds.SOPClassUID
        ds.file_meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID
        ds.file_meta.TransferSyntaxUID = uid
        ds.is_little_endian, ds.is_implicit_VR = little, implicit
        buffer = io.BytesIO()
        ds.save_as(buffer, write_like_original=False)
        seeds[f"pydicom-{name}.dcm"] = buffer.getvalue()
    source = os.path.join(tmp, "explicit.dcm")
    deflated = os.path.join(tmp, "deflated.dcm")
    with open(source, "wb") as out:
        out.write(seeds["pydicom-explicit.dcm"])
    subprocess.run(["dcmconv", "+td", source, deflated], check=True)
    with open(deflated, "rb") as data:
        seeds["dcmconv-deflated.dcm"] = data.read()
    return seeds


def deflate_bomb_seeds(tmp):
    """Deflated packed files that inflate far beyond their size (made deflated by dcmconv): private
    junk elements of zeros after the data set, and a stored name of 256 KiB (beyond its limit).
    Kept to 1 MiB inflated so that replaying them, and cutting them at every offset, stays quick."""
    content = (b"Dicapsule.PackedFile.Content", b"%PDF-1.4 seed payload\n")
    name = (b"Dicapsule.PackedFile.Name", b"report.pdf")
    junk = element(0x0011, 0x0010, "LO", b"JUNK", EXPLICIT) + b"".join(
        element(0x0011, 0x1000 + i, "OB", bytes(1 << 19), EXPLICIT) for i in range(2))
    sources = {
        "deflate-bomb-junk.dcm": packed([content, name]) + junk,
        "deflate-bomb-name.dcm": packed([content, (name[0], b"n" * (1 << 18))]),
    }
    seeds = {}
    for seed, data in sources.items():
        source, deflated = os.path.join(tmp, "bomb-explicit.dcm"), os.path.join(tmp, seed)
        with open(source, "wb") as out:
            out.write(data)
        subprocess.run(["dcmconv", "+td", source, deflated], check=True)
        with open(deflated, "rb") as result:
            seeds[seed] = result.read()
    return seeds


def payload_seeds(tool, tmp):
    """Packed files: well formed, with references (good and bad), empty or missing values."""
    name = ("Dicapsule.PackedFile.Name", b"report.pdf")
    content = ("Dicapsule.PackedFile.Content", b"%PDF-1.4 seed payload\n")
    command = ("Dicapsule.CommandLine", b'pack -i report.pdf -m "my meta.xml"')
    refs = ("Dicapsule.InstanceReferences", b"1.2.3:1.2.3.4:1.2.3.4.5^1.2.3:1.2.3.4:1.2.3.4.6:1.2.3.9")
    digest = ("Dicapsule.PackedFile.SHA256", hashlib.sha256(content[1]).hexdigest().encode())
    def entries(*pairs):
        return [(k.encode(), v) for k, v in pairs]
    seeds = {
        "packed-explicit.dcm": packed(entries(content, name, command, refs)),
        "packed-implicit.dcm": packed(entries(content, name, command), IMPLICIT),
        "packed-big.dcm": packed(entries(content, name, command), BIG),
        "packed-undefined-ob.dcm": packed(entries(content, name, command), EXPLICIT, True, "OB"),
        "packed-bad-reference.dcm": packed(entries(content, name, ("Dicapsule.InstanceReferences", b"1.2:3^::"))),
        "packed-empty-content.dcm": packed(entries(("Dicapsule.PackedFile.Content", b""), name)),
        "packed-no-name.dcm": packed(entries(content, command)),
        "packed-empty-key.dcm": packed(entries(content, ("", b"x"), name)),
        "packed-name-escape.dcm": packed(entries(content, ("Dicapsule.PackedFile.Name", b"../../etc/passwd"))),
        "packed-length-lies.dcm": packed(entries(content, name)).replace(struct.pack("<I", len(content[1])), struct.pack("<I", 0x7FFFFFF0), 1),
        "packed-digest.dcm": packed(entries(content, name, digest)),
        "packed-un-defined-items.dcm": packed_as_un(entries(content, name, digest)),
        "packed-un-undefined-items.dcm": packed_as_un(entries(content, name, command), EXPLICIT, True),
        "packed-un-big.dcm": packed_as_un(entries(content, name), BIG, True),
        "packed-un-item-length-lies.dcm": first_item_length_lies(packed_as_un(entries(content, name))),
    }
    if tool:
        output = os.path.join(tmp, "packed-tool.dcm")
        subprocess.run([tool, "pack", "-i", os.path.join(ROOT, "examples", "report.pdf"),
                        "-m", os.path.join(ROOT, "examples", "metadata.xml"),
                        "-r", "1.2.3:1.2.3.4:1.2.3.4.5", "-o", output, "-f"],
                       check=True, env=dict(os.environ, CONVERTIX_TESTMODE=""))
        with open(output, "rb") as data:
            seeds["packed-tool.dcm"] = data.read()
    return seeds


# ---------------------------------------------------------------- other seeds

def edition_seeds():
    with open(os.path.join(ROOT, "examples", "metadata.xml"), "rb") as data:
        example = data.read()
    def document(body, root='<orchid type="ConvertixToFp">'):
        return (b'<?xml version="1.0" encoding="UTF-8"?>\n' + root.encode()
                + b"<operations>" + body + b"</operations></orchid>")
    return {
        "example.xml": example,
        "empty-operations.xml": document(b""),
        "other-type.xml": document(b'<operation type="conversion"><Patient/></operation>'),
        "two-editions.xml": document(b'<operation type="edition"><Patient><String Name="PatientID" Value="A"/></Patient>'
                                     b'</operation><operation type="edition"><Series><Code Name="Modality" Value="DOC"/>'
                                     b'</Series></operation>'),
        "elements.xml": document(b'<operation type="edition"><Instance><Element Tag="(0020,4000)" VR="LT" Value="x"/>'
                                 b'<Element Tag="(0009,1001)" VR="UN" Value="00ff"/><Sequence Name="ReferencedImageSequence">'
                                 b'<Item><Element Tag="(0008,1150)" VR="UI" Value="1.2"/></Item><Item/></Sequence>'
                                 b'<Number Name="InstanceNumber" Value="-7"/><Boolean Name="BurnedInAnnotation" Value="true"/>'
                                 b'</Instance></operation>'),
        "dates.xml": document(b'<operation type="edition"><Study><Date Name="StudyDate" Year="2024" Month="2" Day="30"/>'
                              b'<Time Name="StudyTime" Hour="25" Minute="61" Second="-1"/><DateTime Name="AcquisitionDateTime" '
                              b'Value="20240229123045.5+0100"/></Study></operation>'),
        "names.xml": document(b'<operation type="edition"><Patient><Name Name="PatientName" Family="\xc3\x89lise" Given="A^B=C">'
                              b'<IdeographicName Family="\xe5\xb1\xb1\xe7\x94\xb0"/><PhoneticName Family="yamada"/></Name>'
                              b'<Code Name="PatientSex" Value="X"/></Patient></operation>'),
        "utf16.xml": '<?xml version="1.0" encoding="UTF-16"?><orchid type="x"><operations><operation type="edition">'
                     '<Patient><String Name="PatientID" Value="Z"/></Patient></operation></operations></orchid>'.encode("utf-16"),
        "not-xml.xml": b"<orchid type=\"x\"><operations><operation type=\"edition\"><Patient>",
        **depth_and_size_seeds(document),
    }


def depth_and_size_seeds(document):
    """Sequences at, beyond and far beyond the 64 levels the reader accepts; deep nesting that is
    not a sequence; a wide document of many small nodes and attributes."""
    sequence = (b'<Sequence Name="RequestAttributesSequence"><Item>', b"</Item></Sequence>")
    def edition(body):
        return document(b'<operation type="edition"><Study>' + body + b"</Study></operation>")
    def nested(depth, opening, closing, inner=b""):
        return opening * depth + inner + closing * depth
    leaf = b'<String Name="RequestedProcedureID" Value="x"/>'
    return {
        "depth-64.xml": edition(nested(64, *sequence, leaf)),
        "depth-65.xml": edition(nested(65, *sequence, leaf)),
        "depth-300.xml": edition(nested(300, *sequence)),
        "depth-plain.xml": edition(b'<String Name="StudyID" Value="1">' + nested(5000, b"<x>", b"</x>") + b"</String>"),
        "depth-items.xml": edition(b'<Sequence Name="RequestAttributesSequence">' + nested(3000, b"<Item>", b"</Item>")
                                   + b"</Sequence>"),
        "size-wide.xml": document(b'<operation type="edition"><Study>' + b'<a b="" c=""/>x' * 4000
                                  + b"</Study></operation>" + b"<a/>" * 4000),
    }


def unpack_name_seeds():
    """First byte: bit 0 chooses the original name; then input name, newline, stored name."""
    names = [(0, b"x.dcm", b"report.PDF"), (1, b"x.dcm", b"report.PDF"), (0, b"x.dcm", b"noext"),
             (1, b"in.dcm", b".."), (1, b"in.dcm", b"../escape"), (0, b"...", b"name"), (0, b"a.b.c", b"x."),
             (1, b"in", b"dir\\file"), (0, b".hidden", b".tar.gz"), (1, b"in", b"nul\0byte")]
    return {f"name-{i:02d}.txt": bytes([mode]) + a + b"\n" + b for i, (mode, a, b) in enumerate(names)}


def image_seeds():
    """DICOM images for the image reader: main image in each uncompressed encoding, icon sequences."""
    seeds = {}
    for name, encoding in (("implicit", IMPLICIT), ("explicit", EXPLICIT), ("big", BIG)):
        body = (demographics(encoding) + image_attributes(2, 3, 16, 1, b"MONOCHROME2", encoding)
                + element(0x7FE0, 0x0010, "OW", b"".join(u16(v * 1000, encoding) for v in range(6)), encoding))
        seeds[f"image-{name}.dcm"] = part10(TRANSFER_SYNTAXES[name], body)
    icon = image_attributes(2, 2, 8, 3, b"RGB", EXPLICIT) + element(0x7FE0, 0x0010, "OB", bytes(range(12)), EXPLICIT)
    seeds["icon-rgb-undefined.dcm"] = part10(TRANSFER_SYNTAXES["explicit"], demographics(EXPLICIT)
                                             + sequence(0x0088, 0x0200, [item(icon, EXPLICIT, True)], EXPLICIT, True))
    palette = image_attributes(2, 2, 8, 1, b"PALETTE COLOR", EXPLICIT) + element(0x7FE0, 0x0010, "OB", bytes(4), EXPLICIT)
    seeds["icon-palette.dcm"] = part10(TRANSFER_SYNTAXES["explicit"], demographics(EXPLICIT)
                                       + sequence(0x0088, 0x0200, [item(palette, EXPLICIT)], EXPLICIT))
    seeds["image-rle.dcm"] = part10(TRANSFER_SYNTAXES["rle"], demographics(EXPLICIT)
                                    + image_attributes(2, 2, 8, 1, b"MONOCHROME2", EXPLICIT)
                                    + encapsulated_pixels([u32(1, EXPLICIT) + u32(64, EXPLICIT) + bytes(56) + b"\x03\1\2\3\4"]))
    return seeds


# ---------------------------------------------------------------- dictionary

def dictionary():
    lines = ["# libFuzzer dictionary of the DICOM, metadata and image targets (scripts/fuzz_seeds.py)."]
    def add(name, data):
        lines.append(f'{name}="' + "".join(f"\\x{b:02x}" for b in data) + '"')
    vrs = ("AE AS AT CS DA DS DT FD FL IS LO LT OB OD OF OL OV OW PN SH SL SQ SS ST SV TM UC UI UL UN UR US UT UV")
    for vr in vrs.split():
        add(f"vr_{vr}", vr.encode())
        add(f"vr_{vr}_long", vr.encode() + b"\0\0")
    for name, uid in TRANSFER_SYNTAXES.items():
        add(f"ts_{name.replace('-', '_')}", uid.encode() + (b"\0" if len(uid) % 2 else b""))
    add("sop_raw_data", RAW_DATA_STORAGE.encode())
    add("sop_media_directory", b"1.2.840.10008.1.3.10")
    for name, (group, number) in {"item": (0xFFFE, 0xE000), "item_end": (0xFFFE, 0xE00D),
                                  "sequence_end": (0xFFFE, 0xE0DD)}.items():
        add(f"{name}_le", tag(group, number, EXPLICIT))
        add(f"{name}_be", tag(group, number, BIG))
        add(f"{name}_le_zero", tag(group, number, EXPLICIT) + b"\0\0\0\0")
    add("undefined_length", b"\xff\xff\xff\xff")
    add("dicm", b"DICM")
    for name, (group, number) in {"meta_length": (0x0002, 0x0000), "transfer_syntax": (0x0002, 0x0010),
                                  "charset": (0x0008, 0x0005), "sop_class": (0x0008, 0x0016),
                                  "patient_name": (0x0010, 0x0010), "study_uid": (0x0020, 0x000D),
                                  "series_uid": (0x0020, 0x000E), "creator_0009": (0x0009, 0x0011),
                                  "custom_data": (0x0009, 0x11A0), "custom_key": (0x0009, 0x11A1),
                                  "custom_length": (0x0009, 0x11A2), "custom_value": (0x0009, 0x11A3),
                                  "icon": (0x0088, 0x0200), "rows": (0x0028, 0x0010),
                                  "photometric": (0x0028, 0x0004), "pixel_data": (0x7FE0, 0x0010),
                                  "overlay_data": (0x6000, 0x3000)}.items():
        add(f"tag_{name}_le", tag(group, number, EXPLICIT))
        add(f"tag_{name}_be", tag(group, number, BIG))
    for text in ("IvraDentalPrivate", "Dicapsule.PackedFile.Name", "Dicapsule.PackedFile.Content",
                 "Dicapsule.CommandLine", "Dicapsule.InstanceReferences", "ISO_IR 192", "ISO 2022 IR 87",
                 "\x1b$B", "MONOCHROME2", "PALETTE COLOR", "RGB", "YBR_FULL_422",
                 '<orchid type="', "<operations>", '<operation type="edition">', "</operation>",
                 "<Patient>", "<Study>", "<Series>", "<Equipment>", "<Instance>", "<Sequence Name=\"", "<Item>",
                 '<Element Tag="(', 'VR="', 'Value="', 'Name="', 'Family="', "BM", "P7", "WIDTH ", "ENDHDR"):
        add("text_" + "".join(c if c.isalnum() else "_" for c in text).strip("_"), text.encode())
    return "\n".join(lines) + "\n"


# ---------------------------------------------------------------- output

def write_corpus(folder, target, seeds):
    directory = os.path.join(FUZZ, folder, "corpus", target)
    os.makedirs(directory, exist_ok=True)
    for name, data in seeds.items():
        with open(os.path.join(directory, name), "wb") as out:
            out.write(data)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--tool", help="the built dicapsule, to add a real packed file to the payload seeds")
    args = parser.parse_args()
    tmp = tempfile.mkdtemp(prefix="dicapsule-seeds-")
    try:
        dicom = {**transfer_syntax_seeds(), **structure_seeds(), **pydicom_seeds(tmp)}
        payload = {**payload_seeds(args.tool, tmp), **deflate_bomb_seeds(tmp)}
        editions = edition_seeds()
        write_corpus("dicom", "dicom_file_fuzzer", {**dicom, **payload})
        write_corpus("dicom", "dicom_meta_fuzzer", dicom)
        write_corpus("dicom", "dicom_stream_fuzzer", dicom)
        write_corpus("app", "payload_fuzzer", {**payload, **transfer_syntax_seeds()})
        write_corpus("app", "unpack_name_fuzzer", unpack_name_seeds())
        write_corpus("metadata", "metadata_source_fuzzer", {**dicom, **editions})
        write_corpus("metadata", "edition_document_fuzzer", editions)
        write_corpus("imaging", "fuzz_dicom_image", image_seeds())
    finally:
        shutil.rmtree(tmp)
    with open(os.path.join(FUZZ, "dicom.dict"), "w") as out:
        out.write(dictionary())
    return 0


if __name__ == "__main__":
    sys.exit(main())
