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
    first_record,
    identity_of,
)


class ActionModule(GatewayAction):
    option_spec = {
        **GATEWAY_OPTIONS,
        "path": {"type": "path", "required": True},
        "state": {"type": "str", "default": "fetched", "choices": ["fetched", "restored"]},
        "begun_anew": {"type": "bool", "default": False},
    }

    def carry_out(self, options: Json) -> Json:
        if not os.path.isabs(options["path"]):
            hint = "hint: begin it with {{ playbook_dir }}/"
            raise Failure(f"path must be absolute, not {options['path']!r}\n{hint}")
        if os.path.isdir(options["path"]) or options["path"].endswith("/"):
            raise Failure(f"path must be a file, not the folder {options['path']!r}")
        try:
            return self._fetch(options) if options["state"] == "fetched" else self._restore(options)
        except OSError as error:
            raise Failure(f"{error.filename}: {error.strerror}") from error

    def _fetch(self, options: Json) -> Json:
        [fetched] = self.ask(options, {"command": "journal", **self.site_of(options)})
        fail_if_refused(fetched)
        path = options["path"]
        text = first_record(fetched, "journal")["text"].encode()
        copy = content_of(path)
        result = {"changed": copy != text, "path": path, **identity_of(fetched)}
        if copy is not None and not continues(text, copy):
            if not options["begun_anew"]:
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

    def _restore(self, options: Json) -> Json:
        site = self.site_of(options)
        path = options["path"]
        copy = content_of(path)
        if copy is None:
            raise Failure(f"{path}: no such copy")
        try:
            text = copy.decode()
        except UnicodeDecodeError as error:
            raise Failure(f"{path} is not a journal") from error
        fetch = {"command": "journal", **site}
        put = {"command": "plan", **site} if self._task.check_mode else {**fetch, "text": text}
        there, answer = self.ask(options, fetch, put)
        journal = first_record(there, "journal")
        if journal and continues(journal["text"].encode(), copy):
            return {"changed": False, "path": path, **identity_of(there)}
        if journal:
            raise Failure(f"{journal['journal']}: the gateway has this journal, which does not continue {path}")
        fail_if_refused(answer)
        return {"changed": True, "path": path, **identity_of(answer)}


def fail_if_refused(answer: Json) -> None:
    if errors_of(answer):
        raise Failure("\n".join(errors_of(answer)))


def content_of(path: str) -> bytes | None:
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def continues(text: bytes, copy: bytes) -> bool:
    """A journal only grows; a last line that was cut off is removed."""
    return text.startswith(copy[: copy.rfind(b"\n") + 1])
