# MIT licence, the device_mgmt authors.
"""Fetches a gateway's journal, or puts it back; plugins/modules/journal.py documents it."""

from __future__ import annotations

import os
import time

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.files import replace
from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import (
    GATEWAY_OPTIONS,
    Failure,
    GatewayAction,
    Json,
    errors_of,
    first,
    whose,
)


class ActionModule(GatewayAction):
    options = {
        **GATEWAY_OPTIONS,
        "path": {"type": "path", "required": True},
        "state": {"type": "str", "default": "fetched", "choices": ["fetched", "restored"]},
        "begun_anew": {"type": "bool", "default": False},
    }

    def carry_out(self, given: Json) -> Json:
        if not os.path.isabs(given["path"]):
            raise Failure(f"path must be absolute, not {given['path']!r}\nhint: begin it with {{{{ playbook_dir }}}}/")
        try:
            return self._fetch(given) if given["state"] == "fetched" else self._restore(given)
        except OSError as error:
            raise Failure(f"{error.filename}: {error.strerror}") from error

    def _fetch(self, given: Json) -> Json:
        [fetched] = self.ask(given, {"command": "journal", **self.site_of(given)})
        fail_if_refused(fetched)
        path = copy_of(given["path"], fetched)
        text = first(fetched, "journal")["text"].encode()
        copy = content_of(path)
        result = {"changed": copy != text, "path": path, **whose(fetched)}
        if copy is not None and not continues(text, copy):
            if not given["begun_anew"]:
                raise Failure(
                    f"{path}: the journal of the gateway does not continue this copy, which is kept\n"
                    "hint: begun_anew: true renames the copy, for a gateway that was replaced"
                )
            result["renamed"] = path + time.strftime(".%Y-%m-%d.%H%M%S", time.gmtime())
        if result["changed"] and not self._task.check_mode:
            if "renamed" in result:
                os.rename(path, result["renamed"])
            replace(path, text)
        return result

    def _restore(self, given: Json) -> Json:
        site = self.site_of(given)
        path = given["path"]
        if is_folder(path):
            [plan] = self.ask(given, {"command": "plan", **site})
            fail_if_refused(plan)
            path = copy_of(path, plan)
        copy = content_of(path)
        if copy is None:
            raise Failure(f"{path}: no such copy")
        fetch = {"command": "journal", **site}
        put = [] if self._task.check_mode else [{**fetch, "text": copy.decode()}]
        there, *answers = self.ask(given, fetch, *put)
        result = {"path": path, **whose(there)}
        journal = first(there, "journal")
        if journal and continues(journal["text"].encode(), copy):
            return {**result, "changed": False}
        for answer in answers:
            fail_if_refused(answer)
            result.update(whose(answer))
        return {**result, "changed": True}


def fail_if_refused(answer: Json) -> None:
    if errors_of(answer):
        raise Failure("\n".join(errors_of(answer)))


def is_folder(path: str) -> bool:
    return os.path.isdir(path) or path.endswith("/")


def copy_of(path: str, answer: Json) -> str:
    """In a folder, the copy has the name of the journal."""
    return os.path.join(path, os.path.basename(whose(answer)["journal"])) if is_folder(path) else path


def content_of(path: str) -> bytes | None:
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def continues(text: bytes, copy: bytes) -> bool:
    """A journal only grows; a last line that was cut off is removed."""
    return text.startswith(copy[: copy.rfind(b"\n") + 1])
