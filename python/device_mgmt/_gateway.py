"""This process's endpoint, and how a call of the library is made and judged."""
from __future__ import annotations

import ctypes
import enum
import functools
import inspect
import os
import struct
import threading
import types
from typing import Any, NamedTuple, TypeVar

from ._arguments import C_TYPES, Argument, number, shown
from .records import TEXT_OVERHEAD, Code

Self = TypeVar("Self", bound="Endpoint")
LIBRARY = "libdevice_mgmt.so.1"


class Outcome(enum.Enum):
    """Never better than what is known: a code other than 0 seldom says how far a call came."""

    accepted = "accepted"  # by the manager or konfd
    sent = "sent"  # one-way: no verdict will come
    refused = "refused"  # by the manager, with its status
    not_sent = "not sent"
    unknown = "unknown"  # it may have been applied


class Result(NamedTuple):
    """How a call ended."""

    outcome: Outcome
    code: int = 0  # as the library returned it
    status: int = 0  # the manager's, where it refused with one

    def __str__(self) -> str:
        code = f" (code {self.code})" if self.code else ""
        return {
            Outcome.accepted: "accepted",
            Outcome.sent: "sent; no verdict will come",
            Outcome.refused: f"refused by the manager: status {self.status}",
            Outcome.not_sent: "not sent" + code,
            Outcome.unknown: "unknown: it may have been applied" + code,
        }[self.outcome]


class Error(Exception):
    """A call that was neither accepted nor sent."""

    def __init__(self, text: str, result: Result) -> None:
        super().__init__(text, result)
        self.result = result

    def __str__(self) -> str:
        return str(self.args[0])


class Refused(Error):
    """The manager refused, with `status`."""

    @property
    def status(self) -> int:
        return self.result.status


class Unknown(Error):
    """It may have been applied."""


class NotSent(Error):
    """Nothing left this process."""


class Forked(NotSent):
    """The gateway was opened by the process from which this one was forked: open one here."""


_FILLER = 0xA5 - 0x100  # the byte, signed, that the platform puts where an answer is too short


def outcome_of(way: str, code: int, status: int, bound: bool) -> Outcome:
    """What a code and vor_errno tell; bound says whether there was an endpoint or a connection before the call."""
    if not bound or code in (Code.TOO_MANY_SERVERS, Code.MAC_ADDRESS):
        return Outcome.not_sent
    if code == Code.DONE:
        return {"one_way": Outcome.sent, "one_way_unchecked": Outcome.unknown}.get(way, Outcome.accepted)
    refused = way != "konfd" and code == Code.REFUSED and status != 0 and status >> 24 != _FILLER
    return Outcome.refused if refused else Outcome.unknown


# --- What a process has one of ------------------------------------------------------------


class _Process:
    lock = threading.Lock()  # held around a call and vor_errno, and while the endpoint changes
    opened: Endpoint | None = None
    unusable = False  # forked while a thread was in the library, whose own locks it may have held


@functools.lru_cache(None)
def library() -> ctypes.CDLL:
    """The library, loaded when it is first needed."""
    try:
        loaded = ctypes.CDLL(LIBRARY)
    except OSError as error:
        raise not_sent(f"{error}; install it, or name its folder in LD_LIBRARY_PATH") from None
    for name in ("vor_cfg_get_ipc_endpoint", "vor_cfg_get_sock_endpoint", "vor_cfg_proto_init"):
        getattr(loaded, name).restype = ctypes.c_void_p
    return loaded


def _in_child() -> None:
    _Process.unusable = _Process.unusable or _Process.lock.locked()
    _Process.lock = threading.Lock()
    if _Process.opened is not None:
        library().vor_cfg_set_ipc_endpoint(None)  # forgets the parent's, and leaves it bound
        _Process.opened = None


os.register_at_fork(after_in_child=_in_child)


def not_sent(reason: str, kind: type[NotSent] = NotSent) -> NotSent:
    return kind(f"not sent: {reason}", Result(Outcome.not_sent))


class _Buffer(ctypes.Structure):
    _fields_ = [("at", ctypes.c_void_p), ("size", ctypes.c_uint16), ("others", ctypes.c_uint16 * 2)]


def _room() -> int:
    """The bytes that a message of the platform has room for."""
    buffer, header = _Buffer(), 16
    if library().vor_ipc_get_buffer(ctypes.byref(buffer)) != 0:
        return 1 << 16
    library().vor_ipc_drop_msg_buf(ctypes.byref(buffer))
    return int(buffer.size) - header


class Endpoint:
    """The endpoint of this process. `with` opens and closes it."""

    def __init__(self, sap: int) -> None:
        self._sap = number("sap", "vor_uint16", 0, 65535).convert(sap)
        self.process = self.room = 0

    def __enter__(self: Self) -> Self:
        self.open()
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def open(self) -> None:
        """Bind the endpoint; raises NotSent where that fails, or where this process already has one."""
        with _Process.lock:
            if _Process.unusable:
                raise not_sent("this process was forked while another thread made a call", Forked)
            if library().vor_cfg_get_ipc_endpoint() is not None:
                raise not_sent("this process already has an endpoint")
            _Process.opened, self.process = self, os.getpid()  # first, so that an interrupted one can be closed
            if library().vor_cfg_create_ipc_endpoint(ctypes.c_uint16(self._sap)) != 0:
                _Process.opened = None
                raise not_sent(f"no endpoint at SAP {self._sap}")
            self.room = _room()

    def close(self) -> None:
        """Unbind the endpoint, once; that of another process stays."""
        with _Process.lock:
            if _Process.opened is self:
                _Process.opened = None
                library().vor_cfg_remove_ipc_endpoint()


class Family:
    """The calls of a family, for one endpoint."""

    def __init__(self, endpoint: Endpoint) -> None:
        self.endpoint = endpoint


# --- Calls --------------------------------------------------------------------------------


class Call:
    """A function of the library, as a method of its family."""

    keywords_only = False

    def __init__(
        self, symbol: str, way: str, *arguments: Argument, code: str = "vor_int32", fixed: int | None = None,
        record: Any = None, layout: str = ""
    ) -> None:
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
        result, record = self._made(family.endpoint, self._values(self.__signature__.bind(family, *args, **kwargs)))
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
            if each.only_where is not None and values[each.name]:
                other, number = each.only_where
                if values[other] != number:
                    raise ValueError(f"{each.name} must be {shown(each.default)} unless {other} is {number}")
        return values

    def _made(self, endpoint: Endpoint, values: dict[str, Any]) -> tuple[Result, Any]:
        if endpoint.process not in (0, os.getpid()):
            raise not_sent("the gateway was opened before this process was forked", Forked)
        with _Process.lock:
            if _Process.opened is not endpoint:
                raise not_sent("the gateway is not open")
            self._check_size(values, endpoint.room)
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
        if self.fixed is not None and self.fixed + sum(len(text) + TEXT_OVERHEAD for _, text in texts) > room:
            longest = max(texts, key=lambda each: len(each[1]))[0]
            raise ValueError(
                f"{longest} does not fit: {sum(len(text) for _, text in texts)} bytes of text, "
                f"but a message has room for {room}, element headers included"
            )

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
        code = self._function(*passed)
        if self.way == "konfd" and library().vor_cfg_get_sock_endpoint() is not None:
            library().vor_cfg_remove_sock_endpoint()  # a failure leaves it open
        at = ctypes.addressof(out) if out is not None else None
        if self.code == "void*":
            at, code = code, 0 if code else int(Code.REFUSED)
        elif isinstance(out, ctypes.c_void_p):
            at = out.value
        if self.record is None or code != Code.DONE or at is None:
            return bound, code, None
        taken = ctypes.string_at(at, struct.calcsize(self.layout))
        return bound, code, self.record._make(struct.unpack(self.layout, taken))


_POINTER = ctypes.sizeof(ctypes.c_void_p)


class Query(Call):
    """A query to konfd: its arguments are the parts of one command."""

    keywords_only = True

    def _values(self, bound: inspect.BoundArguments) -> dict[str, Any]:
        values = super()._values(bound)
        unsets = values["operation"] == 3
        if unsets == (values["line_key"] is not None):
            raise ValueError("unset takes no line_key" if unsets else "needs line_key")
        if (values["line_key"] is None) != (values["line_value"] is None):
            raise ValueError("line_key and line_value need each other")
        if len(values["path"]) % 2 != 0:
            raise ValueError("path must be keys, each with its value")
        return values

    def _run(self, values: dict[str, Any]) -> tuple[bool, int, Any]:
        lib = library()
        query = ctypes.c_void_p(lib.vor_cfg_proto_init())
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
            if any(parts) or lib.vor_cfg_create_sock_endpoint() != 0:
                return False, int(Code.REFUSED), None
            return True, lib.vor_konfd_bi_dir_comm(query), None
        finally:
            if lib.vor_cfg_get_sock_endpoint() is not None:
                lib.vor_cfg_remove_sock_endpoint()
            _release(query)


def _release(query: ctypes.c_void_p) -> None:
    """Frees a query and its path's elements, which the library leaves."""
    elements = []
    at = ctypes.c_void_p.from_address(query.value + 4 * _POINTER).value if query.value else None
    while at is not None:
        elements.append(ctypes.c_void_p(at))
        at = ctypes.c_void_p.from_address(at + _POINTER).value
    library().vor_cfg_proto_cleanup(query)
    for element in elements:
        library().vor_free(element)
