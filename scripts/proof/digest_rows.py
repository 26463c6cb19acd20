"""The builds that the digest is taken of: compilers, flags, and how their programs are run."""
import dataclasses
import itertools
import re
import subprocess
from pathlib import Path

from evidence.commands import ROOT

from . import sysroot
from .builds import BUILD

# Each corpus: its program, and the positions or the rounds of requests in each volume, or the
# geometries.
SIZES = {
    "full": ("sampler", 2000),
    "small": ("sampler", 100),
    "bulk": ("single_calls", 6),
    "bulk-small": ("single_calls", 1),
    "world": ("world_maps", 3000),
}
WHOLE = tuple(SIZES)
SMALL = ("small", "bulk-small", "world")
BULK = ("bulk", "world")
SMALL_BULK = ("bulk-small", "world")
ASKED = ("bulk", "bulk-small")
THREADS = (1, 2, 3, 7, 16)

COMPILERS = ("g++-12", "g++-11", "clang++-14", "clang++-16", "clang++-19", "clang++-22")
FLAGS = ("-O0", "-O1", "-O2", "-O3", "-Os", "-O2 -flto", "-O3 -march=x86-64-v3",
         "-O3 -march=native")
EMULATED = {  # the target: what Debian's compiler and libraries for it are called, and its emulator
    "aarch64": ("aarch64-linux-gnu", "aarch64"),
    "armhf": ("arm-linux-gnueabihf", "arm"),
    "riscv64": ("riscv64-linux-gnu", "riscv64"),
    "ppc64le": ("powerpc64le-linux-gnu", "ppc64le"),
    "s390x": ("s390x-linux-gnu", "s390x"),
}
SYSROOTS = {"aarch64": "arm64", "s390x": "s390x"}  # whose Highway is fetched: Debian's name
IN_CI = ("g++-12", "clang++-14", "s390x-linux-gnu-g++")  # the group digest; digest-all has the rest


@dataclasses.dataclass(frozen=True)
class Row:
    """One build, and how its program is run."""

    target: str
    compiler: str
    flags: str
    runner: tuple = ()
    corpora: tuple = WHOLE
    fused: bool = False
    bulk: bool = False  # volux_resample answers instead of volux_core
    python: bool = False  # the Python package does
    release: bool = False  # in a build that other checks and tests use
    linker: str = ""  # another compiler, whose libraries and linker this one uses

    def with_small_corpora(self):
        """Returns the row with the small part of each corpus that has one, in its place."""
        small = {"full": "small", "bulk": "bulk-small"}
        return dataclasses.replace(self, corpora=tuple(
            dict.fromkeys(small.get(corpus, corpus) for corpus in self.corpora)))

    @property
    def name(self):
        return (f"{self.target} {self.build}" + (" fused" if self.fused else "")
                + (" release" if self.release else "") + (" bulk" if self.bulk else "")
                + (" python" if self.python else ""))

    @property
    def folder(self):
        """Rows that are compiled alike share one: they differ by their programs alone."""
        return BUILD / "digest" / re.sub(r"[^\w.+=]+", "-", f"{self.target} {self.build}")

    @property
    def build(self):
        return f"{self.compiler} {self.flags}"

    @property
    def log(self):
        return "proof-digest-" + re.sub(r"[^\w.+=]+", "-", self.name)

    @property
    def programs(self):
        return [program for program in (self.compiler, self.linker, *self.runner[:1]) if program]

    def program_of(self, corpus):
        program = SIZES[corpus][0]
        if self.python:
            return "python_calls"
        if self.bulk:
            return {"single_calls": "bulk_calls", "world_maps": "bulk_maps"}[program]
        if self.fused:
            return f"contracted_{program}"
        return "digest_sampler" if program == "sampler" else program

    @property
    def group(self):
        return "digest" if self.compiler in IN_CI else "digest-all"


def native_rows():
    # x86-64-v3 is emulated where the processor is older.
    known = Path("/proc/cpuinfo").read_text(encoding="utf-8").split()
    v3 = () if {"avx2", "fma", "bmi2"} <= set(known) else ("qemu-x86_64-static", "-cpu", "max")

    def row(compiler, flags, fused=False):
        return Row("x86-64", compiler, flags, v3 if "v3" in flags else (), fused=fused)
    return [row(*words) for words in itertools.product(COMPILERS, FLAGS)] + [
        row("g++-12", "-O3 -march=x86-64-v3", fused=True)]


def sysroot_libraries(target):
    """Where Highway for an emulated processor is unpacked."""
    return sysroot.folder_of(SYSROOTS[target]) / "usr" / "lib" / EMULATED[target][0]


def bulk_rows():
    def emulated(target, flags, corpora):
        triple, processor = EMULATED[target]
        runner = (f"qemu-{processor}-static", "-L", f"/usr/{triple}",
                  "-E", f"LD_LIBRARY_PATH={sysroot_libraries(target)}")
        return Row(target, f"{triple}-g++", flags, runner, corpora, bulk=True)
    return [Row("x86-64", compiler, flags, corpora=BULK, bulk=True) for compiler, flags in
            (("g++-12", "-O2"), ("g++-12", "-O3 -march=x86-64-v3"), ("clang++-14", "-O3"),
             ("clang++-19", "-O2"))] + [
        emulated("aarch64", "-O2", BULK), emulated("aarch64", "-O3", BULK),
        emulated("s390x", "-O2", SMALL_BULK)]


def python_rows():
    """The compiler and its flags are those of the program that asks: the wheel has its own."""
    return [Row("x86-64", "g++-12", "-O2", corpora=ASKED, python=True)]


def release_rows():
    return [Row("x86-64", compiler, "-O3", corpora=corpora, bulk=corpora == BULK, release=True)
            for compiler in ("g++", "clang++") for corpora in (WHOLE, BULK)]


def i386_rows():
    """Run by the processor itself, if the system lets it, with the cross compiler's C library."""
    folder = Path("/usr/i686-linux-gnu/lib")
    runner, corpora = (str(folder / "ld-linux.so.2"), "--library-path", str(folder)), Row.corpora
    try:
        subprocess.run([runner[0], "--version"], capture_output=True, check=False)
    except FileNotFoundError:
        pass  # it comes with the compiler
    except OSError:
        runner, corpora = ("qemu-i386-static", "-L", str(folder.parent)), SMALL
    return [Row("i386", "i686-linux-gnu-g++", f"{level} -msse2 -mfpmath=sse", runner, corpora)
            for level in ("-O0", "-O2", "-O3")]


def emulated_rows():
    def row(target, flags, compiler=None, fused=False):
        triple, processor = EMULATED[target]
        runner = (f"qemu-{processor}-static", "-L", f"/usr/{triple}")
        own = f"{triple}-g++"
        return Row(target, compiler or own, flags, runner, SMALL, fused, linker=own)
    return [row(*words) for words in itertools.product(EMULATED, ("-O0", "-O2", "-O3"))] + [
        row(target, f"-O2 --target={EMULATED[target][0]}", "clang++-19") for target in EMULATED] + [
        row("aarch64", "-O2", fused=True)]


def wasm_rows():
    """WebAssembly, which node compiles for the processor."""
    runner = ("node", "--no-warnings", "--experimental-wasi-unstable-preview1",
              str(ROOT / "tests" / "proof" / "digest" / "wasm_run.mjs"))
    return [Row("wasm32", "clang++-19", f"{flags} --target=wasm32-wasi", runner,
                linker="wasm-ld-19") for flags in ("-O0", "-O2", "-O3 -msimd128")]


def all_rows():
    return (native_rows() + release_rows() + bulk_rows() + python_rows() + i386_rows()
            + emulated_rows() + wasm_rows())
