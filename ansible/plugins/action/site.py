# MIT licence, the device_mgmt authors.
"""Applies a site, confirms or reverts it; plugins/modules/site.py documents it."""

from __future__ import annotations

import os
from collections import Counter

from ansible.errors import AnsibleAuthenticationFailure, AnsibleConnectionFailure

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import (
    GATEWAY_OPTIONS,
    LISTS,
    Failure,
    GatewayAction,
    Json,
    Lost,
    confirmation_of,
    errors_of,
    first_record,
    lines_by_state,
    of_type,
    place_of,
    recorded_in,
    warnings_of,
)

EXIT_OK = 0
EXIT_JOURNAL = 12
MADE = ("accepted", "sent", "unread", "done")
UNDECIDED = ("waiting", "expired")

NO_VERDICT = "unknown: it was begun, and has no verdict"

HINT_UNKNOWN = "hint: unknown: retry makes such lines again"
HINT_SKIP = ", unknown: skip leaves them out"
HINT_PERMANENT = "hint: accept_permanent: true makes them"
HINT_AGAIN = "hint: run the task again"
HINT_WAITING = "hint: state: confirmed keeps the changes, state: reverted undoes them"


class ActionModule(GatewayAction):
    option_spec = {
        **GATEWAY_OPTIONS,
        "state": {"type": "str", "default": "present", "choices": ["present", "confirmed", "reverted"]},
        "confirm": {"type": "str"},
        "only": {"type": "str"},
        "all": {"type": "bool", "default": False},
        "unknown": {"type": "str", "default": "fail", "choices": ["fail", "retry", "skip"]},
        "accept_permanent": {"type": "bool", "default": False},
        "resend_secrets": {"type": "bool", "default": False},
    }

    def carry_out(self, options: Json) -> Json:
        if options["state"] != "present":
            return self._decide(options)
        if options["src"] is None:
            raise Failure("state: present needs src")
        if options["all"] and options["unknown"] == "skip":
            raise Failure("all: true makes unknown lines, too; unknown must be fail or retry, not skip")
        return self._preview(options) if self._task.check_mode else self._apply(options)

    # --- present ----------------------------------------------------------------------

    def _selection(self, options: Json) -> Json:
        only = {"only": options["only"]} if options["only"] is not None else {}
        return {**self.site_of(options), **only}

    def _preview(self, options: Json) -> Json:
        selection = self._selection(options)
        folder = {"command": "report", "journal": selection["journal"]}
        # Without a site, it is refused; whether because of confirm, too, is what it is for.
        confirm = {"command": "apply", **confirm_of(options)}
        requests = {"command": "plan", **selection, **repeat_options(options)}, folder, confirm
        plan, journals, checked = self.ask(options, *requests)
        result = lines_by_state(plan)
        if "journal" in result:
            result["has_journal"] = recorded_in(journals, plan) is not None
        has_expired = state_of(result["confirmation"]) == "expired"
        reverted = [line["line"] for line in result["waiting"] if "secret" not in line] if has_expired else []
        result["left"] += [line for line in result["waiting"] if line["line"] in reverted]
        result["waiting"] = [line for line in result["waiting"] if line["line"] not in reverted]
        due = [line for line in of_type(plan, "plan_line") if line["due"] or line["line"] in reverted]
        if options["unknown"] != "retry" and not options["all"]:
            due = [line for line in due if line["state"] != "unknown"]
        wrong = [error["complaint"] for error in of_type(checked, "error") if error.get("argument") == "confirm"]
        problems = errors_of(plan) or wrong or obstacles(options, result, due)
        if problems:
            due = []
        result["changed"] = bool(due)
        result["due"] = len(due)
        if self._task.diff:
            result["diff"] = diff_of(result, due)
        if options["unknown"] == "skip":
            problems = problems or left_unknown(options, result)
        if problems:
            return failure(result, problems)
        counts = {"to make": len(due), "up to date": len(result["settled"]) + len(result["waiting"])}
        counts.update(not_compared(first_record(plan, "plan")))
        note = ", once the last apply, which has expired, is reverted" if has_expired else ""
        return {**result, "msg": summary(options, counts) + note}

    def _apply(self, options: Json) -> Json:
        selection = self._selection(options)
        apply: Json = {"command": "apply", **selection, **repeat_options(options), **confirm_of(options)}
        apply["yes"] = options["accept_permanent"]
        if options["unknown"] != "fail" and not options["all"]:
            apply[options["unknown"] + "_unknown"] = True
        plan = {"command": "plan", **selection}
        try:
            applied, planned = self.ask(options, apply, plan)
        except AnsibleAuthenticationFailure:
            raise
        except (AnsibleConnectionFailure, Lost) as error:
            return self._after_loss(options, plan, str(error).strip())
        calls = of_type(applied, "call")
        result: Json = {**lines_by_state(planned), "warnings": warnings_of(applied)}
        undone = [line for line in of_type(applied, "revert_line") if line["state"] == "reverted"]
        result["changed"] = bool(undone) or any(call["outcome"] in MADE for call in calls)
        lines = [line for line in of_type(applied, "plan_line") if line["due"]]
        if self._task.diff:
            made = {call["line"] for call in calls if call["outcome"] in MADE}
            result["diff"] = diff_of(result, [line for line in lines if line["line"] in made])
        if applied["exit"] == EXIT_OK:
            totals = first_record(applied, "apply")
            counts = {**Counter(call["outcome"] for call in calls), "up to date": totals["up_to_date"]}
            counts.update({"reverted before": len(undone), **not_compared(totals)})
            until = f", to be confirmed before {result['confirmation']['until']}" if result["waiting"] else ""
            return {**result, "msg": summary(options, counts) + until}
        if not calls:
            return failure(result, self._blocked(options, applied, result, lines))
        problems = [place_of(call) + call["verdict"] for call in calls if call["exit"] != EXIT_OK]
        return failure(result, problems + errors_of(applied) + left_unknown(options, result) + not_confirmed(result))

    def _blocked(self, options: Json, applied: Json, result: Json, lines: list[Json]) -> list[str]:
        """Why no call was made."""
        if applied["exit"] == EXIT_JOURNAL:
            return errors_of(applied) + [HINT_WAITING] * (state_of(result["confirmation"]) in UNDECIDED)
        return obstacles(options, result, lines) or errors_of(applied) or left_unknown(options, result)

    def _after_loss(self, options: Json, plan: Json, reason: str) -> Json:
        """What the journal knows of an apply that did not answer."""
        try:
            [planned] = self.ask(options, plan)
        except (AnsibleConnectionFailure, Lost) as error:
            what = "if the connection was lost during the calls, their outcome is unknown"
            raise AnsibleConnectionFailure(f"{reason}\n{what}\n{HINT_AGAIN}") from error
        result: Json = {"changed": False, **lines_by_state(planned)}
        counts = ", ".join(f"{len(result[name])} {name}" for name in (*LISTS, "waiting") if result[name])
        known = [f"its journal now has: {counts}; it may still be at work"] if counts else errors_of(planned)
        return failure(result, [reason, *known, *left_unknown(options, result), HINT_AGAIN])

    # --- confirmed, reverted ----------------------------------------------------------

    def _decide(self, options: Json) -> Json:
        site = self.site_of(options)
        steps = [{"command": "report", **site}]
        if not self._task.check_mode:
            steps.append({"command": {"confirmed": "confirm", "reverted": "revert"}[options["state"]], **site})
        steps.append({"command": "plan" if options["src"] is not None else "report", **site})
        try:
            before, *decided, after = self.ask(options, *steps)
        except Lost as error:
            raise Failure(f"{error}\nwhether it was {options['state']} is unknown\n{HINT_AGAIN}") from error
        result: Json = {"changed": False, **lines_by_state(after)}
        state = state_of(confirmation_of(before))
        if errors_of(before):
            return failure(result, errors_of(before))
        if state in UNDECIDED and decided:
            return self._decided(options, result, decided[0])
        if state in UNDECIDED:
            known = "waits" if state == "waiting" else "has expired"
            return {**result, "changed": True, "msg": f"the last apply {known}, it would be {options['state']}"}
        result["confirmation"] = confirmation_of(before)
        if state == options["state"]:
            return unless_unknown(options, {**result, "msg": f"{state} before"})
        if state is None and options["state"] == "confirmed":
            return unless_unknown(options, {**result, "msg": "nothing waits to be confirmed"})
        return failure(result, [f"the last apply was {state}" if state else "the last apply was not to be confirmed"])

    def _decided(self, options: Json, result: Json, answer: Json) -> Json:
        result["confirmation"] = confirmation_of(answer) or result["confirmation"]
        undone = of_type(answer, "revert_line")
        result["reverted"] = [{name: line[name] for name in REVERTED if name in line} for line in undone]
        state = state_of(result["confirmation"])
        result["changed"] = state == options["state"] or any(line["state"] == "reverted" for line in undone)
        if answer["exit"] == EXIT_OK:
            return unless_unknown(options, {**result, "msg": options["state"]})
        kept = [place_of(line) + line["obstacle"] for line in undone if "obstacle" in line]
        return failure(result, errors_of(answer) + kept or [f"the last apply is {state}"])


REVERTED = ("line", "call", "arguments", "before", "state", "verdict", "obstacle")


def repeat_options(options: Json) -> Json:
    return {"all": options["all"], "resend_secrets": options["resend_secrets"]}


def confirm_of(options: Json) -> Json:
    return {"confirm": options["confirm"]} if options["confirm"] is not None else {}


def state_of(confirmation: Json | None) -> str | None:
    return confirmation["state"] if confirmation else None


# --- Texts ----------------------------------------------------------------------------


def failure(result: Json, problems: list[str]) -> Json:
    hints = dict.fromkeys(problem for problem in problems if problem.startswith("hint: "))
    said = dict.fromkeys(problem for problem in problems if problem not in hints)
    said = said or {"not every line is in effect": None}
    return {**result, "failed": True, "msg": "\n".join([*said, *hints])}


def obstacles(options: Json, result: Json, due: list[Json]) -> list[str]:
    """Why apply sends nothing."""
    if state_of(result["confirmation"]) == "waiting":
        return not_confirmed(result)
    if options["unknown"] == "fail" and result["unknown"] and not options["all"]:
        return left_unknown(options, result)
    permanent = [str(line["line"]) for line in due if line.get("cannot_be_reverted")]
    if permanent and options["confirm"] is not None and not options["accept_permanent"]:
        what = f"line{'s' if len(permanent) > 1 else ''} {', '.join(permanent)}"
        return [f"{due[0]['file']}: {what} cannot be reverted; nothing was sent", HINT_PERMANENT]
    return []


def left_unknown(options: Json, result: Json) -> list[str]:
    at_file = {"file": os.path.basename(options["src"] or "")}
    lines = [place_of({**at_file, **line}) + line.get("verdict", NO_VERDICT) for line in result["unknown"]]
    return [*lines, HINT_UNKNOWN + HINT_SKIP * (options["unknown"] != "skip")] if lines else []


def unless_unknown(options: Json, result: Json) -> Json:
    return failure(result, [result["msg"], *left_unknown(options, result)]) if result["unknown"] else result


def not_confirmed(result: Json) -> list[str]:
    confirmation = result["confirmation"]
    if state_of(confirmation) != "waiting":
        return []
    return [f"not confirmed yet, the last apply will be reverted at {confirmation['until']}", HINT_WAITING]


def summary(options: Json, counts: Json) -> str:
    """Totals without zeros, as vorcfg prints them."""
    parts = [f"{count} {name}" for name, count in counts.items() if count]
    return f"{os.path.basename(options['src'])}: {', '.join(parts) or 'nothing to make'}"


def not_compared(totals: Json) -> Json:
    """Of what is up to date: the key is lost that tells whether a secret has changed."""
    count = totals["secrets_not_compared"]
    return {f"secret{'s' if count > 1 else ''} not compared": count}


def diff_of(result: Json, due: list[Json]) -> Json:
    """The values in effect, as far as they are known, and the new ones."""
    before: list[str] = []
    after: list[str] = []
    for line in due:
        if "current" in line:
            before += shown(line, line["current"])
        after += shown(line, line) + [f"  ({note})\n" for note in notes_of(line)]
    gateway = result.get("gateway", "the gateway")
    return {
        "before_header": f"{gateway}, as its journal knows it",
        "after_header": due[0]["file"] if due else gateway,
        "before": "".join(before),
        "after": "".join(after),
    }


def shown(line: Json, call: Json) -> list[str]:
    values = [f"  {name} {value}\n" for name, value in call["arguments"].items()]
    return [f"line {line['line']}: {call['call']}\n", *values]


def notes_of(line: Json) -> list[str]:
    """What a difference does not show."""
    notes = [f"secret {line['secret']}"] if line.get("secret", "same") != "same" else []
    if line["state"] in LISTS["unknown"] + LISTS["refused"]:
        notes.append(f"made again, was {line['state']}")
    elif line["state"] not in ("new", "changed"):
        notes.append("made again")
    return notes
