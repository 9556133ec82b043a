#!/usr/bin/env python3
"""Fails when a source of the library includes a header of a higher layer, or when a
public header includes one from an impl/ folder.

The layers, lowest first, each allowed to include its own and lower ones:
core -> identifiers -> dynamic objects -> serialization -> types -> debugger ->
inspection server. Each library file belongs to the first layer of LAYERS whose pattern
matches its path (relative to the source root, without extension); where patterns of
several layers match, the most specific one (the longest text before its first
wildcard) decides."""
import fnmatch
import pathlib
import re
import sys

LAYERS = [
    # Uuid is a plain value that error categories are made of, so it sits in the core.
    ("core", ["nox/allocator/*", "nox/utils/Uuid", "nox/utils/Abstract*", "nox/utils/AssertingLogger", "nox/utils/Assertion",
              "nox/utils/BufferLogger", "nox/utils/OstreamLogger", "nox/utils/ErrorType", "nox/utils/Export",
              "nox/utils/String", "nox/utils/StringPool", "nox/utils/Containers", "nox/utils/HashTable",
              "nox/utils/Mutex", "nox/utils/ScopedMutex", "nox/utils/Condition", "nox/utils/Thread",
              "nox/utils/Time", "nox/utils/Timer", "nox/utils/Singleton", "nox/utils/ScopedPtr",
              "nox/utils/FileInputOutput", "nox/utils/FileUtilities", "nox/utils/MemoryInputOutput",
              "nox/utils/Decimal", "nox/utils/Vector2", "nox/utils/Vector3", "nox/utils/Quaternion",
              "nox/utils/details/TextLength", "nox/utils/details/Diagnostic", "nox/utils/details/SpareBlocks",
              "nox/utils/details/Sfmt19937", "nox/utils/details/Version"]),
    ("identifiers", ["nox/utils/StringTable", "nox/utils/Uri", "nox/utils/PathCursor"]),
    ("dynamic objects", ["nox/utils/Type", "nox/utils/DynamicValue", "nox/utils/BlockAllocator",
                         "nox/utils/DynamicObject*", "nox/utils/details/DynamicObjectNode"]),
    # Random streams come with their saved text form.
    ("serialization", ["nox/utils/JsonObjectBuilder", "nox/utils/impl/*", "nox/utils/Random",
                       "nox/utils/RandomManager"]),
    ("types", ["nox/utils/TypeManager", "nox/utils/Property", "nox/utils/StaticObject",
               "nox/utils/details/ClassTypeId", "nox/utils/details/TypeMetadata"]),
    # The resource handlers' reply helpers serve the debugger's own engine too.
    ("debugger", ["nox/utils/debugger/impl/Replies", "nox/utils/debugger/impl/EventFilterCreators",
                  "nox/utils/debugger/*"]),
    ("inspection server", ["nox/utils/debugger/InspectionFramework", "nox/utils/debugger/impl/*",
                           "nox/utils/Facilities", "nox/utils"]),
]

# The binary form's entry points live in impl/ by the library's layout, yet are public:
# the umbrella header may include them.
PUBLIC_IN_IMPL = {"nox/utils/impl/ProtobufDynamicObjectBuilder.h"}

INCLUDE = re.compile(r'^\s*#\s*include\s*[<"](nox/[^>"]+)[>"]', re.MULTILINE)


def layer_of(path):
    stem = str(pathlib.PurePosixPath(path).with_suffix(""))
    matches = [(len(pattern.split("*")[0]), index) for index, (_, patterns) in enumerate(LAYERS)
               for pattern in patterns if fnmatch.fnmatchcase(stem, pattern)]
    return max(matches)[1] if matches else None


def main(root):
    root = pathlib.Path(root)
    problems = []
    sources = sorted(p for p in (root / "nox").rglob("*") if p.suffix in (".h", ".cpp", ".in"))
    for source in sources:
        relative = source.relative_to(root).as_posix()
        if relative.endswith(".h.in"):
            relative = relative[:-3]
        own = layer_of(relative)
        if own is None:
            problems.append(f"{relative}: belongs to no layer; add it to LAYERS")
            continue
        is_public_header = relative.endswith(".h") and "/impl/" not in relative
        for included in INCLUDE.findall(source.read_text(encoding="utf-8")):
            if included.endswith(".pb.h"):
                continue
            if is_public_header and "/impl/" in included and included not in PUBLIC_IN_IMPL:
                problems.append(f"{relative}: a public header includes {included}")
            other = layer_of(included)
            if other is None:
                problems.append(f"{relative}: includes {included}, which belongs to no layer")
            elif other > own:
                problems.append(f"{relative} ({LAYERS[own][0]}) includes {included} ({LAYERS[other][0]})")
    for problem in problems:
        print(problem)
    print(f"{len(sources)} files, {len(problems)} layering problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1] if len(sys.argv) > 1 else "."))
