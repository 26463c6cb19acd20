"""Interrupts long calls by SIGINT, and prints for each the seconds from the signal to
KeyboardInterrupt. Usage: interrupts.py CALLS THREADS"""
import os
import random
import signal
import sys
import threading
import time

import numpy
import volux

SOURCE = numpy.zeros((48, 48, 48), numpy.int16)
SHEAR = numpy.eye(4) + numpy.eye(4, k=1) * [[0.1], [0.1], [0.1], [0]]
LONG = volux.Grid((700, 700, 700), SHEAR)
EARLIEST, LATEST = 0.02, 0.2  # seconds after the beginning of a call


def seconds_to_interrupt(delay, threads):
    sent = []

    def send():
        sent.append(time.perf_counter())
        os.kill(os.getpid(), signal.SIGINT)

    timer = threading.Timer(delay, send)
    timer.start()
    try:
        volux.resample(SOURCE, LONG, interpolation="cubic", outside="extend", threads=threads)
    except KeyboardInterrupt:
        return time.perf_counter() - sent[0]
    finally:
        timer.join()
    raise SystemExit("a call ended before its interrupt")


def main(calls, threads):
    signal.signal(signal.SIGINT, signal.default_int_handler)  # also in the background
    draw = random.Random(7)
    for _ in range(calls):
        print(seconds_to_interrupt(draw.uniform(EARLIEST, LATEST), threads), flush=True)


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
