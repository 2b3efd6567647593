"""The calls: what they send, how they end, and what never leaves this process."""
from __future__ import annotations

import bisect
import inspect
import json
import os
import pathlib
import pickle
import shlex
import signal
import subprocess
import sys
import tempfile
import threading
import traceback
from typing import Any, Iterator, Sequence

import pytest

import device_mgmt
from device_mgmt import Forked, Gateway, NotSent, Outcome, Refused, Result, Secret, Unknown, _endpoint
from device_mgmt._call import Call
from device_mgmt.testing import Vorsim

ROOT = pathlib.Path(__file__).parents[2]
DESCRIPTION = json.loads((ROOT / "docs/device_mgmt.json").read_text())
CALLS = {f'{call["family"]} {call["name"]}': call for call in DESCRIPTION["calls"] if "wire" in call}
Arguments = dict[str, Any]


@pytest.fixture
def gateway(vorsim: Vorsim) -> Iterator[Gateway]:
    with Gateway(sap=200) as opened:
        yield opened


# --- Every call, beside vorcfg --------------------------------------------------------------


def example(call: dict[str, Any]) -> Arguments:
    words = shlex.split(call["example"])[2:]
    if "usage" in call:
        key, value = words[words.index("--line") + 1:][:2]
        return {"operation": "set", "line_key": key, "line_value": value, "pattern_key": key, "pattern_value": value}
    values: Arguments = {}
    for argument in call["arguments"]:
        if argument["kind"] == "result" or argument.get("counted") or not sent(argument, values):
            words = words if argument["kind"] == "result" or argument.get("counted") else words[1:]
        elif argument.get("list"):
            values[argument["name"]] = words
        else:
            word, words = words[0], words[1:]
            is_number = argument["kind"] in ("number", "decimal") and word not in argument.get("words", {})
            values[argument["name"]] = int(word, 0) if is_number else "sesame" if word == "-" else word
    return values


def sent(argument: dict[str, Any], values: Arguments) -> bool:
    return all(values[other] == number for other, number in argument.get("sent_only_where", {}).items())


def extreme(call: dict[str, Any], limit: str) -> Arguments:
    values = example(call)
    for argument in call["arguments"]:
        if limit in argument and "usage" not in call:
            values[argument["name"]] = argument[limit]
    return {each["name"]: values[each["name"]] for each in call["arguments"]
            if each["name"] in values and sent(each, values)}


def made(gateway: Gateway, name: str, arguments: Arguments) -> Result:
    family, _, call = name.replace("-", "_").partition(" ")
    try:
        answer = getattr(getattr(gateway, family), call)(**arguments)
    except device_mgmt.Error as error:
        return error.result
    return answer if isinstance(answer, Result) else Result(Outcome.accepted)


def vorcfg(calls: list[tuple[str, Arguments]]) -> list[str]:
    """The outcomes of the same calls, made by vorcfg."""
    requests = []
    for name, arguments in calls:
        given: Any = arguments
        if "usage" in CALLS[name]:
            given = ["--set", "--line", arguments["line_key"], arguments["line_value"],
                     "--pattern", arguments["pattern_key"], arguments["pattern_value"]]
        requests.append(json.dumps({"id": name, "call": name, "arguments": given, "yes": True}))
    with tempfile.TemporaryFile("w+") as asked:
        asked.write("\n".join(requests))
        asked.seek(0)
        with subprocess.Popen(["vorcfg", "serve"], stdin=asked, stdout=subprocess.PIPE, text=True) as process:
            assert process.stdout
            answers = [json.loads(process.stdout.readline()) for _ in range(1 + len(calls))][1:]
            process.kill()  # it would wait for the timer of a restart
    return [answer["output"][-1].get("outcome", str(answer)) for answer in answers]


@pytest.mark.parametrize("limit", ["as in the example", "minimum", "maximum"])
def test_the_gateway_gets_what_vorcfg_sends(vorsim: Vorsim, gateway: Gateway, limit: str) -> None:
    calls = [(name, extreme(call, limit)) for name, call in CALLS.items() if call["role"] != "query"]
    for name, arguments in calls:
        made(gateway, name, arguments)
    from_python = vorsim.received()
    vorsim.reset()
    vorcfg(calls)
    assert from_python == vorsim.received()


NEVER_BETTER = {
    Outcome.accepted: {"accepted", "done"},
    Outcome.sent: {"sent"},
    Outcome.refused: {"refused"},
    Outcome.not_sent: {"not sent", "rejected", "no endpoint", "not delivered"},
}


def test_no_outcome_is_better_than_vorcfgs(
    vorsim: Vorsim, gateway: Gateway, monkeypatch: pytest.MonkeyPatch, tmp_path: pathlib.Path
) -> None:
    met: set[Outcome] = set()
    better = []

    def compare(fault: str, ways: Sequence[str] = ("request", "one-way", "konfd")) -> set[str]:
        """Returns the calls of which nothing is certain."""
        names = [name for name, call in CALLS.items() if call["wire"]["way"] in ways]
        ended = {name: made(gateway, name, example(CALLS[name])) for name in names}
        met.update(result.outcome for result in ended.values())
        vorsim.reset()
        certain = [name for name, result in ended.items() if result.outcome is not Outcome.unknown]
        for name, outcome in zip(certain, vorcfg([(name, example(CALLS[name])) for name in certain])):
            if outcome not in NEVER_BETTER[ended[name].outcome]:
                better.append(f"{fault}: {name}: {ended[name]}, by vorcfg {outcome}")
        vorsim.clear_faults()
        vorsim.reset()
        return set(names) - set(certain)

    assert compare("none") == {name for name, call in CALLS.items()
                               if call["wire"].get("send_unchecked") or call.get("answer_unread")}
    for fault in ("any: status 7", "any: status 1", "any: id low", "any: id high", "any: no payload", "any: short 2",
                  "any: refuse"):
        vorsim.fault(fault)
        compare(fault, ("request", "one-way"))
    for fault in ('konfd: answer "-e"', 'konfd: answer "??"', "konfd: hang up"):
        vorsim.fault(fault)
        compare(fault, ("konfd",))
    gateway.close()
    monkeypatch.setenv("VORINFRA_TIMEOUT_MS", "4")
    vorsim.fault("any: never")
    vorsim.fault("konfd: never")
    with gateway:
        compare("never")
        monkeypatch.delenv("VORINFRA_TIMEOUT_MS")
    with monkeypatch.context() as nobody:
        for variable in ("VORINFRA_DIR", "VORINFRA_ROOT"):
            nobody.setenv(variable, str(tmp_path))
        with gateway:
            compare("nobody listens")
            with pytest.raises(NotSent, match="^not sent: no connection to konfd$"):
                gateway.konfd.query(operation="unset", pattern_key="a")
    assert {made(gateway, name, example(call)).outcome for name, call in CALLS.items()} == {Outcome.not_sent}
    assert vorsim.received() == []
    assert better == []
    assert met == set(Outcome)


# --- One call ------------------------------------------------------------------------------


def test_each_outcome(vorsim: Vorsim, gateway: Gateway) -> None:
    assert gateway.can.set_id(1, can_id=0x101, option=0) == (Outcome.accepted, 0, 0)
    assert str(gateway.gpio.set_value(5, 1)) == "sent; no verdict will come"
    vorsim.fault("canmgr: status 7, once")
    with pytest.raises(Refused, match="^can.set_id: refused by the manager: status 7$") as refused:
        gateway.can.set_id(1, 0x101, 0)
    assert refused.value.status == 7
    vorsim.fault("sub1gmgr: refuse, once")
    with pytest.raises(Unknown, match=r"\(code -1\)$"):  # the status is of the call before
        gateway.sub1g.get_reg_values()
    with pytest.raises(Unknown, match="^debug.set_info: unknown: it may have been applied$"):
        gateway.debug.set_info("on", "all", "info")
    vorsim.stop("canmgr")
    with pytest.raises(Unknown, match=r"^can.set_id: unknown: it may have been applied \(code -3\)$"):
        gateway.can.set_id(1, 0x101, 0)
    gateway.close()
    with pytest.raises(NotSent, match="^not sent: the gateway is not open$"):
        gateway.can.set_id(1, 0x101, 0)


def test_what_is_read_is_a_copy(vorsim: Vorsim, gateway: Gateway) -> None:
    for reading in ("temperature 850", "port 3 polling_count 41", "rssi 96"):
        vorsim.command("set", *reading.split())
    statistics, registers = gateway.gpio.get_port_stats(3), gateway.sub1g.get_reg_values()
    assert gateway.env.get_system_temperature().system_temp == 850
    assert gateway.gpio.get_port_stats(4).logical_port_no == 4
    assert (statistics.logical_port_no, statistics.polling_count, registers.rssi) == (3, 41, 96)


def test_queries_to_konfd(vorsim: Vorsim, gateway: Gateway) -> None:
    gateway.konfd.query(operation="set", line_key="interface", line_value="wlan0", pattern_key="interface",
                        pattern_value="wlan0")
    gateway.konfd.query(operation="set", line_key="password", line_value=Secret("sesame"), pattern_key="password",
                        path=["interface", "wlan0"], priority=3)
    gateway.konfd.query(operation="unset", pattern_key="password", path=["interface", "wlan0"])
    vorsim.expect('answer -o  konfd  -s -l "interface wlan0" -r "^interface wlan0$"',
                  'answer -o  konfd  -s -l "password ********" -r "^password$" -p 3 "interface wlan0"',
                  'answer -o  konfd  -u -r "^password$" "interface wlan0"')
    opened = os.listdir("/proc/self/fd")
    with pytest.raises(Unknown):
        gateway.konfd.query(operation="check", line_key="a", line_value="b", pattern_key="c")
    vorsim.fault("konfd: hang up")
    with pytest.raises(Unknown):
        gateway.wifi.set_ssid_password("Tower 17", "sesame")
    assert os.listdir("/proc/self/fd") == opened
    for arguments, rule in [({"operation": "set"}, 'operation "set" needs line_key'),
                            ({"operation": 3, "line_key": "a", "line_value": "b"}, "operation 3 takes no line_key"),
                            ({"operation": "set", "line_key": "a"}, "line_key and line_value need each other"),
                            ({"operation": "unset", "path": ["a"]}, "path must be keys, each with its value"),
                            ({"operation": "unset", "path": ['"', ""]}, "path must not contain a double quote")]:
        with pytest.raises(ValueError, match=rule):
            gateway.konfd.query(pattern_key="a", **arguments)  # type: ignore[arg-type]


@pytest.mark.parametrize("call, arguments, rule", [
    ("can.set_id", (70000, 1, 1), "port_num must be -32768 to 32767, not 70000"),
    ("can.set_id", (1, -1, 1), "can_id must be 0 to 4294967295, not -1"),
    ("can.set_id", (1, True, 1), "can_id must be a number, not bool"),
    ("can.set_id", (1, 1.0, 1), "can_id must be a number, not float"),
    ("can.set_id", (10**5000, 1, 1), "port_num must be -32768 to 32767, not a number of 16610 bits"),
    ("debug.set_info", ("on", "\033[1m" + "a" * 100, "all"), "task_name must be "),
    ("can.set_id", (1, 1), "missing a required argument: 'option'"),
    ("ip.set_ip_address", (3, "10.0.0.1", "255.0.0.0", 1), "interface_number must be 0 to 2, not 3"),
    ("ip.set_ip_address", (0, "192.168.1.999", "255.0.0.0", 1),
     'ip_address must be an IPv4 address such as 192.168.1.10, not "192.168.1.999"'),
    ("ip.set_ip_address", (0, "1.1.1.1\0", "255.0.0.0", 1), "ip_address must not contain a zero byte"),
    ("ip.enable_ip_routing", ("yes",), 'enable_status must be 0 to 65535, enable or disable, not "yes"'),
    ("ip.enable_ip_routing", ("65536",), "enable_status must be 0 to 65535, enable or disable, not 65536"),
    ("ip.set_dhcp_server_dns", ("lan", 1, "9.9.9.9"), "dns_server must be a list of texts, not str"),
    ("ip.set_dhcp_server_dns", ("lan", 1, ["9.9.9.9"] * 5), "dns_server takes at most 4 values, not 5"),
    ("svc.set_service_chain", (1, "chain", ["a"] * 50), "member takes at most 49 values, not 50"),
    ("ip.set_dhcp_server_dns", ("lan", 1, [None]), "dns_server must be a text, not NoneType"),
    ("debug.set_info", ("on", "all", "loud"), 'level must be error, warning, info, all or ipc, not "loud"'),
    ("debug.set_log_file", (3, "é" * 25), "name must be at most 49 bytes long, not 50"),
    ("debug.set_log_file", (3, "log", "file"), 'log_file_name must be left out unless set_option is 2'),
    ("debug.set_log_file", ("server", "log"), "ip_address is needed where set_option is 1"),
    ("konfd.set_interface_ip", ("eth0", 'a"'), "ip_address must not contain a double quote: konfd has no way to "),
    ("konfd.set_interface_ip", ("eth0\n", "a"), "interface must not contain a control character: it would end the "),
    ("can.set_baudrate", (1, Secret("9600"), 1), "baudrate is not a secret argument, but is given a secret"),
    ("gsm.set_password", (1, "sesame\0", 1), "password must not contain a zero byte"),
    ("gsm.set_password", (1, Secret("sesame\ud800"), 1), "password must be a text that UTF-8 has bytes for"),
    ("debug.set_log_file", (1, "log", "", "", "", Secret("sesame" * 9), 0), "password must be at most 49 bytes long"),
])
def test_what_does_not_fit_is_not_sent(
    vorsim: Vorsim, gateway: Gateway, call: str, arguments: tuple[Any, ...], rule: str
) -> None:
    family, _, name = call.partition(".")
    with pytest.raises((ValueError, TypeError)) as error:
        getattr(getattr(gateway, family), name)(*arguments)
    assert str(error.value).startswith(rule)
    assert str(error.value).isprintable() and len(str(error.value)) < 300
    assert "sesame" not in repr(error.value) + repr(error.value.__context__)
    assert vorsim.received() == []


def test_the_longest_texts_are_vorcfgs(gateway: Gateway) -> None:
    texts = {name: element["from"] for name, call in CALLS.items() for element in call["wire"].get("elements", [])
             if element["kind"] == "str" and "dns" not in name}  # which is left room for four servers

    def arguments(name: str, length: int) -> Arguments:
        given, text = example(CALLS[name]), "a" * length
        return {**given, texts[name]: [text, *given[texts[name]]] if isinstance(given[texts[name]], list) else text}

    def is_too_long(name: str, length: int) -> bool:
        try:
            assert made(gateway, name, arguments(name, length)).outcome in (Outcome.accepted, Outcome.sent), name
            return False
        except ValueError as error:
            assert str(error).startswith(f"{texts[name]} does not fit: ")
            return True

    first = [bisect.bisect(range(4200), False, 3900, key=lambda length: is_too_long(name, length)) for name in texts]
    longest = [(name, arguments(name, length - 1)) for name, length in zip(texts, first)]
    too_long = [(name, arguments(name, length)) for name, length in zip(texts, first)]
    assert set(vorcfg(longest)) <= {"accepted", "sent"}
    assert all("does not fit" in answer for answer in vorcfg(too_long))


def test_a_secret_is_not_shown(vorsim: Vorsim, gateway: Gateway) -> None:
    secret = Secret("sesame")
    assert f"{secret} {secret!r} {[secret]}" == "******** ******** [********]"
    with pytest.raises(TypeError, match="a secret must be a text, not NoneType"):
        Secret(None)  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="cannot be pickled"):
        pickle.dumps(secret)

    def traced(kind: type[Exception], given: Secret) -> str:
        with pytest.raises(kind) as caught:
            gateway.gsm.set_password(1, given, 1)
        trace = traceback.TracebackException.from_exception(caught.value, capture_locals=True)
        return "".join(trace.format())

    vorsim.fault("gsmmgr: never")
    vorsim.stop("gsmmgr")
    shown = [traced(ValueError, Secret(long)) for long in ("sesame\0", "sesame\ud800", "sesame" * 1000)]
    shown.append(traced(Unknown, secret))
    gateway.close()
    shown.append(traced(NotSent, secret))
    assert [trace for trace in shown if "sesame" in trace] == []


def test_without_the_library(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(_endpoint, "LIBRARY", "libdevice_mgmt.so.missing")
    _endpoint.library.cache_clear()
    with pytest.raises(NotSent, match="^not sent: libdevice_mgmt.so.missing: cannot open .*; install it, or name "):
        Gateway(sap=200).open()
    _endpoint.library.cache_clear()


def test_one_endpoint(vorsim: Vorsim, gateway: Gateway) -> None:
    other = Gateway(sap=201)
    with pytest.raises(NotSent, match="^not sent: this process already has an endpoint$"):
        other.open()
    other.close()
    gateway.can.set_id(1, 1, 0)
    gateway.close()
    gateway.close()
    with other:
        other.can.set_id(1, 1, 0)
    with pytest.raises(NotSent, match="^not sent: no endpoint at SAP 7$"):  # ethmgr's
        Gateway(sap=7).open()


def test_nothing_is_left_of_a_gateway_that_nobody_holds(vorsim: Vorsim) -> None:
    with pytest.warns(ResourceWarning, match="the gateway at SAP 200 was not closed"):
        Gateway(sap=200).open()
    with Gateway(sap=200) as gateway:
        assert inspect.getdoc(gateway.can.set_id) == "Set a port's CAN identifier."
        gateway.can.set_id(1, 1, 0)


def test_nothing_is_left_of_an_interrupted_open(vorsim: Vorsim, monkeypatch: pytest.MonkeyPatch) -> None:
    def interrupt() -> int:
        raise KeyboardInterrupt

    def close() -> int:  # as a signal handler may, in between
        closed.close()
        return 4096
    with monkeypatch.context() as interrupted, pytest.raises(KeyboardInterrupt):
        interrupted.setattr(_endpoint, "room", interrupt)
        Gateway(sap=200).open()
    closed = Gateway(sap=200)
    with monkeypatch.context() as signalled:
        signalled.setattr(_endpoint, "room", close)
        closed.open()
    with Gateway(sap=200) as other:
        other.can.set_id(1, 1, 0)


def test_a_signal_handler_during_a_call(vorsim: Vorsim, gateway: Gateway, monkeypatch: pytest.MonkeyPatch) -> None:
    run = Call._run

    def interrupted(call: Call, values: Arguments) -> Any:
        with pytest.raises(NotSent, match="^not sent: a call is under way in this thread$"):
            gateway.can.set_id(1, 2, 0)
        gateway.close()
        return run(call, values)

    with monkeypatch.context() as signalled:
        signalled.setattr(Call, "_run", interrupted)
        gateway.can.set_id(1, 1, 0)
    with pytest.raises(NotSent, match="is not open"):
        gateway.can.set_id(1, 1, 0)
    with gateway:
        gateway.can.set_id(1, 1, 0)
    vorsim.expect("canmgr  vor_cfg_set_can_id  port 1: can_id=1 option=0  x2")


# --- Threads and processes -----------------------------------------------------------------


def test_threads_get_their_own_verdicts(vorsim: Vorsim, gateway: Gateway) -> None:
    vorsim.fault("gsmmgr: status 7")
    ended: list[tuple[int, Result]] = []

    def work(number: int) -> None:
        for _ in range(200):
            name = ("can set-id", "gsm activate")[number % 2]
            ended.append((number % 2, made(gateway, name, example(CALLS[name]))))

    threads = [threading.Thread(target=work, args=(number,)) for number in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    verdicts = {0: Result(Outcome.accepted), 1: Result(Outcome.refused, -1, 7)}
    assert [result for kind, result in ended if result != verdicts[kind]] == []
    assert len(ended) == 1600


FORKING = """
import gc, os, device_mgmt
def tried(call):
    try:
        print(call() or "done", flush=True)
    except device_mgmt.Error as error:
        print(type(error).__name__, error, flush=True)
with device_mgmt.Gateway(sap=200) as gateway:
    child = os.fork()
    if child == 0:
        tried(lambda: gateway.can.set_id(1, 1, 0))
        gateway.close()
        with device_mgmt.Gateway(sap=201) as own:
            tried(lambda: own.can.set_id(1, 2, 0))
            tried(lambda: gateway.can.set_id(1, 1, 0))
        gateway.close()
    else:
        os.waitpid(child, 0)
        tried(lambda: gateway.can.set_id(1, 3, 0))
del gateway
gc.collect()
"""


def test_a_forked_process_leaves_the_endpoint_alone(vorsim: Vorsim) -> None:
    done = subprocess.run([sys.executable, "-c", FORKING], stdout=subprocess.PIPE, text=True, timeout=30)
    forked = "Forked not sent: the gateway was opened before this process was forked"
    assert done.stdout.splitlines() == [forked, "accepted", forked, "accepted"]
    vorsim.expect("canmgr  vor_cfg_set_can_id  port 1: can_id=2 option=0",
                  "canmgr  vor_cfg_set_can_id  port 1: can_id=3 option=0")


def test_a_fork_during_a_call(vorsim: Vorsim, gateway: Gateway, monkeypatch: pytest.MonkeyPatch) -> None:
    parent, library = os.getpid(), _endpoint.library()
    unbind = library.vor_cfg_remove_ipc_endpoint
    monkeypatch.setattr(library, unbind.__name__, lambda: unbind() if os.getpid() == parent else os._exit(99))
    has_begun, has_forked = threading.Event(), threading.Event()
    run = Call._run

    def wait(call: Call, values: Arguments) -> Any:
        has_begun.set()
        assert has_forked.wait(30)
        return run(call, values)

    with monkeypatch.context() as slow:
        slow.setattr(Call, "_run", wait)
        thread = threading.Thread(target=gateway.can.set_id, args=(1, 1, 0))
        thread.start()
        assert has_begun.wait(30)
        child = os.fork()
    if child == 0:
        signal.alarm(10)
        seen = []
        for attempt in (lambda: gateway.can.set_id(1, 2, 0), Gateway(sap=201).open):
            try:
                attempt()
            except Forked:
                seen.append(Forked)
        gateway.close()
        os._exit(len(seen))
    has_forked.set()
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 2
    thread.join()
    vorsim.expect("status 0  canmgr  vor_cfg_set_can_id  port 1: can_id=1 option=0")
    gateway.can.set_id(1, 3, 0)
