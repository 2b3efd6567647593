#!/usr/bin/python3
"""The inventory of the towers: a gateway for each row of towers.csv, which any spreadsheet writes.

Each cell is text, in the variable `tower`: tower.lan is that of the column lan. It is never taken for a template.
The columns gateway and address are needed. A region is a group, and "yes" as canary is one: canaries.
"""

import csv
import json
import os
import re
import sys
from pathlib import Path
from typing import Any


def rows_of(sheet: Path) -> list[dict[str, str]]:
    """The rows with anything in them, by the names of the columns."""
    text = sheet.read_text(encoding="utf-8-sig")
    first = text.partition("\n")[0]
    comma = ";" if first.count(";") > first.count(",") else ","
    rows = csv.reader(text.splitlines(keepends=True), delimiter=comma, strict=True)
    columns = [column.strip() for column in next(rows, [])]
    found: list[dict[str, str]] = []
    for cells in rows:
        if not any(cells):
            continue
        if len(cells) != len(columns):
            wanted = f"{len(columns)} cells expected, as in the first line"
            raise ValueError(f"line {rows.line_num}: {wanted}, not {len(cells)}")
        found.append(dict(zip(columns, cells)))
    return found


def inventory_of(rows: list[dict[str, str]]) -> dict[str, Any]:
    """What Ansible reads from an inventory script."""
    groups: dict[str, list[str]] = {"towers": [], "canaries": []}
    variables: dict[str, dict[str, Any]] = {}
    for row in rows:
        name = row["gateway"]
        if not name or name in variables:
            raise ValueError(f'gateway "{name}": a name of its own expected')
        # they become names of files, and arguments of ssh
        if not re.fullmatch(r"[A-Za-z0-9_][A-Za-z0-9_.-]*", name):
            raise ValueError(f'gateway "{name}": letters, digits, ".", "_" and "-" expected')
        if not re.fullmatch(r"[A-Za-z0-9_:][A-Za-z0-9_.:%-]*", row["address"]):
            raise ValueError(f'gateway "{name}": a host name or an address expected, not "{row["address"]}"')
        groups["towers"].append(name)
        if row.get("canary", "").strip().lower() == "yes":
            groups["canaries"].append(name)
        if row.get("region"):
            groups.setdefault("region_" + row["region"], []).append(name)
        variables[name] = {
            "ansible_host": row["address"],
            "tower": {column: {"__ansible_unsafe": cell} for column, cell in row.items()},
        }
    return {"_meta": {"hostvars": variables}, **{group: {"hosts": names} for group, names in groups.items()}}


def main() -> None:
    sheet = Path(os.environ.get("TOWERS") or Path(__file__).parents[1] / "towers.csv")
    try:
        json.dump(inventory_of(rows_of(sheet)), sys.stdout)
    except OSError as error:
        sys.exit(f"{sheet}: {error.strerror}")
    except (ValueError, csv.Error) as error:
        sys.exit(f"{sheet}: {error}")
    except KeyError as error:
        sys.exit(f"{sheet}: a column {error} expected")


main()
