"""What the library may answer besides Python's own exceptions."""

from __future__ import annotations

from typing import Any, Tuple


class QuorError(ValueError):
    """The library refused an argument.

    status    the number that the library gave as the reason
    argument  the name of the argument, "" if it is unknown
    index     which entry of it: the vertex, triangle or value; -1 if none or all of them
    """

    def __init__(self, status: int, text: str, argument: str = "", index: int = -1) -> None:
        super().__init__(text)
        self.status = status
        self.argument = argument
        self.index = index

    def __reduce__(self) -> Tuple[Any, ...]:  # another process may raise it
        return type(self), (self.status, *self.args, self.argument, self.index), self.__dict__


class CornerError(QuorError, IndexError):
    """A triangle or an edge has an index that no vertex has."""


class NoVertexError(QuorError):
    """Status 1: a solver needs at least one vertex."""


class RepeatedCornerError(QuorError):
    """Status 23: a triangle has two equal corner indices."""


class UnusedVertexError(QuorError):
    """Status 24: a vertex that no triangle uses."""


class UnprescribedPieceError(QuorError):
    """A connected component of the mesh has no prescribed vertex: nothing says what its field is."""


class IsolatedVertexError(QuorError):
    """A vertex has a value, but no edge at it is prescribed: its field depends on the mesh."""


class SingularMatrixError(QuorError):
    """The equations of the mesh have no single solution."""


class UnprescribedPieceWarning(UserWarning):
    """What UnprescribedPieceError says, where the caller has asked for a warning."""


class TooLargeError(QuorError):
    """The result has no place in 32-bit indices."""


class Cancelled(Exception):
    """The progress function said so."""
