"""A call of the library as a method, and a query to konfd."""
from __future__ import annotations

import ctypes
import functools
import inspect
import struct
import types
from typing import Any

from ._arguments import C_TYPES, Argument, shown
from ._endpoint import LIBRARY, Endpoint, exclusively, library, room_of
from ._outcome import NotSent, Outcome, Refused, Result, Unknown, not_sent, outcome_of
from .records import TEXT_OVERHEAD, Code


class Family:
    """The calls of a family, for one endpoint."""

    def __init__(self, endpoint: Endpoint) -> None:
        self._endpoint = endpoint


class Call:
    """A function of the library, as a method of its family."""

    keywords_only = False

    def __init__(
        self, symbol: str, way: str, *arguments: Argument, code: str = "vor_int32", fixed: int | None = None,
        record: Any = None, layout: str = "", about: str = ""
    ) -> None:
        self.__doc__ = about
        self.symbol, self.way, self.arguments, self.code = symbol, way, arguments, code
        self.fixed, self.record, self.layout = fixed, record, layout
        self.given = [argument for argument in arguments if argument.role in ("given", "list")]
        kind = inspect.Parameter.KEYWORD_ONLY if self.keywords_only else inspect.Parameter.POSITIONAL_OR_KEYWORD
        self.__signature__ = inspect.Signature(
            [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)]
            + [inspect.Parameter(argument.name, kind, default=argument.default) for argument in self.given]
        )

    def __set_name__(self, family: type, name: str) -> None:
        self.__name__, self.__qualname__ = name, f"{family.__name__.lower()}.{name}"

    def __get__(self, family: Family | None, owner: type) -> Any:
        return self if family is None else types.MethodType(self, family)

    def __call__(self, family: Family, *args: Any, **kwargs: Any) -> Any:
        values = self._values(self.__signature__.bind(family, *args, **kwargs))
        result, record = exclusively(family._endpoint, lambda: self._made(values, room_of(family._endpoint)))
        if result.outcome in (Outcome.accepted, Outcome.sent):
            return result if self.record is None else record
        kind = {Outcome.refused: Refused, Outcome.not_sent: NotSent}.get(result.outcome, Unknown)
        raise kind(f"{self.__qualname__}: {result}", result)

    def _values(self, bound: inspect.BoundArguments) -> dict[str, Any]:
        """What the library gets for each argument that is given."""
        bound.apply_defaults()
        values = {}
        for each in self.given:
            value = bound.arguments[each.name]
            values[each.name] = None if value is None and each.default is None else each.convert(value)
        for each in self.given:
            if each.only_where is not None:
                other, number = each.only_where
                if values[other] == number and values[each.name] is None:
                    raise TypeError(f"{each.name} is needed where {other} is {number}")
                if values[other] != number:
                    if values[each.name]:
                        raise ValueError(f"{each.name} must be left out unless {other} is {number}")
                    values[each.name] = b"" if each.c_type is C_TYPES["vor_char*"] else 0
        return values

    def _made(self, values: dict[str, Any], room: int) -> tuple[Result, Any]:
        self._check_size(values, room)
        status = ctypes.c_int32.in_dll(library(), "vor_errno")
        lost = getattr(library(), "vorinfra_messages_undelivered", int)  # a development platform counts them
        lost_before, status.value = lost(), 0  # a status found there afterwards is from this call
        bound, code, record = self._run(values)
        outcome = outcome_of(self.way, code, status.value, bound)
        if code == Code.DONE and (lost() != lost_before or self.record is not None and record is None):
            outcome = Outcome.unknown
        return Result(outcome, code, status.value if outcome is Outcome.refused else 0), record

    def _check_size(self, values: dict[str, Any], room: int) -> None:
        sized = [(each.name, values[each.name]) for each in self.given if each.sized]
        texts = [(name, text) for name, value in sized for text in (value if isinstance(value, list) else [value])]
        if self.fixed is None:
            return
        most, length = room - self.fixed - TEXT_OVERHEAD * len(texts), sum(len(text) for _, text in texts)
        if length > most:
            longest = max(texts, key=lambda each: len(each[1]))[0]
            raise ValueError(f"{longest} does not fit: its message has room for {most} bytes of text, not {length}")

    @functools.cached_property
    def _function(self) -> Any:
        try:
            function = library()[self.symbol]
        except AttributeError:
            raise not_sent(f"{LIBRARY} is older than this package and has no {self.symbol}") from None
        function.argtypes = [each.c_type for each in self.arguments if each.role in ("given", "count")]
        function.restype = C_TYPES[self.code]
        return function

    def _run(self, values: dict[str, Any]) -> tuple[bool, int, Any]:
        """Makes the call: whether anything could leave, its code, and a copy of the record that it read."""
        out: Any = next((each.c_type() for each in self.arguments if each.role == "result"), None)
        passed: list[Any] = []
        for each in self.arguments:
            if each.role == "count":
                passed.append(next(len(values[other.name]) for other in self.given if other.role == "list"))
            elif each.role == "result":
                passed.append(ctypes.byref(out))
            else:
                passed += values[each.name] if each.role == "list" else [values[each.name]]
        bound = self.way == "konfd" or library().vor_cfg_get_ipc_endpoint() is not None
        try:
            code = self._function(*passed)
        finally:
            if self.way == "konfd":
                _disconnect()  # a failure leaves it connected
        at = ctypes.addressof(out) if out is not None else None
        if self.code == "void*":
            at, code = code, 0 if code else int(Code.REFUSED)
        elif isinstance(out, ctypes.c_void_p):
            at = out.value
        if self.record is None or code != Code.DONE or at is None:
            return bound, code, None
        taken = ctypes.string_at(at, struct.calcsize(self.layout))
        return bound, code, self.record._make(struct.unpack(self.layout, taken))


class Query(Call):
    """A query to konfd: its arguments are the parts of one command."""

    keywords_only = True

    def _values(self, bound: inspect.BoundArguments) -> dict[str, Any]:
        values = super()._values(bound)
        if (values["operation"] == 3) == (values["line_key"] is not None):
            takes = "needs" if values["line_key"] is None else "takes no"
            raise ValueError(f'operation {shown(bound.arguments["operation"])} {takes} line_key')
        if (values["line_key"] is None) != (values["line_value"] is None):
            raise ValueError("line_key and line_value need each other")
        if len(values["path"]) % 2 != 0:
            raise ValueError("path must be keys, each with its value")
        return values

    def _run(self, values: dict[str, Any]) -> tuple[bool, int, Any]:
        lib = library()
        query = lib.vor_cfg_proto_init()
        try:
            lib.vor_cfg_proto_set_op(query, values["operation"])
            parts = [lib.vor_cfg_proto_set_pattern_string(
                query, 2 if values["pattern_value"] is None else 1, values["pattern_key"], values["pattern_value"]
            )]
            if values["line_key"] is not None:
                parts.append(lib.vor_cfg_proto_set_line_string(query, values["line_key"], values["line_value"]))
            if values["priority"] is not None:
                parts.append(lib.vor_cfg_proto_set_priority_string(query, values["priority"]))
            for key, value in zip(values["path"][::2], values["path"][1::2]):
                parts.append(lib.vor_cfg_proto_append_path_elm(query, key, value))
            if any(parts):
                raise not_sent("no memory for the query")
            if lib.vor_cfg_create_sock_endpoint() != 0:
                raise not_sent("no connection to konfd")
            return True, lib.vor_konfd_bi_dir_comm(query), None
        finally:
            _disconnect()
            _release(query)


def _disconnect() -> None:
    if library().vor_cfg_get_sock_endpoint() is not None:
        library().vor_cfg_remove_sock_endpoint()


def _release(query: Any) -> None:
    """Frees a query and its path's elements, which the library leaves."""
    elements = []
    at = query.contents.first if query else None
    while at:
        elements.append(at)
        at = at.contents.next
    library().vor_cfg_proto_cleanup(query)
    for element in elements:
        library().vor_free(element)
