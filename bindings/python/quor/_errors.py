"""What the library may answer besides Python's own exceptions."""


class QuorError(ValueError):
    """The library refused an argument.

    status    the number that the library gave as the reason
    argument  the name of the argument, "" if it is unknown
    index     which entry of it: the vertex, triangle or value; -1 if none or all of them
    """

    def __init__(self, status, text, argument="", index=-1):
        super().__init__(text)
        self.status = status
        self.argument = argument
        self.index = index

    def __reduce__(self):  # pickle makes it again from these: another process may raise it
        return type(self), (self.status, *self.args, self.argument, self.index), self.__dict__


class NoVertexError(QuorError):
    """Status 1: a solver needs at least one vertex."""


class RepeatedCornerError(QuorError):
    """Status 23: a triangle has two equal corner indices."""


class UnusedVertexError(QuorError):
    """Status 24: a vertex that no triangle uses."""


class UnprescribedPieceError(QuorError):
    """A piece of the mesh has no prescribed vertex: nothing says what its field is."""


class UnprescribedPieceWarning(UserWarning):
    """The same, where the caller has asked for a warning."""


class TooLargeError(QuorError):
    """The result has no place in 32-bit indices."""


class Cancelled(Exception):
    """The progress function said so."""
