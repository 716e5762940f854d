"""Result codes as exceptions, and exceptions that pass through native code.

Python code that calls native code which may call Python back uses call(). If a callback raises an exception, store()
puts it into the list of the innermost call() of its thread, and the callback returns a failure code. When that call()
returns a failure, it raises the stored exception in its Python caller instead of an Error with the code:

    Python caller -> call() -> native code -> callback raises KeyError -> store()
    KeyError      <- call() <- failure     <- ZR_R_UNEXPECTED          <-

An exception that no Python caller receives, because native code handled the failure or because the thread has no Python
caller, is passed to sys.excepthook. There are two exceptions to this rule: an Error is dropped, since it is the way in
which a callback returns a code to native code; and an exception that ends the program, such as KeyboardInterrupt, is
raised even if the call succeeds.

A signal handler may raise its exception, such as KeyboardInterrupt, before a callback has reached its first statement.
Then ctypes calls sys.unraisablehook, and native code gets a result by chance. call() sets this hook in the main thread,
where all signal handlers run: it stores the exception, and call() raises it whatever the result is.
"""
import ctypes
import functools
import sys
import threading
from typing import Any, Callable, List, Optional, Tuple

from ._abi import Code
from ._library import functions, state

_string_length, _string_free = functions["ZrStringByteLen"], functions["ZrDestroyString"]


def _registered(function: Callable[..., int], code: int) -> str:
    text = ctypes.c_void_p()
    if function(code & 0xFFFFFFFF, ctypes.byref(text)) < 0 or not text.value:
        return ""
    try:
        return ctypes.string_at(text.value, _string_length(text)).decode("utf-16-le", "replace")
    finally:
        _string_free(text)


class Error(Exception):
    """A failure that the library, a module or an object reported.

    code  the result code, a negative number; compare it with the members of Code. The constructor also takes it as an
          unsigned number, and raises ValueError for a number that doesn't fit 32 bits.
    name  its registered name, such as "ZR_R_FAILED"; empty if the code has none
    text  what failed, or the registered description of the code

    A method that native code calls raises Error to return the code to native code:

        >>> from zrcore import Code, Error
        >>> Error(Code.NOT_EXISTING, "no column 9")
        Error(<Code.NOT_EXISTING: -2147483620>, 'no column 9')
        >>> str(Error(Code.NOT_EXISTING, "no column 9"))
        'ZR_R_NOT_EXISTING: no column 9'
    """

    def __init__(self, code: int, text: str = "") -> None:
        if not -1 << 31 <= code < 1 << 32:
            raise ValueError("a result code has 32 bits")
        code = code - (1 << 32) if code >= 1 << 31 else code
        try:
            self.code: int = Code(code)
        except ValueError:   # a code of a module
            self.code = int(code)
        self.name = _registered(functions["ZrErrorInfoGetText"], self.code)
        self.text = text or _registered(functions["ZrErrorInfoGetDescription"], self.code)
        super().__init__(self.code, self.text)

    def __str__(self) -> str:
        shown = self.name or f"0x{self.code & 0xFFFFFFFF:08X}"
        return f"{shown}: {self.text}" if self.text else shown


Error.__module__ = "zrcore"


def check(result: int, text: str = "") -> int:
    """Returns a result of zero or above unchanged; raises Error for a failure."""
    if result < 0:
        raise Error(result, text)
    return result


class _Stored(List[BaseException]):
    lost_result = False   # whether a callback has ended without a result


class _Thread(threading.local):
    stored: Optional[_Stored] = None   # by the callbacks of the innermost call(); None outside every call()

    def __init__(self) -> None:
        self.is_main = threading.get_ident() == threading.main_thread().ident


_thread = _Thread()
calling: List[None] = []   # one entry per call() that is in native code, on any thread
_hook: Any = sys.__unraisablehook__   # what _unraisable replaces


def call(function: Callable[..., int], arguments: Tuple[Any, ...], text: str = "") -> int:
    """Calls native code that may call Python back. Returns a result of zero or above.

    Raises the exception of a callback or, if no callback has raised one, Error with `text`. At the end of the
    interpreter, Error with ZR_R_NO_INIT is raised on all other threads: Python would stop a thread in the callback, and
    the frames of native code can't be left in that way.
    """
    outer, stored = _thread.stored, _Stored()
    is_first = outer is None and _thread.is_main
    _thread.stored = stored
    calling.append(None)   # before the state is read: _end() sets the state before it reads the list
    try:
        if state.ended:
            raise Error(Code.NO_INIT, "the interpreter has ended")
        if is_first:
            _set_hook()
        result = function(*arguments)
    finally:
        calling.pop()
        _thread.stored = outer
        if is_first and sys.unraisablehook is _unraisable:
            sys.unraisablehook = _hook
    if stored:
        _settle(stored, Code.UNEXPECTED if stored.lost_result else result)
    if result < 0:
        raise Error(result, text)
    return result


def _settle(stored: List[BaseException], result: int) -> None:
    """Raises the last exception that is a cause of the result, and reports the others."""
    causes = [error for error in stored if _is_cause(error, result)]
    try:
        for error in stored:
            if not causes or error is not causes[-1]:
                _report(error)
        if causes:
            raise causes[-1]
    finally:
        stored.clear()   # an exception refers to the frames of this and of call(), which must not refer to it
        del causes, error


def _is_cause(error: BaseException, result: int) -> bool:
    """Whether a call with the result raises the exception. Native code that returns another code than that of an Error
    has handled it; an exception that ends the program is always raised."""
    if isinstance(error, Error):
        return _returned(error) == result
    return result < 0 or not isinstance(error, Exception)


def _returned(error: BaseException) -> int:
    """The code that a callback returns for an exception: the code of an Error, otherwise ZR_R_UNEXPECTED."""
    return error.code if isinstance(error, Error) and error.code < 0 else int(Code.UNEXPECTED)


def store(error: BaseException) -> int:
    """Stores the exception of a callback, and returns the code that the callback returns to native code."""
    stored = _thread.stored
    if stored is None:
        _report(error)
    else:
        stored.append(error)
    return _returned(error)


def _set_hook() -> None:
    global _hook
    if sys.unraisablehook is not _unraisable:   # it is, if an exception has ended call() while it restored the hook
        _hook = sys.unraisablehook
        sys.unraisablehook = _unraisable


def _unraisable(found: Any) -> None:
    """Stores an exception that was raised outside the `try` of a callback, which has no result therefore."""
    place, stored = found.exc_traceback, _thread.stored
    if stored is None or place is None or place.tb_frame.f_code is not _invoke.__code__:
        _hook(found)
    else:
        stored.lost_result = True
        stored.append(found.exc_value)


running: List[None] = []   # one entry per callback that runs, on any thread


def callback(body: Callable[..., int]) -> Callable[..., int]:
    """A function for native code to call. Nothing that `body` raises passes into native code."""
    return functools.partial(_invoke, body)


def _invoke(body: Callable[..., int], *arguments: Any) -> int:
    running.append(None)
    try:
        return body(*arguments)
    except BaseException as error:
        return store(error)
    finally:
        running.pop()


def _report(error: BaseException) -> None:
    if isinstance(error, Error):
        return
    try:
        sys.excepthook(type(error), error, error.__traceback__)
    except BaseException as failure:   # it must not pass into native code, which would get a result by chance
        for shown in (failure, error):
            sys.__excepthook__(type(shown), shown, shown.__traceback__)
