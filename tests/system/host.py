"""Runs filterhost from a test script."""
import json
import os
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(ROOT, "tools"))


def windows_path(path):
    """The path as the program sees it: Wine maps the root folder to Z:."""
    path = os.path.abspath(path)
    return path if os.name == "nt" else "Z:" + path.replace("/", "\\")


_MOST_STARTS = 3
_KILLED = -9


class Host:
    def __init__(self, program):
        self.command = [program]
        if os.name != "nt":
            self.command.insert(0, os.path.join(ROOT, "cmake", "wine-run.sh"))

    def run(self, document, output, *options, timeout=120):
        """(exit status, report object or None, standard error). The status is None when the run hangs."""
        status, reports, errors = self.call([document], ["-o", windows_path(output), *options], timeout)
        return status, reports[0] if reports else None, errors

    def run_all(self, documents, folder, *options, timeout=280):
        """The same for several documents, with a report for each; the outputs keep their names."""
        return self.call(documents, ["--out-dir", windows_path(folder), *options], timeout)

    def call(self, documents, options, timeout):
        """The same for any options. Two things that Wine does on a busy machine are no ends of the program, which is
        started again. Once in some thousand starts it gives one up before any of its code has run: such a start leaves
        neither a word nor a report, which is there before the first document is looked at. And its server kills one
        that has ended, but whose process is not gone half a second later."""
        for _ in range(_MOST_STARTS):
            status, reports, errors = self._call(documents, options, timeout)
            if status == _KILLED:
                why = "killed, as Wine does to one that is slow to leave"
            elif status and not errors and reports is None:
                why = "without a word or a report: it never began"
            else:
                break
            print(f"status {status} {why}, {os.path.basename(documents[0])}", flush=True)
        return status, reports or [], errors

    def _call(self, documents, options, timeout):
        with tempfile.TemporaryDirectory() as folder:
            report = os.path.join(folder, "report.json")
            arguments = ["run", *map(windows_path, documents), "--json", windows_path(report), "--quiet", *options]
            # A file, no pipe: a Wine server that the program starts would hold a pipe open for good.
            errors_file = os.path.join(folder, "errors.txt")
            with open(errors_file, "wb") as errors:
                try:
                    done = subprocess.run(self.command + arguments, stdout=subprocess.DEVNULL, stderr=errors,
                                          timeout=timeout)
                except subprocess.TimeoutExpired:
                    return None, None, f"no end after {timeout} s"
            with open(errors_file, encoding="utf-8", errors="replace") as errors:
                text = errors.read()
            reports = None
            if os.path.exists(report):
                with open(report, encoding="utf-8") as file:
                    reports = json.load(file)["inputs"]
            return done.returncode, reports, text


def processes_of(mark):
    """The numbers of the hosts that were started with the mark in their environment."""
    found = []
    for number in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{number}/environ", "rb") as file:
                environment = file.read()
            with open(f"/proc/{number}/cmdline", "rb") as file:
                command = file.read()
        except OSError:
            continue
        if f"HOST_MARK={mark}".encode() in environment and b"filterhost.exe" in command:
            found.append(int(number))
    return found


def corpus_files():
    """The documents of the corpus, or None where it is absent (CORPUS_FOLDER names another place)."""
    folder = os.environ.get("CORPUS_FOLDER", os.path.join(os.path.dirname(ROOT), "shared", "corpus"))
    if not os.path.isdir(folder):
        return None
    found = [os.path.join(where, name) for where, _, names in os.walk(folder) for name in names
             if name.lower().endswith((".xps", ".oxps", ".dwfx"))]
    return sorted(found)
