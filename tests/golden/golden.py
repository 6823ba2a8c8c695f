#!/usr/bin/env python3
"""Runs the program through the cases of cases.txt and compares everything that it leaves with the check sums
of sums.txt.

golden.py EXE SCENE_TOOL [--keep DIR] [--only PATTERN] [--renew] [--jobs N]
golden.py --diff OLD NEW

EXE is any build of the program; it is run as a copy, with the data files beside it or, where it has none, those
of the build that SCENE_TOOL belongs to. --keep leaves all results in DIR, with what differs from run to run
taken out of the texts; --diff compares two such folders, texts line by line. Exit code 1 for any difference."""
import argparse
import concurrent.futures
import difflib
import fnmatch
import hashlib
import os
import pty
import re
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
import termios
import time

sys.dont_write_bytecode = True
import pictures  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
SUMS = os.path.join(HERE, "sums.txt")
CASES = os.path.join(HERE, "cases.txt")
SKIPPED = 77  # for ctest
LONGEST = 300  # seconds of a run, on a busy machine
EMPTY_FOLDER = "empty folder"
CELL = re.compile(r"(?<=_)\d+(?=[_.])")  # a number of a file of a cell
MOST_CELLS = 8  # files with a sum each

# What differs from run to run by nature, and what stands for it. Each rule is as narrow as it can be.
STAMP = re.compile(rb"_\d{4}\.\d\d\.\d\d_\d\d\.\d\d\.\d\d")  # StampFiles 2 and 3, ReportMode 3
RULES = [
    (STAMP, b"_TIME"),
    # The duration of a pair.
    (re.compile(rb"(Consumed CPU time for this image: |Verbrauchte CPU-Zeit fuer dieses Bild: )\d+"), rb"\1N"),
    # Steps of the progress in a terminal below 100 %: which ones come depends on the threads.
    (re.compile(rb"\r[^\r\n]* \d?\d\.\d %\x1b\[K"), b""),
]


def without_padding(data):
    """A TIFF whose padding is zero: the writer leaves any value in the byte that brings the directory behind
    pixels of odd length to an even place."""
    if data[:4] != b"II*\0":
        return data
    try:
        end, directory = last_pixel_and_directory(data)
    except (struct.error, KeyError):
        return data
    return data[:end] + b"\0" + data[end + 1:] if end % 2 == 1 and end + 1 == directory else data


def last_pixel_and_directory(data):
    """Where the pixels of a little-endian TIFF end and where its directory begins."""
    directory, = struct.unpack_from("<I", data, 4)
    tags = {}
    for entry in range(struct.unpack_from("<H", data, directory)[0]):
        tag, kind, count, value = struct.unpack_from("<HHII", data, directory + 2 + 12 * entry)
        form = f"<{count}{'H' if kind == 3 else 'I'}"
        in_entry = struct.calcsize(form) <= 4
        if tag in (273, 279):  # offsets and sizes of the strips
            tags[tag] = struct.unpack_from(form, struct.pack("<I", value) if in_entry else data, 0 if in_entry else value)
    return max(offset + size for offset, size in zip(tags[273], tags[279])), directory


class Case:
    """A name, sets of pictures and steps: (verb, text) in their order."""

    def __init__(self, name, sets, steps):
        self.name, self.sets, self.steps = name, sets, steps


def read_cases():
    """The common settings and the cases of cases.txt."""
    common, cases = [], []
    with open(CASES, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            if not line.strip() or line.startswith("#"):
                continue
            if line[0] in " \t":
                verb, _, text = line.strip().partition(" ")
                cases[-1].steps.append((verb, text))
                continue
            name, sets, arguments = (part.strip() for part in line.split("|", 2))
            if name == "common":
                common = shlex.split(arguments)
                continue
            if any(name == case.name for case in cases) or any(one not in pictures.SETS for one in sets.split()):
                sys.exit(f"cases.txt:{number}: the name is taken or a set of pictures is unknown")
            cases.append(Case(name, sets.split(), [("run", arguments)] if arguments else []))
    return common, cases


class Workplace:
    """The folders of one case: the program's own, the pictures, temporary files, the user's home."""

    def __init__(self, root, case):
        self.case = case
        self.root = os.path.join(root, case.name)
        self.folders = {name: os.path.join(self.root, name) for name in ("pictures", "program", "temporary", "home")}
        for folder in self.folders.values():
            os.makedirs(folder)
        self.program = os.path.join(self.folders["program"], "zemora")
        shutil.copytree(os.path.join(root, "program"), self.folders["program"], copy_function=os.link, dirs_exist_ok=True)
        for one in case.sets:
            shutil.copytree(os.path.join(root, "sets", one), self.folders["pictures"], dirs_exist_ok=True)
        self.before = self.files()
        self.console = b""
        self.answers = ""
        self.on_terminal = False
        self.variables = {"LC_ALL": "C"}

    def files(self):
        """What tells a file that was written from one that was not, for all files and empty folders."""
        found = {}
        for folder in self.folders.values():
            for place, folders, names in os.walk(folder):
                for name in names + [name for name in folders if not os.listdir(os.path.join(place, name))]:
                    path = os.path.join(place, name)
                    status = os.lstat(path)
                    found[os.path.relpath(path, self.root)] = (
                        EMPTY_FOLDER if os.path.isdir(path) else (status.st_ino, status.st_size, status.st_mtime_ns))
        return found

    def environment(self):
        kept = {name: value for name, value in os.environ.items()
                if name in ("PATH", "OMP_NUM_THREADS", "ZEMORA_ISA", "ASAN_OPTIONS", "UBSAN_OPTIONS", "GCOV_PREFIX")}
        kept.setdefault("OMP_NUM_THREADS", "1")
        return {**kept, "HOME": self.folders["home"], "TMPDIR": self.folders["temporary"], "TZ": "UTC", **self.variables}

    def call(self, arguments, **settings):
        return subprocess.run(arguments, cwd=self.folders["pictures"], env=self.environment(), stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=LONGEST, check=False, **settings)

    def call_on_terminal(self, arguments):
        """As `call`, with a terminal of 100 columns for input and output; the answers are typed ahead."""
        master, terminal = pty.openpty()
        settings = termios.tcgetattr(terminal)
        settings[3] &= ~termios.ECHO
        termios.tcsetattr(terminal, termios.TCSANOW, settings)
        termios.tcsetwinsize(terminal, (30, 100))
        os.write(master, self.answers.encode())
        with subprocess.Popen(arguments, cwd=self.folders["pictures"], env=self.environment(), stdin=terminal,
                              stdout=terminal, stderr=terminal) as process:
            os.close(terminal)
            output = b""
            try:
                while data := os.read(master, 65536):
                    output += data
            except OSError:  # the program has closed the terminal
                pass
        os.close(master)
        return subprocess.CompletedProcess(arguments, process.returncode, output.replace(b"\r\n", b"\n"))

    def run(self, arguments):
        self.console += b"$ zemora " + shlex.join(arguments).encode("utf-8", "surrogateescape") + b"\n"
        try:
            if self.on_terminal:
                result = self.call_on_terminal([self.program, *arguments])
            else:
                result = self.call([self.program, *arguments], input=self.answers.encode())
            self.console += result.stdout + b"\n= exit code %d\n" % result.returncode
        except subprocess.TimeoutExpired:
            self.console += b"= does not end\n"
        self.answers = ""

    def add_viewer(self, text):
        """A stand-in for a program of a person; its n-th call does the n-th of the commands."""
        name, _, plan = text.partition(" ")
        script = ('#!/bin/sh\nhere=${0%/*}\nn=$(($(cat "$here/count" 2>/dev/null || echo 0) + 1))\n'
                  'echo $n > "$here/count"\nprintf \'%s\\n\' "$@" > "$here/call$n"\n'
                  'cp "$1"/zemora_p?.bmp "$here" 2>/dev/null\ncase $n in\n')
        for number, step in enumerate(plan.split(" || "), 1):
            script += f"{number}) {step};;\n"
        folder = os.path.join(self.folders["program"], "32")
        os.makedirs(folder, exist_ok=True)
        path = os.path.join(folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(script + "esac\nexit 1\n")
        os.chmod(path, 0o755)
        self.before = {**self.files(), **self.before}  # the script is no result

    def step(self, verb, text, common):
        for name in ("pictures", "program"):
            text = text.replace("{" + name + "}", self.folders[name])
        if verb == "run":
            self.run([*common, *shlex.split(text)])
        elif verb == "bare":  # without the common settings
            self.run(shlex.split(text))
        elif verb == "do":
            result = self.call(["sh", "-c", text])
            if result.returncode != 0:
                raise RuntimeError(f"{self.case.name}: {text}: {result.stdout.decode()}")
            if result.stdout:
                self.console += b"$ " + text.encode() + b"\n" + result.stdout
        elif verb == "answer":  # on the standard input of the next run
            self.answers = text.replace("\\n", "\n")
        elif verb == "terminal":  # for the runs from here on
            self.on_terminal = True
        elif verb == "environment":
            self.variables.update([text.split("=", 1)])
        elif verb == "viewer":
            self.add_viewer(text)
        else:
            raise RuntimeError(f"{self.case.name}: what is '{verb}'?")

    def normal(self, data):
        """The text without what differs from run to run."""
        for folder in (*self.folders.values(), self.root):
            data = data.replace(folder.encode(), b"<" + os.path.basename(folder).encode() + b">")
        for rule, replacement in RULES:
            data = rule.sub(replacement, data)
        return data

    def results(self):
        """What the runs have left: name -> content, None for a file that is gone."""
        found = {"console.txt": self.normal(self.console)}
        after = self.files()
        for name in sorted(set(self.before) | set(after)):
            if self.before.get(name) == after.get(name):
                continue
            shown = re.sub(r"[\0-\x1f]", "?", os.fsdecode(self.normal(os.fsencode(name))))
            while shown in found:
                shown += "+"
            if name not in after or after[name] == EMPTY_FOLDER:
                found[shown] = None if name not in after else b""
                continue
            data = read(os.path.join(self.root, name))
            found[shown] = self.normal(data) if is_text(data) else without_padding(data)
        return found


def read(path):
    with open(path, "rb") as file:
        return file.read()


def short_sum(data):
    return hashlib.sha256(data).hexdigest()[:16]


def is_text(data):
    return b"\0" not in data


def grouped(results):
    """The dumps of the cells of a grid, hundreds of files whose names differ in numbers, as one entry."""
    groups = {}
    for name in results:
        groups.setdefault(CELL.sub("#", name), []).append(name)
    merged = {}
    for group, names in groups.items():
        if len(names) <= MOST_CELLS:
            merged.update({name: results[name] for name in names})
        else:
            merged[f"{group} ({len(names)} files)"] = b"".join(
                name.encode() + b" " + short_sum(results[name] or b"").encode() + b"\n" for name in names)
    return merged


def run_case(root, case, common, keep):
    """The sums of a case: name -> sum."""
    start = time.monotonic()
    place = Workplace(root, case)
    for verb, text in case.steps:
        place.step(verb, text, common)
    seconds = time.monotonic() - start
    results = place.results()
    sums = {f"{case.name}/{name}": "gone" if data is None else short_sum(data) for name, data in grouped(results).items()}
    for name, data in results.items():
        if keep and data is not None:
            path = os.path.join(keep, case.name, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as file:
                file.write(data)
    shutil.rmtree(place.root)
    return seconds, sums


def lay_out_program(root, exe, scene):
    """A copy of the program with the data files beside it; the cases link to its files."""
    folder = os.path.join(root, "program")
    assets = find_assets(exe, scene)
    os.mkdir(folder)
    for name in ("resource", "doc"):
        shutil.copytree(os.path.join(assets, name), os.path.join(folder, name))
    for name in ("sRGB.icc", "AdobeCompatible.icc"):
        profile = read(os.path.join(assets, name))
        with open(os.path.join(folder, name), "wb") as file:  # without the moment of its making
            file.write(profile[:24] + bytes(12) + profile[36:])
    shutil.copy(exe, os.path.join(folder, "zemora"))


def make_set(scene, root, name):
    folder = os.path.join(root, "sets", name)
    os.makedirs(folder)
    pictures.SETS[name](pictures.Maker(scene, folder))


def find_assets(exe, scene):
    for folder in (os.path.dirname(exe), os.path.dirname(os.path.dirname(scene))):
        if all(os.path.exists(os.path.join(folder, name)) for name in ("resource", "doc", "sRGB.icc")):
            return folder
    sys.exit("no data files beside the program")


def run_all(options, cases, common):
    exe, scene = os.path.abspath(options.exe), os.path.abspath(options.scene)
    keep = options.keep and os.path.abspath(options.keep)
    sums = {}
    with tempfile.TemporaryDirectory(prefix="golden-") as root, \
            concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        lay_out_program(root, exe, scene)
        needed = sorted({one for case in cases for one in case.sets})
        list(pool.map(lambda name: make_set(scene, root, name), needed))
        results = pool.map(lambda case: run_case(root, case, common, keep), cases)
        for case, (seconds, done) in zip(cases, results):
            sums.update(done)
            if options.times:
                print(f"{seconds:6.2f} s {case.name}")
    return sums


def read_sums():
    if not os.path.exists(SUMS):
        return {}
    with open(SUMS, encoding="utf-8", errors="surrogateescape") as file:
        return {line[17:].rstrip("\n"): line[:16].strip() for line in file}


def write_sums(sums):
    with open(SUMS, "w", encoding="utf-8", errors="surrogateescape") as file:
        for name in sorted(sums):
            file.write(f"{sums[name]:16} {name}\n")


def compare(old, new):
    """Prints what differs; the number of differences."""
    count = 0
    for name in sorted(set(old) | set(new)):
        if old.get(name) != new.get(name):
            count += 1
            what = "missing" if name not in new else "additional" if name not in old else "differs"
            print(f"{what:10} {name}".encode("utf-8", "backslashreplace").decode())
    return count


def kept_files(folder):
    return {os.path.relpath(os.path.join(place, name), folder): read(os.path.join(place, name))
            for place, _, names in os.walk(folder) for name in names}


def show_differences(old_folder, new_folder):
    """Compares two kept folders; texts with a short unified diff."""
    old, new = kept_files(old_folder), kept_files(new_folder)
    count = compare(old, new)
    for name in sorted(set(old) & set(new)):
        if old[name] != new[name] and is_text(old[name]) and is_text(new[name]):
            lines = difflib.unified_diff(old[name].decode(errors="replace").splitlines(),
                                         new[name].decode(errors="replace").splitlines(),
                                         "old/" + name, "new/" + name, n=1, lineterm="")
            print("\n".join(list(lines)[:40]))
    return count


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("exe", nargs="?")
    parser.add_argument("scene", nargs="?")
    parser.add_argument("--keep", metavar="DIR", help="leave all results there")
    parser.add_argument("--only", metavar="PATTERN", help="cases whose names match, like 'frame*'")
    parser.add_argument("--renew", action="store_true", help="write sums.txt anew and tell what changed")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="cases at a time")
    parser.add_argument("--times", action="store_true", help="tell the time of each case")
    parser.add_argument("--diff", nargs=2, metavar=("OLD", "NEW"), help="compare two kept folders")
    options = parser.parse_args()
    if options.diff:
        return 1 if show_differences(*options.diff) else 0
    if not options.exe or not options.scene:
        parser.error("EXE and SCENE_TOOL are needed")
    if shutil.which("exiftool") is None:
        print("exiftool is missing: nothing was compared")
        return SKIPPED
    common, cases = read_cases()
    chosen = [case for case in cases if fnmatch.fnmatch(case.name, options.only or "*")]
    names = {case.name for case in chosen}
    sums = run_all(options, chosen, common)
    old = read_sums()
    others = {name: value for name, value in old.items() if options.only and name.split("/")[0] not in names}
    count = compare({name: value for name, value in old.items() if name not in others}, sums)
    if options.renew:
        write_sums({**others, **sums})
        print(f"{count} of {len(sums)} sums are new")
        return 0
    print(f"{len(chosen)} cases, {len(sums)} files: {count or 'no'} differences")
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main())
