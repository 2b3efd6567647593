# MIT licence, the device_mgmt authors.
"""What the action plugins share: requests to the gateway's own vorcfg serve, and what its answers say of each line."""

from __future__ import annotations

import json
import os
import shlex
from collections.abc import Iterator
from contextlib import contextmanager, nullcontext
from typing import Any

from ansible.errors import AnsibleActionFail
from ansible.plugins.action import ActionBase

Json = dict[str, Any]

SCHEMA = 3  # of what vorcfg prints

GATEWAY_OPTIONS: Json = {
    "src": {"type": "str"},
    "vars": {"type": "dict", "default": {}},
    "secrets": {"type": "dict", "default": {}, "no_log": True},
    "allow_unused": {"type": "bool", "default": False},
    "gateway": {"type": "str"},
    "journal_dir": {"type": "str", "default": "/var/lib/vorcfg"},
    "vorcfg_path": {"type": "str", "default": "vorcfg"},
}

# The lists of lines that a task returns, by the states of a line in a plan or a report.
LISTS = {
    "settled": ("accepted", "sent", "unread", "overtaken"),
    "unknown": ("unknown",),
    "refused": ("refused", "not delivered"),
    "left": ("new", "changed", "again"),
}

# The kinds of members, wherever vorcfg prints them; what is missing is noticed where it is used.
KINDS: dict[str, tuple[type, ...]] = {
    **dict.fromkeys(("type", "call", "state", "verdict", "at", "complaint", "outcome", "obstacle", "argument"), (str,)),
    **dict.fromkeys(("file", "journal", "gateway", "text", "until", "last", "by"), (str,)),
    **dict.fromkeys(("line", "exit", "up_to_date", "secrets_not_compared", "seconds_left"), (int,)),
    **dict.fromkeys(("arguments", "current"), (dict,)),
    "output": (list,),
    "id": (int, type(None)),
    "secret": (str, bool),
    "due": (int, bool),
}
KINDS_OF: dict[str, dict[str, tuple[type, ...]]] = {
    "plan_line": {"open": (dict,), "failed": (dict,)},
    "report": {"lines": (list,), "confirmation": (dict,)},
    "confirmation": {"calls": (list,)},
}
RECORDS = ("output", "calls", "lines")  # lists of objects, or totals

EXIT_USAGE = 2
READING = ("plan", "report", "journal")  # with a text, journal writes it
SHORTEST_HIDDEN = 4  # anything shorter is in too many words


class Failure(Exception):
    """Why the task fails: sentences on lines of their own."""


class Lost(Failure):
    """vorcfg began, but there is no answer from it."""


class GatewayAction(ActionBase):  # type: ignore[misc]
    """A task whose requests go to the gateway over the connection's standard input; nothing is copied there."""

    option_spec: Json = GATEWAY_OPTIONS

    def run(self, tmp: None = None, task_vars: Json | None = None) -> Json:
        result: Json = {}
        try:
            result.update(super().run(task_vars=task_vars))
            options: Json = self.validate_argument_spec(self.option_spec, required_one_of=[["src", "gateway"]])[1]
            options["folders"] = [*self._task.get_search_path(), (task_vars or {}).get("playbook_dir", "")]
            options["vars"] = values_of("vars", options["vars"])
            options["secrets"] = values_of("secrets", options["secrets"])
            if not options["journal_dir"].startswith("/"):
                raise Failure(f"journal_dir must be an absolute path, not {options['journal_dir']!r}")
            result.update(self._without_secrets(options))
        except (AnsibleActionFail, Failure) as failure:
            result.update(failed=True, msg=str(failure))
        return result

    def _without_secrets(self, options: Json) -> Json:
        """What is done and returned, even if something on the gateway repeats a secret."""
        texts = {str(secret) for secret in options["secrets"].values()}
        secrets = sorted((text for text in texts if len(text) >= SHORTEST_HIDDEN), key=len, reverse=True)
        try:
            result: Json = self.carry_out(options)
        except KeyError as error:
            raise Failure(f"vorcfg on the gateway left out {error}") from error
        except Failure as failure:
            raise type(failure)(hide(secrets, str(failure))) from failure
        return {name: hide(secrets, value) for name, value in result.items()}

    def carry_out(self, options: Json) -> Json:
        """What the task does, and returns."""
        raise NotImplementedError

    # --- The pipe -------------------------------------------------------------------

    def ask(self, options: Json, *requests: Json) -> list[Json]:
        """The answers to requests that one vorcfg serve carries out, in their order."""
        lines = "".join(json.dumps({"id": number, **request}) + "\n" for number, request in enumerate(requests))
        reads = all(request["command"] in READING and "text" not in request for request in requests)
        with nullcontext() if reads or self._task.check_mode else self._no_repetition():
            ended = self._low_level_execute_command(self._command(options), in_data=lines.encode())
        answers: dict[Any, Json] = {}
        is_there = False
        for record in records_in(ended["stdout"]):
            if record.get("type") == "serve":
                is_there = True
                check_schema(record)
            elif record.get("type") == "answer":
                check_kinds(record)
                answers[record.get("id")] = record
        if not is_there:
            raise Failure(not_started(options, ended))
        if None in answers:
            raise Failure("\n".join(errors_of(answers[None])))
        if len(answers) < len(requests):
            raise Lost(f"vorcfg on the gateway ended before it answered (exit code {ended['rc']})")
        return [answers[number] for number in range(len(requests))]

    @contextmanager
    def _no_repetition(self) -> Iterator[None]:
        """ssh repeats a command whose connection was lost, as often as retries say; a call may be made only once."""
        option = "reconnection_retries"
        retries = self._connection.get_option(option) if self._connection.has_option(option) else 0
        if retries:
            self._connection.set_option(option, 0)
        try:
            yield
        finally:
            if retries:
                self._connection.set_option(option, retries)

    def _command(self, options: Json) -> str:
        environment = self._task.environment or {}
        layers = environment if isinstance(environment, list) else [environment]
        settings = {name: value for layer in layers for name, value in (layer or {}).items()}
        words = [f"{name}={shlex.quote(str(value))}" for name, value in settings.items()]
        return " ".join([*words, shlex.quote(options["vorcfg_path"]), "serve"])

    # --- The site -------------------------------------------------------------------

    def site_of(self, options: Json) -> Json:
        """The members of a request that say which site and which journal it is about."""
        site: Json = {"site": "", "journal": options["journal_dir"].rstrip("/") + "/"}
        if options["src"] is not None:
            site.update(site=text_of(options), file=os.path.basename(options["src"]))
            site.update({name: options[name] for name in ("vars", "secrets", "allow_unused")})
        if options["gateway"] is not None:
            site["gateway"] = options["gateway"]
        return site


# --- Options --------------------------------------------------------------------------


def text_of(options: Json) -> str:
    path = place_of_src(options)
    try:
        with open(path, "rb") as file:
            content = file.read()
        text = content.decode()
    except OSError as error:
        raise Failure(f"{path}: {error.strerror}") from error
    except UnicodeDecodeError as error:
        line = content.count(b"\n", 0, error.start) + 1
        raise Failure(f"{path}:{line}: must be UTF-8") from error
    if text.startswith("$ANSIBLE_VAULT;"):
        raise Failure(f"{path}: must not be encrypted\nhint: keep secrets in variables, see secrets")
    return text


def place_of_src(options: Json) -> str:
    """A relative path is looked up as that of ansible.builtin.copy is."""
    src = os.path.expanduser(options["src"])
    places = [os.path.join(folder, below, src) for folder in options["folders"] for below in ("files", "")]
    for place in places:
        if os.path.exists(place):
            return place
    raise Failure(f"no such file: {', '.join(dict.fromkeys(places))}")


def values_of(option: str, variables: Json | None) -> Json:
    """Variables as vorcfg takes them: whole numbers and texts, those of a vault in plain text."""
    values: Json = {}
    for name, value in (variables or {}).items():
        if value is None or isinstance(value, (bool, float, list, dict)):
            raise Failure(f"{option}: {name} must be a text or a whole number\nhint: write it in quotes")
        values[str(name)] = value if isinstance(value, int) else str(value)  # that of a vault is decrypted
    return values


# --- What vorcfg prints ---------------------------------------------------------------


def records_in(stdout: str) -> Iterator[Json]:
    """The objects that vorcfg printed; a login may print other lines around them."""
    decoder = json.JSONDecoder()
    for line in stdout.split("\n"):
        start = line.find('{"schema":')
        if start >= 0:
            try:
                record = decoder.raw_decode(line, start)[0]
                json.dumps(record, ensure_ascii=False).encode()
            except (UnicodeEncodeError, RecursionError) as error:
                raise Failure("vorcfg on the gateway printed what cannot be stored") from error
            except ValueError:
                continue  # cut off
            yield record


def check_kinds(record: Any) -> None:
    """Nothing else gets into results, and from there into the report of all gateways."""
    for name, value in record.items():
        kinds = {**KINDS, **KINDS_OF.get(str(record.get("type")), {})}.get(name)
        inner = [value] if isinstance(value, dict) else value if name in RECORDS and isinstance(value, list) else []
        if kinds and type(value) not in kinds or not all(isinstance(each, dict) for each in inner):
            raise Failure(f"vorcfg on the gateway printed {name} of a wrong kind")
        if name == "arguments":
            values = [each for value in value.values() for each in (value if isinstance(value, list) else [value])]
            if not all(isinstance(each, (str, int)) or is_bytes(each) for each in values):
                raise Failure("vorcfg on the gateway printed arguments of a wrong kind")
        else:
            for each in inner:
                check_kinds(each)


def is_bytes(value: Any) -> bool:
    """How vorcfg prints a text that is not UTF-8."""
    return isinstance(value, dict) and list(value) == ["bytes"] and isinstance(value["bytes"], str)


def hide(secrets: list[str], value: Any) -> Any:
    """The value without secrets in its texts."""
    if isinstance(value, dict):
        return {name: hide(secrets, each) for name, each in value.items()}
    if isinstance(value, list):
        return [hide(secrets, each) for each in value]
    if isinstance(value, str):
        for secret in secrets:
            value = value.replace(secret, "********")
    return value


def check_schema(record: Json) -> None:
    if record["schema"] != SCHEMA:
        raise Failure(
            f"vorcfg {record.get('version')} on the gateway has schema {record['schema']}, not {SCHEMA}\n"
            "hint: this collection and vorcfg must be of one release"
        )


def not_started(options: Json, ended: Json) -> str:
    """Why there is no vorcfg serve, without anything that the command may have repeated of its input."""
    said = (ended["stderr"].strip().splitlines() or [""])[-1].strip()
    longest = 200
    hidden = len(said) > longest or "{" in said
    reason = f": {said}" if said and not hidden else ""
    if ended["rc"] == 127:
        return f"{options['vorcfg_path']} was not found on the gateway{reason}\nhint: vorcfg_path says where it is"
    hint = f"\nhint: vorcfg with schema {SCHEMA} is needed" if ended["rc"] == EXIT_USAGE else ""
    return f"{options['vorcfg_path']} serve on the gateway ended with exit code {ended['rc']}{reason}{hint}"


def of_type(answer: Json, name: str) -> list[Json]:
    return [record for record in answer["output"] if record["type"] == name]


def first_record(answer: Json, name: str) -> Json:
    return next(iter(of_type(answer, name)), {})


def place_of(record: Json) -> str:
    """FILE:LINE: CALL: as far as they are known."""
    place = f"{record['file']}:{record['line']}: " if "line" in record else ""
    return place + (f"{record['call']}: " if "call" in record else "")


def errors_of(answer: Json) -> list[str]:
    """What is wrong, as vorcfg says it. Its hints name options of a command line, so they are left out."""
    return [place_of(error) + error["complaint"] for error in of_type(answer, "error")]


def warnings_of(answer: Json) -> list[str]:
    return [place_of(warning) + warning["text"] for warning in of_type(answer, "warning")]


def last_apply(answer: Json) -> Json:
    """What became of the last confirmed apply, if there was one."""
    return first_record(answer, "confirmation") or first_record(answer, "report").get("confirmation", {})


def confirmation_of(answer: Json) -> Json | None:
    """The same as a task returns it, without what belongs to a command line."""
    found = last_apply(answer)
    names = ("state", "until", "seconds_left", "has_waiter", "reverted", "not_reverted", "lines_not_reverted")
    return {name: found[name] for name in names if name in found} or None


def line_of(record: Json) -> Json:
    """A line of a plan or a report, as a task returns it."""
    line = {name: record[name] for name in ("call", "arguments", "state")}
    line.update({name: record[name] for name in ("line", "secret") if name in record})
    last = record.get("open") or record.get("failed") or record.get("current") or record
    if record["state"] not in LISTS["left"]:
        line.update({name: last[name] for name in ("verdict", "at") if name in last})
    return line


def identity_of(answer: Json) -> Json:
    """The gateway and its journal."""
    record: Json = next((each for each in reversed(answer["output"]) if "journal" in each), {})
    return {name: record[name] for name in ("gateway", "journal") if name in record}


def recorded_in(folder: Json, plan: Json) -> Json | None:
    """What a report on the folder says of the journal that the plan is about, if there is one."""
    journal = identity_of(plan).get("journal")
    return next((site for site in of_type(folder, "site") if site.get("journal") == journal), None)


def key_of(call: Json) -> str:
    return json.dumps([call["call"], call["arguments"]], sort_keys=True)


def lines_by_state(answer: Json) -> Json:
    """The gateway, its journal and the lines by what is known of them, from a plan or a report."""
    result = identity_of(answer)
    lines = [line for line in of_type(answer, "plan_line") if line["in_file"]]
    lines += first_record(answer, "report").get("lines", [])
    for name, states in LISTS.items():
        result[name] = [line_of(line) for line in lines if line["state"] in states]
    undecided = {key_of(call) for call in last_apply(answer).get("calls", [])}
    result["waiting"] = [line for line in result["settled"] if key_of(line) in undecided]
    result["settled"] = [line for line in result["settled"] if key_of(line) not in undecided]
    result["confirmation"] = confirmation_of(answer)
    return result
