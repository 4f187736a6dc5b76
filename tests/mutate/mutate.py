#!/usr/bin/env python3
"""Changes single lines of the code, and says which changes no test notices.

usage: mutate.py [N] [--seed S] [--all | --changed REV | --from FILE] [--lines] [--only TEXT] [--seconds T] [--jobs J]
                 [--copy K] [--list]

N mutants are drawn by the seed, one kind as often as the other: comparisons and their strictness, plus and minus,
constants, statements and guards that go, returns that come early, arguments that change places. Each is put into a copy
of the tree below build/mutate; what holds its room is built again and run, the file's own tests first, then the room's,
then all that use it. A mutant that does not compile is noticed by the compiler, and another is drawn; one that leaves the
programs as they were, byte for byte, changes nothing. equivalents.json beside this file lists those that change the code
and nothing that can be seen, by file, line and kind, with the reason. As root, tests run behind unshare(1), where nobody can
put a file in the place of a device.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import queue
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutate"
EQUIVALENTS = pathlib.Path(__file__).resolve().parent / "equivalents.json"
FOLDERS = ("src", "kit", "program")

# Which programs of tests see a room: its own first, then those of the rooms that use it.
SEEN_BY = {
    "src/foundation": ["foundation", "trees", "contours", "mesh", "support", "modelfiles", "cli", "kit", "reliability"],
    "src/trees": ["trees", "mesh", "modelfiles", "support", "kit", "reliability"],
    "src/mesh": ["mesh", "modelfiles", "support", "kit", "reliability"],
    "src/modelfiles": ["modelfiles", "kit", "reliability"],
    "src/support": ["support", "kit", "reliability"],
    "src/contours": ["contours", "cli", "kit", "reliability"],
    "src/cli": ["cli", "kit", "reliability"],
    "kit": ["kit"],
    "program": [],
}
SEEN_BY_PROGRAM = ("kit", "program")  # and by the scripts of tests/program

# A mutant that root runs may put a plain file in the place of a device: tests see /dev, and cannot change what is in it.
SHIELD = ["unshare", "--mount", "sh", "-c",
         'mount --rbind /dev /dev && mount -o remount,bind,ro /dev && exec "$@"', "sh"] if os.geteuid() == 0 else []

# Seconds on the wall, far beyond what any test takes on a busy machine.
WAITS_FOR_EVER = 1200.0


# ---- what a line can become


class Mutant:
    def __init__(self, file, number, kind, line, becomes):
        self.file, self.number, self.kind, self.line, self.becomes = file, number, kind, line, becomes

    def __str__(self):
        return f"{self.file}:{self.number}: {self.kind}: {self.line.strip()}  ->  {self.becomes.strip() or '(nothing)'}"


def code_of(line):
    """The line with strings, characters and comments blotted out, of the same length."""
    blot = lambda match: "\x00" * len(match.group())
    line = re.sub(r'"(?:\\.|[^"\\])*"|(?<![0-9A-Fa-f])\'(?:\\.|[^\'\\])+\'', blot, line)
    return re.sub(r"//.*|/\*.*?(\*/|$)", blot, line)


# Pieces of code, and what they become.
PIECES = [
    ("strictness", r" (<|<=|>|>=) ", {"<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"]}),
    ("comparison", r" (==|!=|<|>) ", {"==": ["!="], "!=": ["=="], "<": [">"], ">": ["<"]}),
    ("logic", r" (&&|\|\|) ", {"&&": ["||"], "||": ["&&"]}),
    ("sign", r" ([-+]) ", {"+": ["-"], "-": ["+"]}),
    ("sign", r"(\+=|-=)", {"+=": ["-="], "-=": ["+="]}),
    ("factor", r" ([*/]) ", {"*": ["/"], "/": ["*"]}),
    ("not", r"(?<![\w)\]])(!)(?=[\w(*])", {"!": [""]}),
]
NUMBER = re.compile(r"(?<![\w.'])(\d+\.\d+(?:e[-+]?\d+)?|\d+e[-+]?\d+|\d+)(?![\w.'])")
GUARD = re.compile(r"^\s*if \(.*\) (return\b.*|continue|break);$")
STATEMENT = re.compile(r"^\s+(?:\+\+|--|\*?\(?)[A-Za-z_][\w.:]*(?:->\w+|\.\w+|\[[^\]]*\])*(?:\(.*\)|\s[-+*/|&^]?= .*|\+\+|--);$")
NO_STATEMENT = re.compile(r"^\s*(return|using|throw|case|break|continue|delete|friend|static|constexpr|auto|goto)\b")
CALL = re.compile(r"\b([A-Za-z_]\w*)\(([\w.\->\[\]]+), ([\w.\->\[\]]+)\)")
SYMMETRIC = {"min", "max", "swap", "Distance", "D2ofPtoP"}  # the outcome is the same, or so but for zeros' signs
UNTOUCHED = re.compile(r"^\s*(#|//|template\b|static_assert|namespace\b|using\b|VARNET_REQUIRE|class\b|struct\b|enum\b)")


def other_number(text):
    if re.fullmatch(r"\d+", text):
        return ["1"] if text == "0" else [str(int(text) + 1), str(int(text) - 1)]
    value = float(text)
    return ["1.0"] if value == 0.0 else [repr(value * 1.5), repr(value / 2.0)]


def mutants_of(file, number, line, goes_on):
    code = code_of(line)
    if UNTOUCHED.match(code) or not code.strip("\x00 \t{};"):
        return
    make = lambda kind, becomes: Mutant(file, number, kind, line, becomes)
    for kind, pattern, table in PIECES:
        for match in re.finditer(pattern, code):
            if kind == "factor" and re.search(r"\w \* const|const \*", code):
                continue  # a pointer's star
            for other in table.get(match.group(1), []):
                yield make(kind, line[: match.start(1)] + other + line[match.end(1) :])
    for match in NUMBER.finditer(code):
        for other in other_number(match.group(1)):
            yield make("constant", line[: match.start(1)] + other + line[match.end(1) :])
    indent = line[: len(line) - len(line.lstrip())]
    if GUARD.match(code):
        yield make("guard", "")
    elif not goes_on and STATEMENT.match(code) and not NO_STATEMENT.match(code):
        yield make("statement", indent + ";")
        yield make("early return", indent + "return;")
    for match in CALL.finditer(code):
        a, b = line[match.start(2) : match.end(2)], line[match.start(3) : match.end(3)]
        if a != b and "\x00" not in match.group() and match.group(1) not in SYMMETRIC:
            yield make("arguments", line[: match.start(2)] + b + ", " + a + line[match.end(3) :])


def lines_of_texts(text):
    """The numbers of the lines in which a literal of several lines goes on."""
    numbers = set()
    for match in re.finditer(r'R"(\w*)\(.*?\)\1"', text, re.S):
        first, last = (text.count("\n", 0, match.start()), text.count("\n", 0, match.end()))
        numbers.update(range(first + 1, last + 2) if last > first else ())
    return numbers


def mutants_in(file, wanted):
    text = (ROOT / file).read_text(encoding="utf-8")
    lines, texts = text.split("\n"), lines_of_texts(text)
    for i, line in enumerate(lines):
        if (wanted is not None and i + 1 not in wanted) or i + 1 in texts:
            continue
        before = code_of(lines[i - 1]).strip("\x00 ") if i > 0 else ""
        goes_on = not (before == "" or before.endswith((";", "{", "}", ":", ")")))
        yield from mutants_of(file, i + 1, line, goes_on)


# ---- which lines are looked at


def git(*arguments):
    return subprocess.run(["git", "-C", str(ROOT), *arguments], capture_output=True, text=True, check=True).stdout


def base_revision():
    for name in ("origin/main", "main"):
        try:
            base = git("merge-base", "HEAD", name).strip()
            if base and base != git("rev-parse", "HEAD").strip():
                return base
        except subprocess.CalledProcessError:
            pass
    return "HEAD~1"


def changed_lines(revision):
    """By file, the numbers of the lines that are new since the revision."""
    changed, file = {}, None
    for line in git("diff", "--unified=0", "--no-color", revision, "--", *FOLDERS).splitlines():
        if line.startswith("+++ "):
            file = line[6:] if line.startswith("+++ b/") else None
        match = re.match(r"@@ -\S+ \+(\d+)(?:,(\d+))? @@", line)
        if match and file:
            first, count = int(match.group(1)), int(match.group(2) or 1)
            changed.setdefault(file, set()).update(range(first, first + count))
    return changed


def is_code(file):
    # What checks is not mutated: selfcheck is compared with a table.
    if file.startswith("program/selfcheck/"):
        return False
    return file.endswith((".cpp", ".h")) and file.startswith(tuple(f + "/" for f in FOLDERS))


def sites(options):
    if options.all:
        wanted = {file: None for file in git("ls-files", *FOLDERS).split("\n")}
    else:
        wanted = changed_lines(options.changed or base_revision())
        if not options.lines:
            wanted = {file: None for file in wanted}
    found = []
    for file in sorted(wanted):
        if is_code(file) and (options.only or "") in file and (ROOT / file).exists():
            found.extend(mutants_in(file, wanted[file]))
    return found


def drawn(found, seed):
    """All of them in an order by chance, each kind as often as any other for as long as there are some."""
    chance = random.Random(seed)
    kinds = {}
    for mutant in found:
        kinds.setdefault(mutant.kind, []).append(mutant)
    for mutants in kinds.values():
        chance.shuffle(mutants)
    while kinds:
        kind = chance.choice(sorted(kinds))
        yield kinds[kind].pop()
        if not kinds[kind]:
            del kinds[kind]


def listed(path):
    """Mutants by hand: of each the file, the line (the nth that reads so), and what it becomes."""
    found = []
    for entry in json.loads(pathlib.Path(path).read_text(encoding="utf-8")):
        lines = (ROOT / entry["file"]).read_text(encoding="utf-8").split("\n")
        numbers = [i + 1 for i, line in enumerate(lines) if line.strip() == entry["line"]]
        nth = entry.get("nth", 1)
        if len(numbers) < nth:
            print(f"no such line: {entry['file']}: {entry['line']}", flush=True)
            continue
        line = lines[numbers[nth - 1] - 1]
        indent = line[: len(line) - len(line.lstrip())] if entry["becomes"] else ""
        found.append(Mutant(entry["file"], numbers[nth - 1], "chosen", line, indent + entry["becomes"].lstrip()))
    return found


def place_among_equals(mutant):
    """1 for the first line of the file that reads so, 2 for the second one."""
    lines = (ROOT / mutant.file).read_text(encoding="utf-8").split("\n")[: mutant.number]
    return sum(line.strip() == mutant.line.strip() for line in lines)


def known_equivalent(mutant):
    for entry in json.loads(EQUIVALENTS.read_text(encoding="utf-8")):
        # The mutants of a list may have been drawn, and have lost their kind.
        same_kind = entry["kind"] == mutant.kind or (mutant.kind == "chosen" and "becomes" in entry)
        same = entry["file"] == mutant.file and same_kind and entry["line"] == mutant.line.strip()
        if same and "nth" in entry and entry["nth"] != place_among_equals(mutant):
            continue
        if same and entry.get("becomes", mutant.becomes.strip()) == mutant.becomes.strip():
            return entry["why"]
    return None


# ---- a copy of the tree, built and tested


class Copy:
    def __init__(self, number, known):
        self.root = WORK / str(number)
        self.build = self.root / "build" / "release"
        self.environment = dict(os.environ, TMPDIR=str(self.root / "build" / "tmp"), CCACHE_BASEDIR=str(self.root), CCACHE_SLOPPINESS="pch_defines,time_macros",
                                CMAKE_CXX_COMPILER_LAUNCHER="ccache" if shutil.which("ccache") else "")
        self.known = known
        self.hashes = {}

    def take_over(self):
        """The tree as it stands, uncommitted changes included."""
        files = set(git("ls-files", "--cached", "--others", "--exclude-standard").split("\n")) - {""}
        for file in files:
            source, target = ROOT / file, self.root / file
            if not source.is_file():
                continue
            if not target.exists() or target.read_bytes() != source.read_bytes():
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, target)
        for target in self.root.glob("*/**/*"):
            file = str(target.relative_to(self.root))
            if target.is_file() and not file.startswith("build/") and file not in files:
                target.unlink()

    def run(self, command, limit=None):
        return subprocess.run(command, cwd=self.root, env=self.environment, stdout=subprocess.PIPE, text=True,
                              stderr=subprocess.STDOUT, timeout=limit, errors="replace")

    def run_test(self, name, command, most):
        """What a test ends with, what it prints, and the seconds of a processor that it takes: a clock on the wall
        would run on while others work. `most` are those that it took before, or None."""
        limit = None if most is None else int(20.0 + 5.0 * most)
        if limit is not None:
            command = ["prlimit", f"--cpu={limit}:{limit + 5}", *command]
        with tempfile.TemporaryFile() as output:
            child = subprocess.Popen([*SHIELD, *command], cwd=self.root, env=self.environment, stdin=subprocess.DEVNULL,
                                     stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
            # What waits for ever takes no processor.
            watch = threading.Timer(WAITS_FOR_EVER, lambda: os.killpg(child.pid, signal.SIGKILL))
            watch.start()
            _, status, usage = os.wait4(child.pid, 0)
            watch.cancel()
            child.returncode = os.waitstatus_to_exitcode(status)
            output.seek(0)
            text = output.read().decode("utf-8", "replace")
        no_end = child.returncode in (-signal.SIGXCPU, -signal.SIGKILL)
        return child.returncode, text, usage.ru_utime + usage.ru_stime, no_end

    def configure(self):
        (self.root / "build" / "tmp").mkdir(parents=True, exist_ok=True)
        if not (self.build / "build.ninja").exists():
            done = self.run(["cmake", "--preset", "release", "-DVARNET_BUILD_BENCH=OFF"])
            if done.returncode != 0:
                sys.exit(done.stdout)

    def make(self, targets):
        return self.run(["ninja", "-C", str(self.build), *targets])

    def binary(self, target):
        return self.build / ("program" if target == "varnet" else "tests") / target

    def hash_of(self, target):
        return hashlib.sha256(self.binary(target).read_bytes()).hexdigest()

    def suites_of(self, files):
        """The patterns of the tests in some files."""
        suites = set()
        for file in files:
            for kind, suite in re.findall(r"^(?:TYPED_)?TEST(|_F|_P)\((\w+),", file.read_text(encoding="utf-8"), re.M):
                suites.add(f"*/{suite}.*" if kind == "_P" else f"{suite}.*")
        return sorted(suites)

    def near(self, target, file):
        """The files of tests of the file itself, or else those of its folder, where the program holds them."""
        folder = self.root / "tests" / (pathlib.Path(file).parent.relative_to("src") if file.startswith("src/") else
                                        pathlib.Path(file).parent)
        if not folder.is_dir() or folder.relative_to(self.root / "tests").parts[0] != target.removeprefix("test_"):
            return []
        own = [t for t in folder.glob("*.cpp") if t.stem == pathlib.Path(file).stem + "Test"]
        return own or sorted(folder.glob("*.cpp"))

    def tests_of(self, target, are_slow, file=None):
        """Pairs of a name and a command: those that take under a second, or the others. Those near the file first."""
        if target == "varnet":
            scripts = sorted((self.root / "tests" / "program").glob("*.sh"))
            return [(s.stem, [str(s), str(self.binary(target))]) for s in scripts if s.stem not in self.known.failing
                    and s.stem != "program" and (s.stem in ("stream", "harm")) == are_slow]
        slow = re.findall(r"^    ([\w./]+\.[\w./]+)\)?$", (self.root / "tests" / "slow.cmake").read_text(), re.M)
        left_out = sorted(self.known.failing) + ([] if are_slow else slow)
        which = (":".join(slow) if are_slow else "") + "-" + ":".join(left_out)
        command = lambda wanted: [str(self.binary(target)), "--gtest_fail_fast", "--gtest_filter=" + wanted]
        tests = [(target + ", slow" if are_slow else target, command(which))]
        if file is not None and not are_slow:
            suites = self.suites_of(self.near(target, file))
            if suites:
                tests.insert(0, (target, command(":".join(suites) + which)))
        return tests

    def failing(self, target, are_slow=False, file=None):
        """What test fails first, as a pair of the program and the test, or None."""
        for name, command in self.tests_of(target, are_slow, file):
            code, text, seconds, no_end = self.run_test(name, command, self.known.seconds.get(name))
            if code in (0, 77):
                self.known.seconds.setdefault(name, seconds)
                continue
            ends = "no end" if no_end else f"ends by {code}"
            if target == "varnet":
                failed = re.search(r"^FAILED: (.*)", text, re.M)
                return name, failed.group(1) if failed else ends
            failed = re.search(r"^\[  FAILED  \] (\S+)", text, re.M)
            begun = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
            if failed:
                return name, failed.group(1).rstrip(",")
            return name, f"{begun[-1]}, {ends}" if begun else ends
        return None


class Known:
    """What the unchanged programs have done, for all copies: how long tests take, and those that fail anyway."""

    def __init__(self):
        self.lock = threading.Lock()
        self.seconds = {}
        self.failing = set()
        self.tried = set()

    def look_at(self, copy, target):
        with self.lock:
            for are_slow in (False, True):
                while target not in self.tried and len(self.failing) < 20:
                    by = copy.failing(target, are_slow)
                    if by is None:
                        break
                    print(f"left out, since it fails on unchanged code: {by[0]}: {by[1]}", flush=True)
                    self.failing.add(by[0] if target == "varnet" else by[1])
            self.tried.add(target)


def targets_for(file):
    room = "/".join(file.split("/")[:2]) if file.startswith("src/") else file.split("/")[0]
    targets = ["test_" + name for name in SEEN_BY[room]]
    return targets + (["varnet"] if room in SEEN_BY_PROGRAM else [])


def prepare(copy, target):
    """Builds a program of unchanged code, and looks at what it does; False where it does not build."""
    if target in copy.hashes:
        return True
    if copy.make([target]).returncode != 0:
        print(f"the unchanged code does not build: {target}", flush=True)
        return False
    copy.known.look_at(copy, target)
    copy.hashes[target] = copy.hash_of(target)
    return True


def tried(copy, mutant):
    """noticed, survived, same, refused or broken, and by what."""
    path = copy.root / mutant.file
    whole = path.read_text(encoding="utf-8")
    lines = whole.split("\n")
    lines[mutant.number - 1] = mutant.becomes
    changed = []
    try:
        for target in targets_for(mutant.file):
            path.write_text(whole, encoding="utf-8")
            if not prepare(copy, target):
                return "broken", "the unchanged code"
            path.write_text("\n".join(lines), encoding="utf-8")
            if copy.make([target]).returncode != 0:
                return "refused", "the compiler"
            if copy.hash_of(target) == copy.hashes[target]:
                continue
            changed.append(target)
            by = copy.failing(target, file=mutant.file)
            if by is not None:
                return "noticed", ": ".join(by)
        for target in changed:
            by = copy.failing(target, are_slow=True)
            if by is not None:
                return "noticed", ": ".join(by)
        return ("survived", "") if changed else ("same", "the programs are the same")
    finally:
        path.write_text(whole, encoding="utf-8")


class Session:
    def __init__(self, options):
        self.options = options
        self.end = time.monotonic() + options.seconds if options.seconds else None
        self.lock = threading.Lock()
        self.counts = {}
        self.survivors = []
        self.left = queue.Queue()
        self.counted = 0
        self.known = Known()

    def wants_more(self):
        return self.counted < self.options.number and (self.end is None or time.monotonic() < self.end)

    def note(self, mutant, outcome, by):
        with self.lock:
            self.counts[outcome] = self.counts.get(outcome, 0) + 1
            if outcome in ("noticed", "survived"):
                self.counted += 1
            if outcome == "survived":
                self.survivors.append(mutant)
            if outcome != "refused" or self.options.listed:
                print(f"{outcome:10} {mutant}" + (f"  [{by}]" if by else ""), flush=True)

    def work(self, number):
        copy = Copy(number, self.known)
        copy.take_over()
        copy.configure()
        while self.wants_more():
            try:
                mutant = self.left.get_nowait()
            except queue.Empty:
                return
            why = known_equivalent(mutant)
            self.note(mutant, *(("equivalent", why) if why else tried(copy, mutant)))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("number", nargs="?", type=int, default=20, metavar="N")
    parser.add_argument("--seed", type=int, default=1)
    which = parser.add_mutually_exclusive_group()
    which.add_argument("--all", action="store_true", help="all files of src, kit and program")
    which.add_argument("--from", dest="listed", metavar="FILE", help="those of a list, such as chosen.json")
    which.add_argument("--changed", metavar="REV", help="files that differ from REV (the branch's base, or HEAD~1)")
    parser.add_argument("--lines", action="store_true", help="only the lines that differ")
    parser.add_argument("--only", metavar="TEXT", help="only files whose path holds TEXT")
    parser.add_argument("--seconds", type=float, metavar="T", help="begin no mutant after so many")
    parser.add_argument("--jobs", type=int, default=1, metavar="J", help="copies of the tree that work at a time")
    parser.add_argument("--copy", type=int, default=1, metavar="K", help="the first copy's number, beside another run")
    parser.add_argument("--list", action="store_true", help="print the mutants, and try none")
    options = parser.parse_args()
    if SHIELD and not options.list and subprocess.run([*SHIELD, "true"], stderr=subprocess.DEVNULL).returncode != 0:
        sys.exit("as root, mutants are tried behind unshare(1) alone, which is refused here: try them as another user")
    if options.listed:
        found = order = [m for m in listed(options.listed) if (options.only or "") in m.file]
        options.number = len(order)
    else:
        try:
            found = sites(options)
        except subprocess.CalledProcessError as error:
            sys.exit("nothing to compare with: " + error.stderr.strip())
        order = list(drawn(found, options.seed))
    if options.list:
        for mutant in order[: options.number]:
            print(mutant)
        return
    session = Session(options)
    for mutant in order:
        session.left.put(mutant)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(session.work, options.copy + i) for i in range(options.jobs)]:
            done.result()
    counts = session.counts
    print(f"of {len(found)} mutants {session.counted} were tried: {counts.get('noticed', 0)} noticed, "
          f"{counts.get('survived', 0)} survived; {counts.get('same', 0)} left the programs as they were, "
          f"{counts.get('equivalent', 0)} are known to change nothing, the compiler refused {counts.get('refused', 0)}")
    for mutant in session.survivors:
        print(f"survived: {mutant}")


if __name__ == "__main__":
    main()
