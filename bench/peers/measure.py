"""Runs one command under /usr/bin/time -v and reports its wall time, peak RSS and outcome.

Wall time comes from a monotonic clock around the call, because time -v prints it only to the
centisecond, which hides the few milliseconds that start-up cases are about. For those, each run
is paired with a run of a baseline command (/bin/true) just before it, so that the launcher's own
cost can be taken off under the same load: the net time is the median of the paired differences.
Peak RSS and the exit status are the ones time -v reports for the command itself.
"""

import dataclasses
import os
import re
import signal
import statistics
import subprocess
import tempfile
import time
from pathlib import Path
from typing import Callable, Optional, Sequence

TIME = "/usr/bin/time"


@dataclasses.dataclass
class Sample:
    """One run of a command."""
    wall: float               # seconds, monotonic clock around the run
    rss_kib: int              # peak resident set size reported by time -v
    outcome: str              # "ok", "exit N", "signal N" or "timeout"
    stderr: str               # the command's standard error (at most its last 64 KiB)


@dataclasses.dataclass
class Result:
    """All runs of one command."""
    samples: list[Sample]
    baselines: list[Sample] = dataclasses.field(default_factory=list)  # paired launcher runs

    @property
    def net_median(self) -> Optional[float]:
        """Median of run minus its paired baseline run, when there are baselines."""
        if not self.baselines:
            return None
        return statistics.median(s.wall - b.wall for s, b in zip(self.samples, self.baselines))

    @property
    def median(self) -> float:
        return statistics.median(s.wall for s in self.samples)

    @property
    def peak_rss_mib(self) -> float:
        return max(s.rss_kib for s in self.samples) / 1024.0

    @property
    def outcome(self) -> str:
        """"ok" when every run succeeded, else the first other outcome."""
        return next((s.outcome for s in self.samples if s.outcome != "ok"), "ok")

    @property
    def message(self) -> str:
        """The line of standard error that says what went wrong: the first one, or the last
        one of a Python traceback."""
        for sample in self.samples:
            lines = [line.strip() for line in sample.stderr.splitlines() if line.strip()]
            if lines:
                return lines[-1] if lines[0].startswith("Traceback") else lines[0]
        return ""


def _read_time_report(path: Path) -> tuple[int, Optional[str]]:
    """Peak RSS (KiB) and the outcome from a time -v report; outcome None when it says exit 0."""
    text = path.read_text(errors="replace")
    rss = re.search(r"Maximum resident set size \(kbytes\): (\d+)", text)
    killed = re.search(r"Command terminated by signal (\d+)", text)
    status = re.search(r"Exit status: (\d+)", text)
    outcome = None
    if killed:
        outcome = f"signal {killed.group(1)}"
    elif status and status.group(1) != "0":
        outcome = f"exit {status.group(1)}"
    return (int(rss.group(1)) if rss else 0), outcome


def run_once(command: Sequence[str], cwd: Path, timeout: float) -> Sample:
    """Run command once under time -v in its own process group, killed as a group on timeout."""
    with tempfile.NamedTemporaryFile(prefix="time-v-", suffix=".txt", dir=cwd, delete=False) as report:
        report_path = Path(report.name)
    try:
        start = time.perf_counter()
        proc = subprocess.Popen([TIME, "-v", "-o", str(report_path), *command], cwd=cwd,
                                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, start_new_session=True)
        try:
            _, err = proc.communicate(timeout=timeout)
        except subprocess.TimeoutExpired:
            os.killpg(proc.pid, signal.SIGKILL)
            _, err = proc.communicate()
            return Sample(time.perf_counter() - start, 0, "timeout", err.decode(errors="replace")[-65536:])
        wall = time.perf_counter() - start
        rss, outcome = _read_time_report(report_path)
        if outcome is None and proc.returncode != 0:
            outcome = f"exit {proc.returncode}"
        return Sample(wall, rss, outcome or "ok", err.decode(errors="replace")[-65536:])
    finally:
        report_path.unlink(missing_ok=True)


def run_repeated(command: Sequence[str], cwd: Path, runs: int, timeout: float, budget: float,
                 prepare: Optional[Callable[[], None]] = None,
                 baseline: Optional[Sequence[str]] = None) -> Result:
    """Run command up to runs times, calling prepare (untimed) before each run and running
    baseline (when given) just before it.

    Stops early once the runs so far took longer than budget seconds, so a slow peer bounds the
    whole benchmark; there is always at least one run.
    """
    samples: list[Sample] = []
    baselines: list[Sample] = []
    spent = 0.0
    for _ in range(runs):
        if prepare:
            prepare()
        if baseline:
            baselines.append(run_once(baseline, cwd, timeout))
        sample = run_once(command, cwd, timeout)
        samples.append(sample)
        spent += sample.wall
        if sample.outcome == "timeout" or spent > budget:
            break
    return Result(samples, baselines)
