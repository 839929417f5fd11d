"""Packed files that lie about themselves: each change to a file that pack wrote has one exact
outcome for unpack and for info (their bytes, or their message and exit status 1)."""
import subprocess

import pydicom
import pytest
from pydicom.dataset import Dataset
from pydicom.sequence import Sequence

from conftest import METADATA

PAYLOAD = b"abcdef"
NAME = "six.bin"
# The custom data sequence, its item elements and the private creator, as offsets in a block.
SEQUENCE, KEY, LENGTH, VALUE = 0xA0, 0xA1, 0xA2, 0xA3
CREATOR = "IvraDentalPrivate"
NOT_PACKED = "The input file \"x.dcm\" misses Dicapsule custom data. It seems it hasn't been created by Dicapsule."
NOT_LOADED = 'Could not load the input file "x.dcm".'
BAD_REFERENCES = 'Could not parse one of the reference strings of the input file "x.dcm".'
MISMATCH = 'The packed file of the input file "x.dcm" does not match its SHA-256 digest.'


def tag(block, offset):
    return 0x00090000 | block << 8 | offset


def items(ds, block=0x11):
    return ds[tag(block, SEQUENCE)].value


def item_of(ds, key):
    return next(item for item in items(ds) if item[tag(0x11, KEY)].value == key)


def set_length(key, length):
    def change(ds):
        item_of(ds, key)[tag(0x11, LENGTH)].value = length
    return change


def drop_item(key):
    def change(ds):
        items(ds).remove(item_of(ds, key))
    return change


def set_value(key, value):
    def change(ds):
        item = item_of(ds, key)
        item[tag(0x11, VALUE)].value = value
        item[tag(0x11, LENGTH)].value = len(value)
    return change


def rename_creator(ds):
    ds[0x00090011].value = "FOREIGN"


def foreign_look_alike(ds):
    """A block of another maker at 0x12 whose elements sit where ours would: a content that lies."""
    ds.add_new(0x00090012, "LO", "FOREIGN")
    item = Dataset()
    for offset, vr, value in ((KEY, "LO", "Dicapsule.PackedFile.Content"), (LENGTH, "UL", 4), (VALUE, "UN", b"evil")):
        item.add_new(tag(0x12, offset), vr, value)
    ds.add_new(tag(0x12, SEQUENCE), "SQ", Sequence([item]))


def move_block(ds):
    """Our block at 0x10 instead of 0x11, in the data set and in every item, as another writer may place it."""
    ds.add_new(0x00090010, "LO", CREATOR)
    moved = Sequence()
    for old in items(ds):
        item = Dataset()
        for element in old:
            if element.tag == 0x00090011:
                item.add_new(0x00090010, "LO", CREATOR)
            else:
                item.add_new(tag(0x10, element.tag.element & 0xFF), element.VR, element.value)
        moved.append(item)
    del ds[tag(0x11, SEQUENCE)]
    del ds[0x00090011]
    ds.add_new(tag(0x10, SEQUENCE), "SQ", moved)


def end_before_content(ds):
    """An item with an empty key ends the sequence: what follows it is not read."""
    empty = Dataset()
    empty.add_new(0x00090011, "LO", CREATOR)
    empty.add_new(tag(0x11, KEY), "LO", "")
    items(ds).insert(0, empty)


# id, change, unpack's payload or message, info's message (None: info succeeds)
CASES = [
    ("length-claims-more", set_length("Dicapsule.PackedFile.Content", 40), NOT_PACKED, NOT_PACKED),
    ("length-claims-less", set_length("Dicapsule.PackedFile.Content", 3), MISMATCH, None),
    ("name-length-claims-more", set_length("Dicapsule.PackedFile.Name", 400), NOT_PACKED, NOT_PACKED),
    ("content-missing", drop_item("Dicapsule.PackedFile.Content"), NOT_PACKED, NOT_PACKED),
    ("content-empty", set_value("Dicapsule.PackedFile.Content", b""), MISMATCH, None),
    ("name-missing", drop_item("Dicapsule.PackedFile.Name"), NOT_PACKED, NOT_PACKED),
    ("command-line-missing", drop_item("Dicapsule.CommandLine"), PAYLOAD, None),
    ("references-malformed", set_value("Dicapsule.InstanceReferences", b"1.2::1.4"), BAD_REFERENCES, BAD_REFERENCES),
    ("our-creator-renamed", rename_creator, NOT_PACKED, NOT_PACKED),
    ("foreign-look-alike-block", foreign_look_alike, PAYLOAD, None),
    ("our-block-moved", move_block, PAYLOAD, None),
    ("ended-before-content", end_before_content, NOT_PACKED, NOT_PACKED),
]


@pytest.fixture
def packed(run, tmp_path):
    (tmp_path / NAME).write_bytes(PAYLOAD)
    result = run("pack", "-i", NAME, "-m", METADATA, "-o", "x.dcm", "-r", "1.2:1.3:1.4")
    assert (result.status, result.err) == (0, "")
    return tmp_path / "x.dcm"


def expect(run, tmp_path, unpacked, described):
    result = run("unpack", "-i", "x.dcm", "-o", "out.bin")
    if isinstance(unpacked, bytes):
        assert (result.status, result.out, result.err) == (0, "", "")
        assert (tmp_path / "out.bin").read_bytes() == unpacked
    else:
        assert (result.status, result.out, result.err) == (1, "", f"Error: {unpacked}\n")
        assert not (tmp_path / "out.bin").exists()
    result = run("info", "-i", "x.dcm")
    if described is None:
        assert (result.status, result.err) == (0, "")
        assert f'originalname="{NAME}"' in result.out
    else:
        assert (result.status, result.out, result.err) == (1, "", f"Error: {described}\n")


@pytest.mark.parametrize("change,unpacked,described", [case[1:] for case in CASES], ids=[case[0] for case in CASES])
def test_changed_custom_data(run, tmp_path, packed, change, unpacked, described):
    ds = pydicom.dcmread(packed)
    change(ds)
    ds.save_as(packed, write_like_original=True)
    expect(run, tmp_path, unpacked, described)


def test_foreign_creator_added_by_dcmodify_in_the_block_before_ours(run, tmp_path, packed):
    subprocess.run(["dcmodify", "-nb", "-i", "(0009,0010)=FOREIGN", str(packed)], check=True, capture_output=True)
    assert pydicom.dcmread(packed)[0x00090010].value == "FOREIGN"
    expect(run, tmp_path, PAYLOAD, None)


# id, bytes kept (negative: counted from the end), message of both operations
TRUNCATIONS = [
    ("inside-preamble", 100, NOT_LOADED),
    ("inside-meta-group", 200, NOT_LOADED),
    ("inside-the-last-element", -3, NOT_LOADED),
    ("last-byte", -1, NOT_LOADED),
]


@pytest.mark.parametrize("kept,message", [case[1:] for case in TRUNCATIONS], ids=[case[0] for case in TRUNCATIONS])
def test_truncated(run, tmp_path, packed, kept, message):
    data = packed.read_bytes()
    packed.write_bytes(data[:kept])
    expect(run, tmp_path, message, message)
