"""Outputs, inputs and stored texts under hostile or unlucky conditions: races, signals, long names,
permissions, pipes, long and malformed stored texts."""
import os
import shutil
import signal
import stat
import subprocess
import tempfile
import threading
import xml.etree.ElementTree as ElementTree

import pytest

from conftest import METADATA, RUNNER, WINDOWS, dcmftest_accepts, sanitized

# What only a POSIX system has: symbolic links followed or not, signals, permission bits and
# owners, /dev/stdin, and the resource usage of a child process.
posix_only = pytest.mark.skipif(WINDOWS, reason="POSIX file and process semantics")

ALREADY = '"{}" already exists. Use the --force option to overwrite it.'


def listing(directory):
    return sorted(os.listdir(directory))


def pack_args(name="a.pdf", output="a.dcm", *extra):
    return ["pack", "-i", name, "-m", METADATA, "-o", output, *extra]


def test_parallel_packs_without_force_exactly_one_wins(tool, tmp_path):
    (tmp_path / "a.pdf").write_bytes(os.urandom(300_000))
    runs = [subprocess.Popen([*RUNNER, tool, *pack_args()], cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            for _ in range(8)]
    results = [(run.wait(60), run.stdout.read(), run.stderr.read().decode()) for run in runs]
    assert [status for status, _, _ in results].count(0) == 1, results
    for status, out, err in results:
        assert status == 0 or (out, err) == (b"", "Error: " + ALREADY.format("a.dcm") + "\n")
    assert dcmftest_accepts(tmp_path / "a.dcm")
    assert listing(tmp_path) == ["a.dcm", "a.pdf"]


@posix_only
@pytest.mark.parametrize("operation,mode", [("pack", 0o600), ("unpack", 0o751)], ids=["pack-0600", "unpack-0751"])
def test_existing_outputs_links_never_followed_and_force_keeps_mode_and_owner(run, tmp_path, operation, mode):
    def args(output):
        return pack_args("a.pdf", output) if operation == "pack" else ["unpack", "-i", "a.dcm", "-o", output]

    (tmp_path / "a.pdf").write_bytes(b"payload")
    assert run(*pack_args()).status == 0
    (tmp_path / "link").symlink_to("nowhere")
    result = run(*args("link"))
    assert (result.status, result.err) == (1, "Error: " + ALREADY.format("link") + "\n")
    assert not (tmp_path / "nowhere").exists()

    target = tmp_path / "old.bin"
    target.write_bytes(b"old")
    os.chmod(target, mode)
    # Only root can give a file away: other users see the mode kept, and their own ownership.
    owner = (1234, 5678) if os.geteuid() == 0 else (os.geteuid(), os.getegid())
    if os.geteuid() == 0:
        os.chown(target, *owner)
    assert run(*args("old.bin"), "-f").status == 0
    info = os.stat(target)
    assert (stat.S_IMODE(info.st_mode), info.st_uid, info.st_gid) == (mode, *owner)
    assert target.read_bytes() != b"old"


@posix_only
@pytest.mark.parametrize("signal_number", [signal.SIGKILL, signal.SIGTERM, signal.SIGINT, signal.SIGHUP],
                         ids=["KILL", "TERM", "INT", "HUP"])
def test_a_run_killed_mid_write_leaves_nothing(tool, tmp_path, signal_number):
    # The input is a FIFO this test feeds: pack copies it into a scratch file of $TMPDIR (here the
    # output folder), so once 4 MiB went through the FIFO, pack is writing there and waits for more.
    (tmp_path / "out").mkdir()
    fifo = tmp_path / "in.fifo"
    os.mkfifo(fifo)
    env = dict(os.environ, TMPDIR=str(tmp_path / "out"))
    process = subprocess.Popen([tool, *pack_args("in.fifo", "out/in.dcm")], cwd=tmp_path, env=env,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    with open(fifo, "wb") as feed:
        feed.write(bytes(4 << 20))
        feed.flush()
        process.send_signal(signal_number)
        assert process.wait(60) == -signal_number
    assert listing(tmp_path / "out") == []


@posix_only
def test_unpack_refuses_an_existing_output_before_writing_anything(run, tmp_path):
    # /proc takes no new file: a run that tried to write before checking would fail to open its output.
    (tmp_path / "a.pdf").write_bytes(b"payload")
    assert run(*pack_args()).status == 0
    result = run("unpack", "-i", "a.dcm", "-o", "/proc/version")
    assert (result.status, result.out, result.err) == (1, "", "Error: " + ALREADY.format("/proc/version") + "\n")


@pytest.mark.parametrize("length", [248, 255])
def test_names_up_to_the_file_system_limit(run, tmp_path, length):
    name = "n" * (length - 4) + ".pdf"
    packed = "p" * (length - 4) + ".dcm"
    (tmp_path / name).write_bytes(b"long name payload")
    for args in (pack_args(name, packed), ["unpack", "-i", packed, "-O", "out", "-u"],
                 ["unpack", "-i", packed, "-o", "o" * length]):
        os.makedirs(tmp_path / "out", exist_ok=True)
        result = run(*args)
        assert (result.status, result.err) == (0, ""), args
    assert (tmp_path / "out" / name).read_bytes() == b"long name payload"
    assert (tmp_path / ("o" * length)).read_bytes() == b"long name payload"


@posix_only
@pytest.mark.skipif(os.geteuid() != 0, reason="switching to an unprivileged user needs root")
@pytest.mark.parametrize("metadata", ["metadata.xml", "missing.xml"])
def test_unreadable_input_is_reported_before_the_metadata_as_root(tool, metadata):
    # pytest's temporary folder is private to root: the unprivileged user works in a shared one.
    with tempfile.TemporaryDirectory(prefix="dicapsule-shared-") as directory:
        os.chmod(directory, 0o777)
        shutil.copy(METADATA, os.path.join(directory, "metadata.xml"))
        secret = os.path.join(directory, "secret.pdf")
        with open(secret, "wb") as data:
            data.write(b"private")
        os.chmod(secret, 0o200)
        result = subprocess.run(["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups", tool, "pack",
                                 "-i", "secret.pdf", "-m", metadata, "-o", "out.dcm"],
                                cwd=directory, capture_output=True, text=True)
        assert (result.returncode, result.stdout, result.stderr) == (1, "", 'Error: Could not read "secret.pdf".\n')
        assert listing(directory) == ["metadata.xml", "secret.pdf"]


@posix_only
@pytest.mark.parametrize("script", ['cat payload.bin | "$0" pack -i /dev/stdin -m "$1" -o piped.dcm',
                                    '"$0" pack -i <(cat payload.bin) -m "$1" -o piped.dcm',
                                    'mkfifo in.fifo && { cat payload.bin > in.fifo & } && "$0" pack -i in.fifo -m "$1" -o piped.dcm'],
                         ids=["pipe-on-stdin", "process-substitution", "named-pipe"])
def test_inputs_that_are_not_regular_files_are_read_whole(tool, run, tmp_path, script):
    payload = os.urandom(3 * 1024 * 1024 + 17)
    (tmp_path / "payload.bin").write_bytes(payload)
    result = subprocess.run(["bash", "-c", script, tool, METADATA], cwd=tmp_path, capture_output=True, text=True)
    assert (result.returncode, result.stderr) == (0, "")
    assert run("unpack", "-i", "piped.dcm", "-o", "back.bin").status == 0
    assert (tmp_path / "back.bin").read_bytes() == payload


@pytest.mark.skipif(WINDOWS, reason="on Windows a backslash in the input path is a directory separator")
def test_unpack_without_original_name_uses_only_the_stored_extension(run, tmp_path):
    (tmp_path / "a\\b.pdf").write_bytes(b"backslash")
    assert run(*pack_args("a\\b.pdf", "x.dcm")).status == 0
    (tmp_path / "out").mkdir()
    assert run("unpack", "-i", "x.dcm", "-O", "out").status == 0
    assert listing(tmp_path / "out") == ["x.pdf"]
    refused = run("unpack", "-i", "x.dcm", "-O", "out", "-u")
    assert refused.status == 1 and "is not a plain file name" in refused.err


@pytest.mark.skipif(WINDOWS, reason="a Windows command line holds at most 32767 characters")
def test_info_prints_hundreds_of_references_and_the_whole_command_line(run, tmp_path):
    (tmp_path / "a.pdf").write_bytes(b"payload")
    references = [("1.2.840.1.0.".ljust(64, "7"), "1.2.840.2.0.".ljust(64, "7"), f"1.2.840.3.{i}.".ljust(64, "7"))
                  for i in range(340)]
    options = [word for reference in references for word in ("-r", ":".join(reference))]
    assert run(*pack_args(), *options).status == 0
    result = run("info", "-i", "a.dcm")
    assert (result.status, result.err) == (0, "")
    document = ElementTree.fromstring(result.out.encode())
    assert document.find("parameters").get("commandline") == " ".join(pack_args() + options)
    printed = [(r.get("studyinstanceuid"), r.get("seriesinstanceuid"), r.get("sopinstanceuid"))
               for r in document.iter("reference")]
    assert printed == references

    # A malformed entry far beyond the first 64 KiB of the text is still found.
    data = bytearray((tmp_path / "a.dcm").read_bytes())
    last = data.rfind(references[-1][2].encode())
    data[last - 1:last] = b"x"
    (tmp_path / "bad.dcm").write_bytes(bytes(data))
    bad = run("info", "-i", "bad.dcm")
    assert (bad.status, bad.out) == (1, "")
    assert bad.err == 'Error: Could not parse one of the reference strings of the input file "bad.dcm".\n'


@pytest.mark.parametrize("stored,shown", [
    (b"c\x01\x1f\x7f.bin", "c\ufffd\ufffd\x7f.bin"),
    (b"\xff\xc3(\xed\xa0\x80.bin", "\ufffd\ufffd(\ufffd\ufffd\ufffd.bin"),
    (b'a<b>&"c\'.bin', 'a<b>&"c\'.bin'),
], ids=["control-characters", "invalid-utf8", "markup"])
def test_info_writes_well_formed_xml_for_any_stored_name(run, tmp_path, stored, shown):
    marker = b"M" * len(stored)
    (tmp_path / marker.decode()).write_bytes(b"payload")
    assert run(*pack_args(marker.decode(), "a.dcm")).status == 0
    # The name is given on the command line as UTF-8, so other bytes are put into the file directly.
    data = (tmp_path / "a.dcm").read_bytes()
    (tmp_path / "a.dcm").write_bytes(data[:data.rfind(marker)] + stored + data[data.rfind(marker) + len(marker):])
    result = run("info", "-i", "a.dcm")
    assert (result.status, result.err) == (0, "")
    assert ElementTree.fromstring(result.out.encode()).find("parameters").get("originalname") == shown


def nested(depth, open_tag, close_tag, inner=""):
    return open_tag * depth + inner + close_tag * depth


DOCUMENT = '<orchid type="ConvertixToFp"><operations>{}</operations></orchid>'
EDITION = '<operation type="edition"><Study>{}</Study></operation>'
SEQUENCE = ('<Sequence Name="RequestAttributesSequence"><Item>', "</Item></Sequence>")
HOSTILE = [
    ("16000-sequences", DOCUMENT.format(EDITION.format(nested(16000, *SEQUENCE))), 1),
    ("100000-plain-levels", DOCUMENT.format(EDITION.format(
        '<String Name="StudyID" Value="1">' + nested(100000, "<x>", "</x>") + "</String>")), 0),
    ("text-and-elements-at-the-cap", DOCUMENT.format("<a/>x" * ((2 << 20) // 5 - 20)).ljust(2 << 20), 0),
    ("one-byte-beyond-the-cap", DOCUMENT.format("").ljust((2 << 20) + 1), 1),
]


@posix_only
@pytest.mark.parametrize("document,status", [c[1:] for c in HOSTILE], ids=[c[0] for c in HOSTILE])
def test_hostile_metadata_is_refused_or_read_in_little_memory(tool, tmp_path, document, status):
    """The time limit only catches a runaway (a quadratic reading); speed belongs to the benchmarks."""
    (tmp_path / "meta.xml").write_text(document)
    (tmp_path / "a.pdf").write_bytes(b"payload")
    process = subprocess.Popen([tool, "pack", "-i", "a.pdf", "-m", "meta.xml", "-o", "a.dcm"],
                               cwd=tmp_path, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    timer = threading.Timer(60, process.kill)
    timer.start()
    _, wait_status, usage = os.wait4(process.pid, 0)
    timer.cancel()
    error = process.stderr.read().decode()
    assert os.waitstatus_to_exitcode(wait_status) == status, error or "killed after 60 s"
    if status:
        assert error == "Error: The metadata file \"meta.xml\" either doesn't exist or is ill-formed.\n"
    if not sanitized(tool):
        assert usage.ru_maxrss < 100 * 1024  # KiB
