"""Compiles each case of a source alone: it must fail with its sentence, and before any linking.

Usage: check_refusals.py COMPILER INCLUDE_FOLDER SOURCE [FLAG ...]
"""
import re
import subprocess
import sys

compiler, include, source, *flags = sys.argv[1:]
CASE = re.compile(r"^#(?:if|elif) CASE == (\d+)\s+// (.+)$", re.MULTILINE)


def compile_case(number):
    command = [compiler, "-std=c++17", "-fsyntax-only", "-Werror=unused-result", f"-I{include}",
               f"-DCASE={number}", *flags, source]
    return subprocess.run(command, capture_output=True, text=True,
                          env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"})


def fault(number, sentence):
    result = compile_case(number)
    if result.returncode == 0:
        return f"case {number} compiles"
    # g++ and clang quote the sentence on the line that reports the error.
    errors = [line for line in result.stderr.splitlines() if " error: " in line]
    if not any(sentence in line for line in errors):
        return f"case {number} does not say '{sentence}':\n{result.stderr}"
    return None


text = open(source, encoding="utf-8").read()
cases = CASE.findall(text)
if not cases or len(cases) != text.count("CASE =="):
    sys.exit("a case without its sentence")
faults = [found for found in (fault(number, sentence) for number, sentence in cases) if found]
if compile_case(0).returncode != 0:
    faults.append("case 0, which misuses nothing, does not compile")
print("\n".join(faults) or f"{len(cases)} misuses refused")
sys.exit(bool(faults))
