#!/usr/bin/python3
"""Peer for the pack benchmark: wraps a file into an Encapsulated PDF instance with pydicom,
the way a script built on that library would (the whole payload read into memory, one
Encapsulated Document element, written in explicit VR little endian).

Usage: pydicom_pack.py PAYLOAD OUTPUT
"""

import sys

from pydicom.dataset import Dataset, FileMetaDataset
from pydicom.uid import ExplicitVRLittleEndian, generate_uid

ENCAPSULATED_PDF_STORAGE = "1.2.840.10008.5.1.4.1.1.104.1"


def encapsulated_document(payload: bytes) -> Dataset:
    """A minimal Encapsulated PDF instance carrying payload."""
    ds = Dataset()
    ds.SOPClassUID = ENCAPSULATED_PDF_STORAGE
    ds.SOPInstanceUID = generate_uid()
    ds.StudyInstanceUID = generate_uid()
    ds.SeriesInstanceUID = generate_uid()
    ds.PatientName = "Bench^Payload"
    ds.PatientID = "BENCH-0001"
    ds.Modality = "DOC"
    ds.InstanceNumber = 1
    ds.BurnedInAnnotation = "YES"
    ds.MIMETypeOfEncapsulatedDocument = "application/pdf"
    ds.EncapsulatedDocument = payload

    meta = FileMetaDataset()
    meta.MediaStorageSOPClassUID = ds.SOPClassUID
    meta.MediaStorageSOPInstanceUID = ds.SOPInstanceUID
    meta.TransferSyntaxUID = ExplicitVRLittleEndian
    ds.file_meta = meta
    ds.is_little_endian = True
    ds.is_implicit_VR = False
    return ds


def main(argv: list[str]) -> int:
    if len(argv) != 3:
        print(__doc__.strip().splitlines()[-1], file=sys.stderr)
        return 2
    with open(argv[1], "rb") as source:
        payload = source.read()
    encapsulated_document(payload).save_as(argv[2], write_like_original=False)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
