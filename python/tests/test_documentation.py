"""What the docstrings say is so."""

import doctest
import importlib
import inspect
import pkgutil
import re

import pytest
import volux

MODULES = [module.name for module in pkgutil.iter_modules(volux.__path__) if module.name != "_core"]
PUBLIC = [getattr(volux, name) for name in volux.__all__ if name != "ndimage"]


def described():
    """Every public function and method, and every class that is made by a call."""
    for thing in PUBLIC:
        yield thing
        if inspect.isclass(thing):
            for name, member in vars(thing).items():
                if not name.startswith("_") and callable(getattr(thing, name)):
                    yield inspect.unwrap(getattr(member, "__func__", member))


CALLS = [thing for thing in described() if inspect.isfunction(inspect.unwrap(thing))]


@pytest.mark.parametrize("module", MODULES)
def test_examples_print_what_they_say(module):
    if module == "dask":
        pytest.importorskip("dask")
    ran = doctest.testmod(importlib.import_module(f"volux.{module}"))
    assert ran.failed == 0


@pytest.mark.parametrize("name", volux.__all__)
def test_every_public_name_is_described(name):
    assert inspect.getdoc(getattr(volux, name))


@pytest.mark.parametrize("call", CALLS, ids=lambda call: call.__qualname__)
def test_every_parameter_is_described(call):
    text = inspect.getdoc(call)
    section = re.search(r"Parameters\n-+\n(.*?)(\n\n[A-Z]\w+\n-+|$)", text, re.DOTALL)
    names = [name for name in inspect.signature(call).parameters if name not in ("self", "cls")]
    listed = re.findall(r"^(\w[\w, ]*?)(?: :|$)", section[1] if section else "", re.MULTILINE)
    assert [name for line in listed for name in line.split(", ")] == names


@pytest.mark.parametrize("call", CALLS, ids=lambda call: call.__qualname__)
def test_every_call_says_what_it_returns(call):
    assert "Returns\n-------\n" in inspect.getdoc(call)


@pytest.mark.parametrize(
    "thing",
    [thing for thing in described() if thing is not volux.AliasingWarning],
    ids=lambda thing: thing.__qualname__,
)
def test_everything_that_is_called_has_an_example(thing):
    assert "Examples\n--------\n>>> " in inspect.getdoc(thing)


def test_the_version_is_that_of_the_distribution():
    from importlib.metadata import version

    assert volux.__version__ == version("volux")


def test_the_calls_of_scipy_are_there_without_an_import_of_their_own():
    assert volux.ndimage.zoom.__module__ == "volux.ndimage"


def test_a_name_that_is_not_there_is_refused():
    with pytest.raises(AttributeError, match="module 'volux' has no attribute 'zoom'"):
        volux.zoom  # noqa: B018


def test_all_public_names_are_listed():
    assert set(volux.__all__) <= set(dir(volux))
