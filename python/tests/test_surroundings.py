"""Processes that are not as usual: the same bits, or an exception."""

import os
import platform
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

PROGRAM = Path(__file__).with_name("surroundings.py")
UNDER_ASAN = "asan" in os.environ.get("LD_PRELOAD", "")

FLUSHING = """
#include <xmmintrin.h>
void flush_denormals(void) { _mm_setcsr(_mm_getcsr() | 0x8040); }
"""


def ends_well(*words):
    ran = subprocess.run([sys.executable, PROGRAM, *words], capture_output=True, text=True)
    assert (ran.returncode, ran.stderr) == (0, "")


def test_a_thread_with_a_small_stack_gets_the_same_bits():
    ends_well("a_thread_of_64_kib")


def test_threads_of_another_library_change_no_bit():
    ends_well("threads_of_another_library_beside_ours")


@pytest.mark.skipif(platform.machine() != "x86_64", reason="what flushes is written for x86-64")
@pytest.mark.skipif(shutil.which("cc") is None, reason="needs a C compiler, cc")
def test_denormals_that_are_flushed_change_no_bit_of_other_numbers(tmp_path):
    built = tmp_path / "flushing.so"
    (tmp_path / "flushing.c").write_text(FLUSHING)
    subprocess.run(["cc", "-shared", "-fPIC", tmp_path / "flushing.c", "-o", built], check=True)
    ends_well("denormals_that_another_library_flushes", built)


@pytest.mark.skipif(UNDER_ASAN, reason="the sanitizer takes address space")
@pytest.mark.skipif(sys.platform != "linux", reason="needs Linux")
def test_little_address_space_is_a_memory_error_and_nothing_worse():
    ends_well("little_address_space")
