"""What each argument of a call takes, and as what the library gets it."""
from __future__ import annotations

import ctypes
import inspect
import locale
import operator
import re
import socket
from typing import Any, Callable, Mapping, NamedTuple, NoReturn

C_TYPES: Mapping[str, Any] = {
    # C's char has a sign on some processors only, and fills a register accordingly
    "vor_char": ctypes.c_byte if locale.CHAR_MAX == 127 else ctypes.c_ubyte,
    "vor_char*": ctypes.c_char_p,
    "vor_uchar": ctypes.c_uint8,
    "vor_int16": ctypes.c_int16,
    "vor_uint16": ctypes.c_uint16,
    "vor_int32": ctypes.c_int32,
    "vor_uint32": ctypes.c_uint32,
    "void*": ctypes.c_void_p,
}


class Secret:
    """A text that is printed as ********."""

    __slots__ = ("text",)

    def __init__(self, text: str) -> None:
        if not isinstance(text, str):
            raise TypeError(f"a secret must be a text, not {type(text).__name__}")
        self.text = text

    def __repr__(self) -> str:
        return "********"

    def __reduce__(self) -> NoReturn:
        raise TypeError("a secret cannot be pickled: that would show it")

    def __deepcopy__(self, _: object) -> Secret:
        return self


class Hidden:
    """The bytes of a secret, for ctypes to pass; a traceback shows the values of variables."""

    __slots__ = ("_as_parameter_",)

    def __init__(self, encoded: bytes) -> None:
        self._as_parameter_ = encoded

    def __len__(self) -> int:
        return len(self._as_parameter_)

    def __repr__(self) -> str:
        return "********"


class Argument(NamedTuple):
    """An argument of a function of the library."""

    name: str
    c_type: Any
    convert: Callable[[Any], Any]  # raises TypeError or ValueError for what does not fit
    role: str = "given"  # or count (of the list), list, result
    default: Any = inspect.Parameter.empty
    sized: bool = False  # its bytes are in the message as they are
    only_where: tuple[str, int] | None = None  # the other argument, and with which value of it this one is sent


def shown(given: int | str) -> str:
    """What is wrong, in a message of one line."""
    if isinstance(given, str):
        escaped = "".join(each if each.isprintable() else repr(each)[1:-1] for each in given[:80])
        return f'"{escaped}{"..." * (len(given) > 80)}"'
    return str(given) if given.bit_length() <= 128 else f"a number of {given.bit_length()} bits"


def has_bytes(text: str) -> bool:
    """Whether UTF-8 has bytes for it; the exception would show the text."""
    try:
        return text.encode() is not None
    except UnicodeError:
        return False


def _alternatives(words: list[str]) -> str:
    return " or ".join(([", ".join(words[:-1])] if words[1:] else []) + words[-1:])


def _limits(c_type: Any) -> tuple[int, int]:
    bits = 8 * ctypes.sizeof(c_type)
    return (-1 << bits - 1, (1 << bits - 1) - 1) if c_type(-1).value < 0 else (0, (1 << bits) - 1)


def number(name: str, c_type: str, *limits: int, words: Mapping[str, int] = {}, **facts: Any) -> Argument:
    """A number of a C type, in narrower limits where they are given; or a word for one."""
    least, most = limits or _limits(C_TYPES[c_type])
    rule = _alternatives([f"{least} to {most}", *words])

    def convert(given: Any) -> int:
        value = words.get(given, given) if isinstance(given, str) else given
        if isinstance(value, bool) or not (isinstance(value, str) or hasattr(value, "__index__")):
            raise TypeError(f"{name} must be a number, not {type(given).__name__}")
        if isinstance(value, str) or not least <= operator.index(value) <= most:
            raise ValueError(f"{name} must be {rule}, not {shown(value)}")
        return operator.index(value)

    return Argument(name, C_TYPES[c_type], convert, **facts)


def decimal(name: str, least: int, most: int, *, words: Mapping[str, int] = {}, **facts: Any) -> Argument:
    """A number that the library gets as a text."""
    plain = number(name, "vor_int32", least, most, words=words)

    def convert(given: Any) -> bytes:
        is_text = isinstance(given, str) and re.fullmatch("-?[0-9]{1,20}", given)
        return b"%d" % plain.convert(int(given) if is_text else given)

    return Argument(name, C_TYPES["vor_char*"], convert, **facts)


def text(
    name: str, longest: int = 0, *, secret: bool = False, problem: Callable[[str], str] = lambda text: "", **facts: Any
) -> Argument:
    """A text; problem completes "NAME must", and is empty for one that fits."""

    def encoded(value: str) -> bytes | str:
        """Its bytes, or what is wrong: where that is raised, no variable has the text."""
        if "\0" in value:
            return "not contain a zero byte"
        if not has_bytes(value):
            return "be a text that UTF-8 has bytes for"
        taken = value.encode()
        if longest and len(taken) > longest:
            return f"be at most {longest} bytes long, not {len(taken)}"
        return problem(value) or taken

    def convert(given: Any) -> bytes | Hidden:
        if isinstance(given, Secret) and not secret:
            raise TypeError(f"{name} is not a secret argument, but is given a secret")
        if not isinstance(given, (str, Secret)):
            raise TypeError(f"{name} must be a text, not {type(given).__name__}")
        taken = encoded(given.text if isinstance(given, Secret) else given)
        if isinstance(taken, str):
            raise ValueError(f"{name} must {taken}")
        return Hidden(taken) if secret else taken

    return Argument(name, C_TYPES["vor_char*"], convert, sized=True, **facts)


def address(name: str, **facts: Any) -> Argument:
    """An IPv4 address as a text."""

    def problem(given: str) -> str:
        try:
            socket.inet_pton(socket.AF_INET, given)
        except (OSError, ValueError):
            return f"be an IPv4 address such as 192.168.1.10, not {shown(given)}"
        return ""

    return text(name, problem=problem, **facts)._replace(sized=False)


def word(name: str, words: str, **facts: Any) -> Argument:
    """One of some words."""
    rule = _alternatives(words.split())

    def problem(given: str) -> str:
        return "" if given in words.split() else f"be {rule}, not {shown(given)}"

    return text(name, problem=problem, **facts)


def konfd_text(name: str, **facts: Any) -> Argument:
    """A text of a command to konfd."""

    def problem(given: str) -> str:
        if '"' in given:
            return "not contain a double quote: konfd has no way to escape it"
        if min(given, default=" ") < " ":
            return "not contain a control character: it would end the command early"
        return ""

    return text(name, problem=problem, **facts)


def texts(each: Argument, most: int) -> Argument:
    """A list of texts."""

    def convert(given: Any) -> list[Any]:
        if not isinstance(given, (list, tuple)):
            raise TypeError(f"{each.name} must be a list of texts, not {type(given).__name__}")
        if len(given) > most:
            raise ValueError(f"{each.name} takes at most {most} values, not {len(given)}")
        return [each.convert(one) for one in given]

    return each._replace(convert=convert, role="list")


def count(name: str, c_type: str) -> Argument:
    """How many texts the list has."""
    return Argument(name, C_TYPES[c_type], len, "count")


def result(name: str, c_type: str) -> Argument:
    """Where the library puts what it has read: a record, or a pointer to one."""
    return Argument(name, C_TYPES[c_type], ctypes.pointer, "result")
