"""How a call ends, and what is raised where it was neither accepted nor sent."""
from __future__ import annotations

import enum
from typing import NamedTuple

from .records import Code


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


def not_sent(reason: str, kind: type[NotSent] = NotSent) -> NotSent:
    return kind(f"not sent: {reason}", Result(Outcome.not_sent))
