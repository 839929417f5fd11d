"""The command line as users meet it: help, usage texts, usage errors, exit statuses."""
import pytest

from conftest import WINDOWS, golden

OPERATIONS = ["pack", "info", "unpack"]


def usage_of(args):
    return golden((args[0] if args and args[0] in OPERATIONS else "general") + "_usage.txt")


@pytest.mark.parametrize("args", [["help"], ["--help"], ["-h"], ["help", "pack", "-x"], ["-h", "whatever"]] + [
    [operation, word, "--bogus"] for operation in OPERATIONS for word in ("help", "--help", "-h")])
def test_help_prints_the_usage_of_what_it_follows(run, args):
    result = run(*args)
    assert (result.status, result.out, result.err) == (0, usage_of(args), "")


@pytest.mark.parametrize("args,message", [
    ([], "The operation is missing."),
    (["HELP"], '"HELP" is not a valid operation.'),
    (["Pack"], '"Pack" is not a valid operation.'),
    (["-i", "x"], '"-i" is not a valid operation.'),
    (["unpackx"], '"unpackx" is not a valid operation.'),
    (["pack"], "The --metadata option is required."),
    (["pack", "-i", "a.pdf"], "The --metadata option is required."),
    (["pack", "-m", "m.xml"], "The --input option is required."),
    (["pack", "-m", "m", "-i", "a", "-I", "a:b:c:d:e"], '"a:b:c:d:e" is not a valid identifier string.'),
    (["pack", "-m", "m", "-i", "a", "-r", "1.2::1.4"], '"1.2::1.4" is not a valid reference string.'),
    (["pack", "-m", "m", "-i", "a", "-e", "latin1"], '"latin1" is not a valid encoding.'),
    (["pack", "-m", "m", "-i", "a", "--encoding", "unknown"], '"unknown" is not a valid encoding.'),
    (["unpack"], "The --input option is required."),
    (["unpack", "-i", "x.dcm", "-u", "-o", "y.bin"], "The --use-original-name and --output options are incompatible."),
    (["info"], "The --input option is required."),
])
def test_usage_errors(run, args, message):
    result = run(*args)
    assert (result.status, result.out, result.err) == (1, "", "Usage error: " + message + "\n\n" + usage_of(args))


@pytest.mark.parametrize("args,message", [
    (["pack", "-m", "m", "-i", "a", "--hackforbmpacs"],
     "The --thumbnail option must be used when using the --hackforbmpacs option."),
    (["pack", "-i", "a.bin", "--help"], "unrecognised option '--help'"),
    (["pack", "-m", "m", "-i"], "the required argument for option '--input' is missing"),
    (["unpack", "-i", "x", "--force=yes"], "option '--force' does not take any arguments"),
    (["info", "-i", "x", "-o", "y"], "unrecognised option '-o'"),
    pytest.param(["pack", "-m", "m", "-i", b"caf\xe9.bin"], "Cannot decode UTF-8 string.",
                 marks=pytest.mark.skipif(WINDOWS, reason="a UTF-16 command line holds no ill-formed UTF-8")),
])
def test_ordinary_errors_have_no_usage_text(run, args, message):
    result = run(*args)
    assert (result.status, result.out, result.err) == (1, "", "Error: " + message + "\n")


@pytest.mark.parametrize("argv0,prog", [
    ("/opt/tools/dicapsule", "dicapsule"),
    ("C:\\Program Files\\Dicapsule\\dicapsule.exe", "dicapsule.exe"),
    ("relative/run-me", "run-me"),
])
def test_program_name_is_the_last_path_component(run, argv0, prog):
    assert run("help", argv0=argv0).out == golden("general_usage.txt", prog)
    assert run("unpack", "-u", "-o", "x", "-i", "y", argv0=argv0).err.endswith(golden("unpack_usage.txt", prog))
