# MIT licence, the device_mgmt authors.
"""Fetches a gateway's journal, or puts it back; plugins/modules/journal.py documents it."""

from __future__ import annotations

import os
import tempfile

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import (
    GATEWAY_OPTIONS,
    Failure,
    GatewayAction,
    Json,
    Lost,
    errors_of,
    first,
    whose,
)


class ActionModule(GatewayAction):
    options = {
        **GATEWAY_OPTIONS,
        "path": {"type": "path", "required": True},
        "state": {"type": "str", "default": "fetched", "choices": ["fetched", "restored"]},
    }

    def carry_out(self, given: Json) -> Json:
        if not os.path.isabs(given["path"]):
            raise Failure(
                f"path must be absolute, not {given['path']!r}\nhint: begin it with {{{{ playbook_dir }}}}/"
            )
        try:
            return self._fetch(given) if given["state"] == "fetched" else self._restore(given)
        except Lost as error:
            raise Failure(str(error)) from error
        except OSError as error:
            raise Failure(f"{error.filename}: {error.strerror}") from error

    def _fetch(self, given: Json) -> Json:
        [fetched] = self.ask(given, {"command": "journal", **self.site_of(given)})
        if errors_of(fetched):
            raise Failure("\n".join(errors_of(fetched)))
        path = copy_of(given["path"], fetched)
        text = first(fetched, "journal")["text"].encode()
        copy = content_of(path)
        if copy is not None and not continues(text, copy):
            raise Failure(
                f"{path}: the journal of the gateway does not continue this copy, which is kept\n"
                "hint: move it away if the gateway began a new journal on purpose"
            )
        if copy != text and not self._task.check_mode:
            replace(path, text)
        return {"changed": copy != text, "path": path, **whose(fetched)}

    def _restore(self, given: Json) -> Json:
        site = self.site_of(given)
        path = given["path"]
        if os.path.isdir(path) or path.endswith("/"):
            [plan] = self.ask(given, {"command": "plan", **site})
            if errors_of(plan):
                raise Failure("\n".join(errors_of(plan)))
            path = copy_of(path, plan)
        with open(path, "rb") as file:
            copy = file.read()
        steps = [{"command": "journal", **site}]
        if not self._task.check_mode:
            steps.append({**steps[0], "text": copy.decode()})
        there, *put = self.ask(given, *steps)
        journal = first(there, "journal")
        is_there = bool(journal) and continues(journal["text"].encode(), copy)
        if put and errors_of(put[0]) and not is_there:
            raise Failure("\n".join(errors_of(put[0])))
        return {"changed": not journal, "path": path, **whose(put[0] if put and not is_there else there)}


def copy_of(path: str, answer: Json) -> str:
    """In a folder, the copy has the name of the journal."""
    is_folder = os.path.isdir(path) or path.endswith("/")
    return os.path.join(path, os.path.basename(whose(answer)["journal"])) if is_folder else path


def content_of(path: str) -> bytes | None:
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def continues(text: bytes, copy: bytes) -> bool:
    """A journal only grows; a line that was cut off is removed."""
    return text.startswith(copy[: copy.rfind(b"\n") + 1])


def replace(path: str, text: bytes) -> None:
    """All of it or nothing, readable by its owner only."""
    folder = os.path.dirname(path)
    os.makedirs(folder, mode=0o700, exist_ok=True)
    file, name = tempfile.mkstemp(prefix=os.path.basename(path) + ".", dir=folder)
    try:
        with os.fdopen(file, "wb") as stream:
            stream.write(text)
            stream.flush()
            os.fsync(stream.fileno())
        os.replace(name, path)
    except BaseException:
        os.unlink(name)
        raise
