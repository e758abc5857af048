# SPDX-License-Identifier: MIT
"""Compiles a source with a defect, exchanges it in the shared libraries that the tests load, and runs the tests."""
import json
import math
import os
import re
import resource
import shlex
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

CAUGHT, SURVIVED, REFUSED = "caught", "survived", "not compiled"
MEMORY = 1 << 30  # a defect must not take the machine's
LONG, SHARDS = 5, 8  # seconds that a program takes, and processes that it is then spread over
QUICK = 0.1  # seconds of a test that is asked before those that take longer
SHARE = 2  # seconds of the latter that a process has
PATIENCE = 10  # seconds, besides five times what the tests take
WORK = 2  # seconds of a processor, besides three times what the tests take: a loop without end is known sooner
FAST_LINKER = ["-fuse-ld=gold"] if shutil.which("ld.gold") else []


def _limit(processor=resource.RLIM_INFINITY):
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_CPU, (processor, processor))


def _children_worked():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


class Build:
    """What the build directory says of its objects: how they are compiled, from what, and which library has them."""

    def __init__(self, source, folder):
        self.source, self.folder = Path(source).resolve(), Path(folder).resolve()
        self.compile = {}  # object -> command
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            self.compile[words[words.index("-o") + 1]] = words
        self.libraries = {}  # library -> command that links it; those that no test loads are not built
        for line in self._ninja("-t", "commands").splitlines():
            if " -shared " in line:
                words = shlex.split(line.replace(": && ", "").replace(" && :", ""))
                library = words[words.index("-o") + 1]
                if (self.folder / library).exists():
                    self.libraries[library] = words
        self.linked = {word for words in self.libraries.values() for word in words if word.endswith(".o")}
        self.users = {}  # file -> objects
        for found in re.finditer(r"^(\S+): #deps.*\n((?:    .*\n)*)", self._ninja("-t", "deps"), re.MULTILINE):
            for name in found[2].split():
                path = (self.folder / name).resolve()
                self.users.setdefault(path, set()).add(found[1])

    def _ninja(self, *arguments):
        return subprocess.run(["ninja", "-C", self.folder, *arguments], capture_output=True, text=True, check=True).stdout

    def objects_of(self, path):
        """The objects in libraries that are compiled from this file."""
        return sorted(self.users.get((self.source / path).resolve(), set()) & self.linked)


class Tests:
    """Test programs, in the order in which they are asked, and how long they take without a defect."""

    def __init__(self, folder, programs, long_tests, by_suite):
        self.folder, self.long_tests, self.by_suite = Path(folder).resolve(), long_tests, by_suite
        # A library that is exchanged finds those it needs no more by where it stands.
        self.library_folders = sorted({str(library.parent) for library in self.folder.rglob("lib*.so*")})
        self.programs = {}  # name -> seconds
        self.slow = {}  # name -> filter of the tests that take long, their seconds, and those of the longest
        self.work = {}  # name -> seconds of a processor that it may take
        for program in programs:
            self._learn(program)

    def _learn(self, program):
        started, worked = time.monotonic(), _children_worked()
        with tempfile.TemporaryDirectory(prefix="mutants-") as folder:
            if not self.run(program, "*", None, 1200, shards=SHARDS, output=folder):
                raise RuntimeError(f"{program} fails without any defect: run it and mend that first")
            times = _times(folder)
        slow = {name: seconds for name, seconds in times.items() if seconds > QUICK}
        self.programs[program] = sum(times.values()) or time.monotonic() - started
        self.slow[program] = (":".join(slow), sum(slow.values()), max(slow.values(), default=0))
        self.work[program] = math.ceil(WORK + 3 * (_children_worked() - worked))

    def run(self, program, suites, libraries, limit, path=None, left_out="", shards=1, output=None):
        """\return whether all of these tests pass, but the long ones that do not say anything of this file"""
        left_out = ":".join([left_out, *(tests for tests, files in self.long_tests.items() if path not in files)])
        command = [self.folder / program, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={suites}-{left_out}"]
        running = {self._start(command, libraries, self.work.get(program), shard, shards, output) for shard in range(shards)}
        end = time.monotonic() + limit
        passed = True
        while running and passed:
            over = {process for process in running if process.poll() is not None}
            passed = all(process.returncode == 0 for process in over) and time.monotonic() < end
            running -= over
            if not over:
                time.sleep(0.01)
        for process in running:
            os.killpg(process.pid, 9)  # its own session: the program and what it started
            process.wait()
        return passed

    def _start(self, command, libraries, work, shard, shards, output):
        environment = dict(os.environ, LD_LIBRARY_PATH=":".join([str(libraries), *self.library_folders]) if libraries else "")
        environment.update(GTEST_TOTAL_SHARDS=str(shards), GTEST_SHARD_INDEX=str(shard))
        if output:
            environment.update(GTEST_OUTPUT=f"json:{output}/{shard}.json")
        limit = resource.RLIM_INFINITY if work is None else work
        return subprocess.Popen(
            command, env=environment, cwd=self.folder, preexec_fn=lambda: _limit(limit), start_new_session=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
        )  # fmt: skip

    def notice(self, path, libraries):
        """Whether a test fails; those named after the file, then those of its folder, are asked first."""
        mirrored = self.by_suite.get(Path(path).stem, {})
        for program, suites in mirrored.items():
            if program in self.programs and not self._passes_quick(program, suites, libraries, path):
                return True
        own = Path(path).parts[0]
        programs = sorted(self.programs, key=lambda name: (own not in name, self.programs[name]))
        return any(
            not self._passes_quick(program, "*", libraries, path) or not self._passes_slow(program, libraries, path)
            for program in programs
        )

    def _passes_quick(self, program, suites, libraries, path):
        slow, seconds, _ = self.slow[program]
        rest = self.programs[program] - seconds
        shards = SHARDS if suites == "*" and rest > LONG else 1
        return self.run(program, suites, libraries, _patience(rest), path, slow, shards)

    def _passes_slow(self, program, libraries, path):
        """What takes long mostly waits: it does so in several processes at a time."""
        slow, seconds, longest = self.slow[program]
        shards = math.ceil(seconds / SHARE)
        return not slow or self.run(program, slow, libraries, _patience(SHARE + longest), path, shards=shards)


def _patience(seconds):
    """\return after how long a defect keeps tests from ending that take so long without it"""
    return PATIENCE + 5 * seconds


def _times(folder):
    """Test -> seconds that it took, of what the processes have written."""
    result = {}
    for file in Path(folder).glob("*.json"):
        for suite in json.loads(file.read_text())["testsuites"]:
            for test in suite["testsuite"]:
                result[f"{suite['name']}.{test['name']}"] = float(test["time"].rstrip("s"))
    return result


def suites_by_file(source):
    """File name without _test.cpp -> program -> filter of the suites in it."""
    result = {}
    for file in Path(source, "tests").rglob("*_test.cpp"):
        suites = sorted(set(re.findall(r"^TEST(?:_[FP])?\((\w+),", file.read_text(), re.MULTILINE)))
        program = f"tests/{file.relative_to(Path(source, 'tests')).parts[0]}_test"
        if suites:
            stem = file.name.removesuffix("_test.cpp")
            result.setdefault(stem, {})[program] = ":".join(f"{suite}.*:*/{suite}.*" for suite in suites)
    return result


class Worker:
    """Tries one defect at a time in a folder of its own, beside the sources, which stay as they are."""

    def __init__(self, build, tests, folder):
        self.build, self.tests, self.folder = build, tests, Path(folder)
        self.sources, self.objects, self.libraries = (self.folder / name for name in ("src", "obj", "lib"))

    def try_out(self, defect, text):
        for folder in (self.sources, self.objects, self.libraries):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir(parents=True)
        changed = self.sources / defect.path
        changed.parent.mkdir(parents=True, exist_ok=True)
        changed.write_text(defect.planted(text))
        objects = {}
        for i, name in enumerate(self.build.objects_of(defect.path)):
            objects[name] = str(self.objects / f"{i}.o")
            if not self._compile(name, objects[name], defect.path):
                return REFUSED
        if not self._link(objects):
            raise RuntimeError("it compiles, and the library does not link")
        return CAUGHT if self.tests.notice(defect.path, self.libraries) else SURVIVED

    def _run(self, words):
        silent = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        return subprocess.run(words, cwd=self.build.folder, preexec_fn=_limit, **silent).returncode == 0

    def _compile(self, name, output, path):
        words = list(self.build.compile[name])
        while not re.search(r"(?:\+\+|g?cc|clang)(?:-\d+)?$", words[0]):
            words.pop(0)  # ccache and its environment: nothing here is compiled twice
        words[words.index("-o") + 1] = output
        for option in ("-MD", "-Werror"):
            if option in words:
                words.remove(option)
        for option in ("-MT", "-MF"):
            if option in words:
                del words[words.index(option) : words.index(option) + 2]
        source = words.index("-c") + 1
        if Path(words[source]).resolve() == (self.build.source / path).resolve():
            words[source] = str(self.sources / path)
        return self._run([words[0], "-w", f"-I{self.sources}", *words[1:]])

    def _link(self, objects):
        for library, command in self.build.libraries.items():
            if objects.keys() & set(command):
                words = [objects.get(word, word) for word in command]
                output = words.index("-o") + 1
                soname = next((word.rsplit(",", 1)[1] for word in words if word.startswith("-Wl,-soname,")), library)
                words[output] = str(self.libraries / soname)
                if not self._run([*words, *FAST_LINKER]):
                    return False
        return True
