#!/usr/bin/python3 -B
"""Android.bp names the sources that CMake compiles, module by module, and files that exist.

usage: android_bp_test.py SOURCE COMPILE_COMMANDS
"""

import json
import pathlib
import re
import sys

# A module of Android.bp and the CMake targets whose sources it compiles itself.
MODULES = {
    "libmorvale_kernels_neon": ["morvale_kernels_neon"],
    "libmorvale_kernel_objects": ["morvale_kernel_objects"],
    "libmorvale_internal": ["morvale_objects"],
    "libmorvale_kernels": ["morvale_kernels"],
    "morvale_selfcheck": ["morvale_selfcheck", "morvale_cases"],
    "morvale_device_bench": ["morvale_device_bench"],
    "morvale_library_test": ["library_test", "morvale_cases", "platform_double", "records_in_c"],
}
TOKEN = re.compile(r'"([^"]*)"|([A-Za-z_]\w*)|([{}\[\]:,])')


class Blueprint:
    """The modules of a file: [(type, properties)]."""

    def __init__(self, text):
        text = re.sub(r"//.*", "", text)
        self.tokens = [match.group(1, 2, 3) for match in TOKEN.finditer(text)]
        if re.sub(r"\s", "", TOKEN.sub("", text)):
            raise ValueError("Android.bp holds text that is none of the format's")
        self.at = 0
        self.modules = []
        while self.at < len(self.tokens):
            self.modules.append((self.take()[1], self.value()))

    def take(self):
        self.at += 1
        return self.tokens[self.at - 1]

    def value(self):
        string, word, sign = self.take()
        if sign == "{":
            return dict(self.items("}", self.entry))
        if sign == "[":
            return list(self.items("]", self.value))
        return string if string is not None else {"true": True, "false": False}[word]

    def entry(self):
        name = self.take()[1]
        if self.take()[2] != ":":
            raise ValueError(f"no colon behind {name}")
        return name, self.value()

    def items(self, end, item):
        while self.tokens[self.at][2] != end:
            yield item()
            if self.tokens[self.at][2] == ",":
                self.take()
        self.take()


def expand(source, patterns):
    files = set()
    for pattern in patterns:
        found = {path.relative_to(source).as_posix() for path in source.glob(pattern)}
        if not found:
            raise ValueError(f"no file is like {pattern}")
        files |= found
    return files


def properties(blueprint, name):
    """A module's own lists with those of its defaults in front."""
    own = next(values for _, values in blueprint.modules if values["name"] == name)
    merged = {}
    for layer in [properties(blueprint, default) for default in own.get("defaults", [])] + [own]:
        for key, value in layer.items():
            merged[key] = merged.get(key, []) + value if isinstance(value, list) else value
    return merged


def compiled(source, commands, wanted):
    files = set()
    for command in commands:
        target = re.search(r" -o \S*?(\w+)\.dir/", command["command"])
        precompiled = command["file"].endswith("cmake_pch.hxx.cxx")  # CMake's own
        if target and target[1] == wanted and not precompiled:
            files.add(pathlib.Path(command["file"]).relative_to(source).as_posix())
    return files


def main(source, commands):
    source = pathlib.Path(source).resolve()
    blueprint = Blueprint((source / "Android.bp").read_text())
    commands = json.loads(pathlib.Path(commands).read_text())
    status = 0
    for name, targets in MODULES.items():
        parts = [compiled(source, commands, target) for target in targets]
        if not all(parts):
            continue  # this build has no such target
        wanted = set.union(*parts)
        module = properties(blueprint, name)
        named = expand(source, module["srcs"]) - expand(source, module.get("exclude_srcs", []))
        for file in sorted(named ^ wanted):
            print(f"{name}: {file} is only in {'Android.bp' if file in named else 'CMake'}")
            status = 1
    for _, module in blueprint.modules:
        for folder in module.get("local_include_dirs", []) + module.get("export_include_dirs", []):
            expand(source, [folder + "/*"])
        if "version_script" in module:
            expand(source, [module["version_script"]])
    return status


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
