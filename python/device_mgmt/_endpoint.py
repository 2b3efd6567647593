"""What a process has one of: the library, its endpoint, and the lock around both."""
from __future__ import annotations

import ctypes
import functools
import os
import threading
from typing import TypeVar

from ._arguments import number
from ._outcome import Forked, not_sent

Self = TypeVar("Self", bound="Endpoint")
LIBRARY = "libdevice_mgmt.so.1"


class Process:
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
    Process.unusable = Process.unusable or Process.lock.locked()
    Process.lock = threading.Lock()
    if Process.opened is not None:
        library().vor_cfg_set_ipc_endpoint(None)  # forgets the parent's, and leaves it bound
        Process.opened = None


os.register_at_fork(after_in_child=_in_child)


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
        with Process.lock:
            if Process.unusable:
                raise not_sent("this process was forked while another thread made a call", Forked)
            if library().vor_cfg_get_ipc_endpoint() is not None:
                raise not_sent("this process already has an endpoint")
            Process.opened, self.process = self, os.getpid()  # first, so that an interrupted one can be closed
            if library().vor_cfg_create_ipc_endpoint(ctypes.c_uint16(self._sap)) != 0:
                Process.opened = None
                raise not_sent(f"no endpoint at SAP {self._sap}")
            self.room = _room()

    def close(self) -> None:
        """Unbind the endpoint, once; that of another process stays."""
        with Process.lock:
            if Process.opened is self and self.process == os.getpid():
                Process.opened = None
                library().vor_cfg_remove_ipc_endpoint()
