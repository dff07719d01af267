"""The links of the targets against the list of layers, for scripts/check-layers.

CMake itself tells the links and the sources of the targets, of a plain build for the host and of one for a device. A
generator expression has no value yet: it is refused unless its text shows what it may link. A plain name has to be a
module: a library of others is NAMESPACE::TARGET, -lNAME or a path.

CMake leaves out the tests, and the branches of an if() that such a build does not take: what a package, a sanitizer or a
build type brings. So the text of the commands is read as well, as COMMAND lists them. Not looked at: a name in a variable,
or a property that is set, in these places; flags for all targets, such as CMAKE_EXE_LINKER_FLAGS; and what files for the
linker (@FILE, scripts) name.

Which implementation answers the device's interfaces is chosen for a program by dax_program, in cmake/Modules.cmake: no
link of a module's own, and not looked at here.
"""
import os
import re
import subprocess
import sys
import tempfile

from layers import LIST, ROOMS, ROOT, TEST_ROOMS, files_of, text_of

COMMAND = re.compile(r"\b(dax_module|dax_program|add_library|add_executable|target_link_libraries|target_link_options"
                     r"|target_sources)\s*\(([^()]*)\)", re.IGNORECASE)


class Target:
    def __init__(self, kind, folder):
        self.is_program = kind == "EXECUTABLE"
        self.is_imported = kind == "IMPORTED"
        self.folder = folder
        self.path = os.path.normpath(os.path.join(os.path.relpath(folder, ROOT), "CMakeLists.txt"))
        self.parts = []  # ("link" or "source", its text)


def errors_of_cmake(*options):
    """Runs CMake. Nothing is built, so no build tool has to be there. The user's settings for CMake do not count."""
    command = ["cmake", "-Wno-dev", "-G", "Unix Makefiles", "-DCMAKE_MAKE_PROGRAM=true", *options]
    environment = {name: value for name, value in os.environ.items() if not name.startswith("CMAKE_")}
    try:
        return subprocess.run(command, capture_output=True, text=True, check=False, env=environment).stderr
    except FileNotFoundError:
        sys.exit("scripts/check-layers needs cmake 3.25 or newer")


def targets_of(platform):
    """The targets by their names, and which target an alias stands for. CMake reads the tree, see cmake/links."""
    with tempfile.TemporaryDirectory() as folder:
        said = errors_of_cmake("-S", "cmake/links", "-B", folder, f"-DROOT={ROOT}", f"-DKOVAN_PLATFORM={platform}")
        output = os.path.join(folder, "links")
        lines = text_of(output).splitlines() if os.path.exists(output) else []
        # What is built for a module stands where its sources stand.
        lines = [line.replace(folder + "/tree", ROOT).replace(folder, ROOT) for line in lines]
    # CMake goes on after most errors, but what they are about is missing then. The run itself ends with one.
    if "end" not in lines or len(re.findall("^CMake Error", said, re.MULTILINE)) != 1:
        sys.exit(f"CMake cannot read the tree for the platform {platform}:\n{said}")
    targets, aliases = {}, {}
    for kind, name, *rest in (line.split("\t") for line in lines[:-1]):
        if kind == "target":
            targets[name] = Target(*rest)
        elif kind in ("link", "source"):
            text = re.sub(r"^\$<LINK_ONLY:(.*)>$", r"\1", rest[0])  # as CMake writes a private one
            targets[name].parts.append((kind, text))
        else:
            aliases[name] = rest[0]
    return targets, aliases


def line_that_names(path, *words):
    """The line of the first of these words that the file has outside of comments."""
    lines = [line.split("#")[0] for line in text_of(path).splitlines()]
    for word in words:
        for number, line in enumerate(lines, 1):
            if re.search(rf"(?<![\w.+-]){re.escape(word)}(?![\w.+-])", line):
                return number
    return 1


# In these, what is linked stands as it is. Others take it from elsewhere, or put it together.
LINKING = ("LINK_ONLY", "BUILD_INTERFACE", "INSTALL_INTERFACE", "IF", "TARGET_FILE", "TARGET_OBJECTS", "0", "1")
CONDITIONS = ("AND", "OR", "NOT", "BOOL", "CONFIG", "PLATFORM_ID", "C_COMPILER_ID", "CXX_COMPILER_ID",
              "C_COMPILER_VERSION", "CXX_COMPILER_VERSION", "VERSION_LESS", "VERSION_GREATER", "VERSION_EQUAL",
              "VERSION_LESS_EQUAL", "VERSION_GREATER_EQUAL", "COMPILE_LANGUAGE", "LINK_LANGUAGE")
CONDITION = re.compile(rf"\$<(?:{'|'.join(CONDITIONS)})(?::[^<>]*)?>")
CHOSEN_PLATFORM = "$<TARGET_PROPERTY:KOVAN_IMPLEMENTATION>"


def is_readable(link):
    expressions = re.findall(r"\$<([\w-]+)", link)
    is_put_together = re.search(r"[\w.+-]\$<|>[\w.+-]|>\$<", link)
    return link == CHOSEN_PLATFORM or (all(name in LINKING + CONDITIONS for name in expressions) and not is_put_together)


# What an option of the linker names is no link (-Wl,-rpath,FOLDER), unless it is a library.
OPTION = re.compile(r"(?:^|(?<=[\s,:;>]))(?:(?:LINKER:|-W[alp],)[^\s;<>]*|-(?!l)[^\s,;<>]*)")
LIBRARY = re.compile(r"(?:-l|--library=|lib)([\w.+-]+?)(?:\.a|\.so[\w.]*)?")


def parts_between_options(link):
    return re.findall(r"[^\s,:;<>$]+(?:::[^\s,:;<>$]+)*", OPTION.sub(" ", link))


def words_of(link):
    """What may be the name of a target: each word that is no path, and what a library's file is named for."""
    for part in parts_between_options(link):
        if "/" not in part:
            yield part
        yield from library_of(part)
    for option in OPTION.findall(link):
        for part in re.split("[,:]", option):
            yield from library_of(part)


def plain_names_of(link):
    """What CMake takes for a target of ours, or else for a library that it does not know; of a link that is readable."""
    if not is_readable(link) or link == CHOSEN_PLATFORM:
        return []
    while CONDITION.search(link):
        link = CONDITION.sub("1", link)
    link = re.sub(rf"\$<(?:{'|'.join(LINKING)}):", " ", link)
    return [part for part in parts_between_options(link) if not re.search(r"/|::|^-|^\d+$", part)]


def library_of(path):
    library = LIBRARY.fullmatch(os.path.basename(path))
    return [library[1]] if library else []


def modules_of_files(layers, kind, text, folder):
    """The modules whose files stand here by their paths."""
    for part in re.findall(r"[^\s,:;<>$]+", OPTION.sub(" ", text)):
        path = os.path.normpath(os.path.join(folder, part))
        if path.startswith(ROOT + "/") and (kind == "source" or part.startswith("/")):
            used = layers.module_of(os.path.relpath(path, ROOT))
            if used is not None:
                yield os.path.basename(path), used


def parts_of(name, targets, aliases, seen):
    """What a target links and compiles. An imported target is no module: what it stands for counts as its user's."""
    seen.add(name)
    for kind, text in targets[name].parts:
        yield kind, text, targets[name].folder
        for word in words_of(text):
            linked = aliases.get(word, word)
            if linked in targets and targets[linked].is_imported and linked not in seen:
                yield from parts_of(linked, targets, aliases, seen)


def faults_of_target(layers, name, target, targets, aliases):
    user = layers.module_named(name)
    if user is None:
        if stands_in_a_room(target.path) and not target.is_imported:
            yield target.path, line_that_names(target.path, name), f"{name} is no module of {LIST}"
        return
    for kind, text, folder in parts_of(name, targets, aliases, set()):
        if not is_readable(text):
            line = line_that_names(target.path, name)
            yield target.path, line, f"{name} has a {kind} that this check cannot read: {text}"
        for word, used in modules_of_files(layers, kind, text, folder):
            if not user.may_use(used):
                yield target.path, line_that_names(target.path, word, name), user.objection_to(used)
        for word in words_of(text):
            linked = aliases.get(word, word)
            used = layers.module_named(linked)
            line = line_that_names(target.path, word, name)
            if target.is_program and linked == "kovan_platform":
                continue
            is_ours = linked in targets and not targets[linked].is_imported
            is_unknown = kind == "link" and word in plain_names_of(text) and linked not in targets
            if used is None and (is_ours or is_unknown):
                yield target.path, line, f"{linked} is no module of {LIST}"
            elif used is not None and not user.may_use(used):
                yield target.path, line, user.objection_to(used)


def stands_in_a_room(path):
    return path.startswith(tuple(room + "/" for room in ROOMS))


def makes_target(command, words):
    is_new = not {"ALIAS", "IMPORTED"} & {word[0] for word in words} and "$" not in words[0][0]
    return is_new and not command[1].lower().startswith("target_")


# Of target_link_libraries. A word of it with a $ in it is a part of an expression.
KEYWORDS = ("PUBLIC", "PRIVATE", "INTERFACE", "LINK_PUBLIC", "LINK_PRIVATE", "LINK_INTERFACE_LIBRARIES", "debug", "optimized",
            "general")


def is_stranger(layers, command, word, targets):
    if command[1].lower() != "target_link_libraries" or word in KEYWORDS or "$" in word:
        return False
    return any(layers.module_named(name) is None and name not in targets for name in plain_names_of(word))


def faults_of_text(layers, path, targets):
    """The commands that name a module, whatever if() they stand in."""
    text = re.sub(r"#.*", lambda comment: " " * len(comment[0]), text_of(path)).replace('"', " ")
    for command in COMMAND.finditer(text):
        words = list(re.finditer(r"[^\s;]+", command[2]))
        user = layers.module_named(words[0][0]) if words else None
        if words and user is None and makes_target(command, words) and stands_in_a_room(path):
            yield path, text.count("\n", 0, command.start()) + 1, f"{words[0][0]} is no module of {LIST}"
        for word in words[1:] if user else []:
            line = text.count("\n", 0, command.start(2) + word.start()) + 1
            if is_stranger(layers, command, word[0], targets):
                yield path, line, f"{word[0]} is no module of {LIST}"
            for used in filter(None, map(layers.module_named, words_of(word[0]))):
                if not user.may_use(used):
                    yield path, line, user.objection_to(used)


def faults_of_list(layers, targets):
    for name in layers.modules:
        if name not in targets and name + "_parts" not in targets:
            yield LIST, line_that_names(LIST, name), f"{name} is no target of CMake's"


def faults_of_links(layers):
    """What is forbidden: (file, line, text), sorted."""
    builds = [targets_of(platform) for platform in ("host", "device")]
    known = {name for targets_and_aliases in builds for names in targets_and_aliases for name in names}
    found = set(faults_of_list(layers, known))
    for path in ("CMakeLists.txt", *files_of((*ROOMS, *TEST_ROOMS, "cmake", "packaging"), ("CMakeLists.txt", ".cmake"))):
        found.update(faults_of_text(layers, path, known))
    told = {(path, text) for path, line, text in found}
    for targets, aliases in builds:
        for name, target in targets.items():
            found.update(fault for fault in faults_of_target(layers, name, target, targets, aliases)
                         if (fault[0], fault[2]) not in told)
    return sorted(found)
