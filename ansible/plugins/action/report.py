# MIT licence, the device_mgmt authors.
"""Hand-over sheets and the report of the fleet, written on the controller from what the role's tasks returned."""

import csv
import fcntl
import io
import os
from collections import Counter
from datetime import datetime, timezone
from pathlib import Path
from typing import Any

from ansible.errors import AnsibleActionFail
from ansible.plugins.action import ActionBase

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.files import replace
from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import Json

ESCAPES = str.maketrans({"\\": "\\\\", "|": "\\|", "<": "&lt;"})
# What the role registers, in the order of its tasks.
RESULTS = ("plan", "lost", "restored", "decided", "apply", "confirmed", "journal", "facts")
NOT_APPROVED = "not approved\nhint: answer yes at a terminal, or set commission_approved"
COUNTS = ["settled", "waiting", "unknown", "refused", "left"]
COLUMNS = ["gateway", "state", *COUNTS, "last", "message", "reported"]


def cell(text: Any) -> str:
    """A value as text that a spreadsheet takes for text, never for a formula."""
    line = " ".join(str(text).split())
    return "'" + line if line[:1] in ("=", "+", "-", "@") else line


def totals_of(known: Json) -> Json:
    totals: Json = known["ansible_facts"]["device_mgmt"] if "ansible_facts" in known else {}
    return totals


def sheet_of(name: str, outcome: Json, time: str) -> str:
    """A hand-over sheet, in Markdown."""

    def row(*cells: Any) -> str:
        texts = (" ".join(str(cell).split()) for cell in cells)
        return f"| {' | '.join(text.translate(ESCAPES) for text in texts)} |"

    known = outcome["known"]
    totals = totals_of(known)
    made = f"; the last call was made at {totals['last']} by {totals['by']}" if "last" in totals else ""
    lines = [f"# {totals.get('gateway', name)}", "", f"{outcome['state'].capitalize()}, as of {time}{made}.", ""]
    lines += ["These settings were sent to the gateway. Its current values cannot be read back.", ""]
    lines += [row("line", "setting", "values", "outcome", "time"), "|---|---|---|---|---|"]
    for line in sorted((line for state in COUNTS for line in known[state]), key=number_of):
        values = [f"{key} {shown(value)}" for key, value in line["arguments"].items()]
        values += ["a secret"] if "secret" in line else []
        verdict = line.get("verdict", line["state"]) + (", to be confirmed" if line in known["waiting"] else "")
        lines.append(row(line.get("line", ""), line["call"], ", ".join(values), verdict, line.get("at", "")))
    return "\n".join(lines) + "\n"


def number_of(line: Json) -> int:
    number: int = line.get("line", 0)
    return number


def shown(value: Any) -> str:
    return "[" + ", ".join(map(str, value)) + "]" if isinstance(value, list) else str(value)


# --- What became of a gateway -----------------------------------------------------------


def waits(result: Json) -> bool:
    return (result.get("confirmation") or {}).get("state") in ("waiting", "expired")


def state_of(results: Json) -> str:
    """The worst that is true of the gateway."""
    plan, facts = results["plan"], results["facts"]
    known = results["known"]
    if plan.get("unreachable"):
        return "unreachable"
    if "left" not in plan:
        return "refused"
    if results["apply"] and "left" not in facts:  # and the connection was lost
        return "waiting" if waits(results["apply"]) else "unknown"
    if waits(known):
        return "waiting"
    if known["unknown"] or results["lost"].get("failed"):
        return "unknown"
    if known["refused"]:
        return "refused"
    if known["left"]:
        return "left"
    return "refused" if known.get("failed") else "settled"


def problem_of(results: Json) -> str:
    """What went wrong first; nothing that an earlier run left waiting, if it does not wait any more."""
    relevant = [results[name] for name in RESULTS if name != "decided" or waits(results["plan"])]
    wrong = [result for result in relevant if result.get("failed") or result.get("unreachable")]
    return str(wrong[0].get("msg", "failed")) if wrong else ""


def outcome_of(variables: Any, in_check_mode: bool) -> Json:
    """State and message of a gateway, from what the tasks of the role have registered."""
    results: Json = {name: variables.get("commission_" + name) or {} for name in RESULTS}
    results = {name: {} if result.get("skipped") else result for name, result in results.items()}
    results["known"] = results["facts"] if "left" in results["facts"] else results["plan"]
    state, problem = state_of(results), problem_of(results)
    if not problem and results["plan"].get("due") and not results["apply"] and not in_check_mode:
        problem = NOT_APPROVED
    is_well = not problem and state in (("settled", "left") if in_check_mode else ("settled",))
    message = problem or results["known"].get("msg", "")
    return {"state": state, "msg": message, "known": results["known"], "is_well": is_well}


# --- Files ------------------------------------------------------------------------------


def update(folder: Path, gateways: dict[str, Json]) -> None:
    """Writes the sheets and the rows of these gateways."""
    time = datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    sheets, table = folder / "sheets", folder / "fleet.csv"
    for made in (folder, sheets):
        made.mkdir(mode=0o700, parents=True, exist_ok=True)
    lock = os.open(folder, os.O_RDONLY)
    try:
        fcntl.flock(lock, fcntl.LOCK_EX)  # another run may report other gateways
        rows = {}
        if table.exists():
            with open(table, encoding="utf-8", newline="") as stream:
                rows = {row["gateway"]: row for row in csv.DictReader(stream)}
        for name, outcome in gateways.items():
            known = outcome["known"]
            if "ansible_facts" in known:
                replace(str(sheets / f"{name}.md"), sheet_of(name, outcome, time).encode())
            last = totals_of(known).get("last", rows.get(name, {}).get("last", ""))
            counts = [len(known[state]) if state in known else "" for state in COUNTS]
            values = [name, outcome["state"], *counts, last, outcome["msg"], time]
            rows[name] = dict(zip(COLUMNS, map(cell, values)))
        text = io.StringIO(newline="")
        writer = csv.DictWriter(text, COLUMNS, extrasaction="ignore", lineterminator="\n")
        writer.writeheader()
        writer.writerows(rows[name] for name in sorted(rows))
        replace(str(table), text.getvalue().encode())
    finally:
        os.close(lock)


class ActionModule(ActionBase):  # type: ignore[misc]
    """Makes no connection."""

    TRANSFERS_FILES = False

    def run(self, tmp: Any = None, task_vars: Any = None) -> Json:
        result: Json = super().run(tmp, task_vars)
        arguments = self.validate_argument_spec({"folder": {"type": "path", "required": True}})[1]
        folder = Path(arguments["folder"])
        in_check_mode: bool = self._task.check_mode
        outcomes = {
            name: outcome_of(task_vars["hostvars"][name], in_check_mode) for name in task_vars["ansible_play_batch"]
        }
        try:
            if not in_check_mode:
                update(folder, outcomes)
        except (OSError, csv.Error) as error:
            raise AnsibleActionFail(f"{folder}: {error}") from error
        result["states"] = dict(Counter(outcome["state"] for outcome in outcomes.values()))
        wrong = {name: outcome for name, outcome in outcomes.items() if not outcome["is_well"]}
        result["problems"] = {name: f"{outcome['state']}: {outcome['msg']}" for name, outcome in wrong.items()}
        return result
