# MIT licence, the device_mgmt authors.
# What it does is in plugins/action/report.py: nothing of it runs on the gateway.
DOCUMENTATION = r"""
module: report
short_description: Write hand-over sheets and a report of the fleet
description:
  - Writes a hand-over sheet in Markdown for each gateway, and a row for each into one CSV file, on the controller.
  - Rows of other gateways stay as they are, so that several runs, or the batches of one, make one report.
  - Run it with C(run_once). It makes no connection.
version_added: 1.0.0
author: the device_mgmt authors
options:
  folder:
    description: The folder for C(fleet.csv) and C(sheets/), made for its owner only.
    type: path
    required: true
  gateways:
    description:
      - What is known of each gateway, by its name in the inventory.
      - C(state) is V(settled), V(left), V(waiting), V(unknown), V(refused) or V(unreachable), and C(msg) says more.
      - C(known) is what M(device_mgmt.gateway.facts) or M(device_mgmt.gateway.site) returned.
        Only with facts is a sheet written.
    type: dict
    required: true
seealso:
  - module: device_mgmt.gateway.facts
"""

EXAMPLES = r"""
- name: Report
  device_mgmt.gateway.report:
    folder: "{{ playbook_dir }}/commissioned"
    gateways:
      tower-001:
        state: unreachable
        msg: No route to host
  run_once: true
"""

RETURN = r"""
states:
  description: How many gateways of the whole report are in each state.
  returned: always
  type: dict
  sample: {"settled": 198, "unreachable": 2}
"""
