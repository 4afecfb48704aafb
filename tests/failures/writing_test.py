#!/usr/bin/env python3
"""Fails, shortens and kills every system call by which a file is replaced.

    writing_test.py FILE_DRIVER

Whatever fails, the driver reports an exception, the old file is intact or the new one complete, and no temporary
is left. Whenever the process is killed, the old file is intact or the new one complete, and the next replacement
succeeds. Needs strace and the right to trace; exits with 77, for skipped, without them.
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile

SKIPPED = 77
OLD = b"the old content " * 40
NEW = b"something new " * 5000
REPLACE_ARGUMENTS = ["something new ", "5000"]
# A hang is a finding, not something to wait for.
MOST_SECONDS = 60
CANNOT_FAIL = ("getpid",)
MARKS = ("access", "faccessat", "faccessat2")


class Call:
    """One system call of the operation: the number-th one of its name in the whole process."""

    def __init__(self, name, number, text):
        self.name = name
        self.number = number
        self.text = text

    def __str__(self):
        return f"{self.name} {self.number}"


class Folder:
    """A folder for one attempt, with the file and perhaps a link to it."""

    def __init__(self, old, linked):
        self.path = tempfile.mkdtemp(prefix="writing_test_")
        self.file = os.path.join(self.path, "file")
        self.target = self.file
        self.expected_names = {"file"}
        if old is not None:
            with open(self.file, "wb") as file:
                file.write(old)
        if linked:
            self.target = os.path.join(self.path, "link")
            os.symlink("file", self.target)
            self.expected_names.add("link")

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        shutil.rmtree(self.path)

    def content(self):
        try:
            with open(self.file, "rb") as file:
                return file.read()
        except FileNotFoundError:
            return None

    def others(self):
        return set(os.listdir(self.path)) - self.expected_names


class Test:
    def __init__(self, driver):
        self.driver = driver
        self.findings = []
        self.attempts = 0

    def expect(self, holds, what):
        if not holds:
            self.findings.append(what)
            print(f"FAILED: {what}", file=sys.stderr)

    def command(self, folder, operation):
        extra = REPLACE_ARGUMENTS if operation == "replace" else []
        return [self.driver, operation, folder.target] + extra

    def run(self, folder, operation, injection=None, environment=None):
        """The exit status and what was printed; None for a hang."""
        self.attempts += 1
        trace = ["strace", "-qq", "-o", os.devnull, "-e", f"inject={injection}"] if injection else []
        # The leak checker of a sanitized driver cannot work while it is traced.
        options = os.environ.get("ASAN_OPTIONS", "")
        variables = dict(os.environ, ASAN_OPTIONS=f"{options}:detect_leaks=0", **(environment or {}))
        with subprocess.Popen(trace + self.command(folder, operation), env=variables, start_new_session=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
            try:
                printed, _ = process.communicate(timeout=MOST_SECONDS)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)  # the driver goes on when only strace ends
                return None, b""
        return process.returncode, printed

    def calls_of(self, operation, old, linked):
        """The system calls that the operation makes when nothing fails."""
        with Folder(old, linked) as folder:
            log = os.path.join(folder.path, "log")
            variables = dict(os.environ, ASAN_OPTIONS="detect_leaks=0")
            subprocess.run(["strace", "-qq", "-o", log] + self.command(folder, operation), env=variables,
                           timeout=MOST_SECONDS, stdout=subprocess.DEVNULL, check=True)
            with open(log, encoding="utf-8", errors="replace") as file:
                lines = file.readlines()
        counts = {}
        calls = []
        inside = False
        for line in lines:
            match = re.match(r"(\w+)\(", line)
            if not match:
                continue
            name = match.group(1)
            counts[name] = counts.get(name, 0) + 1
            if name in MARKS and "/operation-" in line:
                inside = "begins" in line
            elif inside and name not in ("brk", "mmap", "munmap"):
                calls.append(Call(name, counts[name], line.strip()))
        return calls

    def require(self, calls, names, operation):
        """Without these in the trace, the test would look at nothing."""
        for name in names:
            self.expect(any(call.name.startswith(name) for call in calls), f"{operation} makes no {name}")

    def fail_each_replacing_call(self, old, linked):
        case = f"replacing {'a file' if old is not None else 'nothing'}{' through a link' if linked else ''}"
        calls = self.calls_of("replace", old, linked)
        self.require(calls, ["open", "write", "fsync", "close", "rename", "readlink"], case)
        renamed = next(i for i, call in enumerate(calls) if call.name.startswith("rename"))
        for place, call in enumerate(calls):
            # At the end everything is on the disk, and only the folder's descriptor is left.
            harmless = place == len(calls) - 1 and call.name == "close"
            if call.name not in CANNOT_FAIL:
                whens = [f"{call.number}"]
                if call.name != "write":  # sanitizers write too, to see if an address can be read
                    whens.append(f"{call.number}+")
                for when in whens:
                    self.fail_replacing(case, call, f"{call.name}:error=EIO:when={when}", old, linked,
                                        place > renamed, harmless)
            if call.name in ("openat", "open", "write", "fsync"):
                self.interrupt(case, call, old, linked)
            self.kill(case, call, old, linked)
        for call in calls:
            if call.name == "write":
                self.fail_replacing(case, call, f"write:retval=0:when={call.number}", old, linked, False, False)

    def fail_replacing(self, case, call, injection, old, linked, in_place, harmless):
        what = f"{case}, {injection}: {call.text}"
        with Folder(old, linked) as folder:
            status, _ = self.run(folder, "replace", injection)
            self.expect(status == (0 if harmless else 1), f"{what}: status {status}")
            expected = NEW if in_place else old
            self.expect(folder.content() == expected, f"{what}: the file is neither what it was nor complete")
            self.expect(not folder.others(), f"{what}: left {folder.others()}")
            if linked:
                self.expect(os.path.islink(folder.target), f"{what}: the link is gone")

    def interrupt(self, case, call, old, linked):
        what = f"{case}, interrupted: {call.text}"
        with Folder(old, linked) as folder:
            status, _ = self.run(folder, "replace", f"{call.name}:error=EINTR:when={call.number}")
            self.expect(status == 0, f"{what}: status {status}")
            self.expect(folder.content() == NEW, f"{what}: the file is not the new one")
            self.expect(not folder.others(), f"{what}: left {folder.others()}")

    def kill(self, case, call, old, linked):
        what = f"{case}, killed: {call.text}"
        with Folder(old, linked) as folder:
            status, _ = self.run(folder, "replace", f"{call.name}:signal=KILL:when={call.number}")
            self.expect(status not in (0, 1, 2, None), f"{what}: status {status}")
            self.expect(folder.content() in (old, NEW), f"{what}: the file is neither the old nor the new one")
            for name in folder.others():
                self.expect(name.startswith(".vxclassifier-"), f"{what}: left {name}")
            status, _ = self.run(folder, "replace")
            self.expect(status == 0 and folder.content() == NEW, f"{what}: the next replacement failed")

    def shorten(self):
        for longest in ("1", "7", "4096"):
            with Folder(OLD, False) as folder:
                status, _ = self.run(folder, "replace", environment={"SHORTEN": longest})
                self.expect(status == 0 and folder.content() == NEW, f"writing {longest} bytes at a time")
                self.expect(not folder.others(), f"writing {longest} bytes at a time: left {folder.others()}")
                status, printed = self.run(folder, "read", environment={"SHORTEN": "7"})
                self.expect(status == 0 and printed == NEW, "reading 7 bytes at a time")

    def fail_each_reading_call(self):
        calls = self.calls_of("read", OLD, False)
        self.require(calls, ["open", "read", "close"], "reading")
        for call in calls:
            what = f"reading: {call.text}"
            with Folder(OLD, False) as folder:
                status, printed = self.run(folder, "read", f"{call.name}:error=EIO:when={call.number}")
                if call.name == "close":
                    self.expect(status == 0 and printed == OLD, f"{what}: status {status}")
                else:
                    self.expect(status == 1 and printed == b"", f"{what}: status {status}")
                if call.name != "close":
                    status, printed = self.run(folder, "read", f"{call.name}:error=EINTR:when={call.number}")
                    self.expect(status == 0 and printed == OLD, f"{what}, interrupted: status {status}")
                self.expect(folder.content() == OLD, f"{what}: the file has changed")


def can_trace():
    if shutil.which("strace") is None:
        return False, "strace is not installed"
    probe = subprocess.run(["strace", "-qq", "-o", os.devnull, "-e", "inject=close:error=EIO:when=60000",
                            "true"], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return probe.returncode == 0, probe.stdout.decode(errors="replace").strip()


def main():
    traceable, reason = can_trace()
    if not traceable:
        print(f"skipped: processes cannot be traced here ({reason})")
        return SKIPPED
    test = Test(sys.argv[1])
    test.fail_each_replacing_call(OLD, False)
    test.fail_each_replacing_call(None, False)
    test.fail_each_replacing_call(OLD, True)
    test.shorten()
    test.fail_each_reading_call()
    print(f"{test.attempts} attempts, {len(test.findings)} findings")
    return 1 if test.findings else 0


if __name__ == "__main__":
    sys.exit(main())
