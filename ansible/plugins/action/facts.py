# MIT licence, the device_mgmt authors.
"""What a gateway's journal knows; plugins/modules/facts.py documents it."""

from __future__ import annotations

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import (
    Failure,
    GatewayAction,
    Json,
    errors_of,
    first_record,
    identity_of,
    lines_by_state,
    recorded_in,
)


class ActionModule(GatewayAction):
    def carry_out(self, options: Json) -> Json:
        site = self.site_of(options)
        folder = {"command": "report", "journal": site["journal"]}
        plan, report, all_sites = self.ask(options, {"command": "plan", **site}, {"command": "report", **site}, folder)
        if errors_of(plan):
            raise Failure("\n".join(errors_of(plan)))
        line = recorded_in(all_sites, plan)
        if line is not None and errors_of(report):
            raise Failure("\n".join(errors_of(report)))
        recorded = lines_by_state(report)
        facts: Json = {
            **identity_of(plan),
            "state": line["state"] if line else "missing",
            **{name: len(recorded[name]) for name in ("settled", "waiting", "unknown", "refused")},
            "confirmation": recorded["confirmation"],
            **{name: line[name] for name in ("last", "by") if line and name in line},
        }
        if options["src"] is None:
            return {"changed": False, "ansible_facts": {"device_mgmt": facts}, **recorded}
        facts["left"] = first_record(plan, "plan")["due"]
        return {"changed": False, "ansible_facts": {"device_mgmt": facts}, **lines_by_state(plan)}
