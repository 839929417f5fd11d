"""Runs inside a private network namespace (loopback only): starts Orthanc with a temporary
configuration, sends each planned file with storescu, fetches back what Orthanc kept over its REST
API, stops Orthanc and prints one JSON report on standard output.

Usage: orthanc_session.py PLAN.json
PLAN: {"workdir": dir, "instances": [{"id": case id, "file": path, "sop": SOPInstanceUID}]}
Report: {"instances": {case id: {"store": exit status, "store_log": text, "orthanc_id": id or None,
         "file": path of the fetched copy, "tags": simplified tags, "preview_status": HTTP status,
         "preview": path of the preview or None}}, "orthanc_log": path}
"""
import ctypes
import json
import os
import pathlib
import signal
import socket
import subprocess
import sys
import time
import urllib.error
import urllib.request

START_TIMEOUT = 30
REQUEST_TIMEOUT = 30
STORE_TIMEOUT = 60
STOP_TIMEOUT = 15
CALLED_AET = "DICAPSULEPACS"
CALLING_AET = "DICAPSULETEST"
LOOPBACK = "127.0.0.1"
PR_SET_PDEATHSIG = 1

# Proxies from the environment are ignored: every request goes to the loopback address.
OPENER = urllib.request.build_opener(urllib.request.ProxyHandler({}))


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_STREAM) as s:
        s.bind((LOOPBACK, 0))
        return s.getsockname()[1]


def write_config(workdir, dicom_port, http_port):
    config = {
        "Name": "DicapsuleTestPacs",
        "StorageDirectory": str(workdir / "storage"),
        "IndexDirectory": str(workdir / "index"),
        "StorageCompression": False,
        "Plugins": [],
        "LuaScripts": [],
        "HttpServerEnabled": True,
        "HttpPort": http_port,
        "RemoteAccessAllowed": False,
        "AuthenticationEnabled": False,
        "SslEnabled": False,
        "DicomServerEnabled": True,
        "DicomAet": CALLED_AET,
        "DicomPort": dicom_port,
        "DicomCheckCalledAet": False,
        "DicomModalities": {},
        "OrthancPeers": {},
        "SaveJobs": False,
    }
    path = workdir / "orthanc.json"
    path.write_text(json.dumps(config, indent=2), encoding="utf-8")
    return path


class Rest:
    def __init__(self, port):
        self.base = f"http://{LOOPBACK}:{port}"

    def request(self, path, body=None):
        """Returns (HTTP status, body bytes); status None when nothing answered."""
        req = urllib.request.Request(self.base + path, data=body, method="POST" if body else "GET")
        try:
            with OPENER.open(req, timeout=REQUEST_TIMEOUT) as answer:
                return answer.status, answer.read()
        except urllib.error.HTTPError as e:
            return e.code, e.read()
        except (urllib.error.URLError, OSError):
            return None, b""

    def json(self, path, body=None):
        status, data = self.request(path, body)
        return json.loads(data) if status == 200 else None


def wait_until_ready(orthanc, rest):
    deadline = time.monotonic() + START_TIMEOUT
    while time.monotonic() < deadline:
        if orthanc.poll() is not None:
            return False
        if rest.request("/system")[0] == 200:
            return True
        time.sleep(0.2)
    return False


def store(dicom_port, path):
    try:
        done = subprocess.run(["storescu", "-aet", CALLING_AET, "-aec", CALLED_AET, LOOPBACK,
                               str(dicom_port), path], capture_output=True, text=True,
                              timeout=STORE_TIMEOUT)
        return done.returncode, done.stdout + done.stderr
    except subprocess.TimeoutExpired:
        return None, "storescu did not finish"


def exchange(rest, dicom_port, workdir, case):
    report = {"orthanc_id": None, "file": None, "tags": None, "preview_status": None, "preview": None}
    report["store"], report["store_log"] = store(dicom_port, case["file"])
    found = rest.json("/tools/lookup", case["sop"].encode("ascii")) or []
    ids = [entry["ID"] for entry in found if entry.get("Type") == "Instance"]
    if len(ids) != 1:
        return report
    report["orthanc_id"] = ids[0]
    status, data = rest.request(f"/instances/{ids[0]}/file")
    if status == 200:
        report["file"] = str(workdir / f"{case['id']}.fetched.dcm")
        pathlib.Path(report["file"]).write_bytes(data)
    report["tags"] = rest.json(f"/instances/{ids[0]}/simplified-tags")
    report["preview_status"], data = rest.request(f"/instances/{ids[0]}/preview")
    if report["preview_status"] == 200:
        report["preview"] = str(workdir / f"{case['id']}.preview.png")
        pathlib.Path(report["preview"]).write_bytes(data)
    return report


def die_with_parent():
    """Runs in the Orthanc child: if this session is killed (the test's timeout), Orthanc goes too."""
    ctypes.CDLL(None, use_errno=True).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def stop(orthanc):
    orthanc.terminate()
    try:
        orthanc.wait(STOP_TIMEOUT)
    except subprocess.TimeoutExpired:
        orthanc.kill()
        orthanc.wait()


def main(plan_path):
    plan = json.loads(pathlib.Path(plan_path).read_text(encoding="utf-8"))
    workdir = pathlib.Path(plan["workdir"])
    dicom_port, http_port = free_port(), free_port()
    while http_port == dicom_port:
        http_port = free_port()
    config = write_config(workdir, dicom_port, http_port)
    log_path = workdir / "orthanc.log"
    result = {"ready": False, "instances": {}, "orthanc_log": str(log_path)}
    with open(log_path, "wb") as log:
        orthanc = subprocess.Popen(["Orthanc", "--no-jobs", str(config)], cwd=workdir,
                                   stdin=subprocess.DEVNULL, stdout=log, stderr=subprocess.STDOUT,
                                   preexec_fn=die_with_parent)
        try:
            rest = Rest(http_port)
            result["ready"] = wait_until_ready(orthanc, rest)
            if result["ready"]:
                for case in plan["instances"]:
                    result["instances"][case["id"]] = exchange(rest, dicom_port, workdir, case)
                result["still_running"] = rest.request("/system")[0] == 200
        finally:
            stop(orthanc)
    json.dump(result, sys.stdout)


if __name__ == "__main__":
    os.umask(0o077)
    main(sys.argv[1])
