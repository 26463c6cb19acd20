"""Compiles each case of a source alone: it has to fail with its sentence, and before any linking.

Usage: check_refusals.py COMPILER INCLUDE_FOLDER SOURCE
"""
import re
import subprocess
import sys

compiler, include, source = sys.argv[1:]
CASE = re.compile(r"^#(?:if|elif) CASE == (\d+)  // (.+)$", re.MULTILINE)


def compile_case(number):
    command = [compiler, "-std=c++17", "-fsyntax-only", f"-I{include}", f"-DCASE={number}", source]
    return subprocess.run(command, capture_output=True, text=True, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"})


def fault(number, sentence):
    result = compile_case(number)
    if result.returncode == 0:
        return f"case {number} compiles"
    # g++ and clang quote the sentence on the line that reports the error.
    errors = [line for line in result.stderr.splitlines() if " error: " in line]
    if not any(sentence in line for line in errors):
        return f"case {number} does not say '{sentence}':\n{result.stderr}"
    return None


cases = CASE.findall(open(source, encoding="utf-8").read())
faults = [text for text in (fault(number, sentence) for number, sentence in cases) if text]
if compile_case(0).returncode != 0:
    faults.append("case 0, which misuses nothing, does not compile")
print("\n".join(faults) or f"{len(cases)} misuses refused")
sys.exit(bool(faults) or not cases)
