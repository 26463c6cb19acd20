"""Reads what callgrind writes."""
import re


def own_costs(text, names):
    """Instructions by (object, function), those of a function's callees not among them.

    A program's several dumps abbreviate in common: names keeps what the abbreviations stand for.
    """
    costs, where = {}, {"ob": "", "fn": ""}
    calls = False
    for line in text.splitlines():
        entered = re.match(r"(ob|fn)=\((\d+)\)(?: (.*))?$", line)
        called = re.match(r"c(ob|fn)=\((\d+)\)(?: (.*))?$", line)
        for match in filter(None, (entered, called)):
            key = (match[1], match[2])
            names[key] = match[3] or names[key]
        if entered:
            where[entered[1]] = names[entered[1], entered[2]]
        elif line.startswith("calls="):
            calls = True  # the line that follows tells what the callee cost, which counts there
        elif re.match(r"[+*-]?\d* ?\S* \d+$", line) and line[0] in "+-*0123456789":
            if not calls:
                key = (where["ob"], where["fn"])
                costs[key] = costs.get(key, 0) + int(line.split()[-1])
            calls = False
    return costs
