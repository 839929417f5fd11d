"""The manual page of the build tree (it renders cleanly and carries every usage text of the tool)
and the Debian package built by scripts/package from this build tree: its control data, its files,
the packaged tool at work in a private root, its manual page, and lintian's verdict."""
import filecmp
import importlib.util
import os
import pathlib
import re
import subprocess

import pytest

SOURCE = pathlib.Path(os.environ.get("DICAPSULE_SOURCE", pathlib.Path(__file__).resolve().parents[2]))
OPERATIONS = ["pack", "info", "unpack"]
OPTION_START = re.compile(r"^  (-\w \[ --[\w-]+ \]|--[\w-]+)( arg(?: \(=[^)]*\))?)?")


def env(name):
    value = os.environ.get(name)
    if not value:
        pytest.fail(f"{name} must be set (ctest sets it)")
    return value


def run(tool, *args, **kwargs):
    """Runs the tool as "dicapsule" whatever its path, so usage texts name it the same way."""
    return subprocess.run(["dicapsule", *args], executable=tool, capture_output=True, text=True,
                          timeout=120, **kwargs)


def option_help(usage):
    """{"-e, --encoding": help text without its layout} for each option of an operation usage text."""
    options, current = {}, None
    for line in usage.split("Options:\n", 1)[1].splitlines():
        match = OPTION_START.match(line)
        if match:
            names = re.sub(r"-(\w) \[ (--[\w-]+) \]", r"-\1, \2", match.group(1))
            current = options.setdefault(names, [])
            line = line[match.end():]
        current.append(line)
    return {names: squeeze(" ".join(lines)) for names, lines in options.items()}


def squeeze(text):
    """Text without any white space, to compare texts laid out on different widths."""
    return re.sub(r"\s+", "", text)


def render(page, width=80):
    """The manual page as man shows it on a terminal of `width` columns: (text, warnings)."""
    done = subprocess.run(["man", "--warnings=all", "-l", str(page)], capture_output=True, text=True,
                          env={**os.environ, "MANWIDTH": str(width), "LC_ALL": "C.UTF-8",
                               "MAN_KEEP_FORMATTING": ""}, timeout=120)
    assert done.returncode == 0, done.stderr
    return done.stdout, done.stderr


_generator = importlib.util.spec_from_file_location("make_manpage", SOURCE / "docs/man/make_manpage.py")
make_manpage = importlib.util.module_from_spec(_generator)
_generator.loader.exec_module(make_manpage)


# The option parser wraps help texts on a width; the generator must find the declared lines again.
UNWRAP_CASES = [
    ("wrap keeps the space", ["one two three ", "four"], 16, ["one two three four"]),
    ("wrap on the space of a full line", ["one two three fo", "five"], 16, ["one two three fo five"]),
    ("long word cut", ["x abcdefghijklmn", "opq"], 16, ["x abcdefghijklmnopq"]),
    ("line break after a space", ["one two ", "six"], 16, ["one two", "six"]),
    ("line break", ["one", "two", "three"], 16, ["one", "two", "three"]),
    ("list keeps its alignment", ["- A    (1)", "- BB   (2)"], 16, ["- A    (1)", "- BB   (2)"]),
]


@pytest.mark.parametrize("case,physical,width,declared", UNWRAP_CASES, ids=[c[0] for c in UNWRAP_CASES])
def test_unwrap_finds_the_declared_lines(case, physical, width, declared):
    assert make_manpage.unwrap(physical, width) == declared


@pytest.mark.parametrize("text,expected", [
    (".starts with a dot", "\\&.starts with a dot"),
    ("back\\slash --force", "back\\eslash \\-\\-force"),
    ("\"" + "A:" * 25 + "\"", "\"" + "A:\\:" * 25 + "\""),
])
def test_roff_escapes_what_roff_would_interpret(text, expected):
    assert make_manpage.roff(text) == expected


@pytest.mark.parametrize("renderer", ["man 80", "man 60", "groff"])
def test_page_renders_without_warnings(renderer):
    if renderer == "groff":
        done = subprocess.run(["groff", "-man", "-wall", "-Tutf8", "-z", env("DICAPSULE_MANPAGE")],
                              capture_output=True, text=True, timeout=120)
        assert (done.returncode, done.stderr) == (0, "")
    else:
        assert render(env("DICAPSULE_MANPAGE"), int(renderer.split()[1]))[1] == ""


@pytest.mark.parametrize("operation", OPERATIONS)
def test_page_shows_every_option_with_the_help_the_tool_prints(operation):
    usage = run(env("DICAPSULE"), operation, "--help").stdout
    text = render(env("DICAPSULE_MANPAGE"))[0]
    section = text.split(f"Options of {operation}", 1)[1].split("Options of", 1)[0].split("EXIT STATUS")[0]
    assert squeeze(usage.splitlines()[1]) in squeeze(text)  # the synopsis line
    for names, help_text in option_help(usage).items():
        assert names in section, names
        assert help_text in squeeze(section), names


def test_page_documents_the_environment():
    text = render(env("DICAPSULE_MANPAGE"))[0]
    environment = text.split("ENVIRONMENT", 1)[1].split("FILES", 1)[0]
    for variable in ("CONVERTIX_TESTMODE", "FORCE_DISABLE_BLOCKS_PARALLEL", "DICAPSULE_TRACE"):
        assert variable in environment


ARCH = subprocess.run(["dpkg", "--print-architecture"], capture_output=True, text=True).stdout.strip()
DOC = "usr/share/doc/dicapsule"
FILES = {"usr/bin/dicapsule", "usr/share/man/man1/dicapsule.1.gz", *(f"{DOC}/{name}" for name in (
    "copyright", "changelog.gz", "metadata-format.md", "metadata.xsd", "examples/metadata.xml",
    "examples/report.pdf", "examples/thumbnail.png"))}


@pytest.fixture(scope="session")
def deb(tmp_path_factory):
    dist = tmp_path_factory.mktemp("dist")
    done = subprocess.run([SOURCE / "scripts/package", "--build-dir", env("DICAPSULE_BUILD"),
                           "--dist", dist], capture_output=True, text=True, timeout=600)
    assert done.returncode == 0, done.stderr
    deb = dist / f"dicapsule_{env('DICAPSULE_VERSION')}_{ARCH}.deb"
    assert done.stdout.strip().endswith(deb.name) and deb.is_file()
    return deb


@pytest.fixture(scope="session")
def root(deb, tmp_path_factory):
    """The package unpacked into an empty directory, as dpkg would lay it out."""
    root = tmp_path_factory.mktemp("root")
    subprocess.run(["dpkg-deb", "-x", deb, root], check=True)
    return root


def control(deb):
    text = subprocess.run(["dpkg-deb", "-f", deb], capture_output=True, text=True, check=True).stdout
    return dict(re.findall(r"^(\S+): (.*)$", text, re.M))


def test_control_fields(deb):
    fields = control(deb)
    for field, pattern in {"Package": r"dicapsule", "Version": re.escape(env("DICAPSULE_VERSION")),
                           "Architecture": ARCH, "Section": r"science", "Priority": r"optional",
                           "Maintainer": r".+ <[^@ ]+@[^@ ]+>", "Installed-Size": r"[1-9][0-9]*",
                           "Description": r"wrap any file into a DICOM .+"}.items():
        assert re.fullmatch(pattern, fields.get(field, "")), (field, fields)


def modules():
    """The modules this build made, as the package installs them."""
    return {f"usr/lib/dicapsule/{path.name}" for path in pathlib.Path(env("DICAPSULE_BUILD")).glob("dicapsule_*.so")}


def test_depends_names_exactly_the_packages_of_the_loaded_libraries(deb, root):
    needed = set()
    for binary in ["usr/bin/dicapsule", *modules()]:
        dynamic = subprocess.run(["readelf", "-d", root / binary], capture_output=True,
                                 text=True, check=True).stdout
        needed.update(re.findall(r"\(NEEDED\).*\[(.+)\]", dynamic))
    depends = {entry.split()[0] for entry in control(deb)["Depends"].split(", ")}
    shipped_by = {}
    for soname in needed:
        owners = subprocess.run(["dpkg", "-S", f"*/{soname}"], capture_output=True, text=True).stdout
        shipped_by[soname] = {line.split(":", 1)[0] for line in owners.splitlines()} & depends
    assert needed and all(shipped_by.values()), shipped_by
    assert set().union(*shipped_by.values()) == depends


def test_package_holds_exactly_the_installed_files(deb):
    listing = subprocess.run(["dpkg-deb", "-c", deb], capture_output=True, text=True, check=True).stdout
    files = {line.split()[-1].removeprefix("./") for line in listing.splitlines() if line.startswith("-")}
    assert files == FILES | modules()


@pytest.mark.parametrize("args", [["--help"], *[[op, "--help"] for op in OPERATIONS]], ids=" ".join)
def test_packaged_tool_prints_the_usage_of_the_built_one(root, args):
    packaged, built = run(root / "usr/bin/dicapsule", *args), run(env("DICAPSULE"), *args)
    assert (packaged.returncode, packaged.stdout) == (0, built.stdout)


def test_packaged_tool_round_trips_the_packaged_example(root, tmp_path):
    tool, examples = root / "usr/bin/dicapsule", root / DOC / "examples"
    packed, restored = tmp_path / "report.dcm", tmp_path / "restored.pdf"
    for step in (["pack", "-i", examples / "report.pdf", "-m", examples / "metadata.xml",
                  "-t", examples / "thumbnail.png", "-o", packed],
                 ["info", "-i", packed], ["unpack", "-i", packed, "-o", restored]):
        done = run(tool, *map(str, step), cwd=tmp_path)
        assert done.returncode == 0, (step, done.stderr)
        assert step[0] != "info" or 'originalname="report.pdf"' in done.stdout
    assert filecmp.cmp(examples / "report.pdf", restored, shallow=False)


@pytest.mark.skipif(os.environ.get("DICAPSULE_EXTENDED_JPEG") != "ON", reason="this build has no extended JPEG module")
def test_packaged_tool_loads_its_module_from_the_package(root, tmp_path):
    """A 12-bit JPEG thumbnail needs the extended JPEG module: the packaged tool finds the packaged one."""
    module = root / "usr/lib/dicapsule/dicapsule_jpegext.so"
    assert module.is_file()
    import pydicom
    source = pydicom.Dataset()
    source.file_meta = pydicom.dataset.FileMetaDataset()
    source.file_meta.TransferSyntaxUID = pydicom.uid.ExplicitVRLittleEndian
    source.file_meta.MediaStorageSOPClassUID = source.SOPClassUID = "1.2.840.10008.5.1.4.1.1.7"
    source.file_meta.MediaStorageSOPInstanceUID = source.SOPInstanceUID = "1.2.3.4"
    source.update(dict(Rows=8, Columns=8, SamplesPerPixel=1, PhotometricInterpretation="MONOCHROME2",
                       BitsAllocated=16, BitsStored=12, HighBit=11, PixelRepresentation=0,
                       PixelData=bytes(v % 256 for v in range(128))))
    source.is_little_endian, source.is_implicit_VR = True, False
    source.save_as(tmp_path / "grey12.dcm", write_like_original=False)
    subprocess.run(["dcmcjpeg", "+ee", tmp_path / "grey12.dcm", tmp_path / "thumb.dcm"], check=True)
    examples = root / DOC / "examples"
    done = run(root / "usr/bin/dicapsule", "pack", "-i", str(examples / "report.pdf"), "-m",
               str(examples / "metadata.xml"), "-t", "thumb.dcm", "-o", "out.dcm", cwd=tmp_path,
               env={**os.environ, "LD_DEBUG": "files"})
    assert done.returncode == 0, done.stderr
    loaded = re.findall(r"file=(\S*dicapsule_jpegext\.so) \[0\];\s+dynamically loaded", done.stderr)
    assert [os.path.realpath(path) for path in loaded] == [str(module.resolve())]


def test_packaged_manual_page_renders_without_warnings(root):
    text, warnings = render(root / "usr/share/man/man1/dicapsule.1.gz")
    assert warnings == ""
    assert f"dicapsule {env('DICAPSULE_VERSION')}" in text


def test_lintian_reports_no_error(deb):
    done = subprocess.run(["lintian", "--fail-on", "error", deb], capture_output=True, text=True,
                          timeout=600)
    assert done.returncode == 0, done.stdout + done.stderr
    assert not re.search(r"^E: ", done.stdout, re.M), done.stdout
