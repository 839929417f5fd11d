"""Helpers of the side-by-side benchmark against peer DICOM tools (bench/run_peers.py)."""
