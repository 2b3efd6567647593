"""The fixture, in tests of its own."""
from __future__ import annotations

import os
import pathlib
import runpy
import signal
import subprocess
import sys
import time
from typing import Any

import pytest

from device_mgmt import testing
from device_mgmt.testing import Vorsim

CAN = "canmgr  vor_cfg_set_can_id  port 1: can_id=7 option=1"
TESTS = """
import os, subprocess
import pytest

def set_id(number):
    subprocess.run(["vorcfg", "can", "set-id", "1", str(number), "1"], check=False)

def test_right(vorsim):
    set_id(7)
    set_id(7)
    vorsim.expect("status 0  {CAN}  x2")
    assert [line.split()[:2] for line in vorsim.received()] == [["status", "0"]] * 2
    vorsim.reset()
    vorsim.fault("canmgr: status 7, once")
    vorsim.stop("gsmmgr")
    vorsim.start("gsmmgr")
    set_id(7)
    subprocess.run("vorcfg konfd query --set --line mtu 9 --pattern mtu --path interface eth7".split(), check=False)
    vorsim.expect("{CAN}", subset=True, allow_complaints=True, within="5s")
    set_id(8)
    vorsim.expect("canmgr  *  port 1: can_id=8 option=1", "{CAN}", any_order=True, allow_complaints=True)
    vorsim.clear_faults()
    assert vorsim.received()[0].split()[:2] == ["status", "7"]

def test_wrong(vorsim):
    set_id(8)
    vorsim.expect("{CAN}")

def test_own_reason(vorsim):
    set_id(9)
    assert False

class TestStrict:
    @pytest.fixture
    def vorsim_options(self):
        return ["--strict"]

    def test_complaint(self, vorsim):
        subprocess.run("vorcfg konfd query --set --line mtu 9 --pattern mtu --path interface eth7".split(), check=False)

class TestOption:
    @pytest.fixture
    def vorsim_options(self):
        return ["--sapp", "7"]

    def test_option(self, vorsim):
        pass
""".replace("{CAN}", CAN)


def test_a_test_fails_with_what_the_gateway_saw(pytester: pytest.Pytester) -> None:
    pytester.makepyfile(TESTS)
    result = pytester.runpytest_inprocess("-p", "no:cacheprovider", "-p", "device_mgmt.testing", "-p", "no:pytester")
    result.assert_outcomes(passed=2, failed=2, errors=2)
    said = result.stdout.str()
    for text in ("can_id=7", "status 0   canmgr  vor_cfg_set_can_id  port 1: can_id=8", "Printed by vorsim", "can_id=9",
                 "vorsim did not start:\nvorsim: unknown option", "vorsim exited with 1:"):
        assert text in said, text


KILLED = """
import os, time
from device_mgmt.testing import Vorsim
gateway = Vorsim()
child = os.fork()
if child == 0:
    gateway.close()
    os.close(1)
    time.sleep(60)
    os._exit(0)
print(gateway.directory, child, sep="\\n", flush=True)
os.kill(os.getpid(), 9)
"""


def test_nothing_is_left_of_a_killed_process() -> None:
    died = subprocess.run([sys.executable, "-c", KILLED], stdout=subprocess.PIPE, text=True)
    directory, child = died.stdout.splitlines()
    assert pathlib.Path(directory).name.startswith("vorsim.")
    deadline = time.monotonic() + 20
    while pathlib.Path(directory).exists() and time.monotonic() < deadline:
        time.sleep(0.01)
    os.kill(int(child), signal.SIGKILL)
    assert not pathlib.Path(directory).exists()


def test_gateways_are_apart(vorsim: Vorsim) -> None:
    with Vorsim() as other:
        subprocess.run(["vorcfg", "can", "set-id", "1", "7", "1"], check=True,
                       env={**os.environ, **other.environment})
        other.expect(CAN)
        with pytest.raises(TypeError, match="each line is an argument of its own"):
            other.expect([CAN])  # type: ignore[arg-type]
        assert vorsim.received() == []


def test_what_is_missing_is_named(monkeypatch: pytest.MonkeyPatch) -> None:
    with pytest.raises(pytest.fail.Exception, match="cannot run /nowhere/vorsim: No such file or directory\nhint: "):
        Vorsim(program="/nowhere/vorsim")
    modules: Any = sys.modules
    monkeypatch.setitem(modules, "pytest", None)  # as where it is not installed
    with pytest.raises(ImportError, match="device_mgmt.testing needs pytest"):
        runpy.run_path(testing.__file__)
