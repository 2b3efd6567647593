"""Whole sites over the pipe of `vorcfg serve`; vorcfg-site(7) and vorcfg-serve(7) say what each word means.

    tower = Site(text, vars={"site": 17}, secrets={"pin": Secret("0000")}, journal="/var/lib/sites/")
    with Vorcfg() as vorcfg:
        for line in vorcfg.plan(tower).lines: ...
        print(vorcfg.apply(tower, confirm="2m").exit)
        vorcfg.confirm(tower)

A result has what vorcfg says, by the names in vorcfg.schema.json, and its exit code. An apply whose calls failed is a
result, too: its totals and its exit code say so. Raised are Complaint, with what vorcfg complains of; Unknown, if
vorcfg ended and it is not known how far it came; and NotSent.
"""
from __future__ import annotations

import json
import os
import signal
import subprocess
import threading
import weakref
from dataclasses import dataclass, field, fields, replace
from typing import Any, Callable, Literal, Mapping, Sequence, TypeVar, cast

from device_mgmt import Error, Forked, Outcome, Result, Secret, Unknown

from ._arguments import has_bytes
from ._outcome import not_sent

SCHEMA = 3
_SENDS = ("apply", "confirm", "revert")  # or change the journal

Values = Mapping[str, Any]  # numbers, texts and lists of them, by the names of their arguments
LineState = Literal["new", "changed", "again", "unknown", "refused", "not delivered", "accepted", "sent", "unread",
                    "overtaken", "removed"]
CallState = Literal["accepted", "sent", "unread", "refused", "not delivered", "unknown"]
ConfirmationState = Literal["waiting", "expired", "confirmed", "reverted", "partly reverted"]
SiteState = Literal["accepted", "partly reverted", "failed", "unknown", "waiting", "expired", "empty", "unreadable"]


@dataclass(frozen=True)
class Site:
    """A site's text, what its variables stand for, and where its journal is; or, without a text, a journal alone."""

    text: str | None = field(default=None, repr=False)
    vars: Mapping[str, int | str] = field(default_factory=dict)
    secrets: Mapping[str, int | str | Secret] = field(default_factory=dict)
    journal: str | os.PathLike[str] | None = None
    file: str | os.PathLike[str] | None = None
    gateway: str | None = None
    allow_unused: bool = False

    def __post_init__(self) -> None:
        for name, each in self.secrets.items():
            if isinstance(each, bool) or not isinstance(each, (int, str, Secret)):
                raise TypeError(f"secrets: {name} must be a text or a number, not {type(each).__name__}")
        hidden = {name: each if isinstance(each, Secret) else Secret(str(each)) for name, each in self.secrets.items()}
        object.__setattr__(self, "secrets", hidden)
        if self.text is None and self.journal is None:
            raise ValueError("a site needs a text or a journal")
        if self.text is not None and not isinstance(self.text, str):
            raise TypeError(f"text must be a text, not {type(self.text).__name__}")
        texts = {**hidden, "text": Secret(self.text or "")}
        unfit = [name for name, each in texts.items() if not has_bytes(each.text)]
        if unfit:
            raise ValueError(f"{unfit[0]} must be a text that UTF-8 has bytes for")

    def _members(self) -> dict[str, object]:
        paths = {name: path and os.fspath(path) for name, path in (("journal", self.journal), ("file", self.file))}
        values = {name: dict(each) or None for name, each in (("vars", self.vars), ("secrets", self.secrets))}
        return {"site": self.text, "gateway": self.gateway, "allow_unused": self.allow_unused, **paths, **values}


# --- What vorcfg says -------------------------------------------------------------------


@dataclass(frozen=True)
class Problem:
    """An error: nothing was done because of it, unless it says so."""

    complaint: str
    exit: int
    file: str | None = None
    line: int | None = None
    column: int | None = None
    call: str | None = None
    argument: str | None = None
    hint: str | None = None

    def __str__(self) -> str:
        place = "" if self.line is None else f"{self.file}:{self.line}: "
        return place + self.complaint + ("" if self.hint is None else f"\nhint: {self.hint}")


@dataclass(frozen=True)
class Note:
    """A warning, or what happened besides the calls."""

    type: Literal["warning", "notice"]
    text: str
    file: str | None = None
    line: int | None = None
    other_line: int | None = None


@dataclass(frozen=True)
class Entry:
    """A call of the journal."""

    call: str
    arguments: Values
    state: CallState
    at: str
    verdict: str | None = None
    status: int | None = None


@dataclass(frozen=True)
class PlanLine:
    """A line of the site, or a setting that is only in the journal; `current` is the call that is known in effect."""

    file: str
    call: str
    arguments: Values
    state: LineState
    in_file: bool
    due: bool
    line: int | None = None
    secret: Literal["not compared", "same", "changed"] | None = None
    cannot_be_reverted: bool = False
    current: Entry | None = None
    open: Entry | None = None
    failed: Entry | None = None
    follows: int | None = None
    precedes: int | None = None


@dataclass(frozen=True)
class PlanTotals:
    """How many lines are in each state, and how many apply makes."""

    file: str
    journal: str
    lines: int
    new: int
    changed: int
    again: int
    unknown: int
    refused: int
    not_delivered: int
    accepted: int
    sent: int
    unread: int
    overtaken: int
    due: int
    left_unknown: int
    secrets_not_compared: int
    removed: int
    removed_unknown: int
    left_to_batch: int
    gateway: str | None = None


@dataclass(frozen=True)
class Call:
    """A call that was made, or given up."""

    call: str
    arguments: Values
    outcome: str
    verdict: str
    exit: int
    file: str | None = None
    line: int | None = None
    hint: str | None = None
    code: int | None = None
    status: int | None = None
    result: Values | None = None


@dataclass(frozen=True)
class ApplyTotals:
    """How many calls ended how, and what is left; `after` has the numbers of all lines by their states now."""

    file: str
    journal: str
    accepted: int
    sent: int
    unread: int
    refused: int
    not_delivered: int
    unknown: int
    not_made: int
    failed_lines: tuple[int, ...]
    up_to_date: int
    left_unknown: int
    secrets_not_compared: int
    lines: int
    left_to_batch: int
    due: int
    after: Mapping[str, Sequence[int]] = field(default_factory=dict)
    gateway: str | None = None


@dataclass(frozen=True)
class Undecided:
    """A call of a confirmed apply that is in effect until that is confirmed or reverted."""

    line: int
    call: str
    arguments: Values


@dataclass(frozen=True)
class Confirmation:
    """What became of a confirmed apply, or until when it waits, and with which calls, the last one first."""

    journal: str
    state: ConfirmationState
    reverted: int
    gateway: str | None = None
    until: str | None = None
    seconds_left: int | None = None
    has_waiter: bool | None = None
    calls: tuple[Undecided, ...] = ()
    hint: str | None = None
    not_reverted: int | None = None
    lines_not_reverted: tuple[int, ...] = ()


@dataclass(frozen=True)
class Setting:
    """A call and its arguments."""

    call: str
    arguments: Values


@dataclass(frozen=True)
class RevertLine:
    """A call of a confirmed apply that was to be reverted; `obstacle` says why it was not."""

    file: str
    line: int
    call: str
    arguments: Values
    state: Literal["reverted", "not reverted"]
    before: Setting | None = None
    verdict: str | None = None
    obstacle: str | None = None


@dataclass(frozen=True)
class ReportLine:
    """A setting that was sent to the gateway."""

    call: str
    arguments: Values
    state: CallState
    at: str
    secret: bool = False


@dataclass(frozen=True)
class SiteLine:
    """A journal among several."""

    journal: str
    state: SiteState
    exit: int
    gateway: str | None = None
    complaint: str | None = None
    settled: int | None = None
    unknown: int | None = None
    failed: int | None = None
    confirmation: str | None = None
    last: str | None = None
    by: str | None = None


# --- Results ----------------------------------------------------------------------------


@dataclass(frozen=True)
class Plan:
    """Every line; `confirmation` where an earlier apply is not confirmed. exit is 11 if something is left to make."""

    exit: int
    lines: tuple[PlanLine, ...]
    totals: PlanTotals
    confirmation: Confirmation | None
    notes: tuple[Note, ...]


@dataclass(frozen=True)
class Apply:
    """The lines that it was to make, and its calls; `confirmation` where it is to be confirmed.

    exit is 0 only if nothing is left to make. `reverted` has what it reverted, above all of an earlier apply that had
    expired.
    """

    exit: int
    due: tuple[PlanLine, ...]
    calls: tuple[Call, ...]
    totals: ApplyTotals
    confirmation: Confirmation | None
    reverted: tuple[RevertLine, ...]
    problems: tuple[Problem, ...]
    notes: tuple[Note, ...]


@dataclass(frozen=True)
class Decision:
    """What confirm or revert ended with: exit is 0 only where the apply is now confirmed, or reverted."""

    exit: int
    confirmation: Confirmation
    lines: tuple[RevertLine, ...]
    notes: tuple[Note, ...]


@dataclass(frozen=True)
class Report:
    """What a journal knows of its gateway."""

    exit: int
    journal: str
    settled: int
    unknown: int
    failed: int
    lines: tuple[ReportLine, ...]
    gateway: str | None = None
    confirmation: Confirmation | None = None


@dataclass(frozen=True)
class Sites:
    """The journals of a folder; `open` is how many of them have exit 11."""

    exit: int
    sites: int
    open: int
    unreadable: int
    journals: tuple[SiteLine, ...] = ()


@dataclass(frozen=True)
class Journal:
    """A journal's text, to be kept and put back."""

    journal: str
    text: str
    gateway: str | None = None


class Complaint(Error):
    """vorcfg did not do what was asked, or not all of it: `calls` and `reverted` have what it did before."""

    def __init__(self, exit: int, problems: Sequence[Problem], calls: Sequence[Call] = (),
                 reverted: Sequence[RevertLine] = ()) -> None:
        result = Result(Outcome.unknown if calls or reverted else Outcome.not_sent)
        super().__init__("\n".join(map(str, problems)), result)
        self.exit = exit
        self.problems = tuple(problems)
        self.calls = tuple(calls)
        self.reverted = tuple(reverted)

    def __reduce__(self) -> tuple[Any, ...]:
        return Complaint, (self.exit, self.problems, self.calls, self.reverted)


# --- Reading ----------------------------------------------------------------------------

Kind = TypeVar("Kind")
Read = TypeVar("Read")
Json = dict[str, Any]
_PARTS: Mapping[str, Any] = {"current": Entry, "open": Entry, "failed": Entry, "before": Setting,
                             "confirmation": Confirmation, "calls": Undecided, "lines": ReportLine}


def _read(kind: Callable[..., Kind], record: Json) -> Kind:
    """The record with the members that its class has."""
    names = [each.name for each in fields(cast(Any, kind))]
    return kind(**{name: _member(name, record[name]) for name in names if name in record})


def _member(name: str, value: Any) -> Any:
    if isinstance(value, list):
        return tuple(_member(name, each) for each in value)
    return _read(_PARTS[name], value) if name in _PARTS and isinstance(value, dict) else value


class _Answer:
    """The answer to a request: its records by their types."""

    def __init__(self, command: str, answer: Json) -> None:
        self.command = command
        self.exit: int = answer["exit"]
        self.output: Sequence[Json] = answer["output"]

    def all(self, kind: Callable[..., Kind], *types: str) -> tuple[Kind, ...]:
        return tuple(_read(kind, record) for record in self.output if record["type"] in types)

    def last(self, kind: Callable[..., Kind], type_: str) -> Kind:
        """What a command that was carried out ends with."""
        found = self.all(kind, type_)
        if found:
            return found[-1]
        if not self.problems():
            raise _lost(self.command, f"vorcfg ended it with exit code {self.exit} and without {type_}")
        raise Complaint(self.exit, self.problems(), self.all(Call, "call"), self.all(RevertLine, "revert_line"))

    def confirmation(self) -> Confirmation | None:
        """That of the last apply; an earlier one that had expired comes before the calls."""
        types = [record["type"] for record in self.output]
        after = types[types.index("apply"):] if "apply" in types else types
        return self.all(Confirmation, "confirmation")[-1] if "confirmation" in after else None

    def problems(self) -> tuple[Problem, ...]:
        return self.all(Problem, "error")

    def notes(self) -> tuple[Note, ...]:
        return self.all(Note, "warning", "notice")


# --- The process ------------------------------------------------------------------------


def _lost(command: str, why: str) -> Error:
    if command in _SENDS:
        return Unknown(f"{command}: {why}: it may have been applied; plan says what is left", Result(Outcome.unknown))
    return not_sent(f"{command}: {why}")


def _plain(value: object) -> object:
    if isinstance(value, Secret):
        return value.text
    raise TypeError(f"a member of a request must be a text or a number, not {type(value).__name__}")


def _line_of(command: str, members: Mapping[str, object]) -> memoryview:
    """The request, in a form that shows in no traceback."""
    given = {name: each for name, each in members.items() if each is not None and each is not False}
    return memoryview(json.dumps({"id": 1, "command": command, **given}, default=_plain).encode() + b"\n")


class Vorcfg:
    """A process `vorcfg serve`, found in PATH or started by `command`; one request at a time, from any thread.

    An exception during a request, such as KeyboardInterrupt, ends vorcfg after the call under way, and a second one
    without waiting for that call; then the exception goes on. What was made is in the journal.
    """

    def __init__(self, command: Sequence[str] = ("vorcfg",)) -> None:
        self._process_id = os.getpid()
        self._lock = threading.RLock()  # a signal handler of the thread that holds it may ask for it, too
        self._rest = b""
        self._is_idle = False  # nothing asked, and nothing of an answer unread
        if isinstance(command, str) or not command:
            raise TypeError('command must be a list of words, such as ["vorcfg"]')
        words = [*command, "serve"]
        try:  # Ctrl-C is for this process to handle
            self._process = subprocess.Popen(words, bufsize=0, stdin=subprocess.PIPE,
                                             stdout=subprocess.PIPE, start_new_session=True)
        except OSError as error:
            text = f"cannot run {words[0]}: {error.strerror}\nhint: install vorcfg, or pass its command"
            raise not_sent(text) from None
        assert self._process.stdin and self._process.stdout
        self._input, self._output = self._process.stdin, self._process.stdout
        _processes.add(self)
        try:
            greeting = self._line("serve", "serve")
            if greeting.get("schema") != SCHEMA:
                theirs = greeting.get("schema")
                raise not_sent(f"{words[0]}: its schema must be {SCHEMA}, not {theirs}; install another")
        except BaseException:
            self._abandon()
            raise
        self.version = str(greeting.get("version"))
        self._is_idle = True

    def __enter__(self) -> Vorcfg:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Ends vorcfg, in a signal handler also during a request. What waits to be confirmed goes on waiting."""
        if self._process_id == os.getpid():
            with self._lock:
                if self._is_idle:
                    self._close()
                elif not self._output.closed:
                    self._end()

    def plan(self, site: Site, *, from_: int | None = None, only: str | None = None, all: bool = False,
             resend_secrets: bool = False) -> Plan:
        """What apply would do. Sends nothing."""
        def read(answer: _Answer) -> Plan:
            totals = answer.last(PlanTotals, "plan")
            return Plan(answer.exit, answer.all(PlanLine, "plan_line"), totals, answer.confirmation(), answer.notes())
        options = {"from": from_, "only": only, "all": all, "resend_secrets": resend_secrets}
        return self._ask("plan", site, options, read)

    def apply(self, site: Site, *, from_: int | None = None, only: str | None = None, all: bool = False,
              resend_secrets: bool = False, confirm: int | str | None = None, retry_unknown: bool = False,
              skip_unknown: bool = False, keep_going: bool = False, timeout: int | str | None = None,
              yes: bool = False) -> Apply:
        """Makes the calls that are left; `confirm="2m"` reverts them unless they are confirmed in time."""
        def read(answer: _Answer) -> Apply:
            totals = answer.last(ApplyTotals, "apply")
            return Apply(
                answer.exit, answer.all(PlanLine, "plan_line"), answer.all(Call, "call"), totals,
                answer.confirmation(), answer.all(RevertLine, "revert_line"), answer.problems(), answer.notes())
        return self._ask("apply", site, {
            "from": from_, "only": only, "all": all, "resend_secrets": resend_secrets, "confirm": confirm,
            "retry_unknown": retry_unknown, "skip_unknown": skip_unknown, "keep_going": keep_going, "timeout": timeout,
            "yes": yes}, read)

    def confirm(self, site: Site) -> Decision:
        """Keeps what apply changed. Where that was reverted before, exit and state say so."""
        return self._ask("confirm", site, {}, self._decision)

    def revert(self, site: Site, *, timeout: int | str | None = None) -> Decision:
        """Reverts what waits to be confirmed, now."""
        return self._ask("revert", site, {"timeout": timeout}, self._decision)

    def report(self, site: Site) -> Report:
        """What the journal knows. Sends nothing."""
        def read(answer: _Answer) -> Report:
            if answer.all(Sites, "sites"):
                raise ValueError("journal must be a file, not a folder: use sites()")
            return answer.last(Report, "report")
        return self._ask("report", site, {}, read)

    def sites(self, folder: str | os.PathLike[str]) -> Sites:
        """A line for each journal in the folder. Sends nothing."""
        def read(answer: _Answer) -> Sites:
            if answer.all(Report, "report"):
                raise ValueError("folder must be a folder, not a journal: use report()")
            return replace(answer.last(Sites, "sites"), journals=answer.all(SiteLine, "site"))
        return self._ask("report", Site(journal=folder), {}, read)

    def journal(self, site: Site, *, text: str | None = None) -> Journal:
        """The journal's text; with a text, puts it back where there is none."""
        return self._ask("journal", site, {"text": text}, lambda answer: answer.last(Journal, "journal"))

    @staticmethod
    def _decision(answer: _Answer) -> Decision:
        confirmation = answer.last(Confirmation, "confirmation")
        return Decision(answer.exit, confirmation, answer.all(RevertLine, "revert_line"), answer.notes())

    def _ask(self, command: str, site: Site, options: Mapping[str, object], read: Callable[[_Answer], Read]) -> Read:
        if self._process_id != os.getpid():
            raise not_sent(f"{command}: this process was forked, and vorcfg is its parent's; start another", Forked)
        if not isinstance(site, Site):
            raise TypeError(f"{command}: site must be a Site, not {type(site).__name__}")
        request = _line_of(command, {**site._members(), **options})
        with self._lock:
            if not self._is_idle:
                under_way = "vorcfg has ended" if self._output.closed else "a request is under way in this thread"
                raise not_sent(f"{command}: {under_way}")
            self._is_idle = False
            try:
                while request:
                    request = request[os.write(self._input.fileno(), request):]
                answer = self._line(command, "answer")
            except BrokenPipeError:  # a request that was not read whole is not carried out
                self._close()
                raise not_sent(f"{command}: vorcfg has ended") from None
            except BaseException:
                self._abandon()
                raise
            self._is_idle = True
        try:
            return read(_Answer(command, answer))
        except (KeyError, TypeError):
            raise _lost(command, "vorcfg's answer is not what its schema says") from None

    def _line(self, command: str, kind: str) -> Json:
        """The next that vorcfg writes."""
        parts = [self._rest]
        while b"\n" not in parts[-1]:
            parts.append(os.read(self._output.fileno(), 1 << 16))
            if not parts[-1]:
                self._close()
                raise _lost(command, f"vorcfg ended with exit code {self._process.returncode}")
        line, _, self._rest = b"".join(parts).partition(b"\n")
        try:
            record = json.loads(line)
        except ValueError:
            record = None
        # the answer to a request that it cannot read has no id
        if not isinstance(record, dict) or record.get("type") != kind or record.get("id") not in (None, 1):
            raise _lost(command, f"{line[:80]!r} is not what vorcfg serve writes")
        return record

    def _abandon(self) -> None:
        if not self._output.closed:
            try:
                self._end()
            finally:
                self._close()

    def _end(self) -> None:
        """Ends vorcfg after the call under way, or, if interrupted again, without waiting for that call."""
        try:
            self._process.send_signal(signal.SIGINT)
            while os.read(self._output.fileno(), 1 << 16):
                pass
        except BaseException:
            self._process.send_signal(signal.SIGINT)
            raise

    def _close(self) -> None:
        self._is_idle = False
        self._leave()
        self._process.wait()

    def _leave(self) -> None:
        self._input.close()
        self._output.close()


_processes: weakref.WeakSet[Vorcfg] = weakref.WeakSet()


def _leave_all() -> None:
    """A child that held the pipe open would keep its parent's vorcfg from ending."""
    for process in _processes:
        process._leave()


os.register_at_fork(after_in_child=_leave_all)
