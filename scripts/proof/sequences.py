"""Every sequence of calls on an image, compared with a model after each call."""
import argparse
import resource
import subprocess
import time

from evidence.commands import CORES, at_once, install

from .builds import release
from .results import Result, Table

TITLE = "Every sequence"
PROMISE = "An image is what its calls made it, whatever calls came before."
BREAKER = "A state that a call leaves behind, or that an allocation that fails leaves half done."
CI_RUN = ["--calls", "4"]
WHOLE_RUN = ["--calls", "5"]

TYPES = {"uchar": "unsigned char", "short": "short", "ushort": "unsigned short", "int": "int",
         "uint": "unsigned int", "float": "float", "double": "double"}
MOST_CALLS = 8
CHOICES = 24  # twelve calls, each with an allocation that succeeds or fails


def one_share(program, name, calls, share):
    """Sequences and calls that one program made, or what it found to differ."""
    done = subprocess.run([program, name, str(calls), str(share), str(CORES)], capture_output=True,
                          text=True)
    words = done.stdout.split()
    if done.returncode == 0 and words[1::2] == ["sequences", "calls"]:
        return int(words[0]), int(words[2]), None
    said = (done.stdout + done.stderr).strip()
    return 0, 0, said or f"the program ends with status {done.returncode}"


def all_shares(program, calls):
    """For each type what its programs came to, as many at a time as there are cores."""
    return [at_once(lambda share: one_share(program, name, calls, share), range(CORES))
            for name in TYPES]


def number_of_calls(text):
    if text not in map(str, range(1, MOST_CALLS + 1)):
        raise argparse.ArgumentTypeError(f"'{text}' is not a number from 1 to {MOST_CALLS}")
    return int(text)


def add_arguments(parser):
    parser.add_argument("--calls", type=number_of_calls, default=5,
                        help=f"the most calls in a sequence, 1 to {MOST_CALLS} (5)")


def run(options):
    install("test")
    folder = release("lifecycle_sequences")
    program = folder / "tests" / "proof" / "sequences" / "lifecycle_sequences"
    start, used = time.monotonic(), resource.getrusage(resource.RUSAGE_CHILDREN)
    rows, differences = [], []
    for name, found in zip(TYPES, all_shares(program, options.calls)):
        rows.append([f"`{TYPES[name]}`", options.calls, f"{sum(made[0] for made in found):,}",
                     f"{sum(made[1] for made in found):,}"])
        differences += [f"{TYPES[name]}: {made[2]}" for made in found if made[2] is not None]
    for difference in differences:
        print(f"  {difference}", flush=True)
    now = resource.getrusage(resource.RUSAGE_CHILDREN)
    spent = now.ru_utime + now.ru_stime - used.ru_utime - used.ru_stime
    print(f"  {spent:.0f} s of processor time in {time.monotonic() - start:.0f} s", flush=True)
    return result(rows, differences, options.calls)


def result(rows, differences, longest):
    calls = sum(int(row[3].replace(",", "")) for row in rows)
    sequences = sum(int(row[2].replace(",", "")) for row in rows)
    agreed = ("all as the model has it" if not differences
              else f"but a program says: {differences[0]}")
    every = len(TYPES) * sum(CHOICES**length for length in range(1, longest + 1))
    if not differences and sequences != every:
        agreed = f"of {every:,} that there are"
    return Result(not differences and sequences == every,
                  f"{sequences:,} sequences of {calls:,} calls, {agreed}.",
                  [Table("Sequences by element type",
                         ["element type", "up to so many calls", "sequences", "calls"], rows)],
                  complete=longest >= 5)
