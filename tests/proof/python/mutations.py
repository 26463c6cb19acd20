"""Small mistakes in the sources of a package, made by the operators of mutmut, one of JSON a line.

In every place where an operator changes something one change is a candidate. A hash of its words
draws some candidates of each file, one of each operator in turn, so that a change of the sources
changes few of them. Left out are texts, and what no run can tell from the original: types, and what
only those read who check them.
Usage: mutations.py FOLDER FILE ...
"""
import ast
import collections
import difflib
import hashlib
import itertools
import json
import sys
from pathlib import Path

import libcst
from libcst.metadata import MetadataWrapper, PositionProvider
from mutmut.mutation.file_mutation import deep_replace
from mutmut.mutation.mutators import mutation_operators, operator_string

LINES, FEWEST = 25, 2  # lines of a file for each mistake, and mistakes of the smallest file
OPERATORS = [(kind, operator) for kind, operator in mutation_operators
             if operator is not operator_string]


class WithoutTypes(ast.NodeTransformer):
    """Takes out of a module what does not run."""

    def visit_If(self, node):
        is_for_types = isinstance(node.test, ast.Name) and node.test.id == "TYPE_CHECKING"
        return ast.Pass() if is_for_types else self.generic_visit(node)

    def visit_FunctionDef(self, node):
        last = node.body[-1]
        if isinstance(last, ast.Expr) and getattr(last.value, "value", None) is ...:
            return ast.Pass()
        node.returns = None
        return self.generic_visit(node)

    def visit_ClassDef(self, node):
        node.keywords = [word for word in node.keywords if word.arg != "total"]  # of a TypedDict
        return self.generic_visit(node)

    def visit_arg(self, node):
        node.annotation = None
        return node

    def visit_AnnAssign(self, node):
        if getattr(node.annotation, "id", None) == "TypeAlias":
            return ast.Pass()
        node.annotation = ast.Constant(None)
        return self.generic_visit(node)


def what_runs(source):
    return ast.dump(WithoutTypes().visit(ast.parse(source)))


def hashed(*words):
    return hashlib.sha256(" ".join(map(str, words)).encode()).hexdigest()


class Candidates(libcst.CSTVisitor):
    """One change in each place of each operator: its hash, its operator, the line, both nodes."""

    METADATA_DEPENDENCIES = (PositionProvider,)

    def __init__(self, file, source):
        self.file, self.lines, self.seen = file, source.splitlines(), collections.Counter()
        self.found = []

    def on_visit(self, node):
        place = self.get_metadata(PositionProvider, node, None)
        if place is not None and "TYPE_CHECKING" not in self.lines[place.start.line - 1]:
            for kind, operator in OPERATORS:
                changes = list(operator(node)) if isinstance(node, kind) else []
                if changes:
                    self.found.append(self.choice(operator.__name__, place.start, node, changes))
        return not isinstance(node, libcst.Annotation)

    def choice(self, operator, start, node, changes):
        text = self.lines[start.line - 1]
        self.seen[operator, text] += 1
        words = (self.file, operator, text, start.column, self.seen[operator, text])
        keyed = [(hashed(*words, n), changed) for n, changed in enumerate(changes)]
        key, changed = min(keyed, key=lambda pair: pair[0])
        return key, operator, start.line, node, changed

    def in_turn(self):
        """Returns the candidates as the hashes draw them, one of each operator in turn."""
        ranks = collections.Counter()
        ranked = [((ranks.update([found[1]]) or ranks[found[1]], found[0]), found)
                  for found in sorted(self.found, key=lambda found: found[0])]
        return [found for _, found in sorted(ranked, key=lambda pair: pair[0])]


def mistakes(file, source):
    """As many mistakes as are drawn of a file."""
    module = MetadataWrapper(libcst.parse_module(source), unsafe_skip_copy=True)
    candidates = Candidates(file, source)
    module.visit(candidates)
    made = ((key, operator, line, mutated_by(module.module, node, changed))
            for key, operator, line, node, changed in candidates.in_turn())
    runs = what_runs(source)
    kept = (mistake for mistake in made if differs(mistake[-1], runs))
    wanted = max(FEWEST, source.count("\n") // LINES)
    for key, operator, line, mutated in itertools.islice(kept, wanted):
        yield {"id": key[:10], "file": file, "line": line, "kind": operator.partition("_")[2],
               "change": change(source, mutated), "source": mutated}


def mutated_by(module, node, changed):
    return deep_replace(module, node, changed).code


def differs(mutated, runs):
    try:
        return what_runs(mutated) != runs
    except SyntaxError:
        return False


def change(source, mutated):
    """Returns the lines that differ, before and after."""
    lines = [line for line in difflib.ndiff(source.splitlines(), mutated.splitlines())
             if line[:2] in ("- ", "+ ")]
    was, now = ("; ".join(line[2:].strip() for line in lines if line[0] == sign) for sign in "-+")
    return " ".join(f"{was} -> {now}".split())


def main(folder, *files):
    for file in files:
        for mistake in mistakes(file, (Path(folder) / file).read_text(encoding="utf-8")):
            print(json.dumps(mistake))


if __name__ == "__main__":
    main(*sys.argv[1:])
