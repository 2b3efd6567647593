# MIT licence, the device_mgmt authors.
"""Hand-over sheets and the report of the fleet, written on the controller of what tasks before have returned."""

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


def update(folder: Path, gateways: dict[str, Json]) -> dict[str, int]:
    """Writes the sheets and the gateways' rows; returns how many gateways of the whole report are in each state."""
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
            known = outcome.get("known") or {}
            if "ansible_facts" in known:
                replace(str(sheets / f"{name}.md"), sheet_of(name, outcome, time).encode())
            last = totals_of(known).get("last", rows.get(name, {}).get("last", ""))
            counts = [len(known[state]) if state in known else "" for state in COUNTS]
            values = [name, outcome["state"], *counts, last, outcome.get("msg") or "", time]
            rows[name] = dict(zip(COLUMNS, map(cell, values)))
        text = io.StringIO(newline="")
        writer = csv.DictWriter(text, COLUMNS, extrasaction="ignore", lineterminator="\n")
        writer.writeheader()
        writer.writerows(rows[name] for name in sorted(rows))
        replace(str(table), text.getvalue().encode())
    finally:
        os.close(lock)
    return dict(Counter(row["state"] for row in rows.values()))


class ActionModule(ActionBase):  # type: ignore[misc]
    """Makes no connection."""

    TRANSFERS_FILES = False

    def run(self, tmp: Any = None, task_vars: Any = None) -> Json:
        result: Json = super().run(tmp, task_vars)
        _, arguments = self.validate_argument_spec(
            {"folder": {"type": "path", "required": True}, "gateways": {"type": "dict", "required": True}}
        )
        try:
            result["states"] = update(Path(arguments["folder"]), arguments["gateways"])
        except (OSError, csv.Error) as error:
            raise AnsibleActionFail(f"{arguments['folder']}: {error}") from error
        return result
