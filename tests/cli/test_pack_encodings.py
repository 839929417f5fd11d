"""--encoding through the built tool: the Specific Character Set written, text read back by pydicom,
names the chosen set cannot hold, and the metadata's own character set when no --encoding is given."""
import os

import pydicom
import pytest

from conftest import dciodvfy_errors, edition


def named(name, description="", charset="", meaning=""):
    """A document with a patient's name, a study description, the meaning of a code in a sequence item
    and a Specific Character Set, each if given."""
    instance = f'<String Name="SpecificCharacterSet" Value="{charset}"/>' if charset else ""
    if meaning:
        instance += ('<Sequence Name="ImageSetSelectorSequence"><Item><Code Name="ProcedureCodeSequence" Code="P1" '
                     f'Scheme="99X" Meaning="{meaning}"/></Item></Sequence>')
    return edition(Patient=f'<String Name="PatientName" Value="{name}"/><String Name="PatientID" Value="ID-1"/>',
                   Study=f'<String Name="StudyDescription" Value="{description}"/>' if description else "",
                   Instance=instance)


def meaning(ds):
    return ds.ImageSetSelectorSequence[0].ProcedureCodeSequence[0].CodeMeaning


# word, patient name that needs it, study description, Specific Character Set expected.
ENCODINGS = [
    ("ascii", "Doe^John", "Check-up", ""),
    ("western", "Buc^J\u00e9r\u00f4me", "Contr\u00f4le d\u00e9taill\u00e9", "ISO_IR 100"),
    ("hebrew", "\u05e9\u05e8\u05d5\u05df^\u05d3\u05d1\u05d5\u05e8\u05d4", "\u05d1\u05d3\u05d9\u05e7\u05d4", "ISO_IR 138"),
    ("japanese", "Yamada^Tarou=\u5c71\u7530^\u592a\u90ce=\u3084\u307e\u3060^\u305f\u308d\u3046",
     "\u30ec\u30f3\u30c8\u30b2\u30f3 \u691c\u67fb", ["ISO 2022 IR 13", "ISO 2022 IR 87"]),
    ("korean", "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9", "\uac80\uc0ac", ["", "ISO 2022 IR 149"]),
    ("chinese", "Wang^XiaoDong=\u738b^\u5c0f\u6771", "\u68c0\u67e5 \u62a5\u544a", "GB18030"),
    ("unicode", "G\u00fcrsoy^\u00d6mer=\u5c71\u7530^\u592a\u90ce=\ud64d^\uae38\ub3d9",
     "\u05d1\u05d3\u05d9\u05e7\u05d4 \u68c0\u67e5", "ISO_IR 192"),
    ("KOREAN", "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9", "", ["", "ISO 2022 IR 149"]),
]


@pytest.mark.parametrize("word,name,description,charset", ENCODINGS, ids=[c[0] for c in ENCODINGS])
def test_encoding_writes_its_character_set_and_the_text_reads_back(pack, word, name, description, charset):
    # The metadata asks for UTF-8: the command line wins.
    path = pack("-m", named(name, description, "ISO_IR 192", description or "x"), "-e", word)
    ds = pydicom.dcmread(path)
    assert ds.get("SpecificCharacterSet", "") == charset
    assert (str(ds.PatientName), ds.get("StudyDescription", ""), meaning(ds)) == (name, description, description or "x")
    assert dciodvfy_errors(path) == []


UNWRITABLE = [
    ("kanji-in-western", ["-e", "western"], "\u5c71\u7530^\u592a\u90ce"),
    ("accent-in-ascii", ["-e", "ascii"], "Buc^J\u00e9r\u00f4me"),
    ("hangul-in-hebrew", ["-e", "hebrew"], "\ud64d^\uae38\ub3d9"),
    ("hebrew-in-japanese", ["-e", "japanese"], "\u05e9\u05e8\u05d5\u05df"),
    ("hebrew-in-korean", ["-e", "korean"], "\u05e9\u05e8\u05d5\u05df"),
    ("kanji-in-a-sequence-in-western", ["-e", "western"], "Doe^John", "\u5c71\u7530"),
]


@pytest.mark.parametrize("options,name,meaning", [(c + ("",))[1:4] for c in UNWRITABLE], ids=[c[0] for c in UNWRITABLE])
def test_text_the_character_set_cannot_hold_is_refused(run, tmp_path, options, name, meaning):
    (tmp_path / "payload.bin").write_bytes(b"x")
    result = run("pack", "-i", "payload.bin", "-m", named(name, meaning=meaning), "-o", "out.dcm", *options)
    assert (result.status, result.out) == (1, "")
    assert result.err == 'Error: Could not write the output Dicom file "out.dcm".\n'
    assert os.listdir(tmp_path) == ["payload.bin"]


# Specific Character Set of the metadata document -> written without --encoding; a document that
# names none gets UTF-8 when its text needs more than ASCII, and no Specific Character Set otherwise.
KEPT = [
    (None, "Buc^J\u00e9r\u00f4me", "ISO_IR 192"),
    (None, "Doe^John", None),
    ("ISO_IR 100", "Buc^J\u00e9r\u00f4me", "ISO_IR 100"),
    ("ISO_IR 144", "\u041b\u044e\u043a\u0441\u0435\u043c\u0431\u0443\u0440\u0433^\u0410\u0433\u043d\u0435\u0441\u0441\u0430",
     "ISO_IR 144"),
    ("\\ISO 2022 IR 149", "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9", ["", "ISO 2022 IR 149"]),
    ("\\ISO 2022 IR 87", "Yamada^Tarou=\u5c71\u7530^\u592a\u90ce", ["ISO 2022 IR 6", "ISO 2022 IR 87"]),
    ("GB18030", "Wang^XiaoDong=\u738b^\u5c0f\u6771", "GB18030"),
]


@pytest.mark.parametrize("source,name,written", KEPT, ids=[str(c[0]) + "-" + c[1][:3] for c in KEPT])
def test_without_encoding_the_metadata_character_set_is_kept(pack, source, name, written):
    # The name also in a sequence item, but for the ASCII case: a sequence alone makes the tool declare UTF-8.
    ds = pydicom.dcmread(pack("-m", named(name, charset=source, meaning="" if name.isascii() else name)))
    assert ds.get("SpecificCharacterSet") == written
    assert str(ds.PatientName) == name and ("ImageSetSelectorSequence" not in ds or meaning(ds) == name)
