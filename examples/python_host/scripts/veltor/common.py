"""The exceptions under which the application's scripts meet native ones."""


class BasicException(Exception):
    pass


class RuntimeException(BasicException):
    pass


class LogicException(BasicException):
    pass


class OutOfRangeException(LogicException):
    pass
