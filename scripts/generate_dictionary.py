#!/usr/bin/python3
"""Writes DataDictionaryTable.inc, the attribute table of the DICOM codec.

Source: pydicom's dictionary module as installed by Debian's python3-pydicom
(/usr/lib/python3/dist-packages/pydicom/_dicom_dict.py). It is chosen over
DCMTK's dicom.dic because it carries both the display name ("Patient's Name")
and the keyword (PatientName) of every attribute, and its retired mark; the
DCMTK file only has keywords. The module is parsed as text (ast), not imported,
so the generator does not depend on the rest of pydicom.

Layout of the enumeration values:
  0            Unknown (FFFF,FFFF)
  1..4345      the first 4345 standard attributes in ascending tag order,
               starting with the group length (0000,0000)
  4346..4348   Item, Item Delimitation Item, Sequence Delimitation Item
  4349         group length of the private group (0009,0000)
  4350..4412   the private attributes of group 0009 (fixed rows below)
  4413..       the standard attributes beyond the first 4345, in ascending
               tag order (newer editions have more than 4345 attributes;
               they are appended so that 4346..4412 keep their meanings)

Repeating groups: the overlay group 60xx is kept, written with group 6000;
the codec's tag lookup folds every even group 6000..60FE onto 6000. The other
repeating entries (curves 50xx, 1000xxxx, 1010xxxx, 002031xx, 002804x0 and
similar, 7Fxx) are retired and are left out: such tags read as unknown.
Entries without a keyword are left out too. Group lengths (gggg,0000) get the
keyword GroupLength_gggg.

The row flag is true for attributes defined by the standard, false for the
private attributes and the unknown row.

Usage: /usr/bin/python3 scripts/generate_dictionary.py [SOURCE] OUTPUT
"""

import ast
import sys

DEFAULT_SOURCE = "/usr/lib/python3/dist-packages/pydicom/_dicom_dict.py"
STANDARD_ROWS_BEFORE_FIXED = 4345

VR_NAMES = {
    "AE", "AS", "AT", "CS", "DA", "DS", "DT", "FL", "FD", "IS", "LO", "LT",
    "OB", "OD", "OF", "OL", "OW", "PN", "SH", "SL", "SQ", "SS", "ST", "TM",
    "UC", "UI", "UL", "UN", "UR", "US", "UT", "OV", "SV", "UV",
}
# Dictionary VR texts that are not one of the plain codes above.
VR_ALIASES = {
    "US or SS": "XS",
    "OB or OW": "OX",
    "US or SS or OW": "SW",
    "US or OW": "SW",     # LUT Data: 16-bit words, signedness given elsewhere
    "NONE": "Unknown",    # items and delimitations carry no VR
}
VM_NAMES = {
    "1": "_1", "1-2": "_1_2", "1-3": "_1_3", "1-8": "_1_8", "1-32": "_1_32",
    "1-99": "_1_99", "1-n": "_1_n", "2": "_2", "2-n": "_2_n", "2-2n": "_2_2n",
    "3": "_3", "3-n": "_3_n", "3-3n": "_3_3n", "4": "_4", "6": "_6",
    "6-n": "_6_n", "8": "_8", "9": "_9", "16": "_16",
    "2-4": "_2_n",        # no bounded 2-4 row in the VM table
}

ITEM_ROWS = [
    (0xFFFEE000, "Item", "Item"),
    (0xFFFEE00D, "ItemDelimitationItem", "Item Delimitation Item"),
    (0xFFFEE0DD, "SequenceDelimitationItem", "Sequence Delimitation Item"),
]

# (tag, enumerator, keyword, name, VR, VM) of the private group 0009, in their fixed order.
PRIVATE_ROWS = [
    (0x00090011, "Orchid_PrivateCreatorID", "Private Creator Identifier", "LO", "1"),
    (0x00091101, "Orchid_Velor6MirrorEffect", "Velor6 Mirror Effect", "CS", "1"),
    (0x00091105, "Orchid_Velor6FileVersion", "Velor6 Image File Version", "DS", "1"),
    (0x00091107, "Orchid_Velor6DrawDataBuffer", "Velor6 Image Draw Data Buffer", "OB", "1"),
    (0x00091109, "Orchid_Velor6DataBufferLength", "Velor6 Image Data Buffer Length", "UL", "1"),
    (0x0009110A, "Orchid_Velor6CRC", "Velor6 Image CRC", "UL", "1"),
    (0x00091111, "Orchid_Velor6FilterType", "Velor6 Image Filter Type", "US", "1"),
    (0x00091112, "Orchid_Velor6FilterParams", "Velor6 Image Filter Parameters", "SL", "1"),
    (0x00091115, "Orchid_Velor6LUTVisu", "Velor6 Image Visualization LUT", "US", "1"),
    (0x00091117, "Orchid_Velor6Brightness", "Velor6 Image Brightness", "SL", "1"),
    (0x00091118, "Orchid_Velor6Contrast", "Velor6 Image Contrast", "SL", "1"),
    (0x00091119, "Orchid_Velor6Gamma", "Velor6 Image Gamma", "SL", "1"),
    (0x0009111A, "Orchid_Velor6Inverse", "Velor6 Image Inverse Video", "CS", "1"),
    (0x0009111B, "Orchid_PixelSpacing", "Corrected Patient Pixel Spacing", "DS", "2"),
    (0x0009111D, "Orchid_Velor6CornerSize", "Velor6 Rounded Detector Corner Size", "SL", "8"),
    (0x00091121, "Orchid_ProgramNumber", "Acquisition Program Number", "US", "1"),
    (0x00091122, "Orchid_ProgramUID", "Acquisition Program Unique Identifier", "UI", "1"),
    (0x00091123, "Orchid_NumberOfImageZones", "Number of Image Pixel Zones", "US", "1"),
    (0x00091124, "Orchid_ImageZones", "Image Zone Coordinates", "SS", "1-n"),
    (0x00091125, "Orchid_Velor6PanoContrastMode", "Velor6 Image Pano Contrast Mode (DX/CR)", "US", "1"),
    (0x00091131, "Orchid_Velor6EnhancedLUT", "Velor6 Image Enhanced LUT (IO/CR)", "US", "1"),
    (0x00091133, "Orchid_DarkValue", "Sensor VDark Value", "SS", "1"),
    (0x00091134, "Orchid_SaturationValue", "Sensor VSat Value", "SS", "1"),
    (0x00091135, "Orchid_PositionOfSourceProjection", "Position of Source Projection", "DS", "2"),
    (0x00091136, "Orchid_SensixEasyPosInformation", "Sensix EasyPos Information", "DS", "6"),
    (0x00091137, "Orchid_DarkValue_Extended", "Sensor VDark Value Extended", "SL", "1"),
    (0x00091138, "Orchid_SaturationValue_Extended", "Sensor VSat Value Extended", "SL", "1"),
    (0x00091141, "Orchid_AnatomicRegionSequence", "Anatomic region Sequence", "SQ", "1"),
    (0x00091143, "Orchid_PrimaryAnatomicStructureSequence", "Primary Anatomic Structure Sequence", "SQ", "1"),
    (0x00091145, "Orchid_ImageClassification", "Image Classification", "US", "1"),
    (0x00091147, "Orchid_FOVRotation", "FOV Rotation", "DS", "1"),
    (0x00091159, "Orchid_HeadClampRingPosition", "Head Clamp Ring Position", "US", "2"),
    (0x0009115A, "Orchid_DoseWidthProduct", "Dose Width Product (mGy.mm)", "FL", "4"),
    (0x00091160, "Orchid_DetectorTemperatures", "Detector temperatures in Celsius degrees", "DS", "1-n"),
    (0x00091161, "Orchid_DetectorVoltages", "Detector voltages in V", "DS", "1-n"),
    (0x00091181, "Orchid_LEADTOOLSIntensity", "LEADTOOLS Intensity", "SL", "1"),
    (0x00091183, "Orchid_LEADTOOLSContrast", "LEADTOOLS Contrast", "SL", "1"),
    (0x00091185, "Orchid_LEADTOOLSHue", "LEADTOOLS Hue", "SL", "1"),
    (0x00091187, "Orchid_LEADTOOLSSaturation", "LEADTOOLS Saturation", "SL", "1"),
    (0x00091189, "Orchid_LEADTOOLSEmboss", "LEADTOOLS Emboss", "SL", "1"),
    (0x0009118A, "Orchid_LEADTOOLSNegative", "LEADTOOLS Negative", "CS", "1"),
    (0x0009118C, "Orchid_LEADTOOLSGrayscale", "LEADTOOLS Grayscale", "CS", "1"),
    (0x00091190, "Orchid_PanoramicImageType", "Panoramic Image Type", "CS", "1"),
    (0x00091191, "Orchid_PanoramicAcquisitionMode", "Panoramic Acquisition Mode", "CS", "1"),
    (0x00091192, "Orchid_DentalArchType", "Dental Arch Type", "CS", "1"),
    (0x00091193, "Orchid_DentalArchSize", "Dental Arch Size", "US", "2"),
    (0x00091194, "Orchid_DentalArchShape", "DentalArchShape", "CS", "1"),
    (0x00091195, "Orchid_ImageLayerPosition", "Image Layer Position", "CS", "1"),
    (0x00091196, "Orchid_TrajectoryVersion", "Trajectory Version", "LO", "1"),
    (0x0009111E, "Orchid_PositionOfIsocenterProjection", "Isocenter Projection Position in Decimal", "DS", "2"),
    (0x0009111F, "Orchid_SourceDetectorTiltMatrix", "Source/Detector Tilt Matrix", "DS", "9"),
    (0x000911A0, "Orchid_CustomDataSequence", "Orchid Custom Data", "SQ", "1"),
    (0x000911A1, "Orchid_CustomDataKey", "Orchid Custom Data Key", "LO", "1"),
    (0x000911A2, "Orchid_CustomDataLength", "Orchid Custom Data Length", "UL", "1"),
    (0x000911A3, "Orchid_CustomDataValue", "Orchid Custom Data Value", "UN", "1"),
    (0x000911B0, "Orchid_VelorFiltersSequence", "Velor Filters", "SQ", "1"),
    (0x000911B1, "Orchid_VelorFilterClass", "Velor Filter Class", "CS", "1"),
    (0x000911B2, "Orchid_VelorFilterType", "Velor Filter Type", "US", "1"),
    (0x000911B3, "Orchid_VelorFilterStrength", "Velor Filter Strength", "SS", "1"),
    (0x000911B4, "Orchid_VelorNewLUT", "Velor New LUT Type", "US", "1"),
    (0x000911B5, "Orchid_VelorNewLUTStrength", "Velor New LUT Strength", "SS", "1"),
    # These two have no keyword; the enumerators carry their tag instead.
    (0x0009117B, "Private_0009_117B", "Holder Type", "LO", "1"),
    (0x0009117C, "Private_0009_117C", "Holder Position", "US", "1"),
]


def load_source(path):
    """Returns (main dictionary, repeaters dictionary) of the pydicom module at path."""
    with open(path, encoding="utf-8") as handle:
        tree = ast.parse(handle.read(), path)
    tables = {}
    for node in tree.body:
        target = node.target if isinstance(node, ast.AnnAssign) else (
            node.targets[0] if isinstance(node, ast.Assign) else None)
        if isinstance(target, ast.Name) and node.value is not None:
            tables[target.id] = ast.literal_eval(node.value)
    return tables["DicomDictionary"], tables["RepeatersDictionary"]


def vr_of(text):
    if text in VR_NAMES:
        return text
    return VR_ALIASES[text]


def standard_rows(main, repeaters):
    """(tag, keyword, name, VR, VM) of the standard attributes, ascending by tag."""
    rows = []
    for tag, (vr, vm, name, _retired, keyword) in main.items():
        if not keyword or (tag >> 16) == 0xFFFE:
            continue
        if (tag & 0xFFFF) == 0:
            keyword = "GroupLength_%04X" % (tag >> 16)
        rows.append((tag, keyword, name, vr_of(vr), VM_NAMES[vm]))
    for mask, (vr, vm, name, _retired, keyword) in repeaters.items():
        if mask.startswith("60xx") and keyword:
            rows.append((int("6000" + mask[4:], 16), keyword, name, vr_of(vr), VM_NAMES[vm]))
    rows.sort()
    return rows


def c_string(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def wrap(values):
    """Comma-separated values, sixteen to a line."""
    return [" ".join("%d," % v for v in values[i:i + 16]) for i in range(0, len(values), 16)]


def main():
    args = sys.argv[1:]
    if len(args) == 1:
        source, output = DEFAULT_SOURCE, args[0]
    elif len(args) == 2:
        source, output = args
    else:
        sys.exit(__doc__)
    main_table, repeaters = load_source(source)
    standard = standard_rows(main_table, repeaters)
    first, rest = standard[:STANDARD_ROWS_BEFORE_FIXED], standard[STANDARD_ROWS_BEFORE_FIXED:]

    # (enumerator, tag, keyword, name, VR, VM, standard flag) in enumeration order.
    rows = [("Unknown", 0xFFFFFFFF, "", "Unknown", "Unknown", "_1", False)]
    rows += [(k, t, k, n, vr, vm, True) for t, k, n, vr, vm in first]
    rows += [(k, t, k, n, "Unknown", "_1", True) for t, k, n in ITEM_ROWS]
    rows.append(("GroupLength_0009", 0x00090000, "GroupLength_0009", "Private Group Length", "UL", "_1", False))
    for tag, enumerator, name, vr, vm in PRIVATE_ROWS:
        keyword = enumerator if enumerator.startswith("Orchid_") else ""
        rows.append((enumerator, tag, keyword, name, vr, VM_NAMES[vm], False))
    assert rows[4346][0] == "Item" and rows[4350][1] == 0x00090011 and len(rows) == 4413
    rows += [(k, t, k, n, vr, vm, True) for t, k, n, vr, vm in rest]

    command = "/usr/bin/python3 scripts/generate_dictionary.py " + (
        "" if source == DEFAULT_SOURCE else source + " ") + output
    lines = ["// Regenerate with: " + command,
             "// Generated from the DICOM data dictionary; do not edit by hand.",
             "// DICAPSULE_DICTIONARY_TAGS: a named Tag constant per row but the unknown one",
             "// DICAPSULE_DICTIONARY_ROWS: the DictionaryEntry initialisers in enumeration order",
             "// DICAPSULE_DICTIONARY_TAG_ORDER: enumeration values sorted by tag, for binary search",
             "// DICAPSULE_DICTIONARY_KEYWORD_ORDER: enumeration values of named rows sorted by keyword",
             "#if defined(DICAPSULE_DICTIONARY_TAGS)"]
    for enumerator, tag, *_ in rows[1:]:
        lines.append("inline constexpr Tag %s{0x%04X, 0x%04X};" % (enumerator, tag >> 16, tag & 0xFFFF))
    lines.append("#elif defined(DICAPSULE_DICTIONARY_ROWS)")
    for value, (_, tag, keyword, name, vr, vm, flag) in enumerate(rows):
        lines.append("{%d, {0x%04X, 0x%04X}, %s, %s, VR::%s, VM::%s, %s}," % (
            value, tag >> 16, tag & 0xFFFF, c_string(keyword), c_string(name), vr, vm, "true" if flag else "false"))
    lines.append("#elif defined(DICAPSULE_DICTIONARY_TAG_ORDER)")
    by_tag = sorted(range(len(rows)), key=lambda v: rows[v][1])
    lines += wrap(by_tag)
    lines.append("#elif defined(DICAPSULE_DICTIONARY_KEYWORD_ORDER)")
    by_keyword = sorted((v for v in range(len(rows)) if rows[v][2]), key=lambda v: rows[v][2].encode())
    lines += wrap(by_keyword)
    lines.append("#endif")
    with open(output, "w", encoding="utf-8", newline="\n") as handle:
        handle.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
