# MIT licence, the device_mgmt authors.
"""Hand-over sheets and the report of the fleet, written on the controller from what the role's tasks returned."""

import csv
import fcntl
import hashlib
import io
import os
from datetime import datetime, timezone
from typing import Any

from ansible.errors import AnsibleActionFail
from ansible.plugins.action import ActionBase

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.files import make_private, replace
from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import Json

ESCAPES = str.maketrans({"\\": "\\\\", "|": "\\|", "<": "&lt;"})
# What the role registers, in the order of its tasks; but a lost journal is why a plan has more lines than expected.
RESULTS = ("lost", "restored", "plan", "decided", "compared", "apply", "confirmed", "journal", "facts")
NOT_APPROVED = "not approved\nhint: answer yes at a terminal, or set commission_approved"
BEFORE_THE_ROLE = "it failed before it was planned"
# What hints of the tasks name, as the role names it.
IN_THE_ROLE = {
    "begun_anew: true": "commission_lost_journal: replaced",
    "accept_permanent:": "commission_accept_permanent:",
    "unknown:": "commission_unknown:",
    "state: confirmed": "commission_waiting: confirm",
    "state: reverted": "commission_waiting: revert",
}
LONGEST = 300  # characters of a cell
COUNTS = ["settled", "waiting", "unknown", "refused", "left"]
COLUMNS = ["gateway", "state", *COUNTS, "last", "message", "reported"]


def cell(text: Any) -> str:
    """A value as text that a spreadsheet takes for text, never for a formula."""
    line = printable(text)[:LONGEST]
    return "'" + line if line[:1] in ("=", "+", "-", "@") else line


def printable(value: Any) -> str:
    return "".join(filter(str.isprintable, " ".join(str(value).split())))


def escaped(value: Any) -> str:
    return printable(value).translate(ESCAPES)


def totals_of(known: Json) -> Json:
    totals: Json = known["ansible_facts"]["device_mgmt"] if "ansible_facts" in known else {}
    return totals


def sheet_of(name: str, outcome: Json, time: str, copy: str) -> str:
    """A hand-over sheet, in Markdown."""

    def row(*values: Any) -> str:
        return f"| {' | '.join(map(escaped, values))} |"

    known = outcome["known"]
    totals = totals_of(known)
    last, by = escaped(totals.get("last", "")), escaped(totals.get("by", "unknown"))
    made = f"; the last call was made at {last} by {by}" if last else ""
    lines = [f"# {escaped(totals.get('gateway', name))}", ""]
    lines += [f"{outcome['state'].capitalize()}, as of {time}{made}.", ""]
    lines += ["These settings were sent to the gateway. Its current values cannot be read back.", ""]
    lines += [row("line", "setting", "values", "outcome", "time"), "|---|---|---|---|---|"]
    for line in sorted((line for state in COUNTS for line in known[state]), key=lambda line: int(line.get("line", 0))):
        values = [f"{key} {shown(value)}" for key, value in line.get("arguments", {}).items()]
        values += ["a secret" + ", not compared" * (line["secret"] == "not compared")] if "secret" in line else []
        verdict = line.get("verdict", line["state"]) + (", to be confirmed" if line in known["waiting"] else "")
        lines.append(row(line.get("line", ""), line["call"], ", ".join(values), verdict, line.get("at", "")))
    if os.path.exists(copy):
        with open(copy, "rb") as journal:
            digest = hashlib.sha256(journal.read()).hexdigest()
        lines += ["", f"The copy of its journal has the SHA-256 {digest}."]
    return "\n".join(lines) + "\n"


def shown(value: Any) -> str:
    return "[" + ", ".join(map(str, value)) + "]" if isinstance(value, list) else str(value)


# --- What became of a gateway -----------------------------------------------------------


def waits(result: Json) -> bool:
    return (result.get("confirmation") or {}).get("state") in ("waiting", "expired")


def state_of(results: Json) -> str:
    """The worst that is true of the gateway."""
    plan, known = results["plan"], results["known"]
    if plan.get("unreachable"):
        return "unreachable"
    if "left" not in plan:
        return "refused"
    if results["apply"] and known is plan:  # the connection was lost
        return "unknown"
    if waits(known):
        return "waiting"
    if known["unknown"] or any(results[name].get("failed") for name in ("lost", "restored")):
        return "unknown"
    if known["refused"]:
        return "refused"
    if known["left"]:
        return "left"
    return "settled" if known["settled"] or not known.get("failed") else "refused"


def problem_of(results: Json) -> str:
    """What went wrong first; nothing that an earlier run left waiting, if it does not wait any more."""
    relevant = [results[name] for name in RESULTS if name != "decided" or waits(results["plan"])]
    wrong = [result for result in relevant if result.get("failed") or result.get("unreachable")]
    return in_the_role(str(wrong[0].get("msg", "failed"))) if wrong else ""


def in_the_role(message: str) -> str:
    lines = message.splitlines()
    for number, line in enumerate(lines):
        if line.startswith("hint: "):
            for option, variable in IN_THE_ROLE.items():
                line = line.replace(option, variable)
            lines[number] = line
    return "\n".join(lines)


def outcome_of(variables: Any, in_check_mode: bool) -> Json:
    """State and message of a gateway, from what the tasks of the role have registered."""
    results: Json = {name: variables.get("commission_" + name) or {} for name in RESULTS}
    results = {name: {} if result.get("skipped") else result for name, result in results.items()}
    latest = (results[name] for name in ("facts", "confirmed", "apply") if "left" in results[name])
    results["known"] = next(latest, results["plan"])
    state, problem = state_of(results), problem_of(results)
    if not problem and results["plan"].get("due") and not results["apply"] and not in_check_mode:
        problem = NOT_APPROVED
    if problem and state == "settled":
        state = "failed"
    if waits(results["known"]) and not problem and not in_check_mode:
        problem = "the last apply is neither confirmed nor reverted"
    is_well = not problem and (in_check_mode or state == "settled")
    message = problem or results["known"].get("msg", "")
    return {"state": state, "msg": message, "known": results["known"], "is_well": is_well}


def dropped(variables: Any) -> dict[str, Json]:
    """Gateways that an earlier task of the play failed; Ansible has left them out since."""
    names = set(variables["ansible_play_hosts_all"]) - set(variables["ansible_play_hosts"])
    outcome: Json = {"state": "failed", "msg": BEFORE_THE_ROLE, "known": {}}
    return {name: outcome for name in names if not variables["hostvars"][name].get("commission_plan")}


# --- Files ------------------------------------------------------------------------------


def rows_in(table: str) -> dict[str, Json]:
    """The rows of an earlier report, by their gateways."""
    if not os.path.exists(table):
        return {}
    with open(table, encoding="utf-8", newline="") as stream:
        rows = csv.DictReader(stream)
        if rows.fieldnames != COLUMNS:
            raise ValueError(f"its first line must be {','.join(COLUMNS)}\nhint: move the file away to begin a new one")
        return {row["gateway"]: row for row in rows}


def update(folder: str, gateways: dict[str, Json]) -> None:
    """Writes the sheets and the rows of these gateways."""
    time = datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    table = os.path.join(folder, "fleet.csv")
    make_private(folder)
    lock = os.open(folder, os.O_RDONLY)
    try:
        fcntl.flock(lock, fcntl.LOCK_EX)  # another run may report other gateways
        rows = rows_in(table)
        for name, outcome in gateways.items():
            known = outcome["known"]
            if "ansible_facts" in known:
                sheet = sheet_of(name, outcome, time, os.path.join(folder, "journals", f"{name}.journal"))
                replace(os.path.join(folder, "sheets", f"{name}.md"), sheet.encode())
            last = totals_of(known).get("last", rows.get(name, {}).get("last", ""))
            counts = [len(known[state]) if state in known else "" for state in COUNTS]
            message = outcome["msg"].strip().partition("\n")[0]
            values = [name, outcome["state"], *counts, last, message, time]
            rows[name] = dict(zip(COLUMNS, map(cell, values)))
        text = io.StringIO(newline="")
        writer = csv.DictWriter(text, COLUMNS, extrasaction="ignore", lineterminator="\n")
        writer.writeheader()
        writer.writerows(rows[name] for name in sorted(rows))
        replace(table, text.getvalue().encode())
    finally:
        os.close(lock)


class ActionModule(ActionBase):  # type: ignore[misc]
    """Makes no connection."""

    def run(self, tmp: Any = None, task_vars: Any = None) -> Json:
        result: Json = super().run(tmp, task_vars)
        folder: str = self.validate_argument_spec({"folder": {"type": "path", "required": True}})[1]["folder"]
        in_check_mode: bool = self._task.check_mode
        hosts = task_vars["hostvars"]
        outcomes = {name: outcome_of(hosts[name], in_check_mode) for name in task_vars["ansible_play_batch"]}
        try:
            if not in_check_mode:
                update(folder, {**outcomes, **dropped(task_vars)})
        except (OSError, ValueError, csv.Error) as error:
            raise AnsibleActionFail(f"{folder}/fleet.csv: {error}") from error
        wrong = {name: outcome for name, outcome in outcomes.items() if not outcome["is_well"]}
        result["problems"] = {name: f"{outcome['state']}: {outcome['msg']}" for name, outcome in wrong.items()}
        return result
