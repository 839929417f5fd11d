"""Loaded into every end-to-end suite (ctest runs pytest with -p no_silent_skips).

- A skipif mark is decided when the suite is collected, by the build and the machine (the Windows
  build, root, a sanitizer build): a test it rules out is not collected at all (deselected), so it
  never reads as a skip of something that should have run.
- A test that skips while it runs lacks something. On a machine that scripts/install-deps equipped
  (every package it lists is installed), run as root, nothing can be missing: such a skip fails.
"""
import os
import pathlib
import re
import subprocess

import pytest

INSTALLER = pathlib.Path(__file__).resolve().parents[1] / "scripts" / "install-deps"


def installer_packages():
    """The Debian packages scripts/install-deps installs: its packages=( ... ) list, and orthanc."""
    text = INSTALLER.read_text(encoding="utf-8")
    listed = re.search(r"^packages=\((.*?)^\)", text, re.S | re.M).group(1)
    words = [word for line in listed.splitlines() for word in line.split("#", 1)[0].split()]
    return words + ["orthanc"]


def equipped():
    """Root on a machine where every package of scripts/install-deps is installed."""
    if os.name != "posix" or os.geteuid() != 0:
        return False
    packages = installer_packages()
    status = subprocess.run(["dpkg-query", "-W", "-f=${Status}\n", *packages], capture_output=True, text=True)
    return status.returncode == 0 and status.stdout.count("install ok installed") == len(packages)


def pytest_configure(config):
    config.dicapsule_equipped = equipped()


def pytest_collection_modifyitems(config, items):
    kept, dropped = [], []
    for item in items:
        ruled_out = any(mark.args and mark.args[0] is True for mark in item.iter_markers("skipif"))
        (dropped if ruled_out else kept).append(item)
    if dropped:
        config.hook.pytest_deselected(items=dropped)
        items[:] = kept


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    outcome = yield
    report = outcome.get_result()
    if report.skipped and item.config.dicapsule_equipped and not hasattr(report, "wasxfail"):
        reason = report.longrepr[2] if isinstance(report.longrepr, tuple) else str(report.longrepr)
        report.outcome = "failed"
        report.longrepr = (f"skipped on a machine that scripts/install-deps equipped, run as root: {reason}\n"
                           "what the test needs is installed here, so the skip hides a fault")
