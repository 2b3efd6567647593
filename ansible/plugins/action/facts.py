# MIT licence, the device_mgmt authors.
"""What a gateway's journal knows; plugins/modules/facts.py documents it."""

from __future__ import annotations

from ansible_collections.device_mgmt.gateway.plugins.plugin_utils.gateway import (
    Failure,
    GatewayAction,
    Json,
    Lost,
    confirmation_of,
    errors_of,
    first,
    lists_of,
    of_type,
    whose,
)


class ActionModule(GatewayAction):
    def carry_out(self, given: Json) -> Json:
        site = self.site_of(given)
        folder = {"command": "report", "journal": site["journal"]}
        try:
            plan, report, all_sites = self.ask(
                given, {"command": "plan", **site}, {"command": "report", **site}, folder
            )
        except Lost as error:
            raise Failure(str(error)) from error
        if errors_of(plan):
            raise Failure("\n".join(errors_of(plan)))
        totals = first(plan, "plan")
        sheet = first(report, "report")
        line = next((each for each in of_type(all_sites, "site") if each["journal"] == totals["journal"]), None)
        if line is not None and not sheet:
            raise Failure("\n".join(errors_of(report)))
        facts: Json = {
            **whose(plan),
            "state": line["state"] if line else "missing",
            "settled": sheet.get("settled", 0),
            "unknown": sheet.get("unknown", 0),
            "refused": sheet.get("failed", 0),
            "confirmation": confirmation_of(report),
            **{name: line[name] for name in ("last", "by") if line and name in line},
        }
        if given["src"] is not None:
            facts["left"] = totals["due"]
        return {"changed": False, "ansible_facts": {"device_mgmt": facts}, **lists_of(plan if given["src"] else report)}
