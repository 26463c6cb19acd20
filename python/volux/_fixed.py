"""Objects that do not change once they are made."""

from __future__ import annotations


class Fixed:
    """Lets each attribute be set once."""

    __slots__ = ()

    def __setattr__(self, name: str, value: object) -> None:
        """Set an attribute that has no value yet."""
        if hasattr(self, name):
            raise AttributeError(f"{name} of a {type(self).__name__} cannot be changed")
        object.__setattr__(self, name, value)
