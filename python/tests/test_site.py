"""Sites over vorcfg serve, against simulated gateways."""
from __future__ import annotations

import dataclasses
import json
import os
import pathlib
import pickle
import signal
import threading
import typing
from typing import Any, Iterator, Sequence

import pytest

from device_mgmt import Error, Forked, NotSent, Secret, Unknown, site
from device_mgmt.site import Site, Vorcfg
from device_mgmt.testing import Vorsim

ADDRESS = "ip set-ip-address 0 192.168.17.${last} 255.255.255.0 1\n"
TEXT = "gateway tower-${site}\n" + ADDRESS + "gsm set-password 1 ${pin} 1\n"
HUSH = "hush-4711"
SCHEMA = json.loads((pathlib.Path(__file__).parents[2] / "docs/vorcfg.schema.json").read_bytes())["definitions"]


@pytest.fixture
def vorcfg(vorsim: Vorsim) -> Iterator[Vorcfg]:
    with Vorcfg() as process:
        yield process


@pytest.fixture
def tower(tmp_path: pathlib.Path) -> Site:
    return Site(TEXT, vars={"site": 17, "last": 2}, secrets={"pin": HUSH}, journal=f"{tmp_path}/sites/")


def changed(tower: Site, **values: Any) -> Site:
    return dataclasses.replace(tower, vars={**tower.vars, **values})


def can(number: int, tmp_path: pathlib.Path, lines: int = 2) -> Site:
    text = "".join(f"can set-id {port} {number} 1\n" for port in range(1, lines + 1))
    return Site(f"gateway tower-17\n{text}", journal=tmp_path)


def test_a_site_from_plan_to_report(vorsim: Vorsim, vorcfg: Vorcfg, tower: Site) -> None:
    plan = vorcfg.plan(tower)
    assert (plan.exit, [line.state for line in plan.lines], plan.totals.new) == (11, ["new", "new"], 2)
    assert vorsim.received() == []
    made = vorcfg.apply(tower)
    assert (made.exit, [call.verdict for call in made.calls]) == (0, ["accepted by ethmgr", "accepted by gsmmgr"])
    assert (made.totals.accepted, made.totals.after) == (2, {"accepted": [2, 3]})
    assert vorcfg.plan(tower).exit == 0
    assert [line.line for line in vorcfg.plan(tower, from_=3, only="gsm", all=True).lines if line.due] == [3]
    assert [line.line for line in vorcfg.plan(tower, resend_secrets=True).lines if line.due] == [3]

    tower = changed(tower, last=3)
    line = vorcfg.plan(tower).lines[0]
    assert (line.line, line.state, line.arguments["ip_address"]) == (2, "changed", "192.168.17.3")
    assert line.current and line.current.arguments["ip_address"] == "192.168.17.2"
    waiting = vorcfg.apply(tower, confirm="1h").confirmation
    assert waiting and waiting.state == "waiting" and waiting.until and waiting.has_waiter
    assert [(call.line, call.call) for call in waiting.calls] == [(2, "ip set-ip-address")]
    assert vorcfg.plan(tower).confirmation == dataclasses.replace(waiting, seconds_left=pytest.approx(3600, abs=60))
    assert vorcfg.confirm(Site(journal=waiting.journal)).confirmation.state == "confirmed"

    assert vorcfg.apply(changed(tower, last=4), confirm="1h").exit == 0
    undone = vorcfg.revert(tower)
    assert (undone.exit, undone.confirmation.state, undone.lines[0].state) == (0, "reverted", "reverted")
    assert undone.lines[0].before and undone.lines[0].before.arguments["ip_address"] == "192.168.17.3"
    too_late = vorcfg.confirm(tower)
    assert (too_late.exit, too_late.confirmation.state) == (13, "reverted")

    report = vorcfg.report(tower)
    assert (report.gateway, report.settled, report.lines[0].secret) == ("tower-17", 2, True)
    assert report.confirmation and report.confirmation.reverted == 1
    sites = vorcfg.sites(os.path.dirname(report.journal))
    assert (sites.sites, sites.journals[0].state) == (1, "accepted")
    kept = vorcfg.journal(tower)
    os.remove(kept.journal)
    assert vorcfg.journal(tower, text=kept.text) == kept
    everything = repr((tower, plan, made, report, kept)) + vorsim.log()
    assert HUSH not in everything and "********" in repr(tower)


def test_failed_calls_are_results(monkeypatch: pytest.MonkeyPatch, vorsim: Vorsim, tmp_path: pathlib.Path) -> None:
    monkeypatch.setenv("VORINFRA_TIMEOUT_MS", "500")
    vorcfg = Vorcfg()
    vorsim.fault("canmgr: status 7, once")
    refused = vorcfg.apply(can(1, tmp_path))
    assert (refused.exit, refused.calls[0].status, refused.totals.refused, refused.totals.not_made) == (1, 7, 1, 1)
    vorsim.fault("canmgr 2nd: never")
    lost = vorcfg.apply(can(1, tmp_path))
    assert (lost.exit, lost.totals.accepted, lost.totals.unknown, lost.totals.after["unknown"]) == (6, 1, 1, [3])
    with pytest.raises(site.Complaint, match="without a verdict; nothing was sent") as complaint:
        vorcfg.apply(can(1, tmp_path))
    assert complaint.value.exit == 6
    assert vorcfg.apply(can(1, tmp_path), skip_unknown=True, keep_going=True).totals.left_unknown == 1
    assert vorcfg.apply(can(1, tmp_path), retry_unknown=True, timeout="5s").exit == 0
    vorcfg.close()


def test_complaints_have_their_lines_and_no_secret(vorcfg: Vorcfg, tower: Site) -> None:
    wrong = dataclasses.replace(tower, text=TEXT + "can set-id 1 ${pin} 1\ncan set-id 70000 1 1\n", file="tower.conf")
    with pytest.raises(site.Complaint) as caught:
        vorcfg.apply(wrong)
    assert [(each.line, each.argument) for each in caught.value.problems] == [(4, None), (5, "port_num")]
    assert str(caught.value).endswith("tower.conf:5: port_num must be -32768 to 32767, not 70000")
    assert HUSH not in repr(caught.value) + str(caught.value)
    assert str(pickle.loads(pickle.dumps(caught.value))) == str(caught.value)
    with pytest.raises(site.Complaint, match="confirm must be 1 to 86400 seconds"):
        vorcfg.apply(tower, confirm=0)
    with pytest.raises(site.Complaint, match="JSON"):
        vorcfg.plan(changed(tower, last="\udcff"))
    with pytest.raises(site.Complaint, match="vars needs site"):
        vorcfg.report(Site(journal="j", vars={"a": 1}))
    with pytest.raises(ValueError, match="^journal must be a file, not a folder: use sites"):
        os.mkdir(f"{tower.journal}")
        pathlib.Path(f"{tower.journal}/j.journal").write_bytes(b"")
        vorcfg.report(Site(journal=tower.journal))
    for secret in (None, True, b"0000"):
        with pytest.raises(TypeError, match="^secrets: pin must be a text or a number, not "):
            dataclasses.replace(tower, secrets={"pin": secret})
    for name, values in (("text", {"text": "\udcff"}), ("pin", {"secrets": {"pin": f"{HUSH}\udcff"}})):
        with pytest.raises(ValueError, match=f"^{name} must be a text that UTF-8 has bytes for$"):
            dataclasses.replace(tower, **values)  # type: ignore[arg-type]
    with pytest.raises(ValueError, match="^a site needs a text or a journal$"):
        Site()
    with pytest.raises(TypeError, match="^plan: site must be a Site, not str$"):
        vorcfg.plan(TEXT)  # type: ignore[arg-type]
    with pytest.raises(TypeError, match="^command must be a list of words"):
        Vorcfg("vorcfg")
    with pytest.raises(TypeError, match="not object"):
        vorcfg.plan(changed(tower, last=object()))
    assert vorcfg.plan(tower).exit == 11


def interrupt(vorsim: Vorsim, vorcfg: Vorcfg, site: Site, times: int = 1, **options: Any) -> None:
    """Ctrl-C once the first message has arrived, and perhaps again."""
    is_over = threading.Event()
    left = [KeyboardInterrupt] * times

    def handle(*_: object) -> None:
        if left and not is_over.is_set():
            raise left.pop()

    def press() -> None:
        vorsim.command("wait", "canmgr  vor_cfg_set_can_id", "--status", "0")
        os.kill(os.getpid(), signal.SIGINT)
        while left and not is_over.wait(0.1):
            os.kill(os.getpid(), signal.SIGINT)
    before = signal.signal(signal.SIGINT, handle)
    thread = threading.Thread(target=press)
    thread.start()
    with pytest.raises(KeyboardInterrupt):
        try:
            vorcfg.apply(site, **options)
        finally:
            is_over.set()
    thread.join()
    signal.signal(signal.SIGINT, before)
    with pytest.raises(NotSent, match="vorcfg has ended"):
        vorcfg.plan(site)


@pytest.mark.parametrize("options", [{}, {"confirm": "1h", "yes": True}])
def test_an_interrupted_apply_ends_after_the_call_under_way(vorsim: Vorsim, vorcfg: Vorcfg, tmp_path: pathlib.Path,
                                                            options: Any) -> None:
    vorsim.fault("canmgr: late 100ms")
    tower = can(1, tmp_path, lines=50)
    interrupt(vorsim, vorcfg, tower, **options)
    with Vorcfg() as other:
        plan = other.plan(tower)
        states = [line.state for line in plan.lines]
        assert (states[0], states[-1], set(states)) == ("accepted", "new", {"accepted", "new"})
        assert (plan.confirmation is not None) == bool(options)
        if options:
            other.confirm(tower)


def test_the_second_interrupt_does_not_wait_for_that_call(vorsim: Vorsim, vorcfg: Vorcfg,
                                                          tmp_path: pathlib.Path) -> None:
    vorsim.fault("canmgr: late 2s")
    interrupt(vorsim, vorcfg, can(1, tmp_path), times=2)
    with Vorcfg() as other:
        assert [line.state for line in other.plan(can(1, tmp_path)).lines] == ["unknown", "new"]


def test_a_signal_handler_ends_vorcfg_after_the_call_under_way(vorsim: Vorsim, vorcfg: Vorcfg,
                                                               tmp_path: pathlib.Path) -> None:
    def close(*_: object) -> None:
        with pytest.raises(NotSent, match="a request is under way in this thread"):
            vorcfg.plan(can(1, tmp_path))
        vorcfg.close()

    def signal_once() -> None:
        vorsim.command("wait", "canmgr  vor_cfg_set_can_id", "--status", "0")
        os.kill(os.getpid(), signal.SIGUSR1)
    vorsim.fault("canmgr: late 100ms")
    before = signal.signal(signal.SIGUSR1, close)
    thread = threading.Thread(target=signal_once)
    thread.start()
    with pytest.raises(Unknown, match="vorcfg ended with exit code"):
        vorcfg.apply(can(1, tmp_path, lines=50))
    thread.join()
    signal.signal(signal.SIGUSR1, before)
    with Vorcfg() as other:
        states = [line.state for line in other.plan(can(1, tmp_path, lines=50)).lines]
    assert (states[0], states[-1], set(states)) == ("accepted", "new", {"accepted", "new"})


def serves(tmp_path: pathlib.Path, script: str) -> Sequence[str]:
    """A command that begins as vorcfg serve does."""
    greeting = '{"schema":3,"type":"serve","version":"1.0.0"}'
    return ["sh", "-c", f"echo '{greeting}'; {script}"]


def test_what_vorcfg_cannot_answer_is_never_done(tmp_path: pathlib.Path) -> None:
    tower = can(1, tmp_path)
    answers = ['{}', '{"type":"answer","id":1}', '{"type":"answer","id":7,"exit":0,"output":[]}',
               '{"type":"answer","id":1,"exit":0,"output":[{"type":"apply"},{"type":"plan"}]}']
    for script in ("read line", "read line; kill -9 $$", "read line; echo hello",
                   *(f"read line; echo '{answer}'" for answer in answers)):
        with Vorcfg(serves(tmp_path, script)) as vorcfg, pytest.raises(Unknown, match="it may have been applied"):
            vorcfg.apply(tower)
        with Vorcfg(serves(tmp_path, script)) as vorcfg, pytest.raises(NotSent):
            vorcfg.plan(tower)
    given_up = '{"schema":3,"type":"answer","id":1,"exit":6,"output":[]}'
    with Vorcfg(serves(tmp_path, f"read line; echo '{given_up}'")) as vorcfg, pytest.raises(Unknown):
        vorcfg.apply(tower)
    with Vorcfg(serves(tmp_path, "exec <&-")) as vorcfg, pytest.raises(NotSent):
        vorcfg.plan(dataclasses.replace(tower, text="#" * (1 << 17)))
        vorcfg.apply(tower)


def test_what_had_expired_is_not_what_waits(tmp_path: pathlib.Path) -> None:
    totals: dict[str, Any] = {each.name: 0 for each in dataclasses.fields(site.ApplyTotals)}
    earlier = {"type": "confirmation", "journal": "j", "state": "reverted", "reverted": 1}
    output = [earlier, {"type": "apply", **totals}]
    answer = json.dumps({"schema": 3, "type": "answer", "id": 1, "exit": 0, "output": output})
    with Vorcfg(serves(tmp_path, f"read line; echo '{answer}'")) as vorcfg:
        assert vorcfg.apply(can(1, tmp_path)).confirmation is None


@pytest.mark.parametrize("command", [["/nowhere/vorcfg"], ["false"], ["echo"], ["sh", "-c", "echo '{\"schema\":4}'"]])
def test_what_is_no_vorcfg_is_said_at_once(command: Sequence[str]) -> None:
    with pytest.raises(Error):
        Vorcfg(command)


def test_a_forked_child_leaves_the_process_to_its_parent(vorcfg: Vorcfg, tower: Site) -> None:
    read, write = os.pipe()
    child = os.fork()
    if child == 0:
        os.close(write)
        with vorcfg:
            try:
                vorcfg.plan(tower)
            except Forked:
                os.read(read, 1)  # while the parent ends its vorcfg
                os._exit(0)
        os._exit(1)
    assert vorcfg.plan(tower).exit == 11
    vorcfg.close()
    os.close(write)
    os.close(read)
    assert os.waitpid(child, 0)[1] == 0


def test_threads_take_turns(vorcfg: Vorcfg, tower: Site) -> None:
    found: list[str | None] = []

    def plan(number: int) -> None:
        for _ in range(10):
            found.append(vorcfg.plan(changed(tower, site=number)).totals.gateway)
    threads = [threading.Thread(target=plan, args=(number,)) for number in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(found, key=str) == [f"tower-{number}" for number in range(4) for _ in range(10)]


LEFT_OUT = {
    "error": {"from"}, "warning": {"column"}, "notice": {"column", "milliseconds"}, "plan_line": {"column"},
    "plan": {"exit"}, "apply": {"exit"}, "call": {"column", "words", "messages", "library"}}


@pytest.mark.parametrize("name, kind", [
    ("error", site.Problem), ("warning", site.Note), ("notice", site.Note), ("entry", site.Entry),
    ("plan_line", site.PlanLine), ("plan", site.PlanTotals), ("call", site.Call), ("apply", site.ApplyTotals),
    ("confirmation", site.Confirmation), ("revert_line", site.RevertLine), ("report_line", site.ReportLine),
    ("report", site.Report), ("site", site.SiteLine), ("sites", site.Sites), ("journal", site.Journal)])
def test_results_have_the_members_of_the_schema(name: str, kind: Any) -> None:
    definition = SCHEMA[name]
    not_read = definition["properties"].keys() - {member.name for member in dataclasses.fields(kind)}
    assert not_read - {"schema", "type"} == LEFT_OUT.get(name, set())
    for member in dataclasses.fields(kind):
        if (name, member.name) in {("sites", "journals"), ("notice", "other_line")}:
            continue
        has_default = (member.default, member.default_factory) != (dataclasses.MISSING, dataclasses.MISSING)
        assert member.name in definition["properties"]
        assert (member.name in definition["required"]) != has_default, member.name


@pytest.mark.parametrize("definition, states", [
    (SCHEMA["line_state"], site.LineState), (SCHEMA["call_state"], site.CallState),
    (SCHEMA["confirmation"]["properties"]["state"], site.ConfirmationState),
    (SCHEMA["site"]["properties"]["state"], site.SiteState)])
def test_states_are_those_of_the_schema(definition: Any, states: Any) -> None:
    assert list(typing.get_args(states)) == definition["enum"]


def test_secret_is_not_wrapped_twice() -> None:
    secret = Secret(HUSH)
    assert Site("x", secrets={"pin": secret}).secrets["pin"] is secret
