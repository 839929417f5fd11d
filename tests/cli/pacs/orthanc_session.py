"""Runs inside a private network namespace (loopback only): starts Orthanc with a temporary
configuration, sends each planned file with storescu, fetches back what Orthanc kept over its REST
API, stops Orthanc and prints one JSON report on standard output.

Usage: orthanc_session.py PLAN.json
PLAN: {"workdir": dir, "instances": [{"id": case id, "file": path, "sop": SOPInstanceUID}]}
Report: {"ready": bool, "still_running": bool, "orthanc_log": path, "instances": {case id: {"store":
         exit status, "store_log": text, "orthanc_id": id or None, "file": path of the fetched copy,
         "tags": simplified tags, "preview_status": HTTP status, "preview": path of the preview or None}}}
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

CALLED_AET, LOOPBACK = "DICAPSULEPACS", "127.0.0.1"
# Proxies from the environment are ignored: every request goes to the loopback address.
OPENER = urllib.request.build_opener(urllib.request.ProxyHandler({}))


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_STREAM) as s:
        s.bind((LOOPBACK, 0))
        return s.getsockname()[1]


def request(port, path, body=None):
    """(HTTP status, body bytes); status None when nothing answered."""
    try:
        with OPENER.open(urllib.request.Request(f"http://{LOOPBACK}:{port}{path}", data=body,
                                                method="POST" if body else "GET"), timeout=30) as answer:
            return answer.status, answer.read()
    except urllib.error.HTTPError as e:
        return e.code, e.read()
    except (urllib.error.URLError, OSError):
        return None, b""


def exchange(http_port, dicom_port, workdir, case):
    report = {"orthanc_id": None, "file": None, "tags": None, "preview_status": None, "preview": None}
    try:
        done = subprocess.run(["storescu", "-aet", "DICAPSULETEST", "-aec", CALLED_AET, LOOPBACK, str(dicom_port),
                               case["file"]], capture_output=True, text=True, timeout=60)
        report["store"], report["store_log"] = done.returncode, done.stdout + done.stderr
    except subprocess.TimeoutExpired:
        report["store"], report["store_log"] = None, "storescu did not finish"
    status, found = request(http_port, "/tools/lookup", case["sop"].encode("ascii"))
    ids = [entry["ID"] for entry in (json.loads(found) if status == 200 else []) if entry.get("Type") == "Instance"]
    if len(ids) != 1:
        return report
    instance = report["orthanc_id"] = ids[0]
    status, tags = request(http_port, f"/instances/{instance}/simplified-tags")
    report["tags"] = json.loads(tags) if status == 200 else None
    for key, status_key, url, suffix in (("file", None, "file", "fetched.dcm"),
                                         ("preview", "preview_status", "preview", "preview.png")):
        status, data = request(http_port, f"/instances/{instance}/{url}")
        if status_key:
            report[status_key] = status
        if status == 200:
            report[key] = str(workdir / f"{case['id']}.{suffix}")
            pathlib.Path(report[key]).write_bytes(data)
    return report


def die_with_parent():
    """Runs in the Orthanc child: if this session is killed (the test's timeout), Orthanc goes too."""
    ctypes.CDLL(None, use_errno=True).prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG


def main(plan_path):
    plan = json.loads(pathlib.Path(plan_path).read_text(encoding="utf-8"))
    workdir = pathlib.Path(plan["workdir"])
    dicom_port, http_port = free_port(), free_port()
    while http_port == dicom_port:
        http_port = free_port()
    config = workdir / "orthanc.json"
    config.write_text(json.dumps({
        "Name": "DicapsuleTestPacs", "StorageDirectory": str(workdir / "storage"),
        "IndexDirectory": str(workdir / "index"), "StorageCompression": False, "Plugins": [], "LuaScripts": [],
        "HttpServerEnabled": True, "HttpPort": http_port, "RemoteAccessAllowed": False,
        "AuthenticationEnabled": False, "SslEnabled": False, "DicomServerEnabled": True, "DicomAet": CALLED_AET,
        "DicomPort": dicom_port, "DicomCheckCalledAet": False, "DicomModalities": {}, "OrthancPeers": {},
        "SaveJobs": False}), encoding="utf-8")
    log_path = workdir / "orthanc.log"
    result = {"ready": False, "instances": {}, "orthanc_log": str(log_path)}
    with open(log_path, "wb") as log:
        orthanc = subprocess.Popen(["Orthanc", "--no-jobs", str(config)], cwd=workdir, stdin=subprocess.DEVNULL,
                                   stdout=log, stderr=subprocess.STDOUT, preexec_fn=die_with_parent)
        try:
            deadline = time.monotonic() + 30
            while not result["ready"] and orthanc.poll() is None and time.monotonic() < deadline:
                result["ready"] = request(http_port, "/system")[0] == 200
                time.sleep(0 if result["ready"] else 0.2)
            if result["ready"]:
                for case in plan["instances"]:
                    result["instances"][case["id"]] = exchange(http_port, dicom_port, workdir, case)
                result["still_running"] = request(http_port, "/system")[0] == 200
        finally:
            orthanc.terminate()
            try:
                orthanc.wait(15)
            except subprocess.TimeoutExpired:
                orthanc.kill()
                orthanc.wait()
    json.dump(result, sys.stdout)


if __name__ == "__main__":
    os.umask(0o077)
    main(sys.argv[1])
