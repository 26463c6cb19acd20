"""Whole volumes by volux_resample beside the bulk operations of other libraries, round by round."""
import statistics

from evidence.markdown import heading, table

from . import goals, programs, times

TITLE = "Whole volumes"
SETS = ("AVX-512", "AVX2", "SSE4", "scalar")  # the best first
PEERS = tuple(programs.BULK.peers)
MEMORY = "rows"
THREADS = ("one thread", "two threads")
VIEWS = ("flipped", "into float")  # beside the image
LABELS = ("nearest", "linear", "Labels", "each label", "ITK")
FRAME = 1e3 / 60  # ms
# A peer this many times slower than the fastest in the first round is not asked again.
HOPELESS = 2
WORKLOADS = {
    "A": "Whole volumes, A: oblique",
    "B": "Whole volumes, B: upsampling along the axes",
    "C": "Whole volumes, C: random positions",
    "W": "Whole volumes, W: through a displacement field",
}


def add_arguments(parser):
    times.add_arguments(parser, rounds=7)


def is_wanted(measured, competitor):
    if competitor not in PEERS or competitor not in measured:
        return True
    fastest = min(measured[peer][0] for peer in PEERS if peer in measured)
    return measured[competitor][0] <= HOPELESS * fastest


def check_goals(rows):
    goals.check([row for row in rows if not row.startswith(("growth/", "labels/", "views/"))],
                (*goals.BULK, goals.GRADIENTS, goals.THREADS))


def run(options):
    return times.timed(programs.BULK, options, check_goals, is_wanted=is_wanted)


def begins(record, word):
    return {row: measured for row, measured in record["times"].items()
            if row.startswith(word + "/")}


def median(measured, name):
    return statistics.median(measured[name]) if name in measured else None


def workload(letter, record):
    rows = begins(record, letter)
    if not rows:
        return []
    names = [name for name in (*SETS, MEMORY, *PEERS)
             if any(name in found for found in rows.values())]
    lines = [line for row, found in rows.items()
             for line in times.row_lines(row, found, names, goals.BULK)]
    return [*heading(3, WORKLOADS[letter]),
            *table(["voxels", "kernel", "border", *(f"{name}, ns" for name in names), "ours",
                    *times.RATIO_HEADS], lines)]


def plane(record):
    pixels = 512 * 512
    rows = []
    for row, found in begins(record, "plane").items():
        _, voxels, _, border = row.split("/")
        for name in (*SETS, *PEERS):
            if name in found:
                spent = median(found, name) * pixels / 1e6
                rows.append([voxels, border, name, f"{spent:.2f}", f"{spent / FRAME:.0%}"])
    if not rows:
        return []
    return [*heading(3, "An oblique plane of 512 x 512"),
            *table(["voxels", "border", "by", "ms", "of 1/60 s"], rows)]


def threads(record):
    rows = []
    for row, found in begins(record, "threads").items():
        gains = times.ratios(found, [THREADS[1]], THREADS[0])
        if gains is None:
            continue
        gain = statistics.median(gains)
        rows.append([*row.split("/")[1:], *(times.shown(median(found, name)) for name in THREADS),
                     times.spread(gains),
                     *(cell for bound in (goals.THREADS.most, goals.THREADS.aim)
                       for cell in (f"{1 / bound:.2f}", "yes" if gain * bound >= 1 else "**no**"))])
    if not rows:
        return []
    return [*heading(3, "Two threads"),
            *table(["workload", "kernel", "one, ns", "two, ns", "times as fast (quartiles)",
                    "at least", "holds", "aim", "holds"], rows)]


def views(record):
    rows = []
    for row, found in begins(record, "views").items():
        cells = [*row.split("/")[1:], times.shown(median(found, "image"))]
        for name in VIEWS:
            cells += [times.shown(median(found, name)),
                      times.spread(times.ratios(found, ["image"], name))]
        rows.append(cells)
    if not rows:
        return []
    return [*heading(3, "Views, and results of another type"),
            *table(["workload", "kernel", "image, ns",
                    *(head for name in VIEWS for head in (f"{name}, ns", "ratio (quartiles)"))],
                   rows)]


def means(record):
    rows = []
    for row, found in begins(record, "means").items():
        names = (goals.MEANS, "ITK", "scipy")
        cells = [times.shown(median(found, name)) if name in found else "" for name in names]
        rows.append([*row.split("/")[1:], *cells,
                     *(cell for goal in goals.goals_of(row, goals.BULK)
                       for cell in times.ratio_cells(found, goal)[:4])])
    if not rows:
        return []
    return [*heading(3, "Means of blocks"),
            "Nanoseconds for a voxel of a source of 256^3: `kAntialiased`, "
            "`BinShrinkImageFilter`, and `gaussian_filter` followed by `zoom`.", "",
            *table(["voxels", "factor", "volux, ns", "ITK, ns", "scipy, ns",
                    *(head for _ in range(2)
                      for head in ("against", "ratio (quartiles)", "at most", "holds"))], rows)]


def labels(record):
    rows = []
    for row, found in begins(record, "labels").items():
        cells = row.split("/")[1:]
        for name in LABELS:
            cells.append(times.shown(median(found, name)) if name in found else "")
        rows.append([*cells, times.spread(times.ratios(found, ["linear"], "Labels"))])
    if not rows:
        return []
    return [*heading(3, "Label maps"),
            *table(["workload", "map", *(f"{name}, ns" for name in LABELS),
                    "Labels to linear (quartiles)"], rows)]


def gradients(record):
    rows = [[*row.split("/")[1:], times.shown(median(found, "reading")),
             times.shown(median(found, "gradient")),
             *times.ratio_cells(found, goals.GRADIENTS)[1:4]]
            for row, found in begins(record, "gradients").items()]
    if not rows:
        return []
    return [*heading(3, "Derivatives beside readings alone"),
            *table(["workload", "voxels", "kernel", "reading, ns", "with derivatives, ns",
                    *times.RATIO_HEADS[1:4]], rows)]


def growth(record):
    """A line for each size, from the rows growth/WHAT/SIZE."""
    cells = {}
    for row, found in begins(record, "growth").items():
        _, what, size = row.split("/")
        for name in found:
            column = what if name == "memcpy" else f"{what}, {name}"
            cells.setdefault(int(size), {})[column] = times.shown(median(found, name))
    if not cells:
        return []
    heads = list(dict.fromkeys(head for line in cells.values() for head in line))
    return [*heading(3, "Growth"), "Nanoseconds for a sample.", "",
            *table(["voxels", *heads],
                   [[f"{size}^3", *(line.get(head, "") for head in heads)]
                    for size, line in sorted(cells.items())])]


def tables(record):
    """The record as Markdown."""
    lines = [*times.beside(record), *times.overview(record, goals.BULK)]
    for letter in WORKLOADS:
        lines += workload(letter, record)
    return [*lines, *plane(record), *threads(record), *views(record), *means(record),
            *labels(record), *gradients(record),
            *growth(record),
            *times.agreement(record, "Whole volumes: agreement with volux_core")]
