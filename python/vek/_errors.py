"""The exception of refused calls, and the warning of results with a reservation."""

from ._enums import Status


class Error(ValueError):
    """A refused call: nothing has been written."""

    def __init__(self, message: str, status: int, function: str, argument: str) -> None:
        super().__init__(message, status, function, argument)
        self.status = Status(status)  #: one of Status, below 0
        self.function = function  #: the function's name
        self.argument = argument  #: the argument that was refused

    def __str__(self) -> str:
        return str(self.args[0])

    @property
    def text(self) -> str:
        """What the status means."""
        from ._vek import status_text

        return str(status_text(int(self.status)))


class ResultWarning(RuntimeWarning):
    """A result has a reservation: a relative norm was taken against zeros, for example."""
