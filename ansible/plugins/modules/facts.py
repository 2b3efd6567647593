#!/usr/bin/python
# MIT licence, the device_mgmt authors.
# What it does is in plugins/action/facts.py: nothing of it runs on the gateway.
DOCUMENTATION = r"""
module: facts
short_description: Report what is known of a gateway's settings
description:
  - Reads the journal of a gateway. The settings of the gateway itself cannot be read back.
  - Nothing is sent to its managers, and an unknown or waiting setting does not make the task fail.
version_added: 1.0.0
author: the device_mgmt authors
extends_documentation_fragment: device_mgmt.gateway.gateway
attributes:
  check_mode:
    description: Does the same.
    support: full
  diff_mode:
    description: Changes nothing.
    support: none
seealso:
  - module: device_mgmt.gateway.site
"""

EXAMPLES = r"""
- name: Ask what the gateway's journal knows
  device_mgmt.gateway.facts:
    gateway: "tower-{{ site }}"

- name: Stop where something is open
  ansible.builtin.assert:
    that: ansible_facts.device_mgmt.state == "accepted"
"""

RETURN = r"""
ansible_facts:
  description: The totals. The settings are returned beside them, so that no cache of facts has values.
  returned: success
  type: dict
  contains:
    device_mgmt:
      description: The gateway's journal in short.
      type: dict
      contains:
        gateway:
          description: The gateway.
          type: str
        journal:
          description: Its journal, on the gateway.
          type: str
        state:
          description:
            - C(accepted), C(partly reverted), C(failed), C(unknown), C(waiting), C(expired) or C(empty),
              see vorcfg-site(7).
            - C(missing) if the gateway has no journal.
          type: str
        settled:
          description: How many settings are in effect.
          type: int
        waiting:
          description: How many are in effect until they are confirmed or reverted.
          type: int
        unknown:
          description: How many are unknown.
          type: int
        refused:
          description: How many were refused or not delivered, and were never accepted.
          type: int
        left:
          description: With I(src), how many of its lines are to be made.
          type: int
        confirmation:
          description: What became of the last apply that was to be confirmed, or null.
          type: dict
        last:
          description: When the last call was made, in UTC.
          type: str
        by:
          description: The user who made it.
          type: str
settled:
  description: The settings in effect; with I(src), the lines of the site. As returned by M(device_mgmt.gateway.site).
  returned: success
  type: list
  elements: dict
waiting:
  description: Those that are to be confirmed.
  returned: success
  type: list
  elements: dict
unknown:
  description: Those whose outcome is not known.
  returned: success
  type: list
  elements: dict
refused:
  description: Those that were refused or not delivered.
  returned: success
  type: list
  elements: dict
left:
  description: With I(src), lines to be made.
  returned: success
  type: list
  elements: dict
"""
