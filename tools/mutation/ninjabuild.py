"""What a finished Ninja build knows: how each object is compiled, what each program is linked of."""
import functools
import json
import os
import re
import shlex
import subprocess
from dataclasses import dataclass, field


@dataclass
class Program:
    """A test program or a DLL of the build."""
    output: str
    link: list  # the link command
    objects: list  # those it names itself
    libraries: dict  # archive: its objects
    loads: list = field(default_factory=list)  # outputs that must be there before it runs, DLLs among them


class NinjaBuild:
    def __init__(self, folder, root):
        self.folder = os.path.realpath(folder)
        self.root = os.path.realpath(root)
        self.compile_commands = {}  # object: (source from the root, command)
        self.archives = {}  # archive: its objects
        self.archiver = "ar"
        for entry in json.loads(self.ninja("-t", "compdb")):
            command = entry["command"]
            if entry["output"].endswith(".a"):
                words = shlex.split(command)
                self.archives[entry["output"]] = [word for word in words if word.endswith((".obj", ".o"))]
                self.archiver = next((word for word in words if re.search(r"(^|[-/])ar(\.exe)?$", word)), self.archiver)
            elif entry["output"].endswith((".obj", ".o")) and " -c " in command:
                source = os.path.relpath(os.path.join(self.folder, entry["file"]), self.root)
                self.compile_commands[entry["output"]] = source, shlex.split(command)
        self.dependencies = self.read_dependencies()

    def ninja(self, *arguments):
        done = subprocess.run(["ninja", "-C", self.folder, *arguments], capture_output=True, text=True)
        if done.returncode:
            raise RuntimeError(f"ninja {' '.join(arguments)}: {(done.stderr or done.stdout).strip()}")
        return re.sub(r"\Aninja: Entering directory .*\n", "", done.stdout)

    def read_dependencies(self):
        """object: the files of the project that it was made of."""
        found, current = {}, None
        for line in self.ninja("-t", "deps").splitlines():
            if line and not line[0].isspace():
                current = found.setdefault(line.split(": #deps")[0], set())
            elif line.strip():
                path = os.path.relpath(os.path.join(self.folder, line.strip()), self.root)
                if not path.startswith(".."):
                    current.add(path)
        return found

    @functools.cache
    def sources(self, name):
        """What the object is compiled of: its source, or those that are compiled together."""
        source = self.compile_commands[name][0]
        if "/Unity/" not in source:
            return [source]
        with open(os.path.join(self.root, source), encoding="utf-8") as unit:
            return [os.path.relpath(file, self.root) for file in re.findall('^#include "(.+)"$', unit.read(), re.MULTILINE)]

    def is_below(self, name, folder):
        return any(source.startswith(folder + "/") for source in self.sources(name))

    def users(self, file, folder):
        """The objects of sources below the folder that are made of the file."""
        return sorted(name for name in self.compile_commands if self.is_below(name, folder) and
                      (file in self.sources(name) or file in self.dependencies.get(name, ())))

    def outputs(self, pattern):
        """Outputs that a file of the pattern is built for."""
        names = [line.rsplit(": ", 1)[0] for line in self.ninja("-t", "targets", "all").splitlines()]
        return sorted({name for name in names if re.fullmatch(pattern, name)})

    def program(self, output):
        command = shlex.split(self.ninja("-t", "commands", "-s", output).strip().splitlines()[-1])
        link = next((part for part in split_at(command, "&&") if "-o" in part), None)
        if link is None:
            raise RuntimeError(f"no link command for {output}")
        inputs = [word for word in link if not word.startswith("-")]
        loads = [line.strip(" |") for line in self.ninja("-t", "query", output).splitlines()
                 if line.strip().startswith("||")]
        return Program(output, link, [word for word in inputs if word in self.compile_commands],
                       {word: self.archives[word] for word in inputs if word in self.archives}, loads)


def split_at(words, separator):
    parts = [[]]
    for word in words:
        if word == separator:
            parts.append([])
        else:
            parts[-1].append(word)
    return parts
