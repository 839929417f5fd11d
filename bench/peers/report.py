"""Collects the measured rows and prints them as Markdown tables, with the machine they ran on."""

import dataclasses
import datetime
import os
import platform
import subprocess
from pathlib import Path
from typing import Optional

from .measure import Result


@dataclasses.dataclass
class Row:
    """One measured command."""
    tool: str
    operation: str
    size: str
    result: Result
    reference: Optional[float]  # median seconds of cp on the same size, when there is one
    note: str = ""

    def cells(self) -> list[str]:
        ratio = f"{self.result.median / self.reference:.2f}" if self.reference else "-"
        outcome = self.result.outcome
        note = self.note if outcome == "ok" else "; ".join(x for x in (outcome, self.note) if x)
        return [self.tool, self.operation, self.size, str(len(self.result.samples)),
                f"{self.result.median:.4f}", ratio, f"{self.result.peak_rss_mib:.1f}", note]


@dataclasses.dataclass
class Behaviour:
    """What one tool did with a payload too large for a DICOM value."""
    tool: str
    outcome: str
    seconds: float
    rss_mib: float
    written: str
    message: str


def markdown_table(header: list[str], rows: list[list[str]]) -> str:
    lines = ["| " + " | ".join(header) + " |", "|" + "|".join("---" for _ in header) + "|"]
    lines += ["| " + " | ".join(cell.replace("|", "\\|") for cell in row) + " |" for row in rows]
    return "\n".join(lines)


def rows_table(rows: list[Row]) -> str:
    header = ["tool", "operation", "size", "runs", "median s", "x cp", "peak RSS MiB", "note"]
    return markdown_table(header, [row.cells() for row in rows])


def behaviour_table(behaviours: list[Behaviour]) -> str:
    header = ["tool", "outcome", "seconds", "peak RSS MiB", "left on disk", "first line of stderr"]
    return markdown_table(header, [[b.tool, b.outcome, f"{b.seconds:.3f}", f"{b.rss_mib:.1f}",
                                    b.written, b.message[:160]] for b in behaviours])


def _first_line(command: list[str]) -> str:
    try:
        out = subprocess.run(command, capture_output=True, text=True, timeout=10).stdout
    except (OSError, subprocess.SubprocessError):
        return "?"
    return out.strip().splitlines()[0] if out.strip() else "?"


def load_average() -> float:
    """The one-minute load average."""
    return os.getloadavg()[0]


def machine_description(scratch: Path) -> str:
    """Date, CPUs, memory, kernel and the scratch directory's file system, as Markdown bullets."""
    memory_kib = 0
    with open("/proc/meminfo") as meminfo:
        for line in meminfo:
            if line.startswith("MemTotal:"):
                memory_kib = int(line.split()[1])
    cpu = next((line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo")
                if line.startswith("model name")), platform.processor() or "?")
    disk = _first_line(["findmnt", "-no", "SOURCE,FSTYPE,SIZE", "-T", str(scratch)])
    return "\n".join([
        f"- date: {datetime.datetime.now().isoformat(timespec='minutes')}",
        f"- CPUs (nproc): {os.cpu_count()} x {cpu}",
        f"- memory: {memory_kib / 1024 / 1024:.1f} GiB",
        f"- kernel: {platform.release()}",
        f"- scratch: {scratch} on {disk}",
        f"- load average at start: {load_average():.2f}",
    ])
