#!/usr/bin/env python3
"""Compiles every C++ block of README and docs. Run as: cpp_blocks_test.py ROOT COMPILER [FLAG...]

A block is a source file of its own, unless a comment in the line above names a frame for it, a file of this folder in which it
takes the place of the line @BLOCK@:

    <!-- compiled in NAME.cpp.in -->
"""
import pathlib
import re
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^(?:<!-- compiled in (?P<frame>\S+) -->\n)?```cpp\n(?P<code>.*?)^```$", re.MULTILINE | re.DOTALL)


def documents(root):
    return [root / "README.md", *sorted((root / "docs").rglob("*.md"))]


def compile_block(compiler, frames, frame, code):
    """@return what the compiler has to say; empty when it compiles"""
    text = (frames / frame).read_text().replace("@BLOCK@\n", code) if frame else code
    with tempfile.NamedTemporaryFile("w", suffix=".cpp") as source:
        source.write(text)
        source.flush()
        result = subprocess.run([*compiler, "-fsyntax-only", source.name], capture_output=True, text=True)
    return "" if result.returncode == 0 else result.stderr


def main():
    root = pathlib.Path(sys.argv[1])
    frames = pathlib.Path(__file__).parent
    failures = blocks = 0
    unused = {frame.name for frame in frames.glob("*.cpp.in")}
    for document in documents(root):
        text = document.read_text()
        if len(BLOCK.findall(text)) != text.count("```cpp"):
            print(f"{document}: a block does not end, or is not read")
            failures += 1
        for block in BLOCK.finditer(text):
            blocks += 1
            unused.discard(block["frame"])
            problem = compile_block(sys.argv[2:], frames, block["frame"], block["code"])
            if problem:
                failures += 1
                line = text[:block.start("code")].count("\n") + 1
                print(f"{document.relative_to(root)}:{line}: does not compile\n{problem}")
    for frame in sorted(unused):
        failures += 1
        print(f"{frame}: no block names this frame")
    print(f"{blocks} blocks, {failures} failures")
    sys.exit(1 if failures or not blocks else 0)


main()
