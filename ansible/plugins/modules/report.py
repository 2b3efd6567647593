# MIT licence, the device_mgmt authors.
# What it does is in plugins/action/report.py: nothing of it runs on the gateway.
DOCUMENTATION = r"""
module: report
short_description: Write hand-over sheets and a report of the fleet
description:
  - The end of the role C(device_mgmt.gateway.commission), whose results of all gateways of the batch it reads.
  - Writes a hand-over sheet in Markdown for each gateway whose journal has changed, and a row for each into one CSV
    file, on the controller. Rows of other gateways stay as they are, so that several runs, or the batches of one,
    make one report.
  - A gateway that failed in the play before the role has a row, too, as failed.
  - Run it with C(run_once). It makes no connection, and writes nothing in check mode.
version_added: 1.0.0
author: the device_mgmt authors
options:
  folder:
    description: The folder for C(fleet.csv) and C(sheets/), made for its owner only.
    type: path
    required: true
seealso:
  - module: device_mgmt.gateway.facts
"""

EXAMPLES = r"""
- name: Report
  device_mgmt.gateway.report:
    folder: "{{ playbook_dir }}/commissioned"
  register: commission_report
  run_once: true
"""

RETURN = r"""
problems:
  description: State and message of each gateway that is not settled, or where something else failed.
  returned: success
  type: dict
  sample: {"tower-017": "unreachable: No route to host"}
"""
