"""Documentation of the action plugin report, which runs on the controller."""

DOCUMENTATION = """
module: report
short_description: Write hand-over sheets and a report of the fleet
description:
  - Writes a hand-over sheet in Markdown for each gateway, and a row for each into one CSV file, on the controller.
  - Rows of gateways that are not in O(gateways) stay as they are, so that several runs, or the batches of one, make one report.
  - Run it with C(run_once). It makes no connection and needs no Python but Ansible's own.
version_added: "1.0.0"
author: the device_mgmt authors (@device_mgmt)
options:
  folder:
    description: The folder for C(fleet.csv) and C(sheets/), made for its owner only.
    type: path
    required: true
  gateways:
    description:
      - What is known of each gateway, by its name in the inventory. C(state) is settled, planned, waiting, reverted, unknown, refused
        or unreachable; C(msg) says more; C(report) is what M(device_mgmt.gateway.facts) returned, and without it the sheet stays as it is.
    type: dict
    required: true
"""

EXAMPLES = """
- name: Report
  device_mgmt.gateway.report:
    folder: "{{ playbook_dir }}/commissioned"
    gateways:
      tower-001:
        state: unreachable
        msg: No route to host
  run_once: true
"""

RETURN = """
states:
  description: How many gateways of the whole report are in each state.
  returned: always
  type: dict
  sample: {"settled": 198, "unreachable": 2}
"""
