"""Outcomes of rows, kept so that a run which is cut goes on."""
import hashlib
import json

from evidence import package, provenance
from evidence.commands import ROOT, version

from .builds import BUILD

KEPT = BUILD / "digest-kept"


def circumstances(row):
    """Returns the digest of all that an outcome can depend on."""
    digest = hashlib.sha256()
    words = [repr(row), package.ingredients(), provenance.machine(),
             *(version(program) for program in row.programs)]
    digest.update("\n".join(words).encode())
    tests = ROOT / "tests"
    for path in sorted({*tests.rglob("*.h"), *(tests / "proof" / "digest").glob("*.*")}):
        digest.update(path.read_bytes())
    return digest.hexdigest()


def path_of(row):
    return KEPT / f"{row.log}-{'-'.join(row.corpora)}.json"


def keep(row, found):
    """Keeps the digests that were found by the words of each run, of one row."""
    KEPT.mkdir(parents=True, exist_ok=True)
    facts = {"of": circumstances(row), "found": found}
    path_of(row).write_text(json.dumps(facts), encoding="utf-8")


def known(row):
    """Returns what was found before in the same circumstances, or None."""
    try:
        facts = json.loads(path_of(row).read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return None
    return facts["found"] if facts["of"] == circumstances(row) else None
