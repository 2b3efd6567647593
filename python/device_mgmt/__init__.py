"""The calls of the gateway's device management.

with device_mgmt.Gateway(sap=200) as gateway:
    gateway.can.set_id(port_num=1, can_id=0x18FF50E5, option=0)
    print(gateway.env.get_system_temperature().system_temp)

A call returns a Result, or the record that it reads, where it was accepted or sent one-way; else it raises an Error:
Refused, Unknown, NotSent or Forked. What does not fit an argument is a TypeError or a ValueError, and nothing is sent.

The families of calls are attributes of the gateway. Those calls of the library that send nothing, such as converters
for C, are not among them. Threads may share a gateway: one call is made at a time.
"""
from ._arguments import Secret
from ._calls import Gateway
from ._outcome import Error, Forked, NotSent, Outcome, Refused, Result, Unknown
from .records import VERSION as __version__
from .records import Code

__all__ = [
    "Code",
    "Error",
    "Forked",
    "Gateway",
    "NotSent",
    "Outcome",
    "Refused",
    "Result",
    "Secret",
    "Unknown",
    "__version__",
]
