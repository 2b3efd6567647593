"""What a process has one of: the library, its endpoint, and the lock around both."""
from __future__ import annotations

import ctypes
import functools
import os
import threading
import warnings
from typing import Any, Callable, Mapping, TypeVar

from ._arguments import C_TYPES, number
from ._outcome import Forked, not_sent

Self = TypeVar("Self", bound="Endpoint")
Made = TypeVar("Made")
LIBRARY = "libdevice_mgmt.so.1"


class Path(ctypes.Structure):
    """VOR_CFG_PROTO_PATH"""


class ProtoQuery(ctypes.Structure):
    """VOR_CFG_PROTO"""

    _fields_ = [("op", ctypes.c_ubyte), ("line", ctypes.c_void_p), ("pattern", ctypes.c_void_p),
                ("priority", ctypes.c_void_p), ("first", ctypes.POINTER(Path)), ("last", ctypes.c_void_p)]


class Buffer(ctypes.Structure):
    """VOR_IPC_MSG_REF"""

    _fields_ = [("data", ctypes.c_void_p), ("size", ctypes.c_uint16), ("meta_data_size", ctypes.c_uint16),
                ("payload_size", ctypes.c_uint16)]


class Header(ctypes.Structure):
    """VOR_IPC_MSG_HDR, with which a buffer begins"""

    _fields_ = [("source", ctypes.c_uint16), ("destination", ctypes.c_uint16), ("opcode", ctypes.c_uint32),
                ("flag", ctypes.c_uint16), ("payload_size", ctypes.c_uint16), ("meta_data_size", ctypes.c_uint16)]


Path._fields_ = [("text", ctypes.c_void_p), ("next", ctypes.POINTER(Path))]
_INT16, _INT32, _TEXT, _QUERY = ctypes.c_int16, ctypes.c_int32, C_TYPES["vor_char*"], ctypes.POINTER(ProtoQuery)
_HELPERS: Mapping[str, tuple[Any, ...]] = {  # what each returns, and what it takes
    "vor_cfg_create_ipc_endpoint": (_INT16, ctypes.c_uint16),
    "vor_cfg_remove_ipc_endpoint": (_INT32,),
    "vor_cfg_get_ipc_endpoint": (ctypes.c_void_p,),
    "vor_cfg_set_ipc_endpoint": (None, ctypes.c_void_p),
    "vor_cfg_create_sock_endpoint": (_INT16,),
    "vor_cfg_remove_sock_endpoint": (_INT32,),
    "vor_cfg_get_sock_endpoint": (ctypes.c_void_p,),
    "vor_cfg_proto_init": (_QUERY,),
    "vor_cfg_proto_set_op": (_INT32, _QUERY, ctypes.c_ubyte),
    "vor_cfg_proto_set_pattern_string": (_INT32, _QUERY, ctypes.c_ubyte, _TEXT, _TEXT),
    "vor_cfg_proto_set_line_string": (_INT32, _QUERY, _TEXT, _TEXT),
    "vor_cfg_proto_set_priority_string": (_INT32, _QUERY, _TEXT),
    "vor_cfg_proto_append_path_elm": (_INT32, _QUERY, _TEXT, _TEXT),
    "vor_cfg_proto_cleanup": (_INT32, _QUERY),
    "vor_konfd_bi_dir_comm": (_INT32, _QUERY),
    "vor_free": (None, ctypes.c_void_p),
    "vor_ipc_get_buffer": (_INT32, ctypes.POINTER(Buffer)),
    "vor_ipc_drop_msg_buf": (None, ctypes.POINTER(Buffer)),
}

# A signal handler may come in between, in the thread that holds it: then _is_busy.
_lock = threading.RLock()  # held around a call and vor_errno, and while the endpoint changes
_is_busy = False
_is_unusable = False  # forked while a thread was in the library, whose own locks it may have held
_opened: object = None  # the key of the one that is open, which goes when nobody holds it


@functools.lru_cache(None)
def library() -> ctypes.CDLL:
    """The library, loaded when it is first needed."""
    try:
        loaded = ctypes.CDLL(LIBRARY)
    except OSError as error:
        raise not_sent(f"{error}; install it, or name its folder in LD_LIBRARY_PATH") from None
    for name, (returned, *taken) in _HELPERS.items():
        function = getattr(loaded, name)
        function.restype, function.argtypes = returned, taken
    return loaded


def _in_child() -> None:
    global _lock, _is_busy, _is_unusable, _opened
    is_held = not _lock.acquire(blocking=False)
    _lock, _is_busy, _is_unusable = threading.RLock(), False, _is_unusable or is_held
    if _opened is not None:
        library().vor_cfg_set_ipc_endpoint(None)  # forgets the parent's, and leaves it bound
        _opened = None


os.register_at_fork(after_in_child=_in_child)


def room() -> int:
    """The bytes that a message of the platform has room for."""
    buffer = Buffer()
    if library().vor_ipc_get_buffer(ctypes.byref(buffer)) != 0:
        return 1 << 16
    library().vor_ipc_drop_msg_buf(ctypes.byref(buffer))
    return int(buffer.size) - ctypes.sizeof(Header)


def room_of(endpoint: Endpoint) -> int:
    """The bytes that its messages have room for, where it is open in this process."""
    if endpoint._process not in (0, os.getpid()):
        raise not_sent("the gateway was opened before this process was forked", Forked)
    if _opened is not endpoint._key:
        raise not_sent("the gateway is not open")
    return endpoint._room


def exclusively(endpoint: Endpoint, make: Callable[[], Made]) -> Made:
    """What make returns, while nobody else in this process uses the library."""
    global _is_busy
    with _lock:
        if _is_busy:
            raise not_sent("a call is under way in this thread")
        _is_busy = True
        try:
            return make()
        finally:
            _is_busy = False
            if endpoint._closes:
                endpoint.close()


class Endpoint:
    """The endpoint of this process. `with` opens and closes it."""

    def __init__(self, sap: int) -> None:
        self._key = object()
        self._sap = number("sap", "vor_uint16", 0, 65535).convert(sap)
        self._process = self._room = 0
        self._closes = False  # after the call under way

    def __enter__(self: Self) -> Self:
        self.open()
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __del__(self) -> None:
        if _opened is self._key and self._process == os.getpid():
            self.close()
            warnings.warn(f"the gateway at SAP {self._sap} was not closed", ResourceWarning, source=self)

    def open(self) -> None:
        """Bind the endpoint; raises NotSent where that fails, or where this process already has one."""
        is_new = False

        def bind() -> None:
            global _opened
            nonlocal is_new
            if _is_unusable:
                raise not_sent("this process was forked while another thread made a call", Forked)
            if library().vor_cfg_get_ipc_endpoint() is not None:
                raise not_sent("this process already has an endpoint")
            is_new, _opened, self._process, self._closes = True, self._key, os.getpid(), False
            if library().vor_cfg_create_ipc_endpoint(self._sap) != 0:
                raise not_sent(f"no endpoint at SAP {self._sap}")
            self._room = room()
        try:
            exclusively(self, bind)
        except BaseException:  # also Ctrl-C: nobody has it to close it
            if is_new:
                self.close()
            raise

    def close(self) -> None:
        """Unbind the endpoint, once, after a call under way; that of another process stays."""
        global _opened
        with _lock:
            if _opened is not self._key or self._process != os.getpid():
                return
            if _is_busy:
                self._closes = True
                return
            if library().vor_cfg_get_ipc_endpoint() is not None:
                library().vor_cfg_remove_ipc_endpoint()
            _opened = None
