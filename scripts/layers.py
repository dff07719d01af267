"""The rooms of the tree, and the list cmake/Layers.txt, for the scripts that check them."""
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LIST = "cmake/Layers.txt"
ROOMS = ("AdditionalDependencies", "clients", "include", "platform", "simulators", "src")
TEST_ROOMS = ("benchmarks", "examples", "fuzz", "tests")


def files_of(rooms, ends):
    for room in rooms:
        for folder, folders, names in os.walk(room):
            folders.sort()
            for name in sorted(names):
                if name.endswith(ends):
                    yield os.path.join(folder, name)


def text_of(path):
    """Ends the script with a line when the file cannot be read."""
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except OSError as error:
        reason = error.strerror
    except UnicodeDecodeError:
        reason = "is not UTF-8"
    sys.exit(f"{os.path.relpath(path, ROOT) if os.path.isabs(path) else path}: {reason}")


class Layer:
    def __init__(self, name, purpose):
        self.name = name
        self.purpose = purpose
        self.uses = []     # names of layers
        self.modules = []  # in their order


class Module:
    def __init__(self, target, paths, layer, place):
        self.target = target
        self.paths = paths
        self.layer = layer
        self.place = place  # in the whole list

    def may_use(self, other):
        if other.layer is self.layer:
            return other.place <= self.place
        return other.layer.name in self.layer.uses

    def objection_to(self, used):
        where = f"layer {self.layer.name} may not use layer {used.layer.name}"
        if self.layer is used.layer:
            where = f"in layer {self.layer.name}, it stands after it"
        return f"{self.target} may not use {used.target}: {where}"

    # Folders hold files, and a path without an extension stands for its header and its source.
    def match(self, path):
        """The length of the module's path that holds this one; 0 when none does."""
        return max((len(own) for own in self.paths
                    if path == own or path.startswith((own + "/", own + "."))), default=0)


class Layers:
    """The list. `faults` are what is wrong with the list itself, as (line number, text)."""

    def __init__(self):
        self.layers = []
        self.modules = {}  # by target
        self.faults = []
        for number, line in enumerate(text_of(os.path.join(ROOT, LIST)).splitlines(), 1):
            words = line.split("#")[0].split()
            if words:
                self._read(number, words)
        if not self.layers:
            self.faults.append((1, "there is no layer"))

    def _read(self, number, words):
        if words == ["layer"]:
            self.faults.append((number, "a layer without a name"))
        elif words[0] == "layer":
            self.layers.append(Layer(words[1].rstrip(":"), " ".join(words[2:])))
        elif not self.layers:
            self.faults.append((number, f"{words[0]} stands below no layer"))
        elif words[0] == "uses":
            known = [layer.name for layer in self.layers[:-1]]
            self.layers[-1].uses = words[1:]
            self.faults += [(number, f"{name} is no layer above this line") for name in words[1:] if name not in known]
        else:
            self._add_module(number, words[0], words[1:])

    def _add_module(self, number, target, paths):
        if target in self.modules:
            self.faults.append((number, f"{target} stands here twice"))
        self.faults += [(number, f"there is no {path}") for path in paths
                        if not any(os.path.exists(os.path.join(ROOT, path + end)) for end in ("", ".h"))]
        module = Module(target, paths, self.layers[-1], len(self.modules))
        self.modules[target] = module
        self.layers[-1].modules.append(module)

    def module_of(self, path):
        """The module that holds a file, by the longest path; none for a file of no module."""
        best = max(self.modules.values(), key=lambda module: module.match(path))
        return best if best.match(path) else None

    def module_named(self, target):
        """A program is two targets: itself, and the library <program>_parts that tests link as well."""
        return self.modules.get(target.removesuffix("_parts"))
