"""Makes mutants of a C++ source, token by token: each is the source with one small mistake.

It relies on the layout that clang-format gives: a binary operator has a blank on both sides, and an
angle bracket, a pointer or a reference has not.
"""
import collections
import math
import re

from .mutant_tree import Mutant

TOKEN = re.compile(r"""
    (?P<skip>\s+|\\\n|//[^\n]*|/\*.*?\*/
        |^[ \t]*\#[ \t]*define[ \t]+\w+(\([^)]*\))?   # the name alone: what it stands for is code
        |^[ \t]*\#[ \t]*(?!define)(\\\n|[^\n])*)
  | (?P<string>R"\(.*?\)"|"(\\.|[^"\\])*")
  | (?P<number>\.?\d(\d|\w|\.|'|(?<=[eEpP])[-+])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<op><<=|>>=|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|::|.)
""", re.VERBOSE | re.MULTILINE | re.DOTALL)
Token = collections.namedtuple("Token", "kind text start end")

PRECEDENCE = {"*": 10, "/": 10, "%": 10, "+": 9, "-": 9, "<<": 8, ">>": 8, "<": 7, "<=": 7, ">": 7,
              ">=": 7, "==": 6, "!=": 6, "&": 5, "^": 4, "|": 3, "&&": 2, "||": 1}
OPERATORS = {sign: (kind, others) for kind, table in (
    ("comparison", "< <= >=, <= < >, > >= <=, >= > <, == !=, != =="),
    ("arithmetic", "+ - *, - +, * / +, / *, % *, << >>, >> <<, & |, | &, += -= =, -= +="),
    ("logic", "&& ||, || &&")) for sign, *others in map(str.split, table.split(","))}
TYPES = {"uint64_t": ("uint32_t", "int64_t"), "int64_t": ("int32_t",), "size_t": ("uint32_t",),
         "ptrdiff_t": ("int32_t",), "uint8_t": ("int8_t",), "uint32_t": ("uint16_t",)}
CAST_TYPES = {"int": ("unsigned int", "short"), "unsigned int": ("int", "unsigned short"),
              "double": ("float",), "T": ("int",), "Int": ("int",)}
# Names that are mistaken for one another, each for the next of its group; the axes have rules.
CYCLES = [group.split() for group in """
    i j k, xs ys zs, width height depth, channels depth, getWidth getHeight getDepth, min max,
    getChannels getDepth, src dst, from to, first last, inner outer, innerCount outerCount,
    planeExtent volumeExtent, sum weightSum, roundTo truncateTo, truncateToInt truncateToInt64,
    getValueVoxel getValueReal, byValue byAddress, Interpolator Border, Constant Replication,
    NearestNeighbor Linear Cubic, stub stub_p, STUB STUB_B, true false, lowest last, d d2,
    truncated position, message component, DT_SHORT DT_USHORT, DT_INT DT_UINT,
    kVxImage kInterpolationType,
    kInitializeTwice kInitializeTwiceByCopy kWrapReserved kResizeWrapped,
    kInterpolatorWithoutTable kInterpolatorWithoutTableRunTimeBorder,
    SUCCESS ERR_INVALID_ARGUMENT ERR_NULL_POINTER, ERR_EXTERNAL_MEMORY ERR_ALLOCATION_FAILED,
    ERR_INVALID_X ERR_INVALID_Y ERR_INVALID_Z ERR_INVALID_CHANNEL""".split(",")]
AXIS = re.compile(r"([xyz])(Start|End|)|(\w*[sS]tride|size|voxelSize|spacing|first|last)([X-ZC])")
NEXT_AXIS = dict(zip("xyzXYZC", "yzxYZXX"))
OTHER_END = {"Start": "End", "End": "Start", "first": "last", "last": "first"}
NO_STATEMENT = set("""using template class struct namespace friend extern inline public protected
    private typedef static_assert else for if while enum const constexpr static virtual""".split())


def peers_of(name):
    """The next axis and the other end, as in x, xStart and firstX; what else it is mistaken for."""
    found = []
    axis = AXIS.fullmatch(name)
    if axis:
        lower, end, stem, upper = axis.groups()
        found.append(NEXT_AXIS[lower] + end if lower else stem + NEXT_AXIS[upper])
        if end in OTHER_END or stem in OTHER_END:
            found.append(lower + OTHER_END[end] if lower else OTHER_END[stem] + upper)
    cycles = [cycle for cycle in CYCLES if name in cycle]
    return found + [cycle[(cycle.index(name) + 1) % len(cycle)] for cycle in cycles]


class Mutator:
    def __init__(self, file, source):
        self.file, self.source, self.found = file, source, {}
        self.tokens = [Token(match.lastgroup, match[0], *match.span())
                       for match in TOKEN.finditer(source) if match["skip"] is None]
        self.texts = [token.text for token in self.tokens] + [""]
        self.kinds = [token.kind for token in self.tokens] + [""]
        self.pairs = self.match_brackets()
        self.code = self.find_code()

    def is_binary(self, i):
        around = self.source[self.tokens[i].start - 1] + self.source[self.tokens[i].end]
        return self.kinds[i] == "op" and around[0].isspace() and around[1].isspace()

    def match_brackets(self):
        pairs, opened = {}, []
        closing = {")": "(", "]": "[", "}": "{", ">": "<"}
        for i, text in enumerate(self.texts[:-1]):
            if text in "([{" or (text == "<" and not self.is_binary(i)):
                opened.append(i)
            elif text in closing and not (text == ">" and self.is_binary(i)):
                while opened and self.texts[opened[-1]] != closing[text]:
                    opened.pop()  # an angle bracket that was none
                if opened:
                    pairs[i] = opened.pop()
                    pairs[pairs[i]] = i
        return pairs

    def find_code(self):
        """The indices inside functions, constructors' initialisers and braced initialisers."""
        code = set()
        for i in (i for i in self.pairs if self.texts[i] == "{"):
            head = i
            while head > 0 and self.texts[head - 1] not in (";", "{", "}"):
                head -= 1
            words = self.texts[head:i]
            if ")" in words or not {"class", "struct", "namespace", "enum"} & set(words):
                colon = [k for k in range(head, i) if self.texts[k:k + 2] == [")", ":"]]
                code.update(range(colon[0] + 1 if colon else i, self.pairs[i]))
        return code

    def behind(self, i):
        """The index behind token i, or behind the brackets that it opens."""
        return max(i, self.pairs.get(i, i)) + 1

    def slice(self, first, last):
        return self.source[self.tokens[first].start:self.tokens[last].end]

    def add(self, kind, first, last, text):
        """Tokens first to last, both included, become `text`."""
        start, end = self.tokens[first].start, self.tokens[last].end
        if self.source[start:end] != text:
            mutant = Mutant(self.file, kind, start, end, text, self.source)
            self.found.setdefault((start, end, text), mutant)

    def exchange(self, kind, a, b, c, d):
        between = self.source[self.tokens[b].end:self.tokens[c].start]
        self.add(kind, a, d, self.slice(c, d) + between + self.slice(a, b))

    def loop_or(self, kind, i):
        """A mistake between the brackets of a `for` is one of the loop's bounds."""
        k = next((k for k in range(i, -1, -1) if self.texts[k] in ("{", "}", "for")), 0)
        in_head = self.texts[k] == "for" and i < self.pairs.get(k + 1, 0)
        return "loop bound" if in_head else kind

    def operators(self, i):
        kind, others = OPERATORS.get(self.texts[i], ("", ()))
        for text in others if self.is_binary(i) else ():
            self.add(self.loop_or(kind, i), i, i, text)
        name = self.texts[i + 1]
        if self.texts[i] in ("++", "--") and self.kinds[i + 1] == "name":
            self.add("loop bound", i, i + 1, f"{name} += 2")
            self.add("loop bound", i, i + 1, f"--{name}")
        if self.texts[i] == "!":
            self.add("negation", i, i, "")

    def constants(self, i):
        if self.kinds[i] != "number":
            return
        digits, suffix = re.fullmatch(r"(.*?)([uUlL]*)",
                                      self.texts[i].replace("'", "")).groups()
        if re.fullmatch(r"0[xX][0-9a-fA-F]+|\d+", digits):
            shown = hex if digits[:2] in ("0x", "0X") else str
            others = [shown(int(digits, 0) + 1), shown(int(digits, 0) - 1)]
        else:
            binary = digits[:2] in ("0x", "0X")
            value = float.fromhex(digits) if binary else float(digits)
            others = map(float.hex if binary else repr,
                         (value + 1, value - 1, math.nextafter(value, math.inf)))
        for other in others:
            self.add(self.loop_or("constant", i), i, i, other + suffix)

    def strings(self, i):
        text = self.texts[i]
        if self.kinds[i] == "string" and len(text) > 3:
            cut = 3 if text.startswith("R") else 2
            self.add("text", i, i, text[:-cut] + text[-cut + 1:])
            self.add("text", i, i, text.replace("default", "hidden"))

    def names(self, i):
        name = self.texts[i]
        for text in TYPES.get(name, ()):
            self.add("cast", i, i, text)
        if name == "double" and self.kinds[i + 1] == "name" and self.texts[i + 2] in ("=", "["):
            self.add("cast", i, i, "float")
        declared = self.kinds[i - 1] == "name" and self.texts[i - 1] not in ("return", "throw")
        used = self.kinds[i] == "name" and i in self.code and self.texts[i + 1] != "::"
        if used and not declared:
            is_code = name == "SUCCESS" or name.startswith("ERR_")
            for text in peers_of(name):
                if is_code or text in self.texts:  # else a name that the file does not know
                    self.add("result code" if is_code else "swapped name", i, i, text)

    def casts(self, i):
        if self.texts[i] in ("static_cast", "const_cast") and i + 1 in self.pairs:
            closed = self.pairs[i + 1]
            self.add("cast", i, closed, "")
            for text in CAST_TYPES.get(" ".join(self.texts[i + 2:closed]), ()):
                self.add("cast", i + 2, closed - 1, text)

    def arguments(self, i):
        """Neighbouring arguments exchanged, in calls and in braced lists; a lone one dropped."""
        called = self.texts[i] == "{" or (self.texts[i] == "(" and (
            self.texts[i - 1] == ">" or self.kinds[i - 1] == "name")
            and self.texts[i - 1] not in ("if", "for", "while"))
        if not called or i not in self.pairs or i not in self.code:
            return
        parts, start, k, last = [], i + 1, i + 1, self.pairs[i]
        while k < last:
            if self.texts[k] == ";":
                return
            if self.texts[k] == ",":
                parts.append((start, k - 1))
                start = k + 1
            k = self.behind(k)
        parts.append((start, last - 1))
        if len(parts) == 1 and self.texts[i] == "{" and self.kinds[i - 1] == "name" and k > i + 1:
            self.add("dropped statement", start, last - 1, "")
        for (a, b), (c, d) in zip(parts, parts[1:]):
            self.exchange("swapped operands", a, b, c, d)

    def statements(self, i):
        """A statement dropped; in the lists of instantiations an entry, or two exchanged."""
        if i not in self.code or self.texts[i - 1] not in (";", "{", "}") or \
                self.texts[i] in NO_STATEMENT or self.loop_or("", i) or \
                (self.kinds[i] != "name" and self.texts[i] not in ("(", "*")):
            return
        end = self.behind(i)
        while self.texts[end] not in (";", "}", ")", ":", ""):
            end = self.behind(end)
        guarded = self.texts[i - 2:i] == [")", "{"] and self.texts[self.pairs[i - 2] - 1] == "if"
        declares = self.kinds[i:i + 2] == ["name", "name"]
        if self.texts[end] == ";" and (guarded if self.texts[i] == "return" else not declares):
            self.add("dropped statement", i, end, "")

    def entries(self, i):
        """In the lists of instantiations: an entry dropped, or exchanged with the next one."""
        if not self.file.endswith(".inc") or not self.texts[i].isupper() or \
                self.texts[i + 1] != "(" or \
                not self.source[:self.tokens[i].start].rstrip(" ").endswith("\\\n"):
            return
        end = self.pairs[i + 1]
        if self.texts[end + 1] == self.texts[i]:
            self.add("dropped statement", i, end, "")
            if self.texts[i] == "APPLY":
                self.exchange("order", i, end, end + 1, self.pairs[end + 2])

    def condition(self, i):
        """The index of the bracket that opens the condition of the `if` at i."""
        return i + 1 if self.texts[i + 1] == "(" else i + 2

    def conditions(self, i):
        """A condition negated; two in a row exchanged; the arms of ?: exchanged."""
        if self.texts[i] == "if" and i in self.code:
            opened = self.condition(i)
            closed = self.pairs[opened]
            self.add("negation", opened, closed, f"(!{self.slice(opened, closed)})")
            end = self.pairs.get(closed + 1, closed)
            if self.texts[closed + 1] == "{" and self.texts[end + 1] == "if":
                next_closed = self.pairs[self.condition(end + 1)]
                self.exchange("order", i, end, end + 1, self.pairs[next_closed + 1])
        if self.texts[i] == "?":
            end = i + 1
            while self.texts[end] not in (";", ")", ",", "?", ""):
                colon, end = end if self.texts[end] == ":" else i, self.behind(end)
                if self.texts[colon] == ":":
                    middle = colon
            if self.texts[end] != "?":
                self.add("negation", i + 1, end - 1, self.slice(middle + 1, end - 1) + " : "
                         + self.slice(i + 1, middle - 1))

    def operand(self, i):
        """The index behind the operand that begins at i."""
        while self.texts[i] in ("!", "*", "&", "-", "+"):
            i += 1
        first = i
        while True:
            joined = i == first or self.texts[i - 1] in ("::", ".", "->", "template")
            if self.texts[i] in ("::", ".", "->") or \
                    (self.kinds[i] in ("name", "number", "string") and joined):
                i += 1
            elif self.pairs.get(i, 0) > i and (self.texts[i] in ("(", "[")
                                               or (self.texts[i] == "<" and i > first)):
                i = self.behind(i)
            else:
                return i

    def expression(self, i, lowest=0):
        """Parses by precedence; gives the index behind it and the last operation's outline."""
        end, outline = self.operand(i), None
        while i < end < len(self.tokens) and self.is_binary(end) and \
                PRECEDENCE.get(self.texts[end], -1) > lowest:
            right_end, _ = self.expression(end + 1, PRECEDENCE[self.texts[end]])
            if right_end == end + 1:
                break
            self.operation(i, end, right_end - 1, outline)
            outline, end = (i, end, right_end - 1), right_end
        return end, outline

    def operation(self, first, op, last, left):
        """Operands exchanged, operations regrouped; `left` is the left operand's own operation."""
        sign, b = self.texts[op], self.slice(op + 1, last)
        if sign in ("-", "/", "%", ">>", "<<"):
            self.add("swapped operands", first, last, f"{b} {sign} {self.slice(first, op - 1)}")
        if left is None and self.texts[first] == "(" and self.pairs.get(first) == op - 1:
            end, left = self.expression(first + 1)
            left = left if end == op - 1 else None
        if left and sign in ("+", "-", "*", "/") and \
                PRECEDENCE[self.texts[left[1]]] == PRECEDENCE[sign]:
            a, inner = self.slice(left[0], left[1] - 1), self.texts[left[1]]
            middle = self.slice(left[1] + 1, left[2])
            self.add("order", first, last, f"{a} {inner} ({middle} {sign} {b})")
            self.add("order", first, last, f"({a} {sign} {b}) {inner} {middle}")

    def mutants(self):
        for i in range(len(self.tokens) - 1):
            for rule in (self.operators, self.constants, self.strings, self.names, self.casts,
                         self.arguments, self.statements, self.entries, self.conditions):
                rule(i)
            if i in self.code and self.texts[i - 1] in ("(", "[", "{", ",", ";", "=", "return", "?",
                                                        ":", "+="):
                self.expression(i)
        return list(self.found.values())
