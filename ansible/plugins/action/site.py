# MIT licence, the device_mgmt authors.
"""Applies a site, confirms or reverts it; plugins/modules/site.py documents it."""

from __future__ import annotations

from typing import Any

from ansible.errors import AnsibleActionFail, AnsibleAuthenticationFailure, AnsibleConnectionFailure

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import (
    GATEWAY_OPTIONS,
    LISTS,
    GatewayAction,
    Json,
    Lost,
    confirmation_of,
    errors_of,
    first,
    lists_of,
    of_type,
    place_of,
    warnings_of,
    whose,
)

EXIT_OK = 0
MADE = ("accepted", "sent", "unread", "done")
UNDECIDED = ("waiting", "expired")

HINT_UNKNOWN = "hint: unknown: retry makes such lines again, unknown: skip leaves them out"
HINT_WAITING = "hint: state: confirmed keeps the changes, state: reverted undoes them"


class ActionModule(GatewayAction):
    options = {
        **GATEWAY_OPTIONS,
        "state": {"type": "str", "default": "present", "choices": ["present", "confirmed", "reverted"]},
        "confirm": {"type": "str"},
        "only": {"type": "str"},
        "all": {"type": "bool", "default": False},
        "unknown": {"type": "str", "default": "fail", "choices": ["fail", "retry", "skip"]},
        "accept_permanent": {"type": "bool", "default": False},
        "resend_secrets": {"type": "bool", "default": False},
    }

    def carry_out(self, given: Json) -> Json:
        if given["state"] != "present":
            return self._decide(given)
        if given["src"] is None:
            raise AnsibleActionFail("state: present needs src")
        return self._preview(given) if self._task.check_mode else self._apply(given)

    # --- present ----------------------------------------------------------------------

    def _selection(self, given: Json) -> Json:
        selection = {**self.site_of(given), "only": given["only"]}
        return {name: value for name, value in selection.items() if value is not None}

    def _again(self, given: Json) -> Json:
        return {"all": given["all"], "resend_secrets": given["resend_secrets"]}

    def _preview(self, given: Json) -> Json:
        [plan] = self.ask(given, {"command": "plan", **self._selection(given), **self._again(given)})
        result: Json = {"warnings": warnings_of(plan), **whose(plan), **lists_of(plan), "waiting": []}
        result["confirmation"] = confirmation_of(plan)
        due = [line for line in of_type(plan, "plan_line") if line["due"]]
        if given["unknown"] != "retry":
            due = [line for line in due if line["state"] != "unknown"]
        problems = errors_of(plan) or self._obstacles(given, result, due)
        if problems and given["unknown"] != "skip":
            due = []
        result["changed"] = bool(due)
        if self._task.diff:
            result["diff"] = diff_of(whose(plan), due)
        if problems:
            return {**result, "failed": True, "msg": "\n".join(problems)}
        return {**result, "msg": summary(first(plan, "plan"), {"to make": len(due)})}

    def _obstacles(self, given: Json, result: Json, due: list[Json]) -> list[str]:
        """What apply would refuse."""
        if (result["confirmation"] or {}).get("state") == "waiting":
            return waiting_problem(result)
        if result["unknown"] and given["unknown"] != "retry":
            return unknown_problem(given, result)
        if given["confirm"] and not given["accept_permanent"]:
            return permanent_problem(due)
        return []

    def _apply(self, given: Json) -> Json:
        apply: Json = {"command": "apply", **self._selection(given), **self._again(given)}
        apply["retry_unknown"] = given["unknown"] == "retry"
        apply["skip_unknown"] = given["unknown"] == "skip"
        apply["yes"] = given["accept_permanent"]
        if given["confirm"]:
            apply["confirm"] = given["confirm"]
        plan = {"command": "plan", **self._selection(given)}
        try:
            applied, planned = self.ask(given, apply, plan)
        except AnsibleAuthenticationFailure:
            raise
        except (AnsibleConnectionFailure, Lost) as error:
            return self._after_loss(given, plan, str(error))
        calls = of_type(applied, "call")
        result: Json = {"warnings": warnings_of(applied), **whose(planned), **lists_of(planned, calls)}
        result["changed"] = any(call["outcome"] in MADE for call in calls)
        result["confirmation"] = confirmation_of(planned)
        move_waiting(result, calls)
        if self._task.diff:
            made = {call["line"] for call in calls}
            result["diff"] = diff_of(whose(applied), [x for x in of_type(applied, "plan_line") if x.get("line") in made])
        if applied["exit"] != EXIT_OK:
            return {**result, "failed": True, "msg": "\n".join(self._problems(given, applied, result))}
        return {**result, "msg": summary(first(applied, "apply"), until(result["confirmation"]))}

    def _problems(self, given: Json, applied: Json, result: Json) -> list[str]:
        failed = [place_of(call) + call["verdict"] for call in of_type(applied, "call") if call["exit"] != EXIT_OK]
        if not of_type(applied, "call"):
            due = [line for line in of_type(applied, "plan_line") if line["due"]]
            if (result["confirmation"] or {}).get("state") == "waiting":
                return waiting_problem(result)
            if result["unknown"] and given["unknown"] == "fail":
                return unknown_problem(given, result)
            if given["confirm"] and not given["accept_permanent"] and permanent_problem(due):
                return permanent_problem(due)
        problems = errors_of(applied) + failed
        if result["unknown"] and given["unknown"] == "skip":
            problems += unknown_problem(given, result)
        elif result["unknown"]:
            problems.append(HINT_UNKNOWN)
        if result["waiting"]:
            problems += waiting_problem(result)
        return problems or [f"{first(applied, 'apply').get('file')}: {len(result['left'])} lines are left"]

    def _after_loss(self, given: Json, plan: Json, reason: str) -> Json:
        """What the journal knows of an apply that did not answer."""
        try:
            [planned] = self.ask(given, plan)
        except (AnsibleConnectionFailure, Lost) as error:
            raise AnsibleConnectionFailure(f"{reason}\nwhat was sent by then is unknown; run the task again") from error
        result: Json = {"changed": False, **whose(planned), **lists_of(planned), "waiting": []}
        result["confirmation"] = confirmation_of(planned)
        if errors_of(planned):
            return {**result, "failed": True, "msg": "\n".join([reason, *errors_of(planned)])}
        known = ", ".join(f"{len(result[name])} {name}" for name in LISTS if result[name])
        problems = [reason, f"its journal has {known or 'nothing'}; it may still be at work", *unknown_problem(given, result)]
        return {**result, "failed": True, "msg": "\n".join([*problems, "hint: run the task again"])}

    # --- confirmed, reverted ----------------------------------------------------------

    def _decide(self, given: Json) -> Json:
        site = self.site_of(given)
        command = {"confirmed": "confirm", "reverted": "revert"}[given["state"]]
        after = {"command": "plan" if given["src"] is not None else "report", **site}
        steps = [{"command": "report", **site}]
        if not self._task.check_mode:
            steps.append({"command": command, **site})
        try:
            before, *decided, known = self.ask(given, *steps, after)
        except Lost as error:
            raise AnsibleActionFail(f"{error}\nwhether it was {given['state']} is unknown; run the task again") from error
        result: Json = {**whose(known), **lists_of(known), "waiting": [], "confirmation": confirmation_of(known)}
        problems = errors_of(before)
        state = (confirmation_of(before) or {}).get("state")
        wanted = [given["state"]] if command == "revert" else ["confirmed", None]
        result["changed"] = not problems and state in UNDECIDED
        if not problems and not result["changed"] and state not in wanted:
            problems = [f"the last apply was {state}, not {given['state']}" if state else "no apply waits to be reverted"]
        if decided and result["changed"]:
            state = (result["confirmation"] or {}).get("state")
            result["changed"] = state not in UNDECIDED and (command == "confirm") == (state == "confirmed")
            reverted = of_type(decided[0], "revert_line")
            result["reverted"] = [{name: line[name] for name in REVERTED if name in line} for line in reverted]
            if decided[0]["exit"] != EXIT_OK:
                problems = errors_of(decided[0]) + [
                    place_of(line) + line["obstacle"] for line in reverted if line["state"] != "reverted"
                ]
                problems = problems or [f"the last apply is {state}, not {given['state']}"]
        if problems:
            return {**result, "failed": True, "msg": "\n".join(problems)}
        return {**result, "msg": given["state"] if state else "no apply waits to be confirmed"}


REVERTED = ("line", "call", "arguments", "before", "state", "verdict", "obstacle")


def move_waiting(result: Json, calls: list[Json]) -> None:
    """Lines whose calls are to be confirmed are not settled."""
    made = {call["line"] for call in calls} if (result["confirmation"] or {}).get("state") in UNDECIDED else set()
    result["waiting"] = [line for line in result["settled"] if line["line"] in made]
    result["settled"] = [line for line in result["settled"] if line["line"] not in made]


# --- Texts ----------------------------------------------------------------------------


def waiting_problem(result: Json) -> list[str]:
    confirmation = result["confirmation"]
    return [f"the last apply is {confirmation['state']}, and is reverted at {confirmation['until']} unless confirmed", HINT_WAITING]


def unknown_problem(given: Json, result: Json) -> list[str]:
    lines = [f"line {line['line']}: {line['call']}: {line.get('verdict', 'unknown')}" for line in result["unknown"]]
    return [*lines, HINT_UNKNOWN] if lines and given["unknown"] != "retry" else lines


def permanent_problem(due: list[Json]) -> list[str]:
    lines = [str(line["line"]) for line in due if line.get("cannot_be_reverted")]
    if not lines:
        return []
    return [f"these lines cannot be reverted: {', '.join(lines)}; nothing was sent", "hint: accept_permanent: true makes them"]


def until(confirmation: Json | None) -> Json:
    return {f"to be confirmed before {confirmation['until']}": None} if confirmation and "until" in confirmation else {}


def summary(totals: Json, more: Json) -> str:
    """Totals without zeros, as vorcfg prints them."""
    names = ("accepted", "sent", "unread") if totals["type"] == "apply" else ()
    counts: dict[str, Any] = {**{name: totals[name] for name in names}, "up to date": totals.get("up_to_date"), **more}
    parts = [f"{count} {name}" if count else name for name, count in counts.items() if count or (name in more and count is None)]
    return f"{totals['file']}: {', '.join(parts) or 'nothing to make'}"


def diff_of(journal: Json, due: list[Json]) -> Json:
    """The values in effect, as far as they are known, and the new ones."""
    before: list[str] = []
    after: list[str] = []
    for line in due:
        current = line.get("current")
        if current:
            before += call_lines(line, current, "")
        secret = f"secret {line['secret']}" if line.get("secret", "same") != "same" else ""
        again = f"made again, was {line['state']}" if line["state"] not in ("new", "changed") else ""
        after += call_lines(line, line, ", ".join(note for note in (secret, again) if note))
    return {
        "before_header": f"{journal.get('gateway', 'gateway')}, as far as its journal knows",
        "after_header": due[0]["file"] if due else "",
        "before": "".join(before),
        "after": "".join(after),
    }


def call_lines(line: Json, call: Json, note: str) -> list[str]:
    heading = f"line {line.get('line', '-')}: {call['call']}\n"
    values = [f"  {name} {value}\n" for name, value in call["arguments"].items()]
    return [heading, *values, *([f"  ({note})\n"] if note else [])]
