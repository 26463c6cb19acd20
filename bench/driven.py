"""What the bench's programs in Python share: they are asked for cases as the C++ programs are."""
import json
import sys

SHORTEST = 10_000_000  # nanoseconds that a figure comes from, at least


def timed(call, clock, times=1):
    """Passes, so many at a time, and the nanoseconds that they took, after one that does not
    count."""
    call()
    passes = spent = 0
    while spent < SHORTEST:
        start = clock()
        for _ in range(times):
            call()
        spent += clock() - start
        passes += times
    return passes, spent


def drive(cases, measure):
    """Lists the cases if asked to, and otherwise measures each that is named on stdin."""
    if sys.argv[1:] == ["--benchmark_list_tests"]:
        print("\n".join(cases))
        return
    for line in sys.stdin:
        print(json.dumps({"benchmarks": [measure(line.rstrip("\n"))]}), "\nend", sep="", flush=True)
