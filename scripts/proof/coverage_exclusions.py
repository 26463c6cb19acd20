"""What is left out of the figures of coverage, one by one: each exclusion has its reason, and must
leave out something that no test reaches."""
import re

from evidence import commands


def excluded_in(file, coverage, pattern):
    """Takes the functions of a file that a pattern finds out of the figures; gives how many lines
    and functions there were, or None if a test executes one of them."""
    functions, lines = coverage.functions[file], coverage.lines[file]
    found = [name for name in functions if re.search(pattern, name)]
    if any(functions[name] for name in found):
        return None
    unseen = {line for name in found for first, last in coverage.extents[file, name]
              for line in range(first, last + 1) if lines.get(line) == 0}
    for line in unseen:
        del lines[line]
    for name in found:
        del functions[name]
    return len(unseen), len(found)


def taken_out(coverages, pattern):
    """Does so in each file of each coverage; gives the counts by file, or None if a test executes
    one of the functions."""
    taken = {}
    for coverage in coverages:
        for file in list(coverage.functions):
            counts = excluded_in(file, coverage, pattern)
            if counts is None:
                return None
            if counts[1]:
                taken[file] = [a + b for a, b in zip(taken.get(file, (0, 0)), counts)]
    return taken


def exclude_functions(exclusions, coverages):
    """Takes excluded functions out of the figures; gives the table's rows and what is stale."""
    rows, stale = [], []
    for pattern, reason in exclusions:
        taken = taken_out(coverages, pattern)
        if not taken:
            stale.append(f"a stale exclusion: `{pattern}`")
            continue
        rows += [[file, f"functions `{pattern}`", "{} lines, {} functions".format(*counts), reason]
                 for file, counts in taken.items()]
    return rows, stale


def branch_of(branches, condition):
    """The place of the branch that a condition is, by its place within the decision; None where
    the compiler knows its outcome."""
    *function, first_line, first, last_line, last, number = condition
    inside = sorted(place for place in branches if list(place[:3]) == function
                    and (first_line, first) <= place[3:5] and place[5:7] <= (last_line, last))
    return inside[number - 1] if number <= len(inside) else None


def conditions_of(coverage, function, number):
    """The conditions of that number in functions of that name: the measure that each is in and its
    place there, with those of the branch that it is."""
    for file, conditions in coverage.conditions.items():
        for place in conditions:
            if function in place[2] and place[-1] == number:
                branches = coverage.branches[file]
                yield file, (conditions, place), (branches, branch_of(branches, place))


def found_by(exclusion, coverages):
    """What an exclusion of a condition leaves out, or nothing if a test reaches a part of it."""
    found = [one for coverage in coverages for one in conditions_of(coverage, *exclusion[:2])]
    reached = any(seen[place] for _, *both in found for seen, place in both)
    return [] if reached else found


def exclude_conditions(exclusions, coverages):
    """Likewise for single conditions, with their branches, which are found before any goes."""
    rows, stale = [], []
    taken = [found_by(exclusion, coverages) for exclusion in exclusions]
    for (function, number, reason), found in zip(exclusions, taken):
        if not found:
            stale.append(f"a stale exclusion: condition {number} of `{function}`")
            continue
        for _, *both in found:
            for seen, place in both:
                del seen[place]
        files = ", ".join(dict.fromkeys(file for file, *_ in found))
        rows.append([files, f"condition {number} of `{function}`",
                     f"{len(found)} condition and branch", reason])
    return rows, stale


def begins_with(text, file, line, column=None):
    """Whether a text stands at a place of a source; without a column, whether a line begins so."""
    lines = (commands.ROOT / file).read_text(encoding="utf-8").splitlines()
    found = lines[line - 1] if line <= len(lines) else ""
    return (found.lstrip() if column is None else found[column - 1:]).startswith(text)


def places_of(coverage, file, text):
    """The lines, branches and conditions of a file that begin with a text: the measure that each
    is in, and its place there."""
    lines, branches = coverage.lines[file], coverage.branches[file]
    conditions = coverage.conditions[file]
    yield from ((lines, line) for line in lines if begins_with(text, file, line))
    found = {place for place in branches if begins_with(text, file, *place[3:5])}
    yield from ((branches, place) for place in found)
    yield from ((conditions, place) for place in conditions if branch_of(branches, place) in found)


def exclude_places(exclusions, coverages):
    """Likewise for single places, as the source has them, where some instruction sets may reach
    what others cannot. What is reached stays in the figures."""
    rows, stale = [], []
    taken = [[(seen, place) for coverage in coverages
              for seen, place in places_of(coverage, file, text) if not seen[place]]
             for file, text, _ in exclusions]
    for (file, text, reason), found in zip(exclusions, taken):
        if not found:
            stale.append(f"a stale exclusion: `{text}` in {file}")
            continue
        for seen, place in found:
            seen.pop(place, None)
        rows.append([file, f"`{text}`", f"{len(found)} lines, branches and conditions", reason])
    return rows, stale
