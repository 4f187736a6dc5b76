#!/usr/bin/env python3
"""Tries many mutants in little time: all of them stand in one build, under numbers, and one is on at a time.

usage: numbered.py build [--from FILE]...      puts the mutants into a copy of the tree, and builds it
       numbered.py reach [--jobs J]            runs each test once, and notes which mutants it reaches
       numbered.py try [N] [--seed S] [--only TEXT]... [--from FILE] [--quick] [--jobs J] [--to FILE]
                                               tries N of them, by the tests that reach them alone

The mutants are those of mutate.py that are part of an expression or a whole line, and those of the lists that are named;
what a constant expression holds and what the compiler refuses is left out. One build and one run of the tests serve for
thousands of mutants, of which most take a fraction of a second. Mutants that no test reaches are told apart from those that
tests reach and do not notice. equivalents.json is looked at as by mutate.py. Everything is below build/mutate/numbered.
"""

import argparse
import concurrent.futures
import json
import os
import pathlib
import pickle
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

import mutate

TREE = mutate.WORK / "numbered"
BUILD = TREE / "build" / "release"
TABLE = TREE / "build" / "mutants.pickle"
REACHED = TREE / "build" / "reached.pickle"
REFUSED = TREE / "build" / "refused.pickle"
HEADER = TREE / "build" / "Numbered.h"
PROGRAMS = ["foundation", "trees", "contours", "mesh", "support", "modelfiles", "cli", "kit", "reliability", "varnet"]
MOST = 1 << 17
WHOLE = ("statement", "early return", "guard", "chosen")
KINDS = ("chosen", "strictness", "comparison", "logic", "sign", "factor", "not", "constant", "guard", "statement", "early return", "arguments")

HEADER_TEXT = """#pragma once
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <type_traits>

namespace numbered_mutants {
// Tests may start children: what is reached there counts, too.
inline unsigned char* Map() {
    char const* const pPath = std::getenv("VARNET_REACHED");
    if (pPath == nullptr) return nullptr;
    int const nFile = ::open(pPath, O_RDWR);
    if (nFile < 0) return nullptr;
    void* const pMap = ::mmap(nullptr, %d, PROT_READ | PROT_WRITE, MAP_SHARED, nFile, 0);
    ::close(nFile);
    return pMap == MAP_FAILED ? nullptr : static_cast<unsigned char*>(pMap);
}
inline int Active() {
    char const* const pNumber = std::getenv("VARNET_MUTANT");
    return pNumber == nullptr ? -1 : std::atoi(pNumber);
}
inline int const g_nActive = Active();
inline unsigned char* const g_pReached = Map();
inline bool IsOn(int n) {
    if (g_pReached != nullptr) g_pReached[n] = 1;
    return n == g_nActive;
}
constexpr bool Mutant(int n) { return std::is_constant_evaluated() ? false : IsOn(n); }
}  // namespace numbered_mutants
#define VARNET_MUTANT(n) ::numbered_mutants::Mutant(n)
#define VARNET_MUTANT_AT_START(n) ::numbered_mutants::IsOn(n)
""" % MOST


# ---- mutants as parts of a line

LEFT_OUT = re.compile(r"^\s*(case\b|default:|enum\b|friend\b|extern\b|public:|private:|protected:)|\bstatic_assert\b|\bnoexcept\(|\boperator\b|\bvirtual\b|\bconsteval\b|\b_mm_")
# A number that stands for itself everywhere becomes one that is set when the program starts.
NAMED = re.compile(r"^\s*(?:inline |static )?constexpr (?:double|float|int|unsigned|long|std::size_t|std::u?int\d+_t) (\w+) = [^{}\[\]()]*;")
HEADS = re.compile(r"(?:^|(?<=\s)|(?<=\}))(if|for|while|switch)\s*(?:constexpr\s*)?\(")


def matching(code, opening):
    """The place behind the bracket that closes the one at a place, or None."""
    depth = 0
    for i in range(opening, len(code)):
        if code[i] in "([{":
            depth += 1
        elif code[i] in ")]}":
            depth -= 1
            if depth == 0:
                return i + 1
    return None


def starts_of_statements(code):
    """Places at which a new expression begins, whatever stands in front."""
    places = {match.end() for match in re.finditer(r"\b(return|else|do|co_return)\b", code)}
    for match in HEADS.finditer(code):
        end = matching(code, match.end() - 1)
        if end is not None:
            places.add(end)
    return places


def segment(code, begin, end, before, behind, is_logic, assigns=False):
    """The smallest piece about a place of a line that is an expression of its own, or None."""
    starts = starts_of_statements(code)
    depth = 0
    i = begin
    while i > 0:
        if i in starts and depth == 0:
            break
        c = code[i - 1]
        if c in ")]}":
            depth += 1
        elif c in "([{":
            if depth == 0:
                break
            depth -= 1
        elif depth == 0:
            if c in (",;" if assigns else ",;?"):
                break
            if not assigns and c == ":" and code[i - 2 : i] != "::" and code[i - 1 : i + 1] != "::":
                break
            if c == "=" and (i < 2 or code[i - 2] not in "=!<>"):
                if code[i - 1 : i + 1] != "==":
                    break
            if not (is_logic or assigns) and code[max(0, i - 2) : i] in ("&&", "||"):
                break
        i -= 1
    if i == 0 and not re.search(r"(^|[;{}(,?:]|&&|\|\||[^=!<>]=|return)$", before) and before != "":
        return None
    j = end
    depth = 0
    while j < len(code):
        c = code[j]
        if c in "([{":
            depth += 1
        elif c in ")]}":
            if depth == 0:
                break
            depth -= 1
        elif depth == 0:
            if c in (",;" if assigns else ",;?"):
                break
            if not assigns and c == ":" and code[j : j + 2] != "::" and code[j - 1 : j + 1] != "::":
                break
            if not (is_logic or assigns) and code[j : j + 2] in ("&&", "||"):
                break
        j += 1
    if j >= len(code.rstrip()) and (depth != 0 or not re.match(r"(\)|,|;|&&|\|\||\?|:)", behind)):
        return None
    while i < begin and code[i] == " ":
        i += 1
    while j > end and code[j - 1] in " \x00":
        j -= 1
    if "\x00" in code[i:j] and "//" in code[i:j]:
        return None
    return i, j


def change_of(line, becomes):
    """Where two lines differ: the places at the start, and at the end of each."""
    i = 0
    while i < min(len(line), len(becomes)) and line[i] == becomes[i]:
        i += 1
    j = 0
    while j < min(len(line), len(becomes)) - i and line[-1 - j] == becomes[-1 - j]:
        j += 1
    return i, len(line) - j


def is_balanced(text):
    """Whether each bracket has its other one."""
    depth = 0
    for c in text:
        depth += (c in "([{") - (c in ")]}")
        if depth < 0:
            return False
    return depth == 0


def with_brackets(code, line, becomes, begin, end):
    """The change with the brackets about it, as many as it takes until what is put there has whole ones; None for none."""
    while not (is_balanced(code[begin:end]) and is_balanced(becomes[begin : len(becomes) - (len(line) - end)])):
        opening, depth = begin - 1, 0
        while opening >= 0 and (code[opening] not in "([{" or depth > 0):
            depth += (code[opening] in ")]}") - (code[opening] in "([{")
            opening -= 1
        closed = matching(code, opening) if opening >= 0 else None
        if closed is None:
            return None
        begin, end = opening, max(end, closed)
        while begin > 0 and re.match(r"[\w.:<>]", code[begin - 1]):
            begin -= 1
    return begin, end


def piece_of(code, line, mutant, before, behind):
    """The piece of the line that is another expression in the mutant, or None where the whole line is another."""
    if mutant.kind in ("statement", "early return", "guard") or mutant.becomes.strip() in ("", ";", "return;"):
        return None
    if mutant.kind == "chosen" and re.match(r"\s*(if|for|while) \(.*;$", line):
        return None
    begin, end = change_of(line, mutant.becomes)
    while begin > 0 and code[begin - 1] == "\x00":
        begin -= 1  # a literal goes as a whole
    while end < len(code) and code[end] == "\x00":
        end += 1
    if mutant.kind in ("constant", "chosen"):
        while begin > 0 and re.match(r"[\w.]", code[begin - 1]):
            begin -= 1
        while end < len(code) and re.match(r"[\w.]", code[end]):
            end += 1
    if mutant.kind in ("arguments", "chosen"):
        for call in mutate.CALL.finditer(code):
            if call.start() <= begin and end <= call.end():
                begin, end = call.start(), call.end()
    if mutant.kind == "chosen":
        whole = with_brackets(code, line, mutant.becomes, begin, end)
        if whole is None:
            return None
        begin, end = whole
    assigns = re.search(r"[-+]=", code[max(0, begin - 1) : end + 1]) is not None
    is_logic = mutant.kind == "logic" or (mutant.kind == "chosen" and re.search(r"&&|\|\|", code) is not None)
    return segment(code, begin, max(end, begin), before, behind, is_logic, assigns)


def merged(pieces):
    """Pieces that overlap become one."""
    together = []
    for begin, end, mutants in sorted(pieces, key=lambda p: (p[0], -p[1])):
        if together and begin < together[-1][1]:
            together[-1][1] = max(together[-1][1], end)
            together[-1][2] += mutants
        else:
            together.append([begin, end, mutants])
    return together


def choice(line, begin, end, mutants, macro):
    """An expression that is one of the mutants' where one is on."""
    text, chain, cast = line[begin:end], "", ""
    for number, mutant in mutants:
        if mutant.kind == "not" and text.startswith("!"):
            cast = "static_cast<bool>"  # what is tested may be an optional, and true would make one
        other = mutant.becomes[begin : len(mutant.becomes) - (len(line) - end)]
        chain += f"{macro}({number}) ? {cast}({other}) : "
    return f"({chain}({text}))"


def with_mutants(line, mutants, before, behind):
    """The line that holds the mutants, each a pair of a number and what the line becomes, and the numbers it holds.
    `before` and `behind` are the lines beside it."""
    code = mutate.code_of(line)
    if LEFT_OUT.search(code) or ("constexpr" in code and not NAMED.match(code)):
        return line, []
    at_start = "constexpr" in code
    pieces, whole, held = [], [], []
    for number, mutant in mutants:
        place = piece_of(code, line, mutant, before, behind)
        if place is not None and line[place[0] : place[1]].strip():
            pieces.append((place[0], place[1], [(number, mutant)]))
        elif mutant.kind in WHOLE:
            whole.append((number, mutant))
    result = line
    for begin, end, those in reversed(merged(pieces)):
        macro = "VARNET_MUTANT_AT_START" if at_start else "VARNET_MUTANT"
        result = result[:begin] + choice(line, begin, end, those, macro) + result[end:]
        held += [number for number, _ in those]
    if at_start and held:
        result = result.replace("static constexpr", "static inline const", 1).replace("constexpr", "const", 1)
    for number, mutant in whole:
        if mutant.kind == "guard":
            result = f"if (!VARNET_MUTANT({number})) {{ {result} }}"
        else:
            other = "return;" if mutant.kind == "early return" else mutant.becomes.strip() or ";"
            result = f"if (VARNET_MUTANT({number})) {{ {other} }} else {{ {result} }}"
        held.append(number)
    return result, held


def write_file(file, mutants, numbers):
    """Writes the copy of a file with its mutants; those that are held are told."""
    lines = (mutate.ROOT / file).read_text(encoding="utf-8").split("\n")
    held = []
    by_line = {}
    for number in numbers:
        by_line.setdefault(mutants[number].number, []).append((number, mutants[number]))
    for n, those in by_line.items():
        codes = [mutate.code_of(lines[k]).strip("\x00 ") for k in (n - 2, n) if 0 <= k < len(lines)]
        before = codes[0] if n > 1 else ""
        behind = codes[-1] if n < len(lines) else ""
        lines[n - 1], here = with_mutants(lines[n - 1], those, before, behind)
        held += here
    text = f'#include "{HEADER}"\n#line 1 "{TREE / file}"\n' + "\n".join(lines)
    target = TREE / file
    if not target.exists() or target.read_text(encoding="utf-8") != text:
        target.write_text(text, encoding="utf-8")
    return held


def key_of(mutant):
    return mutant.file, mutant.kind, mutant.line, mutant.becomes


def take_over():
    """The tree as it stands, but for the files that get mutants: what has not changed need not be built again."""
    files = set(mutate.git("ls-files", "--cached", "--others", "--exclude-standard").split("\n")) - {""}
    for file in files:
        source, target = mutate.ROOT / file, TREE / file
        if not source.is_file() or (mutate.is_code(file) and target.exists()):
            continue
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
    for target in TREE.glob("*/**/*"):
        file = str(target.relative_to(TREE))
        if target.is_file() and not file.startswith("build/") and file not in files:
            target.unlink()


def all_mutants(lists):
    """By number. Those of the program and of the lists come last: the others keep theirs."""
    files = [f for f in mutate.git("ls-files", *mutate.FOLDERS).split("\n") if mutate.is_code(f)]
    found = []
    for file in sorted(files, key=lambda f: (f.startswith("program/"), f)):
        found.extend(mutate.mutants_in(file, None))
    for path in lists:
        found.extend(mutate.listed(path))
    assert len(found) < MOST
    return dict(enumerate(found, 1))


def refused_lines(text, mutants, by_file):
    """By file, the lines that the compiler did not take, and those of the named numbers that it has to know."""
    ours = lambda places: {(p, n) for p, n in places if p.removeprefix(str(TREE) + "/") in by_file}
    places = (ours(re.findall(r"^(\S+?):(\d+):\d+: (?:fatal )?error", text, re.M)) or
              ours(re.findall(r"^(\S+?):(\d+):\d+:   required from", text, re.M)) or
              ours(re.findall(r" at (\S+?):(\d+):\d+[,:]$", text, re.M)))
    lines = {}
    for path, line in places:
        lines.setdefault(path.removeprefix(str(TREE) + "/"), set()).add(int(line))
    names = set(re.findall(r"the value of '(?:[\w:{}() ]*::)?(\w+)' is not usable", text))
    for mutant in mutants.values():
        match = NAMED.match(mutant.line)
        if match and match.group(1) in names:
            lines.setdefault(mutant.file, set()).add(mutant.number)
    return lines


def let_go(lines, mutants, by_file, rounds):
    """The numbers of the mutants that are to go: of a line first what is most often refused, and in the end all. A return
    in a lambda makes lines behind it wrong."""
    gone = set()
    for file, bad in lines.items():
        for line in bad:
            rounds[file, line] = rounds.get((file, line), 0) + 1
        for number in by_file[file]:
            mutant = mutants[number]
            kinds = [("early return", "arguments"), ("constant",), KINDS][min(rounds.get((file, mutant.number), 1), 3) - 1]
            if mutant.number in bad and (mutant.kind in kinds or NAMED.match(mutant.line)):
                gone.add(number)
    if not gone:
        for file, bad in lines.items():
            near = lambda m: any(-40 <= m.number - line <= 5 for line in bad)
            gone |= {n for n in by_file[file] if mutants[n].kind == "early return" and near(mutants[n])} or set(by_file[file])
    return gone


def build(options):
    copy = mutate.Copy("numbered", None)
    take_over()
    HEADER.parent.mkdir(parents=True, exist_ok=True)
    (TREE / "build" / "tmp").mkdir(parents=True, exist_ok=True)
    if not HEADER.exists() or HEADER.read_text() != HEADER_TEXT:
        HEADER.write_text(HEADER_TEXT)
    mutants = all_mutants(options.listed or [])
    refused = pickle.loads(REFUSED.read_bytes()) if REFUSED.exists() else set()
    by_file = {file: [] for file in mutate.git("ls-files", *mutate.FOLDERS).split("\n") if mutate.is_code(file)}
    for number, mutant in mutants.items():
        if key_of(mutant) not in refused:
            by_file[mutant.file].append(number)
    held = {file: write_file(file, mutants, numbers) for file, numbers in by_file.items()}
    if not (BUILD / "build.ninja").exists():
        done = copy.run(["cmake", "--preset", "release", "-DVARNET_BUILD_BENCH=OFF", "-DVARNET_WERROR=OFF",
                         "-DCMAKE_CXX_FLAGS=-w -fmax-errors=0", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG"])
        if done.returncode != 0:
            sys.exit(done.stdout)
    rounds = {}
    while True:
        done = copy.run(["env", "LC_ALL=C", "ninja", "-C", str(BUILD), "-k", "0", *map(target_of, PROGRAMS)])
        if done.returncode == 0:
            break
        lines = refused_lines(done.stdout, mutants, by_file)
        if not lines:
            sys.exit(done.stdout[-5000:])
        gone = let_go(lines, mutants, by_file, rounds)
        for file in {mutants[number].file for number in gone}:
            by_file[file] = [number for number in by_file[file] if number not in gone]
            held[file] = write_file(file, mutants, by_file[file])
        refused |= {key_of(mutants[number]) for number in gone}
        REFUSED.write_bytes(pickle.dumps(refused))
        print(f"refused by the compiler in this round: {len(gone)}", flush=True)
    standing = sorted(set().union(*map(set, held.values())))
    TABLE.write_bytes(pickle.dumps([(n, *vars(mutants[n]).values()) for n in standing]))
    print(f"{len(standing)} mutants stand in the build")


def table():
    return {n: mutate.Mutant(*rest) for n, *rest in pickle.loads(TABLE.read_bytes())}


# ---- running tests


def target_of(name):
    return name if name == "varnet" else "test_" + name


def binary(name):
    return str(BUILD / ("program" if name == "varnet" else "tests") / target_of(name))


def commands_of(name, tests):
    """What runs some tests of a program: scripts run one by one."""
    if name == "varnet":
        return [[str(TREE / "tests" / "program" / (test + ".sh")), binary(name)] for test in tests]
    return [[binary(name), "--gtest_fail_fast", "--gtest_filter=" + ":".join(tests)]]


def run(command, environment, cpu, tmp):
    """What a test ends with and prints, and the seconds that it takes."""
    def limits():
        resource.setrlimit(resource.RLIMIT_CPU, (cpu, cpu + 2))
        resource.setrlimit(resource.RLIMIT_AS, (9 << 30, 9 << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    with tempfile.TemporaryFile() as output:
        while not os.access(command[0], os.X_OK):
            time.sleep(0.5)  # it is linked anew
        child = subprocess.Popen(command, cwd=TREE, env=dict(os.environ, TMPDIR=tmp, **environment), stdin=subprocess.DEVNULL,
                                 stdout=output, stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limits)
        watch = threading.Timer(60.0 + 20.0 * cpu, lambda: os.killpg(child.pid, signal.SIGKILL))
        watch.start()
        _, status, usage = os.wait4(child.pid, 0)
        watch.cancel()
        child.returncode = os.waitstatus_to_exitcode(status)
        try:
            os.killpg(child.pid, signal.SIGKILL)
        except OSError:
            pass
        output.seek(0)
        return child.returncode, output.read().decode("utf-8", "replace"), usage.ru_utime + usage.ru_stime


def tests_in(name):
    if name == "varnet":
        return sorted(s.stem for s in (TREE / "tests" / "program").glob("*.sh") if s.stem != "program")
    listing = subprocess.run([binary(name), "--gtest_list_tests"], capture_output=True, text=True, check=True).stdout
    suite, tests = "", []
    for line in listing.splitlines():
        if not line.startswith(" "):
            suite = line.split()[0]
        else:
            tests.append(suite + line.split()[0])
    return [t for t in tests if "DISABLED_" not in t]


class Tmp:
    """A folder of temporary files for each thread, emptied between mutants."""

    def __init__(self):
        self.local = threading.local()
        self.lock = threading.Lock()
        self.count = 0

    def fresh(self):
        if not hasattr(self.local, "path"):
            with self.lock:
                self.count += 1
                self.local.path = TREE / "build" / f"tmp{os.getpid()}_{self.count}"
        shutil.rmtree(self.local.path, ignore_errors=True)
        self.local.path.mkdir(parents=True)
        return str(self.local.path)


def reach(options):
    tmp = Tmp()

    def one(name, test):
        folder = tmp.fresh()
        path = os.path.join(os.path.dirname(folder), os.path.basename(folder) + ".map")
        pathlib.Path(path).write_bytes(bytes(MOST))
        code, text, seconds = run(commands_of(name, [test])[0], {"VARNET_REACHED": path}, 200, folder)
        hits = pathlib.Path(path).read_bytes()
        os.unlink(path)
        numbers = [i for i in range(MOST) if hits[i]] if code in (0, 77) else None
        if numbers is None:
            print(f"left out, since it fails on unchanged code: {name}: {test} ({code})", flush=True)
        return name, test, seconds, numbers

    jobs = [(name, test) for name in PROGRAMS for test in tests_in(name)]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        done = list(pool.map(lambda job: one(*job), jobs))
    REACHED.write_bytes(pickle.dumps([entry for entry in done if entry[3] is not None]))
    reached = set().union(*(entry[3] for entry in done if entry[3] is not None))
    mutants = table()
    print(f"{len(done)} tests, {sum(entry[2] for entry in done):.0f} seconds; {len(reached & set(mutants))} of {len(mutants)} "
          "mutants are reached")


def what_failed(name, command, code, text):
    if name == "varnet":
        failed = re.search(r"^FAILED: (.*)", text, re.M)
        return "Program." + pathlib.Path(command[0]).stem + (": " + failed.group(1) if failed else f", ends by {code}")
    failed = re.search(r"^\[  FAILED  \] (\S+)", text, re.M)
    begun = re.findall(r"^\[ RUN      \] (\S+)", text, re.M)
    return failed.group(1).rstrip(",") if failed else (begun[-1] if begun else name) + f", ends by {code}"


def try_one(number, tests, tmp, is_quick):
    """By what a mutant is noticed, or None. Quick tests first, those of a program at once."""
    folder = tmp.fresh()
    programs, reaching = tests
    for low, high in ((0.0, 0.05), (0.05, 0.5), (0.5, 5.0), (5.0, 1e9))[: 2 if is_quick else None]:
        for name in programs:
            those = [(test, seconds) for test, seconds in reaching.get(name, []) if low <= seconds < high]
            while those:
                part, those = those[:400], those[400:]
                cpu = int(10 + 4 * sum(s for _, s in part))
                for command in commands_of(name, [t for t, _ in part]):
                    code, text, _ = run(command, {"VARNET_MUTANT": str(number)}, cpu, folder)
                    if code not in (0, 77):
                        return what_failed(name, command, code, text)
    return None


def attempt(options):
    mutants = table()
    reached = {}
    for name, test, seconds, numbers in pickle.loads(REACHED.read_bytes()):
        for number in numbers:
            reached.setdefault(number, {}).setdefault(name, []).append((test, seconds))
    if options.listed:
        wanted = [mutant for path in options.listed for mutant in mutate.listed(path)]
        key = lambda m: (m.file, m.number, m.becomes.strip())
        numbers = {key(m): n for n, m in mutants.items()}
        order = []
        for mutant in wanted:
            if key(mutant) in numbers:
                order.append(numbers[key(mutant)])
            else:
                print(f"not in the build: {mutant}", flush=True)
    else:
        only = {n: m for n, m in mutants.items() if not options.only or any(t in m.file for t in options.only)}
        kind_of = {id(m): n for n, m in only.items()}
        order = [kind_of[id(m)] for m in mutate.drawn(list(only.values()), options.seed)][: options.number]
    tmp = Tmp()
    results, counts, lock = [], {}, threading.Lock()
    begun = time.monotonic()

    def one(number):
        mutant = mutants[number]
        why = mutate.known_equivalent(mutant)
        if why:
            outcome, by = "equivalent", why
        elif number not in reached:
            outcome, by = "not reached", ""
        else:
            room = mutate.targets_for(mutant.file)
            programs = [t.removeprefix("test_") for t in room]
            programs += [name for name in reached[number] if name not in programs]
            by = try_one(number, (programs, reached[number]), tmp, options.quick)
            outcome = "survived" if by is None else "noticed"
        with lock:
            counts[outcome] = counts.get(outcome, 0) + 1
            results.append({"file": mutant.file, "number": mutant.number, "kind": mutant.kind, "line": mutant.line.strip(),
                            "becomes": mutant.becomes.strip(), "outcome": outcome, "by": by})
            if outcome not in ("noticed", "equivalent") or options.listed:
                print(f"{outcome:11} {mutant}" + (f"  [{by}]" if by else ""), flush=True)
            if options.to and len(results) % 50 == 0:
                pathlib.Path(options.to).write_text(json.dumps(results, indent=1))

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        list(pool.map(one, order))
    if options.to:
        pathlib.Path(options.to).write_text(json.dumps(results, indent=1))
    print(f"{len(order)} tried in {time.monotonic() - begun:.0f} s: " + ", ".join(f"{v} {k}" for k, v in sorted(counts.items())))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("what", choices=("build", "reach", "try"))
    parser.add_argument("number", nargs="?", type=int, default=100, metavar="N")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", action="append", metavar="TEXT", help="only files whose path holds TEXT")
    parser.add_argument("--from", dest="listed", action="append", metavar="FILE", help="those of a list, such as chosen.json")
    parser.add_argument("--jobs", type=int, default=1, metavar="J", help="tests that run at a time")
    parser.add_argument("--quick", action="store_true", help="only by tests that take less than half a second")
    parser.add_argument("--to", metavar="FILE", help="writes all outcomes to a file, as JSON")
    options = parser.parse_args()
    if options.what != "build" and mutate.SHIELD and "NUMBERED_SHIELD" not in os.environ:
        os.environ["NUMBERED_SHIELD"] = "1"
        os.execvp(mutate.SHIELD[0], [*mutate.SHIELD, sys.executable, *sys.argv])
    {"build": build, "reach": reach, "try": attempt}[options.what](options)


if __name__ == "__main__":
    main()
