"""Builds a mutant and runs the tests that cover it."""
import filecmp
import os
import shutil
import subprocess
from dataclasses import dataclass

from .operators import apply


@dataclass
class Verdict:
    mutant: object
    kind: str  # killed, survived, same code, no compile
    by: str = ""  # the program and the test
    seconds: float = 0


class NoCompile(Exception):
    pass


class Plan:
    """Which programs cover which file."""

    def __init__(self, build, sources, programs):
        self.build = build
        self.sources = sources  # the product's folder
        self.libraries = {}  # DLLs that programs load: what they are linked of
        self.programs = {}
        for name in programs:
            program = build.program(name)
            for loaded in program.loads:
                if loaded.endswith(".dll") and loaded not in self.libraries:
                    self.libraries[loaded] = build.program(loaded)
            if self.tests_product(program):
                self.programs[name] = program

    def tests_product(self, program):
        """Whether it links the product or a DLL made of it, or has the tests of headers."""
        loaded = [self.libraries[name] for name in program.loads if name in self.libraries]
        if any(map(self.product_archives, [program, *loaded])):
            return True
        folders = {os.path.dirname(source) for name in program.objects for source in self.build.sources(name)}
        return any(os.path.isdir(os.path.join(self.build.root, self.sources, os.path.relpath(folder, "tests")))
                   for folder in folders if folder.startswith("tests/"))

    def members(self, program):
        return {*program.objects, *(member for archive in program.libraries.values() for member in archive)}

    def product_archives(self, program):
        return sum(any(self.build.is_below(member, self.sources) for member in archive)
                   for archive in program.libraries.values())

    def mirrored(self, program, file):
        """The objects of the file's own tests in the program."""
        folder = "tests" + file[len(self.sources):file.rindex("/")]
        return [name for name in program.objects
                if any(os.path.dirname(source) == folder for source in self.build.sources(name))]

    def tests_to_compile(self, program, mutant):
        """Objects of the program's tests that must see a header's mutant: those of the header itself, which may call
        what no object of the product has, and all users of a constant. What the platform's own header says is a fact
        that the tests, as the platform's side, go on by."""
        users = [name for name in program.objects if mutant.file in self.build.dependencies.get(name, ())]
        if mutant.declared and not mutant.file.startswith(self.sources + "/platform/"):
            return users
        stem = os.path.splitext(os.path.basename(mutant.file))[0]
        return [name for name in users if name in self.mirrored(program, mutant.file) and
                any(os.path.basename(source).startswith(stem + "_") for source in self.build.sources(name))]

    def covering(self, mutant):
        """The programs that run the mutant: that of its folder first, then those above it."""
        users = set(self.build.users(mutant.file, self.sources))
        found = []
        for program in self.programs.values():
            linked = users & self.members(program) or self.tests_to_compile(program, mutant)
            loaded = any(users & self.members(self.libraries[name]) for name in program.loads if name in self.libraries)
            if linked or loaded:
                found.append((not self.mirrored(program, mutant.file), not linked, self.product_archives(program),
                              program.output, program))
        return [entry[-1] for entry in sorted(found, key=lambda entry: entry[:-1])]


class Workshop:
    """One place in which one mutant at a time is built and run."""

    def __init__(self, plan, runner, folder, limits):
        self.plan = plan
        self.build = plan.build
        self.runner = runner
        self.folder = folder
        self.limits = limits  # program: seconds

    def judge(self, mutant):
        shutil.rmtree(self.folder, ignore_errors=True)
        os.makedirs(self.folder)
        self.compiled = {}
        path = os.path.join(self.build.root, mutant.file)
        with open(path, encoding="utf-8", newline="") as source:
            self.original = source.read()
        self.overlay = os.path.join(self.folder, "overlay")
        self.write(mutant.file, apply(mutant, self.original))
        seconds = 0
        try:
            for program in self.plan.covering(mutant):
                outcome = self.runner.run(self.make(program, mutant), self.limits[program.output])
                seconds += outcome.seconds
                if not outcome.passed:
                    return Verdict(mutant, "killed", f"{os.path.basename(program.output)[:-4]} {outcome.reason}", seconds)
        except NoCompile:
            return Verdict(mutant, "no compile")
        return Verdict(mutant, "same code" if self.is_same_code(mutant) else "survived", "", seconds)

    def write(self, file, text):
        path = os.path.join(self.overlay, file)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8", newline="") as out:
            out.write(text)

    def make(self, program, mutant):
        """Links the program, or the DLL that it loads, in a folder that is otherwise the build's own; its path."""
        file = mutant.file
        users = set(self.build.users(file, self.plan.sources))
        folder = os.path.join(self.folder, os.path.dirname(program.output))
        shadow(os.path.join(self.build.folder, os.path.dirname(program.output)), folder)
        self.link(program, file,
                  users & self.plan.members(program) | set(self.plan.tests_to_compile(program, mutant)))
        for name in program.loads:
            if name in self.plan.libraries:
                library = self.plan.libraries[name]
                self.link(library, file, users & self.plan.members(library))
        return os.path.join(self.folder, program.output)

    def link(self, program, file, changed):
        target = os.path.join(self.folder, program.output)
        if not changed or os.path.exists(target) and not os.path.islink(target):
            return
        for name in sorted(changed):
            self.compile(name, file)
        # A header's users come before all others: of an inline function the linker takes the first copy that it meets,
        # and the tests' own objects have that of the header as it was.
        is_header = not file.endswith(".cpp")
        os.makedirs(os.path.dirname(target), exist_ok=True)
        if os.path.islink(target):
            os.unlink(target)
        command, first = [], []
        for word in program.link:
            members = program.libraries.get(word, [word])
            ours = [self.compiled[name] for name in members if name in changed]
            if command and command[-1] == "-o":
                command.append(target)
            elif word.startswith("-Wl,--out-implib,"):
                command.append(f"-Wl,--out-implib,{self.folder}/implib.a")
            elif not ours:
                command.append(word)
            elif is_header:
                first += ours
                if word in program.libraries:
                    command.append(self.archive(word, [name for name in members if name not in changed]))
            elif word in program.libraries:
                command.append(self.archive(word, [self.compiled.get(name, name) for name in members]))
            else:
                command += ours
        self.call([command[0], *first, *command[1:]], NoCompile)

    def archive(self, original, members):
        copy = os.path.join(self.folder, os.path.basename(original))
        if not os.path.exists(copy):
            # By their full paths: the linker looks for the members of a thin archive from where the archive lies.
            paths = [os.path.join(self.build.folder, member) for member in members]
            self.call([self.build.archiver, "qcs", "--thin", copy, *paths], RuntimeError)
        return copy

    def compile(self, name, file):
        if name not in self.compiled:
            output = os.path.join(self.folder, "objects", name)
            self.compile_to(name, file, output)
            self.compiled[name] = output

    def compile_to(self, name, file, output):
        """With the build's own flags, the overlay's copy of the file in its place and no word about warnings."""
        os.makedirs(os.path.dirname(output), exist_ok=True)
        source, words = self.build.compile_commands[name]
        changed = self.source_with(file, name)
        while "ccache" in os.path.basename(words[0]):
            words = words[1:]
        command, skip = [words[0], "-I" + os.path.join(self.overlay, self.plan.sources)], False
        for word in words[1:]:
            if skip:
                skip = False
            elif word in ("-MT", "-MF", "-o"):
                skip = True
            elif word != "-MD" and not (changed and self.names_source(word, source)):
                command.append(word)
        if changed:
            command.append(changed)
        # Messages name the file as if it stood in the tree.
        self.call([*command, "-w", f"-ffile-prefix-map={self.overlay}/=", "-o", output], NoCompile)

    def source_with(self, file, name):
        """The overlay's copy of what is compiled for the object; None where that is not changed by a change of the file."""
        source = self.build.compile_commands[name][0]
        if file not in self.build.sources(name):
            return None
        copy = os.path.join(self.overlay, file)
        if source == file:
            return copy
        with open(os.path.join(self.build.root, source), encoding="utf-8") as unit:
            self.write(source, unit.read().replace(f'"{os.path.join(self.build.root, file)}"', f'"{copy}"'))
        return os.path.join(self.overlay, source)

    def names_source(self, word, source):
        return os.path.realpath(os.path.join(self.build.folder, word)) == os.path.join(self.build.root, source)

    def call(self, command, failure):
        # What is compiled once for good does not belong into a compiler cache.
        done = subprocess.run(command, cwd=self.build.folder, capture_output=True, text=True,
                              env=dict(os.environ, CCACHE_DISABLE="1"))
        if done.returncode:
            raise failure(done.stderr)

    def is_same_code(self, mutant):
        """Whether the compiler makes the same of the file as it was: then no test can tell the two apart."""
        self.write(mutant.file, self.original)
        for name, mutated in self.compiled.items():
            original = mutated + ".original"
            self.compile_to(name, mutant.file, original)
            if not filecmp.cmp(mutated, original, shallow=False):
                return False
        return True


def shadow(folder, copy):
    """A folder of links to what the folder has."""
    os.makedirs(copy, exist_ok=True)
    for entry in os.listdir(folder):
        link = os.path.join(copy, entry)
        if not os.path.lexists(link):
            os.symlink(os.path.join(folder, entry), link)
