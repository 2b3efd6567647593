"""A pytest fixture with a simulated gateway for each test: `pytest_plugins = ["device_mgmt.testing"]` in conftest.py.

    def test_address(vorsim):
        set_address("192.168.1.10")
        vorsim.expect("ethmgr  vor_cfg_set_ip_address  interface 0: ip_address=192.168.1.10 *")

vorsim(1) describes expectations and fault rules. Where the test fails, what vorsim printed is shown with it.
"""
from __future__ import annotations

import contextlib
import os
import pathlib
import re
import subprocess
import tempfile
import weakref
from typing import Any, Generator, Iterator, Sequence

try:
    import pytest
except ImportError:
    raise ImportError("device_mgmt.testing needs pytest; Debian's package is python3-pytest") from None

__all__ = ["Vorsim", "vorsim", "vorsim_options"]


class Vorsim:
    """A gateway in a private directory, ready to be used; it ends with its process, whatever ends that."""

    def __init__(self, *options: str, program: str = "vorsim") -> None:
        self._program = program
        self._process_id = os.getpid()
        self._log = tempfile.TemporaryFile()
        # the gateway is there until sh has read a line, or the end of its input
        command = [program, "run", "--lines", *options, "--", "sh", "-c", 'echo "$VORINFRA_DIR"; read -r _; exit 0']
        try:
            self._process = subprocess.Popen(command, bufsize=0, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                             stderr=self._log, start_new_session=True)
        except OSError as error:
            pytest.fail(f"cannot run {program}: {error.strerror}\nhint: add its folder to PATH", pytrace=False)
        _gateways.add(self)
        assert self._process.stdout
        directory = self._process.stdout.readline().decode().rstrip("\n")
        if not directory:
            self.close()
            pytest.fail(f"vorsim did not start:\n{self.log()}", pytrace=False)
        self.directory = pathlib.Path(directory)

    def __enter__(self) -> Vorsim:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    @property
    def environment(self) -> dict[str, str]:
        """What programs that use this gateway have in their environment."""
        directory = str(self.directory)
        return {"VORINFRA_DIR": directory, "VORINFRA_ROOT": directory, "VORCFG_SECRET_KEY": f"{directory}/secret-key"}

    def close(self) -> int:
        """Stops it, unless it is another process's; the exit code is not 0 if it had ended before, or with --strict if
        there was a complaint.
        """
        if self._process_id != os.getpid():
            return 0
        if self._process.returncode is None:
            with contextlib.suppress(BrokenPipeError):
                self._process.communicate(b"\n")
        return self._process.wait()

    def _leave(self) -> None:
        for pipe in (self._process.stdin, self._process.stdout):
            if pipe:
                pipe.close()

    def log(self) -> str:
        """What it has printed so far."""
        return os.pread(self._log.fileno(), 1 << 24, 0).decode(errors="replace")

    def command(self, *words: str, text: str = "") -> str:
        """Runs a command of vorsim, such as "set", "temperature", "850", and fails the test if that fails."""
        __tracebackhide__ = True
        done = subprocess.run([self._program, *words], input=text, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, env={**os.environ, **self.environment})
        if done.returncode != 0:
            pytest.fail(f"vorsim {' '.join(words)}:\n{done.stdout}", pytrace=False)
        return done.stdout

    def expect(self, *lines: str, any_order: bool = False, subset: bool = False, allow_complaints: bool = False,
               within: str = "0s") -> None:
        """Fails the test unless these messages and no others have arrived, in this order."""
        __tracebackhide__ = True
        if not all(isinstance(line, str) for line in lines):
            raise TypeError("each line is an argument of its own: expect(*lines)")
        options = {"--any-order": any_order, "--subset": subset, "--allow-complaints": allow_complaints}
        given = [option for option, is_given in options.items() if is_given]
        self.command("expect", *given, "--within", within, "-", text="".join(line + "\n" for line in lines))

    def received(self) -> list[str]:
        """The messages since the start or the last reset, each as `expect` takes it."""
        lines = [re.fullmatch("(.*?)(?:  x([0-9]+))?", line) for line in self.recorded().splitlines()]
        return [line[1] for line in lines if line for _ in range(int(line[2] or 1))]

    def recorded(self) -> str:
        """The expectations that hold now, to be kept in a file."""
        return self.command("expect", "--record", "-")

    def fault(self, rule: str) -> None:
        """Adds a fault rule: "canmgr: status 7, once"."""
        self.command("fault", "add", rule)

    def clear_faults(self) -> None:
        """Removes all fault rules."""
        self.command("fault", "clear")

    def stop(self, manager: str) -> None:
        """Takes a manager down."""
        self.command("stop", manager)

    def start(self, manager: str) -> None:
        """Brings a manager back."""
        self.command("start", manager)

    def reset(self) -> None:
        """Clears settings, readings and messages; faults and stopped managers stay."""
        self.command("reset")


_gateways: weakref.WeakSet[Vorsim] = weakref.WeakSet()


def _leave_all() -> None:
    """A child that held the pipe open would keep its parent's gateway from ending."""
    for gateway in _gateways:
        gateway._leave()


os.register_at_fork(after_in_child=_leave_all)


@pytest.fixture
def vorsim_options() -> Sequence[str]:
    """Options of vorsim, such as --strict; a module that has other ones defines this fixture."""
    return ()


@pytest.fixture
def vorsim(vorsim_options: Sequence[str], monkeypatch: pytest.MonkeyPatch) -> Iterator[Vorsim]:
    """A gateway of its own for the test, in whose environment it is."""
    gateway = Vorsim(*vorsim_options)
    for name, value in gateway.environment.items():
        monkeypatch.setenv(name, value)
    yield gateway
    exit = gateway.close()
    if exit != 0:
        pytest.fail(f"vorsim exited with {exit}:\n{gateway.log()}", pytrace=False)


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(item: pytest.Item, call: pytest.CallInfo[None]) -> Generator[None, Any, None]:
    """Shows what the test's gateways printed where it fails."""
    report = (yield).get_result()
    if report.failed and report.when == "call":
        for name, value in getattr(item, "funcargs", {}).items():
            if isinstance(value, Vorsim):
                report.sections.append((f"Printed by {name}", value.log()))
